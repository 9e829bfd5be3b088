#include "jet/system/PageConverter.h"

#include <windows.h>

namespace jet::sys {

struct PageConverter::Handles {
    UINT page;
};

PageConverter::PageConverter(std::uint16_t page)
    : handles_(std::make_unique<Handles>(Handles{page})) {}
PageConverter::~PageConverter() = default;

bool PageConverter::works() const noexcept { return ::IsValidCodePage(handles_->page) != 0; }

std::optional<char16_t> PageConverter::characterOf(const std::string& bytes) {
    std::array<wchar_t, 2> units{};
    const int count = ::MultiByteToWideChar(handles_->page, MB_ERR_INVALID_CHARS, bytes.data(),
                                            static_cast<int>(bytes.size()), units.data(),
                                            static_cast<int>(units.size()));
    if (count != 1)
        return std::nullopt;
    return static_cast<char16_t>(units[0]);
}

std::optional<std::array<unsigned char, 2>> PageConverter::bytesOf(char16_t character) {
    const auto unit = static_cast<wchar_t>(character);
    std::array<char, 2> bytes{};
    BOOL guessed = FALSE;
    const int count =
        ::WideCharToMultiByte(handles_->page, WC_NO_BEST_FIT_CHARS, &unit, 1, bytes.data(),
                              static_cast<int>(bytes.size()), nullptr, &guessed);
    if (count == 0 || guessed != FALSE)
        return std::nullopt;
    if (count == 1)
        return std::array{static_cast<unsigned char>(0), static_cast<unsigned char>(bytes[0])};
    return std::array{static_cast<unsigned char>(bytes[0]), static_cast<unsigned char>(bytes[1])};
}

} // namespace jet::sys
