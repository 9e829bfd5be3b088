#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The weights of the text orders, as data. Collation.h is what uses them.
namespace jet {

/// What a character contributes to a key.
enum class WeightKind : std::uint8_t {
    ignored, ///< nothing
    W,       ///< primary weight only
    A,       ///< primary weight and an accent
    K2,      ///< kana: primary weight, perhaps an accent, and the kana flag 2
    K3,      ///< the same with the flag 3
    M,       ///< combining mark: adds to the accent of the character before
    P,       ///< apostrophe, hyphen, control character: its place and a code at the key's end
    S,       ///< half of a surrogate pair: as A, and the primary weight is always two bytes
};

/// The weight of one character.
struct Weight {
    /// Up to four bytes of the key, from the top byte down; the rest zero, as no such byte is.
    std::uint32_t primary{};
    /// Jet 4: one accent byte for each element, the mark's amount, or the code; 0 = none.
    /// Jet 3: the accent's half byte.
    std::uint16_t extra{};
    WeightKind kind{};
    /// Jet 4: how many letters it counts as (a sharp s is two). Jet 3: how many letters that could
    /// carry an accent.
    std::uint8_t elements{};
};

/// `count` neighbouring UTF-16 units of like weights, the primary growing by `step` at each.
struct WeightRun {
    std::uint16_t first;
    std::uint16_t count;
    std::uint32_t step;
    Weight weight;
};

/// Jet 3, order General: by the byte of code page 1252.
extern const std::array<Weight, 256> kJet3GeneralWeights;

/// Jet 4, order General of version 0: by UTF-16 unit; units in no run are ignored. Surrogates have
/// no run: their weights follow from a formula.
extern const WeightRun kJet4GeneralRuns[];
extern const std::size_t kJet4GeneralRunCount;

} // namespace jet
