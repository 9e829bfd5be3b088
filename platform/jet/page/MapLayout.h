#pragma once

#include "jet/page/Format.h"

/// How a map of pages is stored; see UsageMap.
namespace jet {

enum class MapType : std::uint8_t { bitmap = 0, reference = 1 };

/// The row of a map.
struct MapRowLayout {
    static constexpr Field<MapType> type{0};
    // Of a bitmap:
    static constexpr Field<PageNo> first{1}; ///< that the first bit stands for
    static constexpr std::size_t bitmap = first.end();
    // Of a reference: numbers of map pages, or 0, one after the other.
    static constexpr std::size_t references = type.end();
    static constexpr std::size_t referenceSize = Field<PageNo>::size;

    [[nodiscard]] static constexpr Field<PageNo> reference(std::size_t part) noexcept {
        return {references + part * referenceSize};
    }
    /// Of that many bytes.
    [[nodiscard]] static constexpr std::size_t referencesIn(std::size_t size) noexcept {
        return (size - references) / referenceSize;
    }
};

/// The row of a new map, of nothing.
[[nodiscard]] inline Bytes emptyMap(const Format& format) {
    return Bytes(MapRowLayout::bitmap + format.mapBitmap);
}

/// A page that is all bitmap.
struct MapPageLayout {
    static constexpr std::size_t bitmap = 4;
    [[nodiscard]] static constexpr std::size_t bits(const Format& format) noexcept {
        return (format.pageSize - bitmap) * 8;
    }
};

/// A bitmap has whole words of 32 bits.
[[nodiscard]] constexpr std::size_t wholeWords(std::size_t bytes) noexcept {
    return (bytes + 3) / 4 * 4;
}

} // namespace jet
