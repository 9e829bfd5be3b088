#pragma once

#include "jet/page/Field.h"

#include <span>

namespace jet {

/// A numeric as rows store it: a sign and the digits without their point, highest word first. Where
/// the point goes stands in the column.
struct StoredNumeric {
    static constexpr Field<std::uint8_t> sign{0};
    static constexpr std::uint8_t negative = 0x80; ///< of the sign
    [[nodiscard]] static constexpr Field<std::uint32_t> word(std::size_t i) noexcept {
        return {sign.end() + Field<std::uint32_t>::size * i};
    }
    static constexpr std::size_t words = std::tuple_size_v<decltype(Numeric::words)>;
    static constexpr std::size_t size = 17;

    /// Of `size` bytes.
    [[nodiscard]] static Numeric read(std::span<const std::byte> stored, std::uint8_t scale) {
        Numeric value;
        value.negative = (load(stored.data(), sign) & negative) != 0;
        for (std::size_t i = 0; i < words; ++i)
            value.words[i] = load(stored.data(), word(i));
        value.scale = scale;
        return value;
    }
    [[nodiscard]] static Bytes bytesOf(const Numeric& value) {
        Bytes stored(size);
        store(stored.data(), sign, value.negative ? negative : 0);
        for (std::size_t i = 0; i < words; ++i)
            store(stored.data(), word(i), value.words[i]);
        return stored;
    }
};
static_assert(StoredNumeric::word(StoredNumeric::words).at == StoredNumeric::size);

} // namespace jet
