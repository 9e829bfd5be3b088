#pragma once

#include <iosfwd>
#include <string>
#include <vector>

/// Rows in columns aligned by blanks, for a terminal. Every row is met twice: first by measure(),
/// which widens the columns, then by print(); so a table of any length takes no memory.
class TextTable {
public:
    /// Texts longer than this are cut, and end in "…".
    static constexpr std::size_t kWidest = 60;

    /// `toTheRight`: columns of numbers.
    TextTable(std::vector<std::string> headings, std::vector<bool> toTheRight);

    void measure(const std::vector<std::string>& row);
    void printHeadings(std::ostream& out) const;
    void print(std::ostream& out, const std::vector<std::string>& row) const;

private:
    std::vector<std::string> headings_;
    std::vector<bool> toTheRight_;
    std::vector<std::size_t> widths_;
};
