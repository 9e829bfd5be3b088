#pragma once

#include <chrono>
#include <cstdint>

namespace ado {

/// Whether there is something to be read from a socket, or it has gone: now or within that time.
[[nodiscard]] bool hasInput(std::intptr_t socket, std::chrono::milliseconds longest);

/// The same, or it takes what is to be sent.
[[nodiscard]] bool hasInputOrRoom(std::intptr_t socket, std::chrono::milliseconds longest);

} // namespace ado
