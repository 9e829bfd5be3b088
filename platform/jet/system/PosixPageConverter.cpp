#include "jet/system/PageConverter.h"

#include <bit>
#include <iconv.h>

namespace jet::sys {

namespace {

/// One direction of it.
class Direction {
public:
    Direction(const std::string& to, const std::string& from)
        : handle_(iconv_open(to.c_str(), from.c_str())) {}
    Direction(const Direction&) = delete;
    Direction& operator=(const Direction&) = delete;
    ~Direction() {
        if (works())
            iconv_close(handle_);
    }
    [[nodiscard]] bool works() const noexcept {
        return std::bit_cast<std::intptr_t>(handle_) != -1;
    }

    /// The bytes that all of `input` becomes; nothing if it isn't whole characters or becomes more
    /// than two bytes.
    [[nodiscard]] std::optional<std::array<unsigned char, 2>> convert(std::string input) {
        std::array<char, 2> output{};
        char* from = input.data();
        char* to = output.data();
        std::size_t fromLeft = input.size();
        std::size_t toLeft = output.size();
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        const std::size_t result = iconv(handle_, &from, &fromLeft, &to, &toLeft);
        if (result != 0 || fromLeft != 0)
            return std::nullopt;
        if (toLeft == 1) // a lone byte: stands low, as a pair's second one
            return std::array{static_cast<unsigned char>(0), static_cast<unsigned char>(output[0])};
        return std::array{static_cast<unsigned char>(output[0]),
                          static_cast<unsigned char>(output[1])};
    }

private:
    iconv_t handle_;
};

} // namespace

struct PageConverter::Handles {
    explicit Handles(const std::string& name)
        : decoder("UTF-16BE", name), encoder(name, "UTF-16BE") {}
    Direction decoder;
    Direction encoder;
};

PageConverter::PageConverter(std::uint16_t page)
    : handles_(std::make_unique<Handles>("CP" + std::to_string(page))) {}
PageConverter::~PageConverter() = default;

bool PageConverter::works() const noexcept {
    return handles_->decoder.works() && handles_->encoder.works();
}

std::optional<char16_t> PageConverter::characterOf(const std::string& bytes) {
    const auto unit = handles_->decoder.convert(bytes);
    if (!unit)
        return std::nullopt;
    return static_cast<char16_t>((*unit)[0] << 8 | (*unit)[1]);
}

std::optional<std::array<unsigned char, 2>> PageConverter::bytesOf(char16_t character) {
    return handles_->encoder.convert(
        {static_cast<char>(character >> 8), static_cast<char>(character & 0xFF)});
}

} // namespace jet::sys
