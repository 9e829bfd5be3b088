#pragma once

#include "jet/value/LittleEndian.h"

#include <bit>
#include <cstdint>
#include <span>

namespace jet {

/// Tells whether bytes are those that were written; not a defence against who wants to deceive.
class Checksum {
public:
    [[nodiscard]] static std::uint64_t of(std::span<const std::byte> bytes) noexcept {
        Checksum sum;
        sum.add(bytes);
        return sum.value();
    }

    void add(std::span<const std::byte> bytes) noexcept {
        while (bytes.size() >= 8) {
            mix(load<std::uint64_t>(bytes.data()));
            bytes = bytes.subspan(8);
        }
        for (const std::byte b : bytes)
            mix(std::to_integer<std::uint64_t>(b) + 0x100);
    }
    [[nodiscard]] std::uint64_t value() const noexcept {
        std::uint64_t h = state_;
        h = (h ^ (h >> 32)) * 0xD6E8FEB86659FD93U;
        return h ^ (h >> 32);
    }

private:
    void mix(std::uint64_t word) noexcept {
        state_ = (std::rotl(state_, 5) ^ word) * 0x9E3779B97F4A7C15U;
    }
    std::uint64_t state_ = 0x517CC1B727220A95U;
};

/// Of a sector or a page, in four bytes.
[[nodiscard]] inline std::uint32_t checksumOf(std::span<const std::byte> bytes) noexcept {
    return static_cast<std::uint32_t>(Checksum::of(bytes));
}

} // namespace jet
