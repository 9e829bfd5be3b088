// What is between a statement and its rows when something is amiss: a text that asks for more than
// rows, memory that runs out, an index that isn't sound.
#include "ado/engine/Engine.h"

#include "ado/Shop.h"
#include "jet/TableDefinition.h"
#include "support/Versions.h"

namespace {

using jet::Errc;
using namespace std::string_literals;
using Strings = std::vector<std::string>;

class EngineTest : public Shop {
protected:
    EngineTest() { addSomeOfEach(); }

    [[nodiscard]] std::size_t pageSize() const { return jet::formatOf(GetParam()).pageSize; }
    static Strings numbers(ado::PreparedStatement& statement) {
        Strings found;
        while (statement.step())
            found.push_back(std::to_string(statement.integer(0)));
        return found;
    }
};
INSTANTIATE_TEST_SUITE_P(, EngineTest, bothVersions(), keptName);

TEST_P(EngineTest, WhateverTheDialectLetThroughOnlyRowsAreGiven) {
    ado::Engine engine(connection.database());
    static_cast<void>(engine.spelling().table("bancos"));
    for (const char* statement : {"select randomblob(9)",
                                  "select load_extension('x')",
                                  "select sqlite_version()",
                                  "select * from sqlite_master",
                                  "select * from sqlite_schema",
                                  "select * from pragma_table_list",
                                  "pragma table_list",
                                  "pragma writable_schema=1",
                                  "attach ':memory:' as x",
                                  "detach main",
                                  "create table x(a)",
                                  "create temp table x(a)",
                                  "drop table bancos",
                                  "insert into bancos values(1,2,'x')",
                                  "update bancos set nome='x'",
                                  "delete from bancos",
                                  "begin",
                                  "savepoint x",
                                  "analyze",
                                  "select * from cheques",
                                  "select fantasia from bancos",
                                  "select \"fantasia\" from bancos",
                                  "select from",
                                  "select 'a"}) {
        const Errc code = errorOf([&] { (void)engine.prepare(statement); });
        EXPECT_TRUE(code == Errc::notFound || code == Errc::syntax) << statement;
    }
    auto banks = engine.prepare("select codigo from bancos order by nome");
    EXPECT_EQ(numbers(banks), (Strings{"3", "1", "2"}));
}

TEST_P(EngineTest, WithoutMemoryEachStatementFailsAsAWhole) {
    const std::string text(3000, 'x');
    const auto answer = [&](std::size_t memory) {
        ado::Engine engine(connection.database(), {.bytes = memory});
        for (const char* table : {"bancos", "cheques", "cliente_fornecedor"})
            static_cast<void>(engine.spelling().table(table));
        auto statement = engine.prepare(
            "select bancos.codigo, jet_ucase(bancos.nome ->> null ->> ?1) as nome, count(*) from "
            "bancos inner join cheques on cheques.banco=bancos.codigo where jet_len(?1)=3000 "
            "group by nome order by nome desc");
        statement.bind(1, text);
        return numbers(statement);
    };
    const Strings expected = answer(std::size_t{64} << 20);
    EXPECT_EQ(expected, (Strings{"2", "1", "3"}));
    int failed = 0;
    bool answered = false;
    for (std::size_t memory = 8 << 10; !answered; memory += 3 << 10) {
        try {
            EXPECT_EQ(answer(memory), expected) << memory;
            answered = true;
        } catch (const jet::Error& error) {
            EXPECT_TRUE(error.code() == Errc::full || error.code() == Errc::io)
                << memory << ": " << error.what();
            ++failed;
        }
    }
    EXPECT_GT(failed, 10);
    const ado::Engine asEver(connection.database());
    EXPECT_EQ(column("select nome from bancos order by nome", "nome").size(), 3U);
}

TEST_P(EngineTest, WhatIsLookedForIsBoundedToo) {
    ado::Engine engine(connection.database());
    auto statement = engine.prepare("select 1 where ?1='x'");
    EXPECT_EQ(errorOf([&] { statement.bind(1, std::string(std::size_t{65} << 20, 'x')); }),
              Errc::full);
    statement.bind(1, "x"s);
    EXPECT_TRUE(statement.step());
}

TEST_P(EngineTest, SeveralStepsBeginAStatementAndGoOnInIt) {
    ado::Engine engine(connection.database());
    static_cast<void>(engine.spelling().table("cheques"));
    auto statement = engine.prepare("select lancamento from cheques order by lancamento");
    for (int round = 0; round < 2; ++round) {
        Strings met;
        int begun = 0;
        const auto begin = [&] { ++begun; };
        const auto row = [&] { met.push_back(std::to_string(statement.integer(0))); };
        EXPECT_TRUE(statement.steps(2, begin, row));
        EXPECT_LE(met.size(), 2U);
        while (statement.steps(3, begin, row)) {
        }
        EXPECT_EQ(begun, 1);
        EXPECT_EQ(met, (Strings{"1", "2", "3", "4", "5", "6"}));
        statement.reset();
    }
}

TEST_P(EngineTest, ADamagedIndexIsToldOfWhereItIsWalkedAndHarmsNothingElse) {
    const jet::TableDefinition& cheques = table("cheques").definition();
    const std::size_t due = *table("cheques").findColumn("bompara");
    std::size_t root = 0;
    for (const jet::RealIndex& index : cheques.realIndexes)
        if (index.columns.front().column == due)
            root = jet::number(index.root) * pageSize();
    ASSERT_NE(root, 0U);
    std::string sound;
    changeBytes([&](std::string& bytes) {
        sound = bytes;
        bytes.replace(root, pageSize(), pageSize(), '\xA5');
    });
    EXPECT_EQ(
        errorOf([&] { column("select * from cheques where bompara=#02/29/2024#", "lancamento"); }),
        Errc::corrupt);
    EXPECT_EQ(column("select * from cheques where numero='A-77'", "lancamento"), Strings{"4"});
    EXPECT_EQ(
        column("select * from cheques where bompara=#02/29/2024# and lancamento=4", "lancamento"),
        Strings{"4"});
    EXPECT_EQ(column("cheques", "lancamento").size(), 6U);
    changeBytes([&](std::string& bytes) { bytes = sound; });
    EXPECT_EQ(column("select * from cheques where bompara=#02/29/2024#", "lancamento"),
              Strings{"4"});
}

TEST_P(EngineTest, AnEntryOfAnIndexWhoseRowIsErasedIsPassedOver) {
    jet::RowId second;
    auto scan = table("cheques").scan();
    for (bool there = scan.first(); there; there = scan.next())
        if (scan.row().integer(0) == 2)
            second = scan.id();
    const std::size_t slot = jet::number(second.page) * pageSize() +
                             jet::formatOf(GetParam()).dataPage.slot(second.slot).at;
    std::string sound;
    changeBytes([&](std::string& bytes) {
        sound = bytes;
        bytes.at(slot + 1) = static_cast<char>(static_cast<unsigned char>(bytes[slot + 1]) | 0xC0U);
    });
    EXPECT_EQ(column("select * from cheques where bompara>=#01/10/2024# and "
                     "bompara<#02/20/2024# order by bompara",
                     "lancamento"),
              (Strings{"1", "3"}));
    EXPECT_EQ(column("select * from cheques where numero='000200'", "lancamento"), Strings{});
    EXPECT_EQ(column("select lancamento from cheques where lancamento<4 order by lancamento desc",
                     "lancamento"),
              (Strings{"3", "1"}));
    changeBytes([&](std::string& bytes) { bytes = sound; });
}

} // namespace
