#include "tools/TextTable.h"

#include "tools/ValueText.h"

#include <algorithm>
#include <ostream>

namespace {

/// `text` in one line of at most kWidest places.
std::string cell(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    if (widthOf(text) <= TextTable::kWidest)
        return text;
    std::size_t places = 0;
    std::size_t end = 0;
    while (end < text.size() && ((text[end] & 0xC0) == 0x80 || ++places < TextTable::kWidest))
        ++end;
    return text.substr(0, end) + "…";
}

} // namespace

TextTable::TextTable(std::vector<std::string> headings, std::vector<bool> toTheRight)
    : headings_(std::move(headings)), toTheRight_(std::move(toTheRight)),
      widths_(headings_.size()) {
    measure(headings_);
}

void TextTable::measure(const std::vector<std::string>& row) {
    for (std::size_t i = 0; i < row.size(); ++i)
        widths_[i] = std::max(widths_[i], std::min(widthOf(row[i]), kWidest));
}

void TextTable::printHeadings(std::ostream& out) const {
    print(out, headings_);
    std::string line;
    for (const std::size_t width : widths_)
        line += (line.empty() ? "" : "  ") + std::string(width, '-');
    out << line << '\n';
}

void TextTable::print(std::ostream& out, const std::vector<std::string>& row) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string text = cell(row[i]);
        const std::string blanks(widths_[i] - std::min(widths_[i], widthOf(text)), ' ');
        line += (i == 0 ? "" : "  ") + (toTheRight_[i] ? blanks + text : text + blanks);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}
