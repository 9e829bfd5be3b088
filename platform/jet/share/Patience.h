#pragma once

#include <chrono>

/// How long a station waits for what others hold, and what it says when they don't let go.
namespace jet::patience {

inline constexpr std::chrono::milliseconds kForTurn{10000}; ///< R and W
inline constexpr std::chrono::milliseconds kForEntering{5000};
inline constexpr std::chrono::milliseconds kForGate{500};

/// The end of a sentence. Not "nothing": many rows may have been saved before this one.
inline constexpr const char* kNotSaved =
    ". O que se quis gravar agora não foi gravado; espere um pouco e tente de novo.";

} // namespace jet::patience
