#include "jet/IndexTree.h"

#include "jet/IndexFile.h"
#include "jet/IndexPageEditor.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

using namespace jet;

namespace {

using Random = std::mt19937;
using Entry = IndexFile::Entry;

std::uint32_t below(Random& random, std::uint32_t end) {
    return static_cast<std::uint32_t>(random() % end);
}

/// The key of a whole number.
Bytes number4(std::uint32_t value) {
    Bytes key{std::byte{0x7F}};
    for (const unsigned shift : {24U, 16U, 8U, 0U})
        key.push_back(static_cast<std::byte>(value >> shift));
    return key;
}

/// A key of letters, from a few beginnings, so that neighbours share much.
Bytes text(Random& random, std::size_t longest) {
    Bytes key{std::byte{0x7F}};
    const std::size_t shared = below(random, static_cast<std::uint32_t>(longest / 2));
    key.insert(key.end(), shared, static_cast<std::byte>('a' + below(random, 3)));
    while (key.size() < longest && below(random, 12) != 0)
        key.push_back(static_cast<std::byte>('a' + below(random, 20)));
    key.push_back(std::byte{0});
    return key;
}

std::size_t longestKey(const Format& format) { return format.indexCapacity() / 2 - 8; }

/// One way of making the next entry, the n-th.
struct Workload {
    const char* name;
    std::uint32_t entries;
    std::function<Entry(Random&, std::uint32_t n, const Format&)> next;
};

const std::vector<Workload>& workloads() {
    static const std::vector<Workload> all{
        {"Ascending", 6000,
         [](Random&, std::uint32_t n, const Format&) { return Entry{number4(n * 3), 256 + n}; }},
        {"Descending", 4000,
         [](Random&, std::uint32_t n, const Format&) {
             return Entry{number4(1'000'000 - n), 256 + n};
         }},
        {"Random", 6000,
         [](Random& random, std::uint32_t, const Format&) {
             return Entry{number4(static_cast<std::uint32_t>(random())), below(random, 0x7FFFFFFF)};
         }},
        {"FewKeys", 6000,
         [](Random& random, std::uint32_t, const Format&) {
             return Entry{number4(below(random, 7)), below(random, 0x00FFFFFF)};
         }},
        {"OneKeyRowsInOrder", 6000,
         [](Random&, std::uint32_t n, const Format&) {
             return Entry{Bytes{std::byte{0}}, 0x1000 + n};
         }},
        {"Texts", 4000,
         [](Random& random, std::uint32_t, const Format&) {
             return Entry{text(random, 80), below(random, 0x7FFFFFFF)};
         }},
        {"LongKeys", 700,
         [](Random& random, std::uint32_t, const Format& format) {
             Bytes key = text(random, 20);
             key.resize(longestKey(format) - below(random, 40), std::byte{0x55});
             return Entry{key, below(random, 0x7FFFFFFF)};
         }},
        {"KeysOfAllLengths", 1500,
         [](Random& random, std::uint32_t, const Format& format) {
             Bytes key = text(random, 12);
             const auto most = static_cast<std::uint32_t>(longestKey(format));
             key.resize(1 + below(random, below(random, 4) == 0 ? most : 30), std::byte{0x61});
             return Entry{key, below(random, 0x00FFFFFF)};
         }},
        {"LongKeysInOrder", 500,
         [](Random&, std::uint32_t n, const Format& format) {
             Bytes key = number4(n);
             key.resize(longestKey(format), std::byte{0x11});
             return Entry{key, 256 + n};
         }},
    };
    return all;
}

using Case = std::tuple<Version, std::size_t>;

class IndexWorkload : public testing::TestWithParam<Case> {
protected:
    IndexWorkload() : file(std::get<0>(GetParam())), work(workloads()[std::get<1>(GetParam())]) {}

