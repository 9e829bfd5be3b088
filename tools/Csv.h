#pragma once

#include "jet/Table.h"

#include <cstdint>
#include <iosfwd>
#include <istream>
#include <string>
#include <vector>

/// A field of a CSV record. An empty one in quotes is an empty text, one without is null.
struct CsvField {
    std::string text;
    bool quoted = false;
};

/// Reads CSV (RFC 4180; lines may end in LF as well; a byte order mark is passed over) record by
/// record. What is read may be anybody's: no record takes more than a bounded memory.
class CsvReader {
public:
    explicit CsvReader(std::istream& in);

    /// The next record into `fields`; false at the end. An empty line is a record if the first one
    /// had a single field, which is null then, and otherwise none.
    /// @throws jet::Error{corrupt} that names the line, for what isn't CSV.
    [[nodiscard]] bool next(std::vector<CsvField>& fields);
    /// The line on which the last record began.
    [[nodiscard]] std::uint64_t line() const noexcept { return begin_; }

private:
    void readField(CsvField& field);
    [[noreturn]] void complain(const char* what) const;
    int take();

    std::istream& in_;
    std::uint64_t line_ = 1;
    std::uint64_t begin_ = 0; ///< 0 before the first
    std::size_t size_ = 0;    ///< of this record
    bool single_ = false;     ///< records have one field
};

/// All rows of a table, the names of its columns first, as CsvReader reads them back.
void writeCsv(const jet::Table& table, std::ostream& out);
