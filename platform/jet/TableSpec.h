#pragma once

#include "jet/Types.h"

#include <string>
#include <vector>

namespace jet {

class TextCodec;

/// A column to be made.
struct ColumnSpec {
    std::string name;
    ColumnType type;
    /// Text: most characters. Binary: most bytes. Other types: left at 0.
    std::uint16_t width = 0;
    bool autonumber = false;
    std::uint8_t precision = 18; ///< numeric
    std::uint8_t scale = 0;      ///< numeric
    /// Jet 4 text and memo: store what fits in one byte a character so.
    bool compressed = true;
};

/// An index to be made.
struct IndexSpec {
    std::string name;
    struct KeyColumn {
        std::string name;
        bool ascending = true;
    };
    std::vector<KeyColumn> columns;
    bool primary = false; ///< then unique and required too
    bool unique = false;
    bool ignoreNulls = false;
    bool required = false;
    /// On a server: what it is read for besides, which then stands in it. A file's indexes have
    /// keys only.
    std::vector<std::string> included = {};
};

/// A table to be made.
struct TableSpec {
    std::string name;
    std::vector<ColumnSpec> columns;
    std::vector<IndexSpec> indexes;

    /// Where among the columns the one of that name is, without regard to case; their number if
    /// there is none.
    [[nodiscard]] std::size_t placeOf(const std::string& column) const;
    /// That a table of the user can be so, in a file whose names have that codec.
    /// @throws Error{misuse, exists, notFound} with what is wrong.
    void requireMakeable(const TextCodec& names) const;
};

} // namespace jet