    void insertAll() {
        for (std::uint32_t n = 0; n < work.entries; ++n) {
            const Entry entry = work.next(random, n, file.format());
            file.insert(entry.first, entry.second);
        }
    }
    std::vector<Entry> shuffled() {
        std::vector<Entry> entries(file.model().begin(), file.model().end());
        std::shuffle(entries.begin(), entries.end(), random);
        return entries;
    }

    Random random{20240611};
    IndexFile file;
    const Workload& work;
};

std::string caseName(const testing::TestParamInfo<Case>& info) {
    return std::string(workloads()[std::get<1>(info.param)].name) +
           (std::get<0>(info.param) == Version::jet3 ? "Jet3" : "Jet4");
}

TEST_P(IndexWorkload, HoldsWhatWasInserted) {
    insertAll();
    file.expectSound();
    for (const Entry& entry : shuffled()) {
        ASSERT_TRUE(file.tree().contains(entry.first, unpacked(entry.second)));
        ASSERT_TRUE(file.tree().hasKey(entry.first));
    }
}

TEST_P(IndexWorkload, ErasedDownToNothingGivesItsPagesBack) {
    insertAll();
    const std::uint32_t pagesAtMost = file.pager().pageCount();
    std::vector<Entry> entries = shuffled();
    for (std::size_t n = 0; n < entries.size(); ++n) {
        file.erase(entries[n]);
        if (n == entries.size() / 2 || n == entries.size() * 15 / 16)
            file.expectSound();
    }
    file.expectSound();
    EXPECT_EQ(file.members(), std::vector{file.tree().root()});
    EXPECT_EQ(file.level(), 0U);

    for (const Entry& entry : entries)
        file.insert(entry.first, entry.second);
    file.expectSound();
    // The order of insertion has changed with the shuffle, and with it how full pages get.
    EXPECT_LE(file.pager().pageCount(), pagesAtMost * 5 / 2);
}

TEST_P(IndexWorkload, ErasedInOrderFromEitherEnd) {
    insertAll();
    for (std::size_t n = 0; !file.model().empty(); ++n) {
        file.erase(n % 3 == 0 ? *file.model().begin() : *file.model().rbegin());
        if (n % 2000 == 1000)
            file.expectSound();
    }
    file.expectSound();
    EXPECT_EQ(file.members().size(), 1U);
}

TEST_P(IndexWorkload, StaysSoundUnderMixedChanges) {
    std::vector<Entry> present;
    for (std::uint32_t n = 0; n < work.entries; ++n) {
        // Phases that grow and phases that shrink.
        const bool shrinking = n / (work.entries / 6) % 2 == 1;
        if (!present.empty() && below(random, 10) < (shrinking ? 8U : 3U)) {
            const std::size_t chosen = below(random, static_cast<std::uint32_t>(present.size()));
            file.erase(present[chosen]);
            present[chosen] = present.back();
            present.pop_back();
        } else {
            const Entry entry = work.next(random, n, file.format());
            if (file.insert(entry.first, entry.second))
                present.push_back(entry);
        }
        if (n % (work.entries / 4) == 0)
            file.expectSound();
    }
    file.expectSound();
}

TEST_P(IndexWorkload, SeekFindsBothNeighboursOfAnyPoint) {
    insertAll();
    IndexTree::Cursor cursor(file.tree());
    const std::vector<Entry> entries = shuffled();
    for (std::uint32_t n = 0; n < 1000; ++n) {
        Entry probe = n % 2 == 0 ? entries[n % entries.size()] : work.next(random, n, file.format());
        if (n % 4 == 0)
            probe.second += below(random, 3) - 1;
        if (n % 8 == 0)
            probe.first.resize(probe.first.size() - 1);
        probe.second = std::max<std::int64_t>(probe.second, 0);

        auto expected = file.model().lower_bound(probe);
        const bool found = cursor.seek(probe.first, unpacked(probe.second));
        ASSERT_EQ(found, expected != file.model().end());
        if (found) {
            ASSERT_EQ(IndexFile::entryOf(cursor), *expected);
        }
        const bool before = cursor.seekBefore(probe.first, unpacked(probe.second));
        ASSERT_EQ(before, expected != file.model().begin());
        if (before) {
            ASSERT_EQ(IndexFile::entryOf(cursor), *std::prev(expected));
        }
    }
}

TEST_P(IndexWorkload, CursorGoesOnWhileTheTreeChangesUnderIt) {
    insertAll();
    IndexTree::Cursor cursor(file.tree());
    ASSERT_TRUE(cursor.first());
    Entry at = *file.model().begin();
    for (std::uint32_t n = 0; n < work.entries; ++n) {
        const std::uint32_t what = below(random, 8);
        if (what == 0) {
            const Entry entry = work.next(random, work.entries + n, file.format());
            file.insert(entry.first, entry.second);
        } else if (what <= 2 && !file.model().empty()) {
            // The very entry it stands on, or a neighbour.
            auto victim = file.model().lower_bound(at);
            if (what == 2 && victim != file.model().begin())
                --victim;
            if (victim == file.model().end())
                continue;
            file.erase(*victim);
        } else if (n / 700 % 2 == 0) {
            const auto expected = file.model().upper_bound(at);
            ASSERT_EQ(cursor.next(), expected != file.model().end());
            if (!cursor.valid() && !cursor.previous())
                break;
            at = IndexFile::entryOf(cursor);
            if (expected != file.model().end()) {
                ASSERT_EQ(at, *expected);
            }
        } else {
            const auto expected = file.model().lower_bound(at);
            ASSERT_EQ(cursor.previous(), expected != file.model().begin());
            if (!cursor.valid() && !cursor.next())
                break;
            at = IndexFile::entryOf(cursor);
            if (expected != file.model().begin()) {
                ASSERT_EQ(at, *std::prev(expected));
            }
        }
    }
    file.expectSound();
}

INSTANTIATE_TEST_SUITE_P(All, IndexWorkload,
                         testing::Combine(testing::Values(Version::jet3, Version::jet4),
                                          testing::Range(std::size_t{0}, workloads().size())),
                         caseName);

class IndexTreeOf : public testing::TestWithParam<Version> {
protected:
    IndexFile file{GetParam()};

