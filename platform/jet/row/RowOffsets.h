#pragma once

#include "jet/page/Format.h"

#include <span>

namespace jet {

/// What a row says at its end, ahead of the null mask, of where its variable values stand: their
/// number, the jump table (Jet 3 only), and backwards the offset of each and the end of the last,
/// counted from the row's first byte. Looks at nothing that hasn't been asked for.
class RowOffsets {
public:
    RowOffsets(const Format& format, std::span<const std::byte> row, std::size_t maskAt) noexcept
        : row_(row.data()), width_(format.row.countSize), maskAt_(maskAt),
          jumps_(format.isJet3() ? (row.size() - 1) / 256 : 0) {}

    /// Whether there is room for the number and the jump table. Without, nothing else may be asked.
    [[nodiscard]] bool hasCount() const noexcept { return maskAt_ >= 2 * width_ + jumps_; }
    /// How many variable values the row has.
    [[nodiscard]] std::size_t count() const noexcept {
        return load(row_, ShortField{maskAt_ - width_, width_});
    }
    /// Whether there is room for that many offsets. Without, nothing that follows may be asked.
    [[nodiscard]] bool fit() const noexcept {
        return maskAt_ >= 2 * width_ + jumps_ + width_ * (count() + 1);
    }
    /// Where all this begins: no value reaches beyond.
    [[nodiscard]] std::size_t begin() const noexcept { return offsetAt(count()); }
    /// Where that value begins; at count() where the last one ends.
    [[nodiscard]] std::size_t operator[](std::size_t value) const noexcept {
        std::size_t offset = load(row_, ShortField{offsetAt(value), width_});
        // Jet 3's are single bytes; each jump names the value from which on another 256 are added.
        if (jumps_ != 0) {
            const std::size_t used = begin() / 256 < jumps_ ? jumps_ - 1 : jumps_;
            for (std::size_t jump = 0; jump < used; ++jump)
                if (std::to_integer<std::size_t>(row_[maskAt_ - width_ - 1 - jump]) <= value)
                    offset += 256;
        }
        return offset;
    }

private:
    [[nodiscard]] std::size_t offsetAt(std::size_t value) const noexcept {
        return maskAt_ - width_ - jumps_ - width_ * (value + 1);
    }

    const std::byte* row_;
    std::size_t width_;
    std::size_t maskAt_;
    std::size_t jumps_;
};

} // namespace jet
