#pragma once

#include "jet/page/ByteView.h"
#include "jet/page/Format.h"

#include <string>
#include <vector>

namespace jet {

/// The logical bytes of a table's definition, cut apart where more of a kind can be put in; the
/// header's counts are those of what is there.
struct DefinitionParts {
    /// A logical index: its block, and its name as it is stored, with its length.
    struct Logical {
        Bytes block;
        Bytes name;
        std::string folded; ///< the name, as names are compared
    };

    /// Of a table without columns and indexes.
    explicit DefinitionParts(const Format& format) : header(format.definition.size) {}
    /// @throws Error{corrupt} where the definition ends too early.
    DefinitionParts(const Format& format, ByteView definition);

    /// In one piece, the length in it.
    [[nodiscard]] Bytes joined(const Format& format) const;

    Bytes header;
    Bytes statistics;
    Bytes columns;
    Bytes columnNames;
    Bytes realIndexes;
    std::vector<Logical> logicalIndexes;
    Bytes longValues; ///< without the mark of their end
};

/// `size` zeros at the end of `bytes`; where they begin.
inline std::byte* addBlock(Bytes& bytes, std::size_t size) {
    bytes.insert(bytes.end(), size, std::byte{});
    return bytes.data() + bytes.size() - size;
}

} // namespace jet
