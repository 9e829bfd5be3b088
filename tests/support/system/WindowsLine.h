#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Words as the line that a Windows program is started with, which it takes apart into these again.
[[nodiscard]] inline std::wstring windowsLine(const std::vector<std::string>& words) {
    std::wstring line;
    for (const std::string& word : words) {
        line += line.empty() ? L"\"" : L" \"";
        const std::filesystem::path wide = std::u8string(word.begin(), word.end());
        std::size_t backslashes = 0;
        for (const wchar_t c : wide.native()) {
            if (c == L'"')
                line.append(backslashes + 1, L'\\');
            backslashes = c == L'\\' ? backslashes + 1 : 0;
            line += c;
        }
        line.append(backslashes, L'\\');
        line += L'"';
    }
    return line;
}
