#pragma once

#include "jet/text/TextCodec.h"

#include <string_view>

/// The properties that the catalog keeps of a table beside its definition (column LvProp): which
/// columns must be filled in, their defaults, their rules, and much that only other programs use.
/// Stored as a mark and blocks: one of names, then one for the table and each column with values
/// that refer to these names.
namespace jet {

struct Property {
    std::string name;
    ColumnType type{};
    Bytes data;            ///< as stored; text isn't compressed
    std::uint8_t mark = 1; ///< what else the file notes of it

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

/// The same to be stored.
/// @throws Error{outOfRange} for a name that the codec hasn't the characters for.
[[nodiscard]] Bytes storedProperties(const std::vector<PropertyGroup>& groups,
                                     const TextCodec& names);

/// What is stored in a file of one codec, for one of another.
/// @throws as both.
[[nodiscard]] Bytes recodedProperties(std::span<const std::byte> stored, const TextCodec& from,
                                      const TextCodec& to);

} // namespace jet
