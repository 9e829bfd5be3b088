#include "ado/system/Socket.h"

#include <poll.h>

namespace ado {

namespace {

bool hasAny(std::intptr_t socket, short events, std::chrono::milliseconds longest) {
    pollfd there{static_cast<int>(socket), events, 0};
    return ::poll(&there, 1, static_cast<int>(longest.count())) != 0;
}

} // namespace

bool hasInput(std::intptr_t socket, std::chrono::milliseconds longest) {
    return hasAny(socket, POLLIN, longest);
}

bool hasInputOrRoom(std::intptr_t socket, std::chrono::milliseconds longest) {
    return hasAny(socket, POLLIN | POLLOUT, longest);
}

} // namespace ado
