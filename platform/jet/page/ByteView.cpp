#include "jet/page/ByteView.h"

namespace jet {

void corrupt(PageNo page, const std::string& reason) {
    throw Error(Errc::corrupt, "O arquivo está danificado (página " + std::to_string(number(page)) +
                                   "): " + reason + ".");
}

} // namespace jet
