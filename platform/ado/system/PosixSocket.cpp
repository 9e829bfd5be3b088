#include "ado/system/Socket.h"

#include <poll.h>

namespace ado {

bool hasInput(std::intptr_t socket, std::chrono::milliseconds longest) {
    pollfd there{static_cast<int>(socket), POLLIN, 0};
    return ::poll(&there, 1, static_cast<int>(longest.count())) != 0;
}

} // namespace ado
