#pragma once

#include "jet/Types.h"
#include "jet/value/LittleEndian.h"

#include <initializer_list>
#include <limits>
#include <span>

/// How a structure of the file is told: each field by its place and its type. Readers and writers
/// name the field, and no number.
namespace jet {

/// The place of a field that one of the two versions hasn't got.
inline constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

/// A number of a structure, of as many bytes as its type has; a RowId is stored as the number of
/// four bytes that packed() makes of it.
template <class T>
struct Field {
    std::size_t at;
    static constexpr std::size_t size = std::is_same_v<T, RowId> ? 4 : sizeof(T);
    [[nodiscard]] constexpr std::size_t end() const noexcept { return at + size; }
};

/// One that only one of the two versions has.
template <class T>
struct MaybeField {
    std::size_t at;
    [[nodiscard]] constexpr explicit operator bool() const noexcept { return at != kNowhere; }
    [[nodiscard]] constexpr Field<T> operator*() const noexcept { return {at}; }
};

/// A number of one byte in Jet 3 and of two in Jet 4.
struct ShortField {
    std::size_t at;
    std::size_t size;
};

/// Bytes of a structure that aren't one number.
struct Stretch {
    std::size_t at;
    std::size_t size;

    constexpr Stretch(std::size_t begin, std::size_t count) noexcept : at(begin), size(count) {}
    template <class T>
    constexpr Stretch(Field<T> field) noexcept : at(field.at), size(field.size) {}
    template <class T>
    constexpr Stretch(MaybeField<T> field) noexcept : at(field.at), size((*field).size) {}
    constexpr Stretch(ShortField field) noexcept : at(field.at), size(field.size) {}

    [[nodiscard]] constexpr std::size_t end() const noexcept { return at + size; }
};

/// Whether the parts lie side by side and leave no gap from `begin` to `end`. Those that the
/// version hasn't got count for nothing.
[[nodiscard]] constexpr bool fill(std::size_t begin, std::size_t end,
                                  std::initializer_list<Stretch> parts) noexcept {
    std::size_t at = begin;
    for (std::size_t step = 0; step <= parts.size() && at < end; ++step)
        for (const Stretch& part : parts)
            if (part.at == at)
                at = part.end();
    std::size_t sum = 0;
    for (const Stretch& part : parts)
        sum += part.at == kNowhere ? 0 : part.size;
    return at == end && sum == end - begin;
}

/// Unaligned access; the caller has checked that the field lies inside.
template <class T>
[[nodiscard]] inline T load(const std::byte* structure, Field<T> field) noexcept {
    if constexpr (std::is_same_v<T, RowId>)
        return unpacked(load<std::uint32_t>(structure + field.at));
    else
        return load<T>(structure + field.at);
}
[[nodiscard]] inline std::size_t load(const std::byte* structure, ShortField field) noexcept {
    return field.size == 1 ? load<std::uint8_t>(structure + field.at)
                           : load<std::uint16_t>(structure + field.at);
}

template <class T>
inline void store(std::byte* structure, Field<T> field, std::type_identity_t<T> value) noexcept {
    if constexpr (std::is_same_v<T, RowId>)
        store<std::uint32_t>(structure + field.at, static_cast<std::uint32_t>(packed(value)));
    else
        store<T>(structure + field.at, value);
}
/// Nothing is done where the version hasn't got the field.
template <class T>
inline void store(std::byte* structure, MaybeField<T> field,
                  std::type_identity_t<T> value) noexcept {
    if (field)
        store(structure, *field, value);
}
inline void store(std::byte* structure, ShortField field, std::size_t value) noexcept {
    if (field.size == 1)
        store<std::uint8_t>(structure + field.at, static_cast<std::uint8_t>(value));
    else
        store<std::uint16_t>(structure + field.at, static_cast<std::uint16_t>(value));
}

/// Bits are counted from the lowest of each byte on.
inline void setBit(std::span<std::byte> bitmap, std::size_t bit, bool on = true) noexcept {
    const auto mask = std::byte{static_cast<std::uint8_t>(1U << (bit % 8))};
    bitmap[bit / 8] = on ? bitmap[bit / 8] | mask : bitmap[bit / 8] & ~mask;
}
[[nodiscard]] inline bool hasBit(std::span<const std::byte> bitmap, std::size_t bit) noexcept {
    return (bitmap[bit / 8] & std::byte{static_cast<std::uint8_t>(1U << (bit % 8))}) != std::byte{};
}

} // namespace jet
