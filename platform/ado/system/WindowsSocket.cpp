#include "ado/system/Socket.h"

#include <winsock2.h>

namespace ado {

bool hasInput(std::intptr_t socket, std::chrono::milliseconds longest) {
    WSAPOLLFD there{static_cast<SOCKET>(socket), POLLRDNORM, 0};
    return ::WSAPoll(&there, 1, static_cast<int>(longest.count())) != 0;
}

} // namespace ado