    template <class Action>
    static Errc failure(Action&& action) {
        try {
            action();
        } catch (const Error& error) {
            return error.code();
        }
        ADD_FAILURE() << "nothing was thrown";
        return Errc::misuse;
    }
    std::vector<std::string> problems() {
        std::vector<std::string> found;
        file.tree().verify({[&](PageNo, const std::string& reason) { found.push_back(reason); },
                            [](std::span<const std::byte>, RowId) {}});
        return found;
    }
    /// Long keys, so that few entries make a tall tree.
    void grow(std::uint32_t entries) {
        for (std::uint32_t n = 0; n < entries; ++n) {
            Bytes key = number4(n * 7919 % 100'003);
            key.resize(longestKey(file.format()) - 100, std::byte{0x22});
            file.insert(key, 256 + n);
        }
    }
};

TEST_P(IndexTreeOf, NothingIsEmpty) {
    IndexTree::Cursor cursor(file.tree());
    EXPECT_FALSE(cursor.first());
    EXPECT_FALSE(cursor.last());
    EXPECT_FALSE(cursor.seek(number4(1)));
    EXPECT_FALSE(cursor.next());
    EXPECT_FALSE(cursor.previous());
    EXPECT_FALSE(cursor.valid());
    EXPECT_FALSE(file.tree().hasKey(number4(1)));
    EXPECT_FALSE(file.tree().contains(number4(1), {}));
    EXPECT_TRUE(problems().empty());
}

TEST_P(IndexTreeOf, CursorStaysPastTheEndsAndComesBackFromThem) {
    file.insert(number4(1), 300);
    file.insert(number4(2), 301);
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
    file.insert(number4(5), 700);
    EXPECT_TRUE(file.tree().hasKey(number4(5)));
    EXPECT_TRUE(file.tree().hasKey(number4(5), unpacked(701)));
    EXPECT_FALSE(file.tree().hasKey(number4(5), unpacked(700)));
    EXPECT_FALSE(file.tree().hasKey(number4(4)));
    EXPECT_FALSE(file.tree().hasKey(Bytes{std::byte{0x7F}}));
    file.insert(number4(5), 701);
    EXPECT_TRUE(file.tree().hasKey(number4(5), unpacked(700)));
    EXPECT_TRUE(file.tree().hasKey(number4(5), unpacked(701)));
}

TEST_P(IndexTreeOf, ProperPrefixComesFirstWhateverTheRow) {
    file.insert(Bytes{std::byte{0x7F}}, 0x7FFFFFFF);
    file.insert(Bytes{std::byte{0x7F}, std::byte{0}}, 1);
    file.insert(Bytes{}, 0x7FFFFFFF);
    file.expectSound();
}

TEST_P(IndexTreeOf, RefusesWhatDoesNotAgreeWithTheRows) {
    file.insert(number4(5), 700);
    EXPECT_EQ(failure([&] { file.tree().insert(file.pages(), number4(5), unpacked(700)); }),
              Errc::corrupt);
    EXPECT_EQ(failure([&] { file.tree().erase(file.pages(), number4(5), unpacked(701)); }),
              Errc::corrupt);
    EXPECT_EQ(failure([&] { file.tree().erase(file.pages(), number4(6), unpacked(700)); }),
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
        file.insert(number4(n), 256 + n);
    // Nine bytes each without a shared prefix; with one, fewer.
    const std::size_t full = kEntries * 9 / file.format().indexCapacity();
    EXPECT_LE(file.members().size(), full + 3);
    file.expectSound();
}

TEST_P(IndexTreeOf, FollowsAStatementThatIsUndone) {
    for (std::uint32_t n = 0; n < 3000; n += 2)
        file.insert(number4(n), 256 + n);
    IndexTree::Cursor cursor(file.tree());
    ASSERT_TRUE(cursor.seek(number4(1000)));
    {
        const Pager::Statement undone(file.pager());
        for (std::uint32_t n = 1; n < 3000; n += 2)
            file.tree().insert(file.pages(), number4(n), unpacked(256 + n));
        ASSERT_TRUE(cursor.next());
        EXPECT_EQ(IndexFile::entryOf(cursor).first, number4(1001));
    }
    ASSERT_TRUE(cursor.next());
    EXPECT_EQ(IndexFile::entryOf(cursor).first, number4(1002));
    file.expectSound();
}

/// Other writers let the shared prefix go on into the row.
TEST_P(IndexTreeOf, WorksOnAPageWhosePrefixReachesIntoTheRow) {
    const std::span<std::byte> page = file.pager().change(file.tree().root());
    std::byte* data = page.data() + file.format().indexDataAt;
    std::byte* mask = page.data() + file.format().indexMaskAt;
    const Bytes key = number4(77);
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
    page[file.format().indexPrefixAt] = std::byte{7};
    file.expectSound();

    const std::vector<Entry> entries(file.model().begin(), file.model().end());
    Random random{7};
    for (std::size_t n = 0; n < entries.size(); n += 3)
        file.erase(entries[n]);
    file.expectSound();
    for (std::uint32_t n = 0; n < 3000; ++n) {
        file.insert(number4(76 + below(random, 3)), below(random, 0x020000));
        if (n % 500 == 0)
            file.expectSound();
    }
    file.expectSound();
    while (!file.model().empty())
        file.erase(*file.model().begin());
    file.expectSound();
}

TEST_P(IndexTreeOf, SplitsAPageWhosePrefixReachesIntoTheRow) {
    IndexPageEditor root(file.format(), file.pager().change(file.tree().root()),
                         file.tree().root(), file.owner());
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
        other[n * 10] = static_cast<std::byte>(n % 2 == 0 ? 0x30 : 0x32);
        file.insert(other, 900 + n);
        file.insert(key, 0x010000 + n);
        file.insert(key, 0x080000 + n);
    }
    file.expectSound();
}

/// Other writers leave a node without a tail child: its last entry then stands for everything beyond.
TEST_P(IndexTreeOf, GivesANodeItsTailChildBeforeItGrows) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(number4(n * 2), 256 + n);
    ASSERT_EQ(file.level(), 1U);
    {
        IndexPageEditor root(file.format(), file.pager().change(file.tree().root()),
                             file.tree().root(), file.owner());
        Bytes last = number4(2999 * 2);
        for (const std::uint32_t part : {256U + 2999U, number(root.page().tail())})
            for (const unsigned shift : {24U, 16U, 8U, 0U})
                last.push_back(static_cast<std::byte>(part >> shift));
        ASSERT_TRUE(root.insert(root.page().used(), last));
        root.setTail(PageNo{});
    }
    file.expectSound();
    IndexTree::Cursor cursor(file.tree());
    EXPECT_FALSE(cursor.seek(number4(2999 * 2 + 1)));
    for (std::uint32_t n = 3000; n < 5000; ++n)
        file.insert(number4(n * 2 + 1), 256 + n);
    EXPECT_NE(file.page(file.tree().root()).tail(), PageNo{});
    file.expectSound();
}

TEST_P(IndexTreeOf, ErasesTheLastChildOfANodeWithoutATailChild) {
    for (std::uint32_t n = 0; n < 1000; ++n)
        file.insert(number4(n), 256 + n);
    ASSERT_EQ(file.level(), 1U);
    {
        IndexPageEditor root(file.format(), file.pager().change(file.tree().root()),
                             file.tree().root(), file.owner());
        Bytes last = number4(500);   // lower than what the child holds: nothing bounds a last child
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

TEST_P(IndexTreeOf, PassesOverEmptyLeaves) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(number4(n), 256 + n);
    const PageNo leaf = file.page(file.tree().root()).child(
        file.page(file.tree().root()).after(0));
    {
        IndexPageEditor editor(file.format(), file.pager().change(leaf), leaf, file.owner());
        while (!editor.page().empty()) {
            EntryBuffer buffer;
            const IndexPoint point = editor.page().entry(0, buffer).point;
            file.model().erase({Bytes(point.key.begin(), point.key.end()),
                                static_cast<std::int64_t>(point.row)});
            editor.erase(0);
        }
    }
    file.expectSound();
    IndexTree::Cursor cursor(file.tree());
    for (std::uint32_t n = 0; n < 3000; n += 10) {
        const auto expected = file.model().lower_bound({number4(n), 0});
        ASSERT_TRUE(cursor.seek(number4(n)));
        ASSERT_EQ(IndexFile::entryOf(cursor), *expected);
    }
}

TEST_P(IndexTreeOf, LeavesLinkedInACircleAreAnErrorAndNoEndlessWalk) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(number4(n), 256 + n);
    const IndexPage root = file.page(file.tree().root());
    const PageNo first = root.child(0);
    const PageNo second = root.child(root.after(0));
    const auto edit = [&](PageNo page) {
        return IndexPageEditor(file.format(), file.pager().change(page), page, file.owner());
    };
    edit(second).setNext(first);
    IndexTree::Cursor cursor(file.tree());
    EXPECT_EQ(failure([&] {
                  while (cursor.next()) {
                  }
              }),
              Errc::corrupt);
    EXPECT_FALSE(problems().empty());

    for (const PageNo page : {first, second}) {
        IndexPageEditor leaf = edit(page);
        while (!leaf.page().empty())
            leaf.erase(0);
    }
    EXPECT_EQ(failure([&] { static_cast<void>(IndexTree::Cursor(file.tree()).first()); }),
              Errc::corrupt);
    edit(first).setPrevious(second);
    edit(second).setPrevious(first);
    EXPECT_EQ(failure([&] { static_cast<void>(cursor.seekBefore(number4(1))); }), Errc::corrupt);
}

TEST_P(IndexTreeOf, CheckNamesWhatIsWrong) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(number4(n), 256 + n);
    ASSERT_TRUE(problems().empty());
    const PageNo leaf = file.page(file.tree().root()).child(0);
    const auto expectAfter = [&](const std::function<void(std::span<std::byte>)>& damage,
                                 const std::string& reason) {
        const Pager::Statement undone(file.pager());
        damage(file.pager().change(leaf));
        const std::vector<std::string> found = problems();
        EXPECT_TRUE(std::find(found.begin(), found.end(), reason) != found.end()) << reason;
    };
    const Format& format = file.format();
    const std::size_t second = file.page(leaf).after(0);
    expectAfter([](auto page) { page[0] = std::byte{1}; }, "era esperada uma página de índice");
    expectAfter([](auto page) { page[4] ^= std::byte{1}; }, "a página de índice é de outra tabela");
    expectAfter([](auto page) { page[2] ^= std::byte{1}; },
                "os bytes livres da página de índice estão errados");
    expectAfter([&](auto page) { page[format.indexLevelAt] = std::byte{1}; },
                "o nível da página de índice não combina com o seu tipo");
    expectAfter([&](auto page) { page[format.indexMaskAt] |= std::byte{1}; },
                "a máscara de entradas do índice é inválida");
    expectAfter([&](auto page) { page[format.indexPrefixAt] = std::byte{20}; },
                "o prefixo do índice é maior que a primeira entrada");
    expectAfter([&](auto page) { page[format.indexNextAt] ^= std::byte{1}; },
                "a ligação com a próxima página do índice está errada");
    expectAfter([&](auto page) { page[format.indexPreviousAt] ^= std::byte{1}; },
                "a ligação com a página anterior do índice está errada");
    expectAfter([&](auto page) { page[format.indexDataAt + second] = std::byte{0xFF}; },
                "as entradas do índice estão fora de ordem");
    {
        const Pager::Statement undone(file.pager());
        UsageMap map = file.tree().map();
        file.pages().remove(map, leaf);
        EXPECT_EQ(problems(), std::vector<std::string>{"a página falta no mapa do índice"});
    }
    {
        const Pager::Statement undone(file.pager());
        UsageMap map = file.tree().map();
        static_cast<void>(file.pages().take(map));
        EXPECT_EQ(problems(),
                  std::vector<std::string>{"o mapa do índice contém uma página que não é dele"});
    }
    EXPECT_TRUE(problems().empty());
}

