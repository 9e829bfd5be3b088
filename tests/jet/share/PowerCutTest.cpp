// The disk of the crash tests loses what a real one may lose, and nothing else.
#include "jet/MemoryDisk.h"
#include "jet/disk/File.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace jet;
using namespace std::string_literals;
using testing::AllOf;
using testing::Contains;

namespace {

constexpr std::size_t kSector = 512;

/// What the disks may hold that a cut behind all that `disk` has done leaves, as
/// "name=first bytes of its sectors", names apart by blanks.
std::set<std::string> outcomes(const MemoryDisk& disk, const DiskImage& before = {}) {
    PowerCut cut(before);
    for (const MemoryDisk::Operation& operation : disk.record())
        cut.advance(operation);
    std::mt19937_64 random(1);
    std::vector<DiskImage> images{cut.nothingMore(), cut.everything()};
    for (int i = 0; i < 500; ++i)
        images.push_back(cut.some(random, 50));
    std::set<std::string> found;
    for (const DiskImage& image : images) {
        std::string text;
        for (const auto& [name, bytes] : image) {
            text += (text.empty() ? "" : " ") + name + "=";
            for (std::size_t at = 0; at < bytes.size(); at += kSector)
                text += bytes[at] == std::byte{} ? '0' : static_cast<char>(bytes[at]);
        }
        found.insert(text);
    }
    return found;
}

/// Two sectors of a letter.
void put(File& file, char letter) {
    file.write(0, Bytes(2 * kSector, static_cast<std::byte>(letter)));
}

DiskImage holding(const std::string& name, char letter) {
    return {
        {name, Bytes(2 * kSector, static_cast<std::byte>(letter))}
    };
}

TEST(PowerCuts, SectorsOfAWriteGetThereOneByOne) {
    const DiskImage before = holding("/a", 'x');
    MemoryDisk disk(before);
    File file("/a", File::Mode::readWrite, disk);
    put(file, 'y');
    EXPECT_EQ(outcomes(disk, before), (std::set{"/a=xx"s, "/a=xy"s, "/a=yx"s, "/a=yy"s}));
    file.sync();
    EXPECT_EQ(outcomes(disk, before), std::set{"/a=yy"s});
    file.truncate(kSector);
    EXPECT_EQ(outcomes(disk, before), (std::set{"/a=yy"s, "/a=y"s, "/a=y0"s}));
}

TEST(PowerCuts, ANameNeedsItsFolderAndContentItsFile) {
    MemoryDisk disk;
    File file("/d/a", File::Mode::createNew, disk);
    put(file, 'y');
    EXPECT_THAT(outcomes(disk),
                AllOf(Contains(""), Contains("/d/a="), Contains("/d/a=0y"), Contains("/d/a=yy")));
    file.sync();
    EXPECT_EQ(outcomes(disk), (std::set{""s, "/d/a=yy"s}));
    File::syncFolderOf(disk, "/e/other");
    EXPECT_THAT(outcomes(disk), Contains("")) << "another folder";
    File::syncFolderOf(disk, "/d/a");
    EXPECT_EQ(outcomes(disk), std::set{"/d/a=yy"s});
}

TEST(PowerCuts, NamesComeAndGoInAnyOrderUntilTheFolderIsSynced) {
    const DiskImage before = holding("/a", 'x');
    MemoryDisk disk(before);
    ASSERT_EQ(disk.rename("/a", "/b"), 0);
    EXPECT_EQ(outcomes(disk, before), (std::set{"/a=xx"s, "/a=xx /b=xx"s, "/b=xx"s}));
    ASSERT_EQ(disk.link("/b", "/c"), 0);
    ASSERT_EQ(disk.remove("/b"), 0);
    EXPECT_THAT(outcomes(disk, before),
                AllOf(Contains("/a=xx"), Contains("/c=xx"), Contains("/a=xx /c=xx"),
                      Contains("/a=xx /b=xx /c=xx")));
    File::syncFolderOf(disk, "/c");
    EXPECT_EQ(outcomes(disk, before), std::set{"/c=xx"s});
}

TEST(PowerCuts, AReplacedFileOrItsReplacementIsThere) {
    DiskImage before = holding("/a", 'x');
    before.merge(holding("/new", 'y'));
    MemoryDisk disk(before);
    ASSERT_EQ(disk.rename("/new", "/a"), 0);
    EXPECT_EQ(outcomes(disk, before), (std::set{"/a=xx /new=yy"s, "/a=yy"s, "/a=yy /new=yy"s}));
}

} // namespace
