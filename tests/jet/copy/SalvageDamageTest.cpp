// Single kinds of damage, and what salvage says of each; the rest is saved.
#include "jet/Compact.h"
#include "jet/ShopWork.h"
#include "jet/copy/SalvageFile.h"
#include "support/FileRules.h"

#include <gmock/gmock.h>

#include <fstream>

using namespace jet;

namespace {

class SalvageDamage : public SalvageFile {
protected:
    void expectTold(Loss::What what, const char* words) {
        EXPECT_TRUE(std::ranges::any_of(salvageIt().losses,
                                        [&](const Loss& loss) {
                                            return loss.what == what &&
                                                   loss.reason.find(words) != std::string::npos;
                                        }))
            << words << "\n"
            << told(report_);
        expectNothingDroppedSilently();
    }
    static void pointTo(DamagedFile& file, RowId target) {
        store(file.bytesOf(file.moved).data(), kMovedTo, target);
    }
};

INSTANTIATE_TEST_SUITE_P(, SalvageDamage, bothVersions(), versionName);

TEST_P(SalvageDamage, APageWhoseSlotsCantBeCountedIsLost) {
    store(file_.page(file_.plain.page).data(), file_.format().dataPage.slotCount, 0x7FFF);
    expectTold(Loss::What::page, "a tabela de linhas da página está danificada");
}

TEST_P(SalvageDamage, OfMoreRowsThanCanBeToldApartTheFirstAreSaved) {
    file_.addSlots(file_.otherPage, 300);
    expectTold(Loss::What::page, "a página diz ter linhas demais");
    expectAll();
}

TEST_P(SalvageDamage, APointerCutShortIsToldAndItsRowFound) {
    const RowId first = file_.rows[0];
    const auto end = file_.get<std::uint16_t>(first.page, file_.slotAt(0)) & 0x1FFFU;
    file_.put<std::uint16_t>(first.page, file_.slotAt(1),
                             static_cast<std::uint16_t>((end - 2) | 0x4000U));
    expectTold(Loss::What::row, "a linha mudou para um lugar onde não está");
}

TEST_P(SalvageDamage, ARowToWhichTwoPointIsThereOnce) {
    const RowId target = load(file_.bytesOf(file_.moved).data(), kMovedTo);
    store(file_.bytesOf(file_.plain).data(), kMovedTo, target);
    const std::size_t word = file_.slotAt(file_.plain.slot);
    file_.put<std::uint16_t>(
        file_.plain.page, word,
        static_cast<std::uint16_t>((file_.get<std::uint16_t>(file_.plain.page, word) & 0x1FFFU) |
                                   0x4000U));
    expectTold(Loss::What::row, "a linha mudou para um lugar onde não está");
    EXPECT_EQ(report_.count(Loss::What::apart), 0U) << told(report_);
}

TEST_P(SalvageDamage, AValueOfAnotherSizeThanItsTypesIsLeftEmpty) {
    file_.put<std::uint16_t>(file_.cheques.page(),
                             file_.columnBlock(2) + file_.format().column.length.at, 4);
    expectTold(Loss::What::value,
               "o campo \"quando\" ficou vazio: o valor não tem o tamanho do seu tipo");
}

TEST_P(SalvageDamage, ATextThatEndsInsideACharacterIsLeftEmpty) {
    if (GetParam() == Version::jet3)
        return; // a byte is a character
    const auto row = file_.bytesOf(file_.plain);
    for (const std::size_t back : {7U, 9U}) // the end of the name, where the memo begins
        store<std::uint16_t>(
            row.data() + row.size() - back,
            static_cast<std::uint16_t>(load<std::uint16_t>(row.data() + row.size() - back) - 1));
    expectTold(Loss::What::value, "o campo \"nome\" ficou vazio: o texto não pode ser lido");
    file_.restore();
    const Bytes memo{std::byte{'o'}, std::byte{'b'}, std::byte{'s'}};
    const auto bytes = file_.bytesOf(file_.inRow);
    const auto found = std::search(bytes.begin(), bytes.end(), memo.begin(), memo.end());
    ASSERT_NE(found, bytes.end());
    found[1] = std::byte{}; // from here on two bytes would be a character
    expectTold(Loss::What::value, "o campo \"obs\" ficou vazio: o texto não pode ser lido");
}

TEST_P(SalvageDamage, IndexesThatAreToldApartByNothingAreToldApartAgain) {
    const std::size_t at = file_.format().logicalIndex.number.at;
    file_.put<std::uint32_t>(
        file_.cheques.page(), file_.logicalIndexBlock(1) + at,
        file_.get<std::uint32_t>(file_.cheques.page(), file_.logicalIndexBlock(0) + at));
    file_.put<std::uint8_t>(file_.cheques.page(),
                            file_.logicalIndexBlock(2) + file_.format().logicalIndex.kind.at, 9);
    salvageIt();
    expectAll();
    Database database(target_);
    EXPECT_EQ(database.table("Cheques").indexes().size(), 3U);
}

TEST_P(SalvageDamage, AColumnWithoutAPlaceForItsLongValuesCostsThese) {
    const std::size_t length =
        file_.get<std::uint32_t>(file_.cheques.page(), file_.format().definition.length.at);
    file_.put<std::uint16_t>(file_.cheques.page(), length - 2 - LongValueMapsLayout::size, 1);
    salvageIt();
    Database database(target_);
    EXPECT_EQ(rowsOf(database, "Cheques").size(), cheques_.size()) << told(report_);
}

TEST_P(SalvageDamage, APointerLeadsToARowThatHasMovedOfItsOwnTable) {
    const RowId targets[] = {
        {file_.otherPage,               0  }, // another table's
        file_.plain, // one that hasn't moved
        {file_.plain.page,              250}, // none
        {file_.cheques.page(),          0  }, // no page of rows
        {static_cast<PageNo>(0xFFFFFF), 0  }
    }; // no page
    for (const RowId target : targets) {
        SCOPED_TRACE(packed(target));
        file_.restore();
        pointTo(file_, target);
        expectTold(Loss::What::row, "a linha mudou para um lugar onde não está");
        // The row itself is found all the same.
        Database database(target_);
        EXPECT_EQ(rowsOf(database, "Cheques").size(), cheques_.size());
    }
}

TEST_P(SalvageDamage, ATableWhoseFolderIsLostKeepsItsName) {
    file_.withDatabase([](Database& database) {
        Table& objects = database.table("MSysObjects");
        const std::size_t name = objects.findColumn("Name").value();
        const std::size_t parent = objects.findColumn("ParentId").value();
        RowCursor row = objects.scan();
        for (bool there = row.first(); there; there = row.next())
            if (row.row().value(name) == Value(std::string("Outra"))) {
                const Assignment change[] = {
                    {parent, std::int64_t{123'456}}
                };
                objects.update(row.id(), change);
                break;
            }
    });
    wipe(PageNo{1}); // so that it counts as damaged
    expectTold(Loss::What::note, "a pasta do objeto \"Outra\" não existe");
    expectAll();
}

TEST_P(SalvageDamage, WhateverPageTheDiskDoesntGiveTheOthersAreSaved) {
    const std::string whole = contentOf(file_.path());
    const auto bytes = std::as_bytes(std::span(whole));
    const DiskImage damaged{
        {kPath, Bytes(bytes.begin(), bytes.end())}
    };
    const std::string target = "/loja/salvo.mdb";
    for (const PageNo page :
         {PageNo{0}, PageNo{1}, PageNo{2}, PageNo{5}, file_.cheques.page(),
          file_.cheques.ownedMap.page, file_.cheques.realIndexes[0].root, file_.pages[0],
          file_.otherPage, file_.singlePart.page, file_.chainParts[1].page}) {
        SCOPED_TRACE(number(page));
        MemoryDisk disk(damaged);
        disk.lost = {kPath, number(page) * file_.format().pageSize};
        report_ = salvage(kPath, target, {}, disk);
        EXPECT_TRUE(check(target, disk).sound()) << listed(check(target, disk));
        EXPECT_TRUE(disk.image().at(kPath) == damaged.at(kPath)) << "the source is only read";
        EXPECT_TRUE(std::ranges::any_of(report_.losses, [&](const Loss& loss) {
            return page == PageNo{0} || loss.page == page;
        })) << told(report_);
        if (page == file_.cheques.page())
            continue; // its table is lost: see ATableWhoseDefinitionIsLostIsTold
        const Bytes saved = disk.image().at(target);
        std::ofstream(target_, std::ios::binary)
            .write(reinterpret_cast<const char*>(saved.data()),
                   static_cast<std::streamsize>(saved.size()));
        expectNothingDroppedSilently();
    }
}

TEST_P(SalvageDamage, TablesInOtherFilesStayLinked) {
    file_.withDatabase([](Database& database) {
        enterObject(database, -2147483000, "Fora", 6);
        enterObject(database, -2147483001, "Servidor", 4);
        for (const char* other : {"Fora", "Servidor"})
            addRelationship(database, {other, "Cheques", {"cliente"}, other, {"codigo"}});
    });
    EXPECT_TRUE(salvageIt().complete()) << told(report_);
    Database database(target_);
    EXPECT_EQ(database.table("MSysRelationships").rowCount(), 2);
}

TEST_P(SalvageDamage, ObjectsThatAreNoneAreToldAndLeftOut) {
    file_.withDatabase([](Database& database) {
        enterObject(database, 0, "Nada", 5);
        enterObject(database, 1234, "Consulta", 5); // a number that only a table has
    });
    salvageIt();
    EXPECT_EQ(report_.count(Loss::What::row), 2U) << told(report_);
    expectAll();
}

TEST_P(SalvageDamage, RowsSetApartGoToATableOfANameThatNoOtherHas) {
    std::string longest = "x";
    while (longest.size() < 61)
        longest += "ç"; // there is room for 64 characters, and something is put behind
    const std::vector<std::pair<std::string, std::string>> names{
        {longest, longest.substr(0, 47) + "_separados"}, // not half a character
        {"Curta",       "Curta_separados_2"                }
    };
    std::vector<std::pair<RowId, std::size_t>> second;
    file_.withDatabase([&](Database& database) {
        database.createTable({"Curta_separados", {{"n", ColumnType::longInteger}}, {}});
        for (const auto& [name, apart] : names) {
            Table& table = database.createTable(
                {name, {{"n", ColumnType::longInteger}}, {{"chave", {{"n"}}, true}}});
            table.insert(Row{std::int64_t{1}});
            second.emplace_back(table.insert(Row{std::int64_t{2}}), 0);
        }
    });
    for (const auto& [row, at] : second)
        store<std::int32_t>(file_.bytesOf(row).data() + file_.format().row.countSize, 1);
    salvageIt();
    Database database(target_);
    for (const auto& [name, apart] : names) {
        SCOPED_TRACE(apart);
        EXPECT_TRUE(rowsOf(database, name) == std::vector<Row>{{std::int64_t{1}}});
        ASSERT_TRUE(database.hasTable(apart)) << told(report_);
        EXPECT_TRUE(rowsOf(database, apart) == std::vector<Row>{{std::int64_t{1}}});
    }
}

TEST_P(SalvageDamage, LongTextsAreInTheIndexesThatTheyWereIn) {
    const std::vector<Row> rows{{std::string("curto")}, {Value{}}, {std::string(5000, 'z')}};
    file_.withDatabase([&](Database& database) {
        Table& table =
            database.createTable({"Textos", {{"obs", ColumnType::memo}}, {{"obs", {{"obs"}}}}});
        for (const Row& row : rows)
            table.insert(row);
    });
    EXPECT_TRUE(file_.check().clean()) << listed(file_.check());
    EXPECT_TRUE(salvageIt().complete()) << told(report_);
    const std::filesystem::path small = folder_ / "menor.mdb";
    (void)compact(file_.path(), small);
    for (const std::filesystem::path& copy : {target_, small}) {
        EXPECT_TRUE(check(copy).clean());
        Database database(copy);
        Table& table = database.table("Textos");
        EXPECT_TRUE(rowsOf(database, "Textos") == rows);
        for (const Row& row : rows) {
            IndexTree::Cursor entry = table.walk(0);
            ASSERT_TRUE(entry.seek(table.keysEqual(0, row).lower));
            EXPECT_EQ(table.read(entry.row()), std::optional(row));
        }
    }
    std::filesystem::remove(small);
}

} // namespace
