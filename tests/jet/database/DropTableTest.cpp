#include "jet/DropTable.h"

#include "jet/RuleFile.h"
#include "support/Versions.h"

#include <array>
#include <string>

using namespace jet;

namespace {

class DroppedTable : public RuleFile {
protected:
    void fill(int rows) {
        database_->createTable({
            "fichas",
            {{"id", ColumnType::longInteger, 0, true},
              {"nome", ColumnType::text, 50},
              {"nota", ColumnType::memo}},
            {{"PrimaryKey", {{"id"}}, true},                                        {"nome", {{"nome"}}}}
        });
        database_->begin();
        for (int i = 0; i < rows; ++i)
            table("fichas").insert(std::array{
                Assignment{1,                 "ficha " + std::to_string(i)},
                Assignment{ 2, std::string(1900,                         'n')}
            });
        database_->commit();
    }
    /// Its size afterwards.
    std::uintmax_t dropped() {
        database_.reset();
        dropTable(path(), "fichas");
        database_.emplace(path());
        return std::filesystem::file_size(path());
    }
};
INSTANTIATE_TEST_SUITE_P(, DroppedTable, bothVersions(), versionName);

using LargeDroppedTable = DroppedTable;
INSTANTIATE_TEST_SUITE_P(, LargeDroppedTable, testing::Values(Version::jet3), versionName);

} // namespace

// A table that is made and dropped every night would else fill the file.
TEST_P(DroppedTable, GivesBackEveryPage) {
    fill(300);
    const std::uintmax_t once = dropped();
    for (int again = 0; again < 3; ++again) {
        fill(300);
        EXPECT_EQ(dropped(), once) << again;
    }
    EXPECT_THROW(static_cast<void>(table("fichas")), Error);
}

TEST_P(DroppedTable, HasNoRelationshipNotEvenOneThatOnlyTheCatalogTellsOf) {
    fill(3);
    database_->createTable({"donos", {{"id", ColumnType::longInteger}}, {}});
    addRelationship(*database_, {"fichasdonos", "fichas", {"id"}, "donos", {"id"}, 0});
    try {
        dropped();
        ADD_FAILURE() << "it was dropped";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::related);
    }
    database_.emplace(path());
    EXPECT_EQ(table("fichas").rowCount(), 3);
}

TEST_P(DroppedTable, IsNoneOfTheFilesOwn) {
    database_.reset();
    try {
        dropTable(path(), "MSysObjects");
        ADD_FAILURE() << "it was dropped";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::misuse);
    }
    database_.emplace(path());
}

// The set of a large table's pages goes on on pages of its own; of the older format it is the
// smaller table that is so large.
TEST_P(LargeDroppedTable, GivesBackThePagesThatNameItsPages) {
    constexpr int kRows = 14'000; // a page each
    fill(kRows);
    const std::uintmax_t once = dropped();
    fill(kRows);
    EXPECT_EQ(dropped(), once);
}
