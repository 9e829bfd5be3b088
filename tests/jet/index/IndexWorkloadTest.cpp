#include "jet/IndexFile.h"
#include "jet/index/IndexTree.h"

#include <gtest/gtest.h>

#include <functional>

using namespace jet;

namespace {

using Entry = IndexFile::Entry;

/// A key of letters, from a few beginnings, so that neighbours share much.
Bytes textKey(Random& random, std::size_t longest) {
    Bytes key{std::byte{0x7F}};
    const std::size_t shared = below(random, static_cast<std::uint32_t>(longest / 2));
    key.insert(key.end(), shared, static_cast<std::byte>('a' + below(random, 3)));
    while (key.size() < longest && below(random, 12) != 0)
        key.push_back(static_cast<std::byte>('a' + below(random, 20)));
    key.push_back(std::byte{0});
    return key;
}

/// One way of making the next entry, the n-th.
struct Workload {
    const char* name;
    std::uint32_t entries;
    std::function<Entry(Random&, std::uint32_t n, const Format&)> next;
};

const std::vector<Workload>& workloads() {
    static const std::vector<Workload> all{
        {"Ascending",         6000,
         [](Random&,        std::uint32_t n, const Format&) {
             return Entry{numberKey(n * 3), 256 + n};
         }},
        {"Descending",        4000,
         [](Random&,        std::uint32_t n, const Format&) {
             return Entry{numberKey(1'000'000 - n), 256 + n};
         }},
        {"Random",            6000,
         [](Random& random, std::uint32_t,   const Format&) {
             return Entry{numberKey(static_cast<std::uint32_t>(random())),
                          below(random, 0x7FFFFFFF)};
         }  },
        {"FewKeys",           6000,
         [](Random& random, std::uint32_t,   const Format&) {
             return Entry{numberKey(below(random, 7)), below(random, 0x00FFFFFF)};
         }  },
        {"OneKeyRowsInOrder", 6000,
         [](Random&,        std::uint32_t n, const Format&) {
             return Entry{Bytes{std::byte{0}}, 0x1000 + n};
         }},
        {"Texts",             4000,
         [](Random& random, std::uint32_t,   const Format&) {
             return Entry{textKey(random, 80), below(random, 0x7FFFFFFF)};
         }  },
        {"LongKeys",          700,
         [](Random& random, std::uint32_t,   const Format& format) {
             Bytes key = textKey(random, 20);
             key.resize(longestKey(format) - below(random, 40), std::byte{0x55});
             return Entry{key, below(random, 0x7FFFFFFF)};
         }  },
        {"KeysOfAllLengths",  1500,
         [](Random& random, std::uint32_t,   const Format& format) {
             Bytes key = textKey(random, 12);
             const auto most = static_cast<std::uint32_t>(longestKey(format));
             key.resize(1 + below(random, below(random, 4) == 0 ? most : 30), std::byte{0x61});
             return Entry{key, below(random, 0x00FFFFFF)};
         }  },
        {"LongKeysInOrder",   500,
         [](Random&,        std::uint32_t n, const Format& format) {
             Bytes key = numberKey(n);
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
        Entry probe =
            n % 2 == 0 ? entries[n % entries.size()] : work.next(random, n, file.format());
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

} // namespace
