#include "jet/page/Pager.h"

#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <array>

using namespace jet;

namespace {

/// A file of so many pages that takes no room on the disk, and nobody else at it.
class PagesOf : public testing::TestWithParam<Version> {
protected:
    [[nodiscard]] Pager open(std::uint64_t pages) {
        File file(folder / "paginas.mdb", File::Mode::createNew);
        file.truncate(pages * format.pageSize);
        return {std::move(file), format, true};
    }
    static void mark(Pager& pager, std::uint32_t page, std::uint8_t value) {
        pager.change(static_cast<PageNo>(page))[0] = std::byte{value};
    }
    static int markOf(Pager& pager, std::uint32_t page) {
        return std::to_integer<int>(pager.read(static_cast<PageNo>(page)).bytes()[0]);
    }

    TemporaryFolder folder;
    const Format& format = formatOf(GetParam());
};

INSTANTIATE_TEST_SUITE_P(, PagesOf, bothVersions(), versionName);

TEST_P(PagesOf, MoreThanAreKeptInMemoryAreReadAgain) {
    const std::uint32_t pages =
        (std::uint32_t{26} << 20) / static_cast<std::uint32_t>(format.pageSize);
    Pager pager = open(pages);
    pager.begin();
    for (const std::uint32_t page : {std::uint32_t{3}, pages - 1})
        mark(pager, page, 7);
    pager.commit();
    for (int round = 0; round < 2; ++round)
        for (std::uint32_t page = 0; page < pages; ++page)
            ASSERT_EQ(markOf(pager, page), page == 3 || page == pages - 1 ? 7 : 0) << page;
}

TEST_P(PagesOf, AFileOfTheLongestThatTheFormatHasTakesNoMore) {
    const std::uint64_t most = format.largestFile / format.pageSize;
    Pager pager = open(most - 1);
    pager.begin();
    EXPECT_EQ(number(pager.append()), most - 1);
    const std::string gigabytes = GetParam() == Version::jet3 ? "1 GB" : "2 GB";
    EXPECT_THAT(sentenceOf([&] { (void)pager.append(); }, Errc::full),
                testing::HasSubstr(gigabytes));
    EXPECT_EQ(pager.pageCount(), most);
    pager.rollback();
    EXPECT_EQ(pager.pageCount(), most - 1);
    pager.rollback(); // nothing is open
}

TEST_P(PagesOf, AStatementThatIsNotKeptIsUndoneAndWhatWasBeforeItStays) {
    Pager pager = open(5);
    pager.begin();
    mark(pager, 1, 1);
    {
        const Pager::Statement statement(pager);
        mark(pager, 1, 2);
        mark(pager, 2, 2);
        mark(pager, number(pager.append()), 2);
        EXPECT_EQ(pager.pageCount(), 6U);
    }
    EXPECT_EQ(pager.pageCount(), 5U);
    EXPECT_EQ(markOf(pager, 1), 1);
    EXPECT_EQ(markOf(pager, 2), 0);
    {
        Pager::Statement outer(pager);
        mark(pager, 3, 3);
        {
            Pager::Statement inner(pager);
            mark(pager, 3, 4);
            mark(pager, 4, 4);
            inner.keep();
        }
        EXPECT_EQ(markOf(pager, 3), 4);
        EXPECT_EQ(markOf(pager, 4), 4);
        // What was kept inside goes with what is around it.
    }
    EXPECT_EQ(markOf(pager, 3), 0);
    EXPECT_EQ(markOf(pager, 4), 0);
    EXPECT_EQ(markOf(pager, 1), 1);
    pager.commit();
    EXPECT_EQ(markOf(pager, 1), 1);
}

TEST_P(PagesOf, AStatementIsUndoneWhateverBecameOfThoseInsideIt) {
    Pager pager = open(5);
    const auto marks = [&pager] {
        return std::array{markOf(pager, 1), markOf(pager, 2), markOf(pager, 3)};
    };
    pager.begin();
    mark(pager, 1, 1);
    {
        const Pager::Statement outer(pager);
        {
            const Pager::Statement undone(pager);
            mark(pager, 1, 2);
            mark(pager, 2, 2);
        }
        EXPECT_THAT(marks(), testing::ElementsAre(1, 0, 0));
        mark(pager, 1, 3);
        mark(pager, 2, 3);
        for (std::uint8_t value = 4; value < 6; ++value) {
            Pager::Statement kept(pager);
            mark(pager, 1, 6);
            {
                Pager::Statement inner(pager);
                mark(pager, 1, value);
                mark(pager, 3, 6);
                inner.keep();
            }
            mark(pager, 3, value);
            kept.keep();
        }
        EXPECT_THAT(marks(), testing::ElementsAre(5, 3, 5));
    }
    EXPECT_THAT(marks(), testing::ElementsAre(1, 0, 0));
    pager.commit();
    EXPECT_THAT(marks(), testing::ElementsAre(1, 0, 0));
}

TEST_P(PagesOf, WhoLooksAtAPageGoesOnSeeingItAsItWas) {
    Pager pager = open(3);
    pager.begin();
    const PageRef before = pager.read(PageNo{2});
    mark(pager, 2, 1);
    const PageRef changed = pager.read(PageNo{2});
    mark(pager, 2, 2);
    EXPECT_EQ(before.bytes()[0], std::byte{0});
    EXPECT_EQ(changed.bytes()[0], std::byte{1});
    EXPECT_EQ(markOf(pager, 2), 2);
    pager.rollback();
    EXPECT_EQ(markOf(pager, 2), 0);
}

TEST_P(PagesOf, WhatLiesBehindTheEndIsDamage) {
    Pager pager = open(3);
    EXPECT_EQ(errorOf([&] { (void)pager.read(PageNo{3}); }), Errc::corrupt);
    pager.begin();
    EXPECT_EQ(errorOf([&] { (void)pager.change(PageNo{3}); }), Errc::corrupt);
    mark(pager, 2, 1); // and nothing of it is left
    pager.commit();
    EXPECT_EQ(markOf(pager, 2), 1);
}

/// The same on a disk that tells what is read.
class FetchedPages : public PagesOf {
protected:
    FetchedPages() {
        disk.onRead = [this](std::uint64_t) { ++reads; };
    }
    [[nodiscard]] Pager openThere(std::uint64_t pages) {
        File file("paginas.mdb", File::Mode::createNew, disk);
        file.truncate(pages * format.pageSize);
        return {std::move(file), format, true};
    }

