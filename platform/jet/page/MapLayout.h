#pragma once

#include <cstddef>
#include <cstdint>

/// How a map of pages is stored; see UsageMap.
namespace jet {

/// The first byte of its row.
enum class MapType : std::uint8_t { bitmap = 0, reference = 1 };

// A row of type bitmap:
inline constexpr std::size_t kFirstPageAt = 1; ///< 4 bytes: the page of the first bit
inline constexpr std::size_t kBitmapAt = 5;

/// A page that is all bitmap has it behind so many bytes.
inline constexpr std::size_t kMapPageHeader = 4;

} // namespace jet
