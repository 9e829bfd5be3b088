#include "jet/value/Checksum.h"

// The whole of it from the header: the program needs no library of the machine it runs on.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace jet {

std::uint64_t checksum(std::span<const std::byte> bytes, std::uint64_t seed) noexcept {
    return XXH3_64bits_withSeed(bytes.data(), bytes.size(), seed);
}

} // namespace jet
