#include "ado/dialect/Spelling.h"

namespace ado {

namespace {

/// Between two of `quote`, doubled inside.
std::string between(char quote, std::string_view text) {
    std::string quoted(1, quote);
    for (const char c : text)
        quoted.append(c == quote ? 2 : 1, c);
    return quoted + quote;
}

} // namespace

std::string quotedName(std::string_view name) { return between('"', name); }

std::string quotedText(std::string_view text) {
    return between('\'', text) + " collate " + kTextOrder;
}

} // namespace ado
