#include "jet/page/UsageMap.h"

#include "jet/Sentences.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapLayout.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

#include <set>

using namespace jet;

namespace {

/// A file of which only the map of free pages is filled in, and that takes no room on the disk
/// however long it is. A transaction is always open.
class Maps : public testing::TestWithParam<Version> {
protected:
    static constexpr PageNo kHolder{1}; ///< of the map of free pages

    explicit Maps(std::uint32_t pages = 2)
        : format(formatOf(GetParam())), pager(makeFile(pages), format, true), allocator(pager) {
        pager.begin();
    }
    ~Maps() override { pager.rollback(); }

    [[nodiscard]] std::span<const std::byte> rowOf(RowId map) {
        return DataPage(format, pager.read(map.page).bytes(), map.page).slot(map.slot).bytes;
    }
    [[nodiscard]] MapType typeOf(RowId map) { return load(rowOf(map).data(), MapRowLayout::type); }
    [[nodiscard]] std::uint32_t firstOf(RowId map) {
        return number(load(rowOf(map).data(), MapRowLayout::first));
    }
    /// Leaves no room on the page of a map.
    void crowd(PageNo page) {
        DataPageEditor editor(format, pager.change(page), page);
        while (editor.view().hasRoom(1))
            static_cast<void>(
                editor.add(Bytes(std::min<std::size_t>(editor.view().freeBytes() - 2, 200))));
    }
    [[nodiscard]] std::set<std::uint32_t> membersOf(RowId at) {
        const UsageMap map(pager, at);
        std::set<std::uint32_t> forward;
        for (auto page = map.next(0); page; page = map.next(number(*page) + 1))
            forward.insert(number(*page));
        std::set<std::uint32_t> backward;
        for (auto page = map.previous(pager.pageCount()); page; page = map.previous(number(*page)))
            backward.insert(number(*page));
        EXPECT_EQ(forward, backward);
        return forward;
    }
    void add(RowId map, std::uint32_t page) {
        allocator.add(UsageMap(pager, map), static_cast<PageNo>(page));
    }
    void remove(RowId map, std::uint32_t page) {
        allocator.remove(UsageMap(pager, map), static_cast<PageNo>(page));
    }

