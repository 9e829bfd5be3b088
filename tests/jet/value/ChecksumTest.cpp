#include "jet/value/Checksum.h"

#include <gtest/gtest.h>

#include <array>

namespace jet {
namespace {

// Journals outlive the program that wrote them: the function is this one for good.
TEST(Checksum, IsThatOfTheLibrarysOwnTestVectors) {
    EXPECT_EQ(checksum({}), 0x2D06800538D394C2U);
    EXPECT_EQ(checksum({}, 0x9E3779B185EBCA8DU), 0xA8A6B918B2F0364AU);
}

TEST(Checksum, OfPartsDependsOnWhatCameBefore) {
    std::array<std::byte, 1000> bytes{};
    const std::uint64_t first = checksum(bytes);
    bytes[999] = std::byte{1};
    const std::uint64_t other = checksum(bytes);
    EXPECT_NE(first, other);
    EXPECT_NE(checksum(bytes, first), checksum(bytes, other));
}

} // namespace
} // namespace jet
