#include "jet/Names.h"

namespace jet {

std::string foldedName(std::string_view utf8) {
    while (!utf8.empty() && utf8.back() == ' ')
        utf8.remove_suffix(1);
    std::string folded(utf8);
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const auto c = static_cast<unsigned char>(folded[i]);
        if (c >= 'A' && c <= 'Z') {
            folded[i] = static_cast<char>(c + 0x20);
        } else if (c == 0xC3 && i + 1 < folded.size()) {
            // U+00C0 to U+00DE are the capitals of U+00E0 to U+00FE, but for the multiplication
            // sign.
            const auto next = static_cast<unsigned char>(folded[i + 1]);
            if (next >= 0x80 && next <= 0x9E && next != 0x97)
                folded[i + 1] = static_cast<char>(next + 0x20);
        }
    }
    return folded;
}

} // namespace jet
