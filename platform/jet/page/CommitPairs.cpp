#include "jet/page/CommitPairs.h"

#include <algorithm>
#include <cstring>

namespace jet {

CommitPairs::CommitPairs(std::span<const std::byte, kBytes> bytes) {
    std::ranges::copy(bytes, bytes_.begin());
}

CommitPairs::CommitPairs(const File& file, const Format& format) {
    file.read(format.header.commitPairs.at, bytes_);
}

std::uint16_t CommitPairs::operator[](std::size_t user) const noexcept {
    return load(bytes_.data(), pair(user));
}

void CommitPairs::set(std::size_t user, std::uint16_t value) noexcept {
    store(bytes_.data(), pair(user), value);
}

std::optional<std::size_t> CommitPairs::find(std::uint16_t value) const noexcept {
    for (std::size_t user = 0; user < kUsers; ++user)
        if ((*this)[user] == value)
            return user;
    return std::nullopt;
}

// Each field that a window lists is a look at the file, and each look compares them: byte after
// byte it was a quarter of what a long list took.
bool CommitPairs::operator==(const CommitPairs& other) const noexcept {
    return std::memcmp(bytes_.data(), other.bytes_.data(), kBytes) == 0;
}

void CommitPairs::write(File& file, const Format& format, std::size_t user, std::uint16_t value) {
    std::array<std::byte, pair(0).size> bytes{};
    store(bytes.data(), pair(0), value);
    file.write(format.header.commitPairs.at + pair(user).at, bytes);
    file.sync();
}

std::uint16_t CommitPairs::after(std::uint16_t value) noexcept {
    return value < kFirst || value == 0xFFFF ? kFirst : static_cast<std::uint16_t>(value + 1);
}

} // namespace jet
