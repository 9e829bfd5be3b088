#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace jet {

/// What kind of failure an Error tells of.
enum class Errc : std::uint8_t {
    io,           ///< the operating system refused a read, a write or an open
    notFound,     ///< no such file, table, column or index
    exists,       ///< a file or table of that name is there already
    corrupt,      ///< bytes of the file don't parse
    locked,       ///< another program holds the file
    readOnly,     ///< the file or the table may be read but not changed; the sentence says why
    unsupported,  ///< a format this engine can't open: newer, encoded, protected
    password,     ///< the file asks for a password that wasn't given
    duplicate,    ///< a unique index has the key already
    rule,         ///< a rule that the file keeps for the column or the table isn't obeyed
    related,      ///< a row without its parent, or rows that would lose theirs
    nullValue,    ///< a column that must be filled in is empty
    full,         ///< the file or the disk has no room left
    tooLong,      ///< a text or a row has more characters or bytes than there is room for
    outOfRange,   ///< the value doesn't fit the column's type
    conflict,     ///< the row was changed or deleted by another since it was read
    gone,         ///< the row that was on show has been deleted since
    noCurrentRow, ///< the recordset stands before the first or after the last row
    syntax,       ///< the statement isn't one that the data layer takes
    cancelled,    ///< whoever asked for it wants it no longer
    offline,      ///< the server is away, or was; the sentence says what was done and what wasn't
    misuse,       ///< called in a state that doesn't allow it (closed, transaction already open)
};

/// The one exception of the data layers. what() is a sentence in Portuguese for the operator: what
/// failed, why, and where it helps what to do.
class Error final : public std::runtime_error {
public:
    Error(Errc code, const std::string& sentence) : std::runtime_error(sentence), code_(code) {}
    [[nodiscard]] Errc code() const noexcept { return code_; }

private:
    Errc code_;
};

} // namespace jet