    const Format& format;
    TemporaryFolder folder;
    Pager pager;
    PageAllocator allocator;

private:
    File makeFile(std::uint32_t pages) {
        std::vector<std::byte> bytes(2 * format.pageSize);
        const auto holder = std::span(bytes).subspan(format.pageSize);
        DataPageEditor::format(format, holder, 1);
        DataPageEditor maps(format, holder, kHolder);
        static_cast<void>(maps.add(emptyMap(format)));
        const auto free = maps.slotBytes(0).subspan(MapRowLayout::bitmap);
        std::ranges::fill(free, std::byte{0xFF});
        free[0] = std::byte{0xFC}; // the header and this page
        File file(folder / "mapas.mdb", File::Mode::createNew);
        file.write(0, bytes);
        file.truncate(std::uint64_t{pages} * format.pageSize);
        return file;
    }
};

/// One of more pages than one map page has bits for.
class LongMaps : public Maps {
protected:
    LongMaps() : Maps(40'000) {}
    /// Of a map as it is made.
    [[nodiscard]] std::uint32_t bits() const {
        return static_cast<std::uint32_t>(format.mapBitmap * 8);
    }
};

INSTANTIATE_TEST_SUITE_P(, Maps, bothVersions(), versionName);
INSTANTIATE_TEST_SUITE_P(, LongMaps, bothVersions(), versionName);

TEST_P(Maps, ThatOfFreePagesGrowsWhereItStandsAndCountsWhatItDidntReachAsFree) {
    const std::uint32_t taken = static_cast<std::uint32_t>(format.mapBitmap * 8) + 40;
    for (std::uint32_t page = 2; page < taken; ++page)
        ASSERT_EQ(number(allocator.take()), page) << "none is spent on the map";
    EXPECT_EQ(typeOf(kFreePagesMap), MapType::bitmap);
    EXPECT_EQ(rowOf(kFreePagesMap).size(),
              MapRowLayout::bitmap + wholeWords(taken / 8 + (taken % 8 ? 1 : 0)));
    allocator.give(PageNo{7});
    allocator.give(static_cast<PageNo>(taken - 1));
    EXPECT_EQ(number(allocator.take()), 7U);
    EXPECT_EQ(number(allocator.take()), taken - 1);
    EXPECT_EQ(number(allocator.take()), taken) << "what the bitmap grew by is free";
}

TEST_P(Maps, ThatOfFreePagesGoesToPagesOfItsOwnWhereThereIsNoRoomToGrow) {
    crowd(kHolder);
    const auto reach = static_cast<std::uint32_t>(format.mapBitmap * 8);
    std::set<std::uint32_t> used;
    for (std::uint32_t i = 0; i < reach + 100; ++i)
        ASSERT_TRUE(used.insert(number(allocator.take())).second);
    EXPECT_EQ(typeOf(kFreePagesMap), MapType::reference);
    const PageNo part = load(rowOf(kFreePagesMap).data(), MapRowLayout::reference(0));
    EXPECT_EQ(pager.read(part).kind(), PageKind::usageMap);
    EXPECT_FALSE(used.contains(number(part)));
    // All that is in use is known as such: every page but what is given back now.
    allocator.give(PageNo{9});
    EXPECT_EQ(number(allocator.take()), 9U);
    const std::uint32_t end = pager.pageCount();
    EXPECT_EQ(number(allocator.take()), end);
    EXPECT_EQ(pager.pageCount(), 2 + used.size() + 1 + 1) << "theirs, the map's and the last one";
}

TEST_P(LongMaps, HoldWhatWasPutInInEveryForm) {
    const struct {
        const char* name;
        std::vector<std::uint32_t> pages;
        bool crowded;
        MapType type;
    } cases[] = {
        {"as it was made",   {3, 0, bits() - 1},               false, MapType::bitmap   },
        {"slid up",          {9000, 9001, 9000 + bits() / 2},  true,  MapType::bitmap   },
        {"slid down again",  {9000, 9000 - bits() / 2},        true,  MapType::bitmap   },
        {"grown",            {3, bits() + 1, 2 * bits() + 70}, false, MapType::bitmap   },
        {"no room to grow",  {3, bits() + 1},                  true,  MapType::reference},
        {"downwards",        {2 * bits() + 8, bits() + 9, 3},  true,  MapType::reference},
        {"more than a page", {3, 39'990},                      true,  MapType::reference},
    };
    for (const auto& [name, pages, crowded, type] : cases) {
        SCOPED_TRACE(name);
        const RowId map = allocator.createMap();
        if (crowded)
            crowd(map.page);
        std::set<std::uint32_t> model;
        for (const std::uint32_t page : pages) {
            add(map, page);
            model.insert(page);
            EXPECT_EQ(membersOf(map), model);
        }
        EXPECT_EQ(typeOf(map), type);
        for (const std::uint32_t page : pages) {
            EXPECT_TRUE(UsageMap(pager, map).contains(static_cast<PageNo>(page)));
            remove(map, page);
            remove(map, page); // no member any more
            model.erase(page);
            EXPECT_EQ(membersOf(map), model);
        }
    }
}

TEST_P(LongMaps, ThatSlidesKeepsItsLengthAndBeginsWithWholeBytes) {
    const RowId map = allocator.createMap();
    const std::size_t size = rowOf(map).size();
    add(map, 9003);
    EXPECT_EQ(firstOf(map), 9000U);
    add(map, 9000 + bits() - 1);
    EXPECT_EQ(firstOf(map), 9000U);
    EXPECT_EQ(rowOf(map).size(), size);
    // One more doesn't fit into the window: it grows by a word, and begins where it did.
    add(map, 9000 + bits());
    EXPECT_EQ(firstOf(map), 9000U);
    EXPECT_EQ(rowOf(map).size(), size + 4);
}

TEST_P(LongMaps, ThatIsNotWhatItShouldBeIsRefused) {
    const auto damaged = [&](auto&& damage) {
        const RowId map = allocator.createMap();
        crowd(map.page);
        add(map, 3);
        add(map, bits() + 1); // on a page of its own
        damage(map);
        EXPECT_EQ(errorOf([&] { (void)UsageMap(pager, map).next(0); }), Errc::corrupt);
        EXPECT_EQ(errorOf([&] { add(map, 4); }), Errc::corrupt);
        EXPECT_EQ(errorOf([&] { remove(map, 3); }), Errc::corrupt);
    };
    const auto editorOf = [&](PageNo page) {
        return DataPageEditor(format, pager.change(page), page);
    };
    damaged([&](RowId map) { editorOf(map.page).remove(map.slot); });
    damaged([&](RowId map) {
        editorOf(map.page).replace(map.slot, Bytes(MapRowLayout::bitmap - 1), SlotKind::row);
    });
    damaged([&](RowId map) {
        store(editorOf(map.page).slotBytes(map.slot).data(), MapRowLayout::type, MapType{2});
    });
    damaged([&](RowId map) {
        store(editorOf(map.page).slotBytes(map.slot).data(), MapRowLayout::type, MapType::bitmap);
        store(editorOf(map.page).slotBytes(map.slot).data(), MapRowLayout::first,
              static_cast<PageNo>(format.largestFile / format.pageSize + 1));
    });
    damaged([&](RowId map) {
        store(editorOf(map.page).slotBytes(map.slot).data(), MapRowLayout::reference(0), kHolder);
    });
}

TEST_P(LongMaps, OfFewReferencesReachesNoPageBeyondThem) {
    const RowId map = allocator.createMap();
    DataPageEditor editor(format, pager.change(map.page), map.page);
    editor.replace(map.slot, Bytes(MapRowLayout::reference(1).at), SlotKind::row);
    store(editor.slotBytes(map.slot).data(), MapRowLayout::type, MapType::reference);
    add(map, 5);
    EXPECT_EQ(errorOf([&] { add(map, 39'990); }), Errc::corrupt);
    remove(map, 39'990); // isn't in it
    EXPECT_EQ(membersOf(map), std::set<std::uint32_t>{5});
    // That of the free pages has to know each that is in use.
    const UsageMap free(pager, map, UsageMap::Kind::global);
    EXPECT_EQ(errorOf([&] { allocator.remove(free, PageNo{39'990}); }), Errc::corrupt);
    allocator.add(free, PageNo{6});
    EXPECT_TRUE(free.contains(PageNo{39'990})) << "what isn't there counts as free";
}

TEST_P(LongMaps, OfFreePagesMakesThePartThatSaysWhatIsInUse) {
    crowd(kHolder);
    const UsageMap free(pager, kFreePagesMap, UsageMap::Kind::global);
    allocator.remove(free, PageNo{39'990});
    ASSERT_EQ(typeOf(kFreePagesMap), MapType::reference);
    EXPECT_FALSE(free.contains(PageNo{39'990}));
    EXPECT_TRUE(free.contains(PageNo{39'989}));
    EXPECT_TRUE(free.contains(PageNo{39'991}));
    EXPECT_FALSE(free.contains(PageNo{1}));
    EXPECT_TRUE(free.contains(PageNo{2}));
    // A part for the low pages and one for that page; each knows of itself.
    EXPECT_EQ(pager.pageCount(), 40'002U);
    EXPECT_FALSE(free.contains(PageNo{40'000}));
    EXPECT_FALSE(free.contains(PageNo{40'001}));
    allocator.add(free, PageNo{39'990});
    EXPECT_TRUE(free.contains(PageNo{39'990}));
}

TEST_P(Maps, OfFreePagesThatNamesTheHeaderGivesNothingOut) {
    DataPageEditor(format, pager.change(kHolder), kHolder).slotBytes(0)[MapRowLayout::bitmap] =
        std::byte{0xFE};
    EXPECT_EQ(errorOf([&] { (void)allocator.take(); }), Errc::corrupt);
}

TEST_P(Maps, OfFreePagesThatHasThePageBehindTheEndInUseTellsThatTheFileWasCut) {
    DataPageEditor(format, pager.change(kHolder), kHolder).slotBytes(0)[MapRowLayout::bitmap] =
        std::byte{0xF8};
    EXPECT_EQ(errorOf([&] { (void)allocator.take(); }), Errc::corrupt);
}

} // namespace