TEST_P(IndexTreeOf, CheckNamesAnEntryTooShortForItsFields) {
    file.insert(number4(1), 256);
    file.pager().change(file.tree().root())[file.format().indexMaskAt] |= std::byte{4};
    EXPECT_EQ(problems(), std::vector<std::string>{"uma entrada do índice é curta demais"});
    EXPECT_EQ(failure([&] { static_cast<void>(IndexTree::Cursor(file.tree()).first()); }),
              Errc::corrupt);
}

/// A small tree of a few pages, then damage of one kind or another, then everything that can be asked
/// of it. What comes may be an error or a wrong answer that the damage explains; never a crash or an
/// endless loop.
class DamagedIndex : public IndexTreeOf {
protected:
    void build() {
        for (std::uint32_t n = 0; n < 260; ++n) {
            Bytes key = number4(n * 11 % 263);
            key.resize(5 + n % 40, std::byte{0x33});
            file.insert(key, 256 + n);
        }
        ASSERT_GE(file.members().size(), 3U);
    }

    template <class Action>
    void endure(Action&& action) {
        const Pager::Statement undone(file.pager());
        try {
            action();
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::corrupt) << error.what();
        }
    }

    void tryEverything(Random& random) {
        std::size_t told = 0;
        file.tree().verify({[&](PageNo, const std::string&) { ++told; },
                            [&](std::span<const std::byte>, RowId) {}});
        EXPECT_LT(told, 10'000U);
        const std::size_t most = file.members().size() * file.format().indexCapacity();
        endure([&] {
            IndexTree::Cursor cursor(file.tree());
            std::size_t steps = 0;
            while (cursor.next())
                ASSERT_LT(++steps, most);
        });
        endure([&] {
            IndexTree::Cursor cursor(file.tree());
            std::size_t steps = 0;
            for (bool more = cursor.last(); more; more = cursor.previous())
                ASSERT_LT(++steps, most);
        });
        Bytes key = number4(below(random, 263));
        key.resize(5 + below(random, 60), std::byte{0x33});
        endure([&] { static_cast<void>(file.tree().hasKey(key, unpacked(300))); });
        endure([&] {
            IndexTree::Cursor cursor(file.tree());
            static_cast<void>(cursor.seekBefore(key));
        });
        endure([&] {
            for (std::uint32_t n = 0; n < 4; ++n) {
                key.resize(key.size() + 60 * n, std::byte{0x34});
                file.tree().insert(file.pages(), key, unpacked(9000 + n));
            }
        });
        auto victim = file.model().begin();
        std::advance(victim, below(random, static_cast<std::uint32_t>(file.model().size()) - 20));
        endure([&] {
            for (int n = 0; n < 20; ++n, ++victim)
                file.tree().erase(file.pages(), victim->first, unpacked(victim->second));
        });
    }
};

