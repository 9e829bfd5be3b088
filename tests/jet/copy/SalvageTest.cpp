// What is left of a damaged file is in the new one, and what isn't there is told.
#include "jet/Copies.h"
#include "jet/DamagedFile.h"
#include "jet/SampleFiles.h"
#include "jet/ShopWork.h"
#include "jet/copy/SalvageFile.h"
#include "jet/database/DatabasePager.h"
#include "jet/page/Header.h"
#include "jet/share/Journal.h"
#include "support/FileRules.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <algorithm>
#include <set>

using namespace jet;

namespace {

class Salvage : public SalvageFile {
protected:
    /// In the catalog these tables get pages that the file hasn't got.
    void misplace(const std::vector<PageNo>& definitions) {
        file_.withDatabase([&](Database& database) {
            Table& objects = database.table("MSysObjects");
            const std::size_t id = objects.findColumn("Id").value();
            std::vector<RowId> rows;
            RowCursor row = objects.scan();
            for (bool there = row.first(); there; there = row.next())
                if (std::ranges::count(definitions, static_cast<PageNo>(row.row().integer(id))) > 0)
                    rows.push_back(row.id());
            for (std::int64_t page = 900'000; const RowId misplaced : rows)
                objects.update(misplaced, std::vector<Assignment>{
                                              {id, page++}
                });
        });
    }
};
INSTANTIATE_TEST_SUITE_P(, Salvage, bothVersions(), versionName);

TEST_P(Salvage, OfASoundFileIsComplete) {
    EXPECT_TRUE(salvageIt().complete()) << told(report_);
    EXPECT_TRUE(report_.losses.empty()) << told(report_);
    expectAll();
    ASSERT_EQ(report_.tables.size(), 3U);
    EXPECT_EQ(report_.tables.front().rows, cheques_.size());
    EXPECT_EQ(report_.tables.front().said, cheques_.size());
}

TEST_P(Salvage, IndexesAreBuiltFromTheRows) {
    for (const RealIndex& index : file_.cheques.realIndexes)
        wipe(index.root);
    EXPECT_TRUE(salvageIt().complete()) << told(report_);
    expectAll();
}

TEST_P(Salvage, WithoutATablesMapItsPagesAreFound) {
    wipe(file_.cheques.ownedMap);
    wipe(file_.cheques.freeMap);
    salvageIt();
    expectAll();
}

TEST_P(Salvage, WithoutAMapThatKnowsAllPagesTheOthersAreFound) {
    for (const PageNo page : file_.pages)
        file_.setBit(file_.cheques.ownedMap, page, false);
    salvageIt();
    expectAll();
}

TEST_P(Salvage, AMapOfFreePagesThatGivesAwayTheFirstOnesIsNotBelieved) {
    wipe(file_.cheques.ownedMap);
    for (const PageNo page : file_.pages)
        file_.setBit(kFreePagesMap, page, true);
    file_.setBit(kFreePagesMap, kObjectsPage, true);
    salvageIt();
    expectAll();
}

TEST_P(Salvage, WithoutTheMapOfFreePages) {
    wipe(PageNo{1});
    salvageIt();
    expectAll();
}

TEST_P(Salvage, WithoutTheHeader) {
    wipe(PageNo{0});
    EXPECT_FALSE(salvageIt().losses.empty());
    expectAll();
}

TEST_P(Salvage, WithoutTheCatalogsDefinition) {
    wipe(PageNo{2});
    salvageIt();
    expectAll();
    EXPECT_NE(told(report_).find("MSysObjects"), std::string::npos);
}

TEST_P(Salvage, WithoutAnySystemTablesDefinition) {
    for (const std::uint32_t page : {2U, 3U, 4U, 5U})
        wipe(PageNo{page});
    salvageIt();
    expectAll();
}

TEST_P(Salvage, WithoutTheCatalogsRowsTablesAreKnownByTheirPages) {
    {
        Database database(file_.path(), {true, {}, {}});
        const UsageMap pages(DatabasePager::of(database),
                             database.table("MSysObjects").definition().ownedMap);
        for (auto page = pages.next(0); page; page = pages.next(number(*page) + 1))
            wipe(*page);
    }
    salvageIt();
    expectAll("recuperada_" + std::to_string(number(file_.cheques.page())),
              "recuperada_" + std::to_string(number(file_.other.page())));
}

TEST_P(Salvage, ATableWhoseDefinitionIsLostIsTold) {
    wipe(file_.cheques.page());
    EXPECT_EQ(salvageIt().count(Loss::What::table), 1U) << told(report_);
    EXPECT_FALSE(report_.complete());
    Database database(target_);
    EXPECT_FALSE(database.hasTable("Cheques"));
    EXPECT_TRUE(rowsOf(database, "Outra") == others_);
}

TEST_P(Salvage, ATableOfWhichTheCatalogHasTheWrongPageKeepsItsName) {
    misplace({file_.cheques.page()});
    salvageIt();
    expectAll();
}

TEST_P(Salvage, OfTwoSuchNoneIsTakenForTheOther) {
    misplace({file_.other.page(), file_.cheques.page()});
    wipe(file_.other.page());
    salvageIt();
    EXPECT_EQ(report_.count(Loss::What::table), 2U) << told(report_);
    Database database(target_);
    EXPECT_TRUE(rowsOf(database, "recuperada_" + std::to_string(number(file_.cheques.page()))) ==
                cheques_);
    for (const char* name : {"Cheques", "Outra"})
        EXPECT_FALSE(database.hasTable(name)) << name;
}

TEST_P(Salvage, ALostPageIsToldAndTheRestSaved) {
    for (const PageNo page : file_.pages) {
        SCOPED_TRACE(number(page));
        file_.restore();
        wipe(page);
        EXPECT_FALSE(salvageIt().complete());
        EXPECT_GE(report_.count(Loss::What::page), 1U);
        expectNothingDroppedSilently();
        Database database(target_);
        EXPECT_TRUE(rowsOf(database, "Outra") == others_);
    }
}

TEST_P(Salvage, ASlotOutsideItsPageCostsItsRowAndItsNeighbour) {
    file_.put<std::uint16_t>(file_.plain.page, file_.slotAt(file_.plain.slot), 0x1FFF);
    salvageIt();
    EXPECT_GE(report_.count(Loss::What::row), 1U);
    EXPECT_LE(report_.count(Loss::What::row), 2U);
    expectNothingDroppedSilently();
}

TEST_P(Salvage, ARowThatHasMovedIsFoundWithoutItsPointer) {
    ASSERT_EQ(file_.slot(file_.moved).kind, SlotKind::pointer);
    std::ranges::fill(file_.bytesOf(file_.moved).first(4), std::byte{0x77});
    salvageIt();
    expectNothingDroppedSilently();
    Database database(target_);
    EXPECT_EQ(rowsOf(database, "Cheques").size(), cheques_.size());
}

TEST_P(Salvage, ALongValueCutShortLeavesItsFieldEmpty) {
    for (const RowId part : {file_.chainParts[1], file_.singlePart}) {
        file_.restore();
        file_.put<std::uint16_t>(part.page, file_.slotAt(part.slot), 0xC000U);
        salvageIt();
        EXPECT_GE(report_.count(Loss::What::value), 1U) << told(report_);
        expectNothingDroppedSilently();
        Database database(target_);
        EXPECT_EQ(rowsOf(database, "Cheques").size(), cheques_.size());
    }
}

TEST_P(Salvage, ALongValueInACircleEnds) {
    const RowId last = file_.chainParts.back();
    store<std::uint32_t>(file_.bytesOf(last).data(),
                         static_cast<std::uint32_t>(packed(file_.chainParts.front())));
    store<std::uint32_t>(file_.bytesOf(file_.chain).data() + file_.chainField, 0x3FFFFFFF);
    salvageIt();
    EXPECT_TRUE(isTold(file_.chain, {Loss::What::value})) << told(report_);
    expectNothingDroppedSilently();
}

TEST_P(Salvage, RowsThatRepeatAKeyAreSetApart) {
    // A page stands where another stood, as when the disk wrote to the wrong place.
    const PageNo first = file_.pages[0];
    const PageNo second = file_.pages[1];
    std::ranges::copy(file_.page(first), file_.page(second).begin());
    salvageIt();
    EXPECT_GT(report_.count(Loss::What::apart), 0U);
    EXPECT_FALSE(report_.complete());
    Database database(target_);
    const auto apart = rowsOf(database, "Cheques_separados");
    EXPECT_EQ(apart.size(), report_.count(Loss::What::apart));
    std::vector<Row> kept = rowsOf(database, "Cheques");
    for (const Row& row : apart)
        EXPECT_EQ(std::ranges::count(kept, row), 1) << "it repeats a row that was kept";
    EXPECT_EQ(report_.tables.front().apartName, "Cheques_separados");
    EXPECT_FALSE(database.table("Cheques_separados").readOnlyReason());
}

TEST_P(Salvage, ATornOrMissingEndIsTold) {
    const std::size_t size = std::filesystem::file_size(file_.path());
    for (const std::size_t missing :
         {std::size_t{100}, file_.format().pageSize, 7 * file_.format().pageSize + 1}) {
        SCOPED_TRACE(missing);
        file_.restore();
        file_.resize(size - missing);
        EXPECT_GE(salvageIt().losses.size(), missing % file_.format().pageSize != 0 ? 1U : 0U);
        if (const Database database(target_); database.hasTable("Cheques")) {
            const auto table = std::ranges::find(report_.tables, "Cheques", &SavedTable::name);
            ASSERT_NE(table, report_.tables.end());
            EXPECT_TRUE(table->rows + table->apart == cheques_.size() || !report_.complete());
        }
    }
}

TEST_P(Salvage, ARelationshipWithALostTableIsDissolved) {
    file_.withDatabase([&](Database& database) {
        Table& relationships = database.table("MSysRelationships");
        for (const char* other : {"Outra", "Larga"})
            relationships.insert(Row{std::string("ChequesDe") + other, std::int64_t{0},
                                     std::int64_t{1}, std::int64_t{0}, std::string(other),
                                     std::string("Larga") == other ? std::string("coluna numero 3")
                                                                   : std::string("texto"),
                                     std::string("Larga"), std::string("coluna numero 1")});
        addRelationship(database, {"SemCampo", "Larga", {"coluna numero 1"}, "Larga", {"nenhuma"}});
        enterObject(database, -2147483000, "ChequesDeOutra", 8, 0x0F000003);
        enterObject(database, -2147483001, "ChequesDeLarga", 8, 0x0F000003);
    });
    wipe(file_.other.page());
    salvageIt();
    EXPECT_EQ(report_.count(Loss::What::structure), 2U) << told(report_);
    Database database(target_);
    EXPECT_EQ(database.table("MSysRelationships").rowCount(), 1);
    std::string objects;
    for (const Row& object : rowsOf(database, "MSysObjects"))
        if (const auto* name = std::get_if<std::string>(&object[2]))
            objects += *name + " ";
    EXPECT_NE(objects.find("ChequesDeLarga"), std::string::npos);
    EXPECT_EQ(objects.find("ChequesDeOutra"), std::string::npos);
}

TEST_P(Salvage, ColumnsOfOneNameGetNamesThatNoOtherHas) {
    // In a table of 120: what is near the name is taken as well.
    const std::size_t character = GetParam() == Version::jet3 ? 1 : 2;
    const auto inFile = [&](const std::string& name) {
        Bytes bytes(name.size() * character);
        for (std::size_t i = 0; i < name.size(); ++i)
            bytes[i * character] = static_cast<std::byte>(name[i]);
        return bytes;
    };
    int renamed = 0;
    for (const char* const name : {"coluna numero 45", "coluna numero 105"})
        for (const PageNo page : file_.wide.pages) {
            const std::span<std::byte> bytes = file_.page(page);
            const Bytes was = inFile(name);
            const auto found = std::search(bytes.begin(), bytes.end(), was.begin(), was.end());
            if (found == bytes.end())
                continue;
            const Bytes is = inFile(name == std::string("coluna numero 45") ? "coluna numero 40"
                                                                            : "coluna numero 100");
            std::ranges::copy(is, found);
            ++renamed;
        }
    ASSERT_GE(renamed, 1);
    salvageIt();
    expectAll();
    std::set<std::string> names;
    Database database(target_);
    for (const Column& column : database.table("Larga").columns())
        names.insert(column.name);
    EXPECT_EQ(names.size(), 120U);
}

TEST_P(Salvage, WithACodePageThatDoesntExist) {
    file_.put<std::uint16_t>(PageNo{0}, 0x3C, 0x1234);
    salvageIt();
    expectAll();
}

TEST_P(Salvage, RefusesWhatNeverWasADatabase) {
    const auto text = folder_ / "carta.txt";
    std::ofstream(text) << std::string(50'000, 'x');
    expectError(Errc::unsupported, "não é um banco de dados",
                [&] { (void)salvage(text, target_); });
    std::ofstream(text) << "pouco";
    expectError(Errc::unsupported, "não é um banco de dados",
                [&] { (void)salvage(text, target_); });
    EXPECT_FALSE(std::filesystem::exists(target_));
}

TEST_P(Salvage, RefusesATargetThatIsThere) {
    std::ofstream(target_) << "meu";
    expectError(Errc::exists, "já existe", [&] { (void)salvage(file_.path(), target_); });
    EXPECT_EQ(contentOf(target_), "meu");
}

/// A shop whose station died while it wrote, so that the journal lies beside the file.
class SalvageTorn : public testing::TestWithParam<Version> {
protected:
    SalvageTorn() {
        {
            MemoryDisk disk(emptyShop(GetParam()));
            Database file(kPath, on(disk));
            ShopWork(3).step(file, 2);
            file.flush();
            content_ = contentOf(file);
            before_ = disk.image();
        }
        std::erase_if(before_, [](const auto& file) { return file.first != kPath; });
        torn_ = halfDone(before_, [](Database& file) { ShopWork(5).step(file, 4); });
    }

    /// The new file is sound, the old one and its journal are as they were, nothing else is left.
    SalvageReport salvageIt(MemoryDisk& disk) {
        const DiskImage before = disk.image();
        SalvageReport report = salvage(kPath, kTarget, {}, disk);
        EXPECT_TRUE(check(kTarget, disk).sound()) << listed(check(kTarget, disk));
        DiskImage after = disk.image();
        EXPECT_EQ(after.erase(kTarget), 1U);
        EXPECT_TRUE(after == before) << "the source is only read";
        return report;
    }
    static bool tells(const SalvageReport& report, const std::string& words) {
        return std::ranges::any_of(report.losses, [&](const Loss& loss) {
            return loss.reason.find(words) != std::string::npos;
        });
    }

    static constexpr const char* kTarget = "/loja/salvo.mdb";
    DiskImage before_;
    DiskImage torn_;
    std::uint64_t content_ = 0;
};

INSTANTIATE_TEST_SUITE_P(, SalvageTorn, bothVersions(), versionName);

TEST_P(SalvageTorn, WhatWasCutOffIsUndoneFirstAndSaid) {
    MemoryDisk disk(torn_);
    const SalvageReport report = salvageIt(disk);
    EXPECT_TRUE(tells(report, "foi desfeita numa cópia"));
    EXPECT_TRUE(report.complete());
    Database saved(kTarget, on(disk));
    EXPECT_EQ(contentOf(saved), content_);
}

TEST_P(SalvageTorn, AJournalThatCantBeUsedIsSaid) {
    DiskImage torn = torn_;
    const std::string journal = Journal::pathFor(kPath).string();
    ASSERT_TRUE(torn.contains(journal));
    torn[journal].resize(torn[journal].size() / 2);
    MemoryDisk disk(torn);
    const SalvageReport report = salvageIt(disk);
    EXPECT_TRUE(tells(report, "não pôde ser usado"));
    EXPECT_TRUE(tells(report, "pode estar pela metade"));
}

TEST_P(SalvageTorn, AFileLeftInTheMiddleWithoutAJournalIsSaid) {
    MemoryDisk disk({
        {kPath, torn_.at(kPath)}
    });
    EXPECT_TRUE(tells(salvageIt(disk), "interrompido enquanto gravava"));
}

TEST(SalvageSamples, AreComplete) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty())
        GTEST_SKIP() << "no sample databases here";
    for (const auto& file : files) {
        SCOPED_TRACE(file.filename().string());
        const auto target = folder.path() / file.filename();
        const SalvageReport report = salvage(file, target);
        EXPECT_TRUE(report.complete());
        EXPECT_TRUE(report.check.sound());
        Database before(file, optionsFor(file));
        Database after(target, optionsFor(file));
        ASSERT_EQ(after.allTableNames(), before.allTableNames());
        for (const std::string& name : before.tableNames())
            EXPECT_TRUE(rowsOf(before, name) == rowsOf(after, name)) << name;
    }
}

} // namespace
