#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace jet {

/// XXH3 in 64 bits: tells whether bytes are those that were written, or have been seen; not a
/// defence against who wants to deceive. `seed`: the checksum of what comes before them, where
/// bytes are summed part by part. Sums of the same bytes in other parts differ.
[[nodiscard]] std::uint64_t checksum(std::span<const std::byte> bytes,
                                     std::uint64_t seed = 0) noexcept;

} // namespace jet
