// Single kinds of damage, and what salvage says of each; the rest is saved.
#include "jet/copy/SalvageFile.h"

#include <gmock/gmock.h>

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

} // namespace
