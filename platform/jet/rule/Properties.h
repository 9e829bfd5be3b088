#pragma once

#include "jet/text/TextCodec.h"

#include <string_view>

/// The properties that the catalog keeps of a table beside its definition (column LvProp): which
/// columns must be filled in, their defaults, their rules, and much that only other programs use.
///
/// Layout: a mark of 4 bytes, then blocks.
///
///     block      0  u32  length, all of it    4  u16  kind     6  ...
///     kind 0x80  names of properties, each a u16 of bytes and the name
///     kind 0, 1  those of the table, of a column:
///                6  u32  length of the name part, itself included   10  u16 bytes, name
///                then values
///     value      0  u16  length, all of it    2  u8   mark        3  u8   type
///                4  u16  place of its name    6  u16  bytes       8  data
namespace jet {

struct Property {
    std::string name;
    ColumnType type{};
    Bytes data; ///< as stored; text isn't compressed

    /// Of a text or memo property; of another, nothing.
    [[nodiscard]] std::string text(const TextCodec& codec) const;
    /// Of a yes/no property, whatever its size.
    [[nodiscard]] bool yes() const noexcept;
};

/// The properties of one column, or of the table itself.
struct PropertyGroup {
    std::string column; ///< empty: the table
    std::vector<Property> properties;

    /// By name, without regard to case; null if it isn't there.
    [[nodiscard]] const Property* find(std::string_view name) const;
};

/// `names` is the codec of the file's names, `page` the one an error names. Kinds of blocks that
/// aren't known here are passed over.
/// @throws Error{corrupt} if lengths or places don't fit.
[[nodiscard]] std::vector<PropertyGroup> parseProperties(std::span<const std::byte> stored,
                                                         const TextCodec& names, PageNo page);

} // namespace jet