    MemoryDisk disk;
    int reads = 0;
};

INSTANTIATE_TEST_SUITE_P(, FetchedPages, bothVersions(), versionName);

TEST_P(FetchedPages, ComeWithTheFirstInOneCall) {
    Pager pager = openThere(8);
    EXPECT_EQ(pager.readAhead(PageNo{5}, 4).page(), PageNo{5}); // the file has but three of them
    EXPECT_EQ(reads, 1);
    for (const std::uint32_t page : {5U, 6U, 7U})
        EXPECT_EQ(markOf(pager, page), 0);
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(markOf(pager, 3), 0);
    (void)pager.readAhead(PageNo{1}, 4); // up to the one that is at hand
    EXPECT_EQ(reads, 3);
    EXPECT_EQ(markOf(pager, 4), 0);
    EXPECT_EQ(reads, 4);
}

TEST_P(FetchedPages, AreThoseOfTheOpenTransaction) {
    Pager pager = openThere(8);
    pager.begin();
    mark(pager, 2, 7);
    (void)pager.readAhead(PageNo{1}, 4);
    EXPECT_EQ(markOf(pager, 2), 7);
    pager.rollback();
    EXPECT_EQ(markOf(pager, 2), 0);
}

TEST_P(FetchedPages, OneThatTheDiskHasLostTakesNoOtherAlong) {
    Pager pager = openThere(8);
    disk.lost.emplace("paginas.mdb", 2 * format.pageSize);
    EXPECT_EQ(pager.readAhead(PageNo{1}, 3).page(), PageNo{1});
    EXPECT_EQ(errorOf([&] { (void)pager.readAhead(PageNo{2}, 2); }), Errc::io);
    EXPECT_EQ(pager.readAhead(PageNo{3}, 2).page(), PageNo{3});
}

// A panel's or report's walk mustn't cost what the windows use all day.
TEST_P(FetchedPages, OfALargeTableLeaveInMemoryWhatWasThere) {
    const std::uint32_t pages =
        (std::uint32_t{28} << 20) / static_cast<std::uint32_t>(format.pageSize);
    Pager pager = openThere(pages);
    const auto useSome = [&] {
        for (std::uint32_t page = 0; page < 100; ++page)
            (void)markOf(pager, page);
    };
    useSome();
    useSome();
    for (int round = 0; round < 2; ++round)
        for (std::uint32_t page = 100; page < pages; ++page)
            (void)pager.readAhead(static_cast<PageNo>(page),
                                  std::min(Pager::kMostAhead, pages - page));
    reads = 0;
    useSome();
    EXPECT_EQ(reads, 0);
}

} // namespace
