#include "print/system/PrintServer.h"

#include <QLibrary>

bool printServerTookJob() {
    constexpr int firstFailure = 0x400; // of the protocol's answers
    const auto lastAnswer =
        reinterpret_cast<int (*)()>(QLibrary::resolve("cups", 2, "cupsLastError"));
    return !lastAnswer || lastAnswer() < firstFailure;
}
