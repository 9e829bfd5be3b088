#include "jet/index/IndexTree.h"

#include "jet/IndexFile.h"
#include "jet/index/IndexPageEditor.h"

#include <gtest/gtest.h>

using namespace jet;

namespace {

using Entry = IndexFile::Entry;

TEST_P(IndexTreeOf, NothingIsEmpty) {
    IndexTree::Cursor cursor(file.tree());
    EXPECT_FALSE(cursor.first());
    EXPECT_FALSE(cursor.last());
    EXPECT_FALSE(cursor.seek(numberKey(1)));
    EXPECT_FALSE(cursor.next());
    EXPECT_FALSE(cursor.previous());
    EXPECT_FALSE(cursor.valid());
    EXPECT_FALSE(file.tree().hasKey(numberKey(1)));
    EXPECT_FALSE(file.tree().contains(numberKey(1), {}));
    EXPECT_TRUE(problems().empty());
}

TEST_P(IndexTreeOf, CursorStaysPastTheEndsAndComesBackFromThem) {
    file.insert(numberKey(1), 300);
    file.insert(numberKey(2), 301);
    IndexTree::Cursor cursor(file.tree());
    EXPECT_TRUE(cursor.last());
    EXPECT_FALSE(cursor.next());
    EXPECT_FALSE(cursor.next());
    EXPECT_TRUE(cursor.previous());
    EXPECT_EQ(packed(cursor.row()), 301);
    EXPECT_TRUE(cursor.previous());
    EXPECT_EQ(packed(cursor.row()), 300);
    EXPECT_FALSE(cursor.previous());
    EXPECT_FALSE(cursor.previous());
    EXPECT_TRUE(cursor.next());
    EXPECT_EQ(packed(cursor.row()), 300);
}

TEST_P(IndexTreeOf, KeyIsFoundUnlessOnlyTheExceptedRowHasIt) {
    file.insert(numberKey(5), 700);
    EXPECT_TRUE(file.tree().hasKey(numberKey(5)));
    EXPECT_TRUE(file.tree().hasKey(numberKey(5), unpacked(701)));
    EXPECT_FALSE(file.tree().hasKey(numberKey(5), unpacked(700)));
    EXPECT_FALSE(file.tree().hasKey(numberKey(4)));
    EXPECT_FALSE(file.tree().hasKey(Bytes{std::byte{0x7F}}));
    file.insert(numberKey(5), 701);
    EXPECT_TRUE(file.tree().hasKey(numberKey(5), unpacked(700)));
    EXPECT_TRUE(file.tree().hasKey(numberKey(5), unpacked(701)));
}

TEST_P(IndexTreeOf, ProperPrefixComesFirstWhateverTheRow) {
    file.insert(Bytes{std::byte{0x7F}}, 0x7FFFFFFF);
    file.insert(Bytes{std::byte{0x7F}, std::byte{0}}, 1);
    file.insert(Bytes{}, 0x7FFFFFFF);
    file.expectSound();
}

TEST_P(IndexTreeOf, RefusesWhatDoesNotAgreeWithTheRows) {
    file.insert(numberKey(5), 700);
    EXPECT_EQ(failure([&] { file.tree().insert(file.pages(), numberKey(5), unpacked(700)); }),
              Errc::corrupt);
    EXPECT_EQ(failure([&] { file.tree().erase(file.pages(), numberKey(5), unpacked(701)); }),
              Errc::corrupt);
    EXPECT_EQ(failure([&] { file.tree().erase(file.pages(), numberKey(6), unpacked(700)); }),
              Errc::corrupt);
    file.expectSound();
}

TEST_P(IndexTreeOf, RefusesAKeyOfWhichTwoDoNotFitOnAPage) {
    const std::size_t longest = longestKey(file.format());
    for (std::uint32_t n = 0; n < 40; ++n) {
        Bytes key(longest, static_cast<std::byte>(n * 37 % 41));
        file.insert(key, 256 + n);
    }
    const Bytes longer(longest + 1, std::byte{3});
    EXPECT_EQ(failure([&] { file.tree().insert(file.pages(), longer, unpacked(256)); }),
              Errc::tooLong);
    file.expectSound();
}

TEST_P(IndexTreeOf, GrowsToManyLevelsAndKeepsItsRoot) {
    const PageNo root = file.tree().root();
    grow(300);
    EXPECT_GE(file.level(), 4U);
    EXPECT_EQ(file.tree().root(), root);
    file.expectSound();
}

TEST_P(IndexTreeOf, NodesAreLinkedUnderOneParentOnly) {
    grow(300);
    for (const PageNo member : file.members()) {
        const PageRef ref = file.pager().read(member);
        const IndexPage parent = IndexPage::open(file.format(), ref.view(), file.owner());
        if (parent.level() < 2)
            continue;
        PageNo before{};
        for (std::size_t at = 0;; at = parent.after(at)) {
            const PageRef childRef = file.pager().read(parent.child(at));
            const IndexPage child = IndexPage::open(file.format(), childRef.view(), file.owner());
            EXPECT_EQ(child.previous(), before);
            before = child.page();
            if (at == parent.used()) {
                EXPECT_EQ(child.next(), PageNo{});
                break;
            }
            EXPECT_EQ(child.next(), parent.child(parent.after(at)));
        }
    }
}

TEST_P(IndexTreeOf, KeysThatOnlyGrowFillTheirPages) {
    constexpr std::uint32_t kEntries = 20'000;
    for (std::uint32_t n = 0; n < kEntries; ++n)
        file.insert(numberKey(n), 256 + n);
    // Nine bytes each without a shared prefix; with one, fewer.
    const std::size_t full = std::size_t{kEntries} * 9 / file.format().indexCapacity();
    EXPECT_LE(file.members().size(), full + 3);
    file.expectSound();
}

TEST_P(IndexTreeOf, TellsAboutHowManyEntriesComeBeforeAKey) {
    EXPECT_EQ(file.tree().partBefore(numberKey(1)), 0);
    Random random(3);
    for (std::uint32_t n = 0; n < 20'000; ++n) // denser towards the end
        file.insert(numberKey(below(random, 100'000) | below(random, 100'000)), 256 + n);
    for (std::uint32_t n = 0; n <= 140'000; n += 1'000) {
        const Bytes key = numberKey(n);
        const auto before = std::distance(file.model().begin(), file.model().lower_bound({key, 0}));
        EXPECT_NEAR(file.tree().partBefore(key),
                    static_cast<double>(before) / static_cast<double>(file.model().size()), 0.1)
            << n;
    }
    EXPECT_EQ(file.tree().partBefore({}), 0);
    EXPECT_EQ(file.tree().partBefore(numberKey(1'000'000)), 1);
}

TEST_P(IndexTreeOf, FollowsAStatementThatIsUndone) {
    for (std::uint32_t n = 0; n < 3000; n += 2)
        file.insert(numberKey(n), 256 + n);
    IndexTree::Cursor cursor(file.tree());
    ASSERT_TRUE(cursor.seek(numberKey(1000)));
    {
        const Pager::Statement undone(file.pager());
        for (std::uint32_t n = 1; n < 3000; n += 2)
            file.tree().insert(file.pages(), numberKey(n), unpacked(256 + n));
        ASSERT_TRUE(cursor.next());
        EXPECT_EQ(IndexFile::entryOf(cursor).first, numberKey(1001));
    }
    ASSERT_TRUE(cursor.next());
    EXPECT_EQ(IndexFile::entryOf(cursor).first, numberKey(1002));
    file.expectSound();
}

/// Other writers let the shared prefix go on into the row.
TEST_P(IndexTreeOf, WorksOnAPageWhosePrefixReachesIntoTheRow) {
    const std::span<std::byte> page = file.pager().change(file.tree().root());
    std::byte* data = page.data() + file.format().indexPage.entries;
    std::byte* mask = page.data() + file.format().indexPage.mask.at;
    const Bytes key = numberKey(77);
    const auto end = [&](std::size_t at) {
        mask[at / 8] |= static_cast<std::byte>(1U << (at % 8));
        return at;
    };
    // One key in slots 0 to 249 of five pages: the first entry whole, of the others two bytes.
    std::copy(key.begin(), key.end(), data);
    std::size_t at = end(9);
    data[6] = std::byte{1};
    file.model().insert({key, 0x010000});
    for (std::uint32_t n = 1; n < 5 * 250; ++n) {
        const std::uint32_t row = n / 250 << 8 | n % 250;
        if (at + 2 > file.format().indexCapacity())
            break;
        data[at] = static_cast<std::byte>(row >> 8);
        data[at + 1] = static_cast<std::byte>(row);
        at = end(at + 2);
        file.model().insert({key, 0x010000 + row});
    }
    store<std::uint16_t>(page.data() + 2,
                         static_cast<std::uint16_t>(file.format().indexCapacity() - at));
    page[file.format().indexPage.prefix.at] = std::byte{7};
    file.expectSound();

    const std::vector<Entry> entries(file.model().begin(), file.model().end());
    Random random{7};
    for (std::size_t n = 0; n < entries.size(); n += 3)
        file.erase(entries[n]);
    file.expectSound();
    for (std::uint32_t n = 0; n < 3000; ++n) {
        file.insert(numberKey(76 + below(random, 3)), below(random, 0x020000));
        if (n % 500 == 0)
            file.expectSound();
    }
    file.expectSound();
    while (!file.model().empty())
        file.erase(*file.model().begin());
    file.expectSound();
}

TEST_P(IndexTreeOf, SplitsAPageWhosePrefixReachesIntoTheRow) {
    IndexPageEditor root(file.format(), file.pager().change(file.tree().root()), file.tree().root(),
                         file.owner());
    IndexEntries entries(root.page());
    const Bytes key(200, std::byte{0x31});
    const std::uint32_t count = GetParam() == Version::jet3 ? 700 : 1500;
    for (std::uint32_t n = 0; n < count; ++n) {
        Bytes entry = key;
        for (const unsigned byte : {0U, 3U, n >> 8, n & 0xFF})
            entry.push_back(static_cast<std::byte>(byte));
        entries.insert(n, entry);
        file.model().insert({key, 0x030000 + n});
    }
    ASSERT_FALSE(root.assign(entries, 0, entries.count(), false));
    ASSERT_TRUE(root.assign(entries, 0, entries.count(), true));
    file.expectSound();
    for (std::uint32_t n = 0; n < 20; ++n) {
        Bytes other = key;
        other[std::size_t{n} * 10] = static_cast<std::byte>(n % 2 == 0 ? 0x30 : 0x32);
        file.insert(other, 900 + n);
        file.insert(key, 0x010000 + n);
        file.insert(key, 0x080000 + n);
    }
    file.expectSound();
}

/// Other writers leave a node without a tail child: its last entry then stands for everything
/// beyond.
TEST_P(IndexTreeOf, GivesANodeItsTailChildBeforeItGrows) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(numberKey(n * 2), 256 + n);
    ASSERT_EQ(file.level(), 1U);
    {
        IndexPageEditor root(file.format(), file.pager().change(file.tree().root()),
                             file.tree().root(), file.owner());
        Bytes last = numberKey(2999 * 2);
        for (const std::uint32_t part : {256U + 2999U, number(root.page().tail())})
            for (const unsigned shift : {24U, 16U, 8U, 0U})
                last.push_back(static_cast<std::byte>(part >> shift));
        ASSERT_TRUE(root.insert(root.page().used(), last));
        root.setTail(PageNo{});
    }
    file.expectSound();
    IndexTree::Cursor cursor(file.tree());
    EXPECT_FALSE(cursor.seek(numberKey(2999 * 2 + 1)));
    for (std::uint32_t n = 3000; n < 5000; ++n)
        file.insert(numberKey(n * 2 + 1), 256 + n);
    EXPECT_NE(file.page(file.tree().root()).tail(), PageNo{});
    file.expectSound();
}

TEST_P(IndexTreeOf, ErasesTheLastChildOfANodeWithoutATailChild) {
    for (std::uint32_t n = 0; n < 1000; ++n)
        file.insert(numberKey(n), 256 + n);
    ASSERT_EQ(file.level(), 1U);
    {
        IndexPageEditor root(file.format(), file.pager().change(file.tree().root()),
                             file.tree().root(), file.owner());
        Bytes last = numberKey(500); // lower than what the child holds: nothing bounds a last child
        for (const std::uint32_t part : {0U, number(root.page().tail())})
            for (const unsigned shift : {24U, 16U, 8U, 0U})
                last.push_back(static_cast<std::byte>(part >> shift));
        ASSERT_TRUE(root.insert(root.page().used(), last));
        root.setTail(PageNo{});
    }
    while (!file.model().empty())
        file.erase(*file.model().rbegin());
    EXPECT_EQ(file.members().size(), 1U);
    file.expectSound();
}

/// Other writers leave the level of every page at 0.
TEST_P(IndexTreeOf, WorksWithNodesThatDoNotTellTheirLevel) {
    const auto forget = [&] {
        for (const PageNo page : file.members())
            file.pager().change(page)[file.format().indexPage.level.at] = std::byte{0};
    };
    grow(60);
    ASSERT_GE(file.level(), 2U);
    forget();
    file.expectSound();
    for (std::uint32_t n = 0; n < 200; ++n)
        file.insert(numberKey(n * 500), 90'000 + n);
    grow(250);
    file.expectSound();
    EXPECT_GE(file.level(), 3U);
    forget();
    while (!file.model().empty()) {
        file.erase(*file.model().rbegin());
        if (file.model().size() % 64 == 0)
            file.expectSound();
    }
    EXPECT_EQ(file.members().size(), 1U);
}

TEST_P(IndexTreeOf, PassesOverEmptyLeaves) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(numberKey(n), 256 + n);
    const PageNo leaf = file.page(file.tree().root()).child(file.page(file.tree().root()).after(0));
    {
        IndexPageEditor editor(file.format(), file.pager().change(leaf), leaf, file.owner());
        while (!editor.page().empty()) {
            EntryBuffer buffer;
            const IndexPoint point = editor.page().entry(0, buffer).point;
            file.model().erase(
                {Bytes(point.key.begin(), point.key.end()), static_cast<std::int64_t>(point.row)});
            editor.erase(0);
        }
    }
    file.expectSound();
    IndexTree::Cursor cursor(file.tree());
    for (std::uint32_t n = 0; n < 3000; n += 10) {
        const auto expected = file.model().lower_bound({numberKey(n), 0});
        ASSERT_TRUE(cursor.seek(numberKey(n)));
        ASSERT_EQ(IndexFile::entryOf(cursor), *expected);
    }
}

INSTANTIATE_TEST_SUITE_P(, IndexTreeOf, bothVersions(), versionName);

} // namespace