TEST_P(DamagedIndex, AnyChangedByteIsAnErrorAtWorst) {
    build();
    Random random{99};
    for (const PageNo page : file.members()) {
        // Behind the used bytes nothing is read: the last page's garbage is tried once, coarsely.
        const std::size_t end = file.format().indexDataAt + file.page(page).used();
        for (std::size_t at = 0; at < file.format().pageSize; at += at < end ? 1 : 97) {
            const auto damage = static_cast<std::byte>(
                below(random, 2) == 0 ? 1U << below(random, 8) : 1 + below(random, 255));
            file.pager().change(page)[at] ^= damage;
            tryEverything(random);
            if (HasFatalFailure())
                return;
            file.pager().change(page)[at] ^= damage;
        }
    }
    file.expectSound();
}

TEST_P(DamagedIndex, ManyChangedBytesAreAnErrorAtWorst) {
    build();
    Random random{98};
    const std::vector<PageNo> members = file.members();
    for (int round = 0; round < 1500; ++round) {
        std::vector<std::pair<PageNo, Bytes>> before;
        for (const PageNo page : members) {
            const PageRef ref = file.pager().read(page);
            before.emplace_back(page, Bytes(ref.bytes().begin(), ref.bytes().end()));
            const std::span<std::byte> bytes = file.pager().change(page);
            for (std::uint32_t n = below(random, 6); n > 0; --n) {
                // Links and levels to other members, masks and data to anything.
                if (below(random, 3) == 0) {
                    const std::size_t field[] = {file.format().indexNextAt,
                                                 file.format().indexPreviousAt,
                                                 file.format().indexTailAt};
                    const auto chosen = below(random, static_cast<std::uint32_t>(members.size()));
                    store<std::uint32_t>(bytes.data() + field[below(random, 3)],
                                         number(members[chosen]));
                } else {
                    const auto at = below(random, static_cast<std::uint32_t>(bytes.size()) - 24);
                    bytes[24 + at] = static_cast<std::byte>(random());
                }
            }
        }
        tryEverything(random);
        if (HasFatalFailure())
            return;
        for (const auto& [page, bytes] : before)
            std::copy(bytes.begin(), bytes.end(), file.pager().change(page).begin());
    }
    file.expectSound();
}

std::string versionName(const testing::TestParamInfo<Version>& info) {
    return info.param == Version::jet3 ? "Jet3" : "Jet4";
}

INSTANTIATE_TEST_SUITE_P(Both, IndexTreeOf, testing::Values(Version::jet3, Version::jet4),
                         versionName);
INSTANTIATE_TEST_SUITE_P(Both, DamagedIndex, testing::Values(Version::jet3, Version::jet4),
                         versionName);

} // namespace
