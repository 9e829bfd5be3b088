#include "ado/system/Socket.h"

#include <winsock2.h>

namespace ado {

namespace {

bool hasAny(std::intptr_t socket, SHORT events, std::chrono::milliseconds longest) {
    WSAPOLLFD there{static_cast<SOCKET>(socket), events, 0};
    return ::WSAPoll(&there, 1, static_cast<int>(longest.count())) != 0;
}

} // namespace

bool hasInput(std::intptr_t socket, std::chrono::milliseconds longest) {
    return hasAny(socket, POLLRDNORM, longest);
}

bool hasInputOrRoom(std::intptr_t socket, std::chrono::milliseconds longest) {
    return hasAny(socket, POLLRDNORM | POLLWRNORM, longest);
}

} // namespace ado
