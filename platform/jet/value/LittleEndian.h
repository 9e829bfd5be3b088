#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace jet {

static_assert(std::endian::native == std::endian::little,
              "the file's integers are little-endian and are copied as they stand");

/// Unaligned little-endian access; the caller has checked that `at` lies inside.
template <class T>
[[nodiscard]] inline T load(const std::byte* at) noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}
template <class T>
inline void store(std::byte* at, std::type_identity_t<T> value) noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(at, &value, sizeof value);
}

} // namespace jet
