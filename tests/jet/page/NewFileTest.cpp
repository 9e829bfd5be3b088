// The pieces a new file is made of: maps of any size, trees of any height.
#include "jet/page/NewFile.h"

#include "jet/Copies.h"
#include "jet/index/IndexBuilder.h"
#include "jet/index/IndexTree.h"
#include "jet/page/Header.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <random>
#include <set>

using namespace jet;

namespace {

class NewFiles : public testing::TestWithParam<Version> {
protected:
    [[nodiscard]] const Format& format() const { return formatOf(GetParam()); }
    [[nodiscard]] Pager reader() const { return {File(path_, File::Mode::read), format(), false}; }
    void finish(NewFile& file) const { file.finish(buildHeader(GetParam())); }

    TemporaryFolder folder_;
    std::filesystem::path path_ = folder_ / "novo.mdb";
};

INSTANTIATE_TEST_SUITE_P(, NewFiles, bothVersions(), versionName);

std::vector<PageNo> pagesIn(const UsageMap& map) {
    std::vector<PageNo> pages;
    for (auto page = map.next(0); page; page = map.next(number(*page) + 1))
        pages.push_back(*page);
    return pages;
}

TEST_P(NewFiles, MapsReadBackWhateverTheirPages) {
    constexpr std::uint32_t kPages = 70'000; // beyond every bitmap that fits a row
    NewFile file(path_, format());
    std::vector<PageNo> all;
    for (std::uint32_t i = 6; i < kPages; ++i)
        all.push_back(file.take());
    std::vector<std::vector<PageNo>> sets(1);
    sets.push_back({all.front()});
    sets.push_back({all.back()});
    sets.emplace_back(all.begin() + 900, all.begin() + 1500);
    sets.push_back({all[3], all[4000]});
    sets.push_back({all.front(), all[20'000], all.back()});
    sets.push_back(all);
    std::vector<RowId> maps;
    maps.reserve(sets.size());
    for (const auto& set : sets)
        maps.push_back(file.addMap(set));
    finish(file);

    Pager pager = reader();
    for (std::size_t i = 0; i < sets.size(); ++i)
        EXPECT_EQ(pagesIn(UsageMap(pager, maps[i])), sets[i]) << i;
}

TEST_P(NewFiles, NoPageIsFreeWhateverTheSize) {
    for (const std::uint32_t pages : {7U, 5'000U, 15'500U, 33'000U, 70'000U}) {
        SCOPED_TRACE(pages);
        std::filesystem::remove(path_);
        NewFile file(path_, format());
        PageNo last{};
        while (number(last) + 1 < pages)
            last = file.take();
        file.write(last, Bytes(format().pageSize));
        finish(file);
        Pager pager = reader();
        const UsageMap free(pager, {PageNo{1}, 0}, UsageMap::Kind::global);
        EXPECT_FALSE(free.next(0).has_value());
        EXPECT_GE(pager.pageCount(), pages);
    }
}

TEST_P(NewFiles, LastPagesAreNotOneTooMany) {
    NewFile file(path_, format());
    PageNo last = file.take();
    const std::uint64_t most = format().largestFile / format().pageSize;
    while (number(last) + 1 < most)
        last = file.take();
    expectError(Errc::full, "tamanho máximo", [&] { (void)file.take(); });
}

TEST_P(NewFiles, TreesOfAnyHeightAreInOrder) {
    std::mt19937 random(7);
    for (const std::size_t keySize : {5U, 60U, 400U})
        for (const std::size_t entries : {0U, 1U, 3U, 40U, 700U, 6000U}) {
            SCOPED_TRACE(std::to_string(entries) + " keys of " + std::to_string(keySize));
            std::filesystem::remove(path_);
            NewFile file(path_, format());
            const PageNo owner = file.take();
            IndexEntriesSorter sorter;
            std::set<std::pair<Bytes, RowId>> expected;
            std::set<Bytes> keys;
            while (expected.size() < entries) {
                Bytes key(keySize - random() % 3);
                for (std::byte& b : key)
                    b = static_cast<std::byte>(random() % 2 == 0 ? 0x7F : random() % 256);
                const RowId row{static_cast<PageNo>(random() % 5000),
                                static_cast<std::uint16_t>(random() % 255)};
                keys.insert(key);
                if (expected.emplace(key, row).second)
                    sorter.add(key, row);
            }
            sorter.sort();
            const BuiltIndex built = buildIndex(file, owner, sorter);
            EXPECT_EQ(built.distinctKeys, keys.size());
            const RowId map = file.addMap(built.pages);
            file.write(owner, Bytes(format().pageSize));
            finish(file);

            Pager pager = reader();
            auto next = expected.begin();
            IndexTree(pager, owner, built.root, map)
                .verify({[](PageNo page, const std::string& reason) {
                             ADD_FAILURE() << "page " << number(page) << ": " << reason;
                         },
                         [&](std::span<const std::byte> key, RowId row) {
                             ASSERT_NE(next, expected.end());
                             EXPECT_TRUE(std::ranges::equal(key, next->first));
                             EXPECT_EQ(row, next->second);
                             ++next;
                         }});
            EXPECT_EQ(next, expected.end());
        }
}

TEST_P(NewFiles, AKeyThatIsTooLongIsRefused) {
    NewFile file(path_, format());
    IndexEntriesSorter sorter;
    sorter.add(Bytes(format().indexCapacity() / 2), {PageNo{3}, 1});
    sorter.sort();
    EXPECT_FALSE(fitsIndex(format(), sorter.key(0).size()));
    expectError(Errc::tooLong, "longa demais", [&] { (void)buildIndex(file, PageNo{6}, sorter); });
}

} // namespace
