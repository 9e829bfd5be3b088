// What an open database tells about itself, and what its tables tell beforehand about a change.
#include "jet/People.h"
#include "jet/Sentences.h"
#include "jet/ShopWork.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

using namespace jet;
using namespace std::string_literals;

namespace {

class OpenDatabase : public testing::TestWithParam<Version> {
protected:
    OpenDatabase() {
        Database file(kPath, on(disk));
        file.createTable({
            "contas",
            {{"id", ColumnType::longInteger, 0, true}, {"nome", ColumnType::text, 10}},
            {{"PrimaryKey", {{"id"}}, true}                                       }
        });
    }
    static Row named(const char* name) { return {Value{}, Value{std::string(name)}}; }

    MemoryDisk disk{emptyShop(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(, OpenDatabase, bothVersions(), versionName);

TEST_P(OpenDatabase, OfASoundFile) {
    Database file(kPath, on(disk));
    EXPECT_EQ(file.path(), kPath);
    EXPECT_EQ(file.version(), GetParam());
    EXPECT_EQ(file.damage(), std::nullopt);
    EXPECT_EQ(file.notice(), std::nullopt);
    EXPECT_FALSE(file.isBroken());
    EXPECT_FALSE(file.inTransaction());
}

TEST_P(OpenDatabase, TextsAreComparedInTheFilesOrder) {
    const Database file(kPath, on(disk));
    EXPECT_EQ(file.compareText("joão", "JOÃO"), 0);
    EXPECT_LT(file.compareText("joao", "joão"), 0);
    EXPECT_LT(file.compareText("ana", "bia"), 0);
    EXPECT_GT(file.compareText("bia", "ana"), 0);
    EXPECT_NE(file.compareText("ana", "ana "), 0);
}

TEST_P(OpenDatabase, TellsWhoElseHasWrittenAndHowOften) {
    Database file(kPath, on(disk));
    Database other(kPath, on(disk));
    EXPECT_EQ(file.table("contas").rowCount(), 0);
    const std::uint64_t before = file.changesByOthers();
    const std::uint64_t refreshes = file.refreshes();
    const std::uint64_t generation = file.generation();
    EXPECT_THAT(file.writersSince(before), testing::IsEmpty());
    other.table("contas").insert(named("a"));
    other.flush();
    EXPECT_EQ(file.table("contas").rowCount(), 1);
    EXPECT_GT(file.changesByOthers(), before);
    EXPECT_GT(file.refreshes(), refreshes);
    EXPECT_GT(file.generation(), generation);
    EXPECT_THAT(file.writersSince(before), testing::SizeIs(1));
    EXPECT_THAT(file.writersSince(file.changesByOthers()), testing::IsEmpty());
}

TEST_P(OpenDatabase, OfAFileThatNobodySharesNobodyElseWrites) {
    auto options = on(disk);
    options.readOnly = options.unshared = true;
    Database file(kPath, options);
    EXPECT_TRUE(file.readOnlyReason());
    EXPECT_FALSE(file.isBroken());
    file.setSnapshotHold(std::chrono::hours(1));
    EXPECT_EQ(file.table("contas").rowCount(), 0);
    EXPECT_GT(file.changesByOthers(), 0U) << "no moment of a row on show is 0";
    EXPECT_THAT(file.writersSince(0), testing::IsEmpty());
    file.onSnapshot([&] { file.breathe(); });
}

TEST_P(OpenDatabase, ToBeWrittenIsSharedWhateverWasAskedFor) {
    auto options = on(disk);
    options.unshared = true;
    Database file(kPath, options);
    Database other(kPath, on(disk));
    file.table("contas").insert(named("a"));
    file.flush();
    EXPECT_EQ(other.table("contas").rowCount(), 1);
}

TEST_P(OpenDatabase, ATableThatIsThereAlreadyIsRefusedWithinATransactionToo) {
    Database file(kPath, on(disk));
    const TableSpec again{"CONTAS", {{"id", ColumnType::longInteger}}, {}};
    EXPECT_EQ(errorOf([&] { file.createTable(again); }), Errc::exists);
    file.begin();
    file.table("contas").insert(named("a"));
    EXPECT_EQ(errorOf([&] { file.createTable(again); }), Errc::exists);
    EXPECT_TRUE(file.inTransaction());
    file.commit();
    EXPECT_EQ(file.table("contas").rowCount(), 1);
}

// The operator is told how many records are saved.
TEST_P(OpenDatabase, ANewTableIsNoRecord) {
    Database file(kPath, on(disk));
    file.createTable({"outra", {{"id", ColumnType::longInteger}}, {}});
    file.flush();
    EXPECT_EQ(file.tally().written, 0U);
    file.table("contas").insert(named("a"));
    file.flush();
    EXPECT_EQ(file.tally().written, 1U);
}

TEST_P(OpenDatabase, ASnapshotIsHeldAsLongAsAskedFor) {
    Database file(kPath, on(disk));
    Database other(kPath, on(disk));
    const auto rows = [&] { return file.table("contas").rowCount(); };
    file.setSnapshotHold(std::chrono::hours(1));
    EXPECT_EQ(rows(), 0);
    other.table("contas").insert(named("a"));
    other.flush();
    EXPECT_EQ(rows(), 0);
    // What is changed is compared with the newest all the same.
    file.table("contas").insert(named("b"));
    EXPECT_EQ(rows(), 2);
    file.setSnapshotHold({});
    file.flush();
    other.table("contas").insert(named("c"));
    other.flush();
    EXPECT_EQ(rows(), 3);
}

TEST_P(OpenDatabase, OthersMayWriteWhileALongReadingBreathes) {
    Database file(kPath, on(disk));
    Database other(kPath, on(disk));
    other.table("contas").insert(named("a"));
    other.flush();
    int begun = 0;
    const auto names = file.onSnapshot([&] {
        ++begun;
        std::vector<RowId> found;
        RowCursor row = file.table("contas").scan();
        for (bool there = row.first(); there; there = row.next()) {
            file.breathe();
            found.push_back(row.id());
        }
        return found;
    });
    EXPECT_EQ(begun, 1) << "nobody waits";
    EXPECT_EQ(names.size(), 1U);
    file.breathe(); // outside of any it is nothing
}

class ToldBeforehand : public People {};
INSTANTIATE_TEST_SUITE_P(, ToldBeforehand, bothVersions(), versionName);

TEST_P(ToldBeforehand, ATableTellsWhetherAColumnTakesEmptyText) {
    EXPECT_TRUE(table().takesEmptyText(kNome)) << "where the file says nothing";
    keep({
        {.column = "nome",  .allowZeroLength = false},
        {.column = "obs",   .allowZeroLength = true },
        {.column = "valor", .allowZeroLength = false, .rule = ">0"}, // it has no texts
        {.column = "peso",                 .rule = ">0"                         }
    });
    EXPECT_FALSE(table().takesEmptyText(kNome));
    for (const std::size_t column : {kObs, kIdade, kValor, kPeso})
        EXPECT_TRUE(table().takesEmptyText(column)) << column;
    keep({
        {.column = "nome", .allowZeroLength = false, .rule = "Desconhecida()"}
    });
    EXPECT_TRUE(table().takesEmptyText(kNome)) << "nothing is taken at all";
}

TEST_P(ToldBeforehand, ATableTellsWhatAColumnRefuses) {
    keep({
        {.column = "idade",              .required = true, .rule = ">=0", .message = "Idade inválida."},
        {.column = "peso", .rule = "<=[idade]"                },
        {.column = "ativo",           .required = true          }
    });
    EXPECT_EQ(table().refusal(kIdade, whole(7)), std::nullopt);
    EXPECT_THAT(table().refusal(kIdade, whole(-1)).value_or(""),
                testing::HasSubstr("Idade inválida."));
    EXPECT_THAT(table().refusal(kIdade, Value{}).value_or(""), testing::HasSubstr("\"idade\""));
    EXPECT_THAT(table().refusal(kIdade, "x"s).value_or(""), testing::HasSubstr("\"idade\""));
    EXPECT_EQ(table().refusal(kNome, Value{}), std::nullopt);
    EXPECT_EQ(table().refusal(kPeso, 9.0), std::nullopt) << "what the other is can't be told yet";
    EXPECT_EQ(table().refusal(kAtivo, Value{}), std::nullopt) << "no yes is a no";
    EXPECT_THAT(table().refusal(kNome, std::string(41, 'x')).value_or(""),
                testing::HasSubstr("40"));
}

TEST_P(ToldBeforehand, TheNumberingEndsWhereTheColumnDoes) {
    add({
        {kId, whole(2147483646)}
    });
    const RowId last = add({
        {kNome, "b"s}
    });
    EXPECT_EQ(value(last, kId), whole(2147483647));
    EXPECT_EQ(refusal([&] {
                  add({
                      {kNome, "c"s}
                  });
              }).code(),
              Errc::full);
    const RowId given = add({
        {kId, whole(5)}
    }); // one that is given is kept
    EXPECT_EQ(value(given, kId), whole(5));
}

} // namespace
