#pragma once

#include "jet/page/ByteView.h"
#include "jet/page/Format.h"

#include <optional>

namespace jet {

/// Goes through what follows the header of a definition, from block to block.
/// @throws Error{corrupt} where the definition ends too early.
class DefinitionReader {
public:
    DefinitionReader(const Format& format, ByteView definition)
        : DefinitionReader(format, definition, format.definition.size) {}
    /// From the block that begins at `at`.
    DefinitionReader(const Format& format, ByteView definition, std::size_t at)
        : format_(format), definition_(definition), at_(at) {}

    /// Where the next block begins.
    [[nodiscard]] std::size_t at() const noexcept { return at_; }
    ByteView block(std::size_t size) {
        const ByteView part(definition_.sub(at_, size), definition_.page());
        at_ += size;
        return part;
    }
    void skip(std::size_t count, std::size_t size) {
        for (std::size_t i = 0; i < count; ++i)
            (void)block(size);
    }
    /// The text of a name.
    ByteView name() { return block(block(format_.nameLength.size).load(format_.nameLength)); }
    void skipNames(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            (void)name();
    }
    /// The next of the list of long-value maps; nothing at its end.
    std::optional<ByteView> longValueMaps() {
        using Maps = LongValueMapsLayout;
        const ByteView rest(definition_.from(at_), definition_.page());
        if (rest.load(Maps::column) != kNoColumn)
            return block(Maps::size);
        (void)block(Maps::column.size);
        return std::nullopt;
    }

private:
    const Format& format_;
    ByteView definition_;
    std::size_t at_;
};

} // namespace jet
