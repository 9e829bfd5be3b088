#include "ado/Shop.h"
#include "ado/engine/Engine.h"

#include <random>

namespace {

using ado::Recordset;
using jet::Errc;

/// Whatever is written, the answer is rows or an Error about the text; nothing is changed.
class HostileSql : public Shop {
protected:
    HostileSql() { addSomeOfEach(); }

    void open(const std::string& statement) {
        Recordset rows;
        try {
            rows.Open(statement, connection);
            for (int i = 0; i < 20 && !rows.EOF(); ++i)
                rows.MoveNext();
        } catch (const jet::Error& error) {
            EXPECT_TRUE(error.code() == Errc::syntax || error.code() == Errc::notFound ||
                        error.code() == Errc::full)
                << statement << ": " << error.what();
        }
    }
    void filter(const std::string& condition) {
        Recordset rows;
        rows.Open("cheques", connection);
        try {
            rows.setFilter(condition);
            rows.Find(condition);
        } catch (const jet::Error& error) {
            EXPECT_TRUE(error.code() == Errc::syntax || error.code() == Errc::notFound ||
                        error.code() == Errc::full)
                << condition << ": " << error.what();
        }
    }
    /// Every bank with every bank, `times` over: 3 to that power of rows.
    static std::string banksTimes(int times) {
        std::string tables = "bancos as b1";
        for (int i = 2; i <= times; ++i)
            tables += ", bancos as b" + std::to_string(i);
        return tables;
    }
    static std::string repeated(const std::string& part, int times) {
        std::string all;
        for (int i = 0; i < times; ++i)
            all += part;
        return all;
    }
};
INSTANTIATE_TEST_SUITE_P(Versions, HostileSql, testing::Values(jet::Version::jet4));

TEST_P(HostileSql, DepthAndLengthEndInAnError) {
    open("select " + repeated("(", 30000) + "1");
    open("select " + repeated("(", 59) + "1" + repeated(")", 59) + " from bancos");
    open("select * from bancos where " + repeated("not ", 9000) + "true");
    open("select * from bancos where codigo=" + repeated("-", 20000) + "1");
    open("select * from bancos where codigo=" + repeated("- ", 20000) + "1");
    open("select * from bancos where 1=1" + repeated(" or codigo=1", 4000));
    open("select * from bancos" + repeated(" union select * from bancos", 500));
    open("select * from bancos" + repeated(" inner join bancos on 1=1", 80));
    open("select * from bancos" + repeated(", bancos", 80));
    open("select " + repeated("codigo,", 5000) + "codigo from bancos");
    open("select * from bancos where codigo in (" + repeated("1,", 20000) + "1)");
    open("select * from bancos where nome like '" + repeated("%a", 50) + "'");
    open("select * from bancos where nome='" + std::string(70000, 'x') + "'");
    open("select iif(" + repeated("iif(true,", 50) + "1" + repeated(",1)", 50) +
         ",1,1) from bancos");
    open("select mid$(nome,0,1) from bancos");
    open("select mid$(nome,1,-1), left$(nome,-1) from bancos");
    open("select mid$(nome,9223372036854775807,9223372036854775807) from bancos");
    open("select right$(nome,9223372036854775807) from bancos");
    open("select sum(9223372036854775807) from bancos, bancos as b");
    open("select -9223372036854775808 / -1, 1/0, 5 mod 0 from bancos");
    open("select year(1e300), day(-1e300), int(1e300) from bancos");
    open(std::string("select * from bancos\0where", 26));
    open("select * from bancos where nome='\xff\xfe'");
    open("select sum(sum(codigo)) from bancos");
    open("select * from bancos where sum(codigo)=1");
    open("select * from bancos order by 99");
    open("select * from bancos where _rowid_=-5 or _rowid_=99999999999999 or _rowid_='x'");
    open("select * from bancos where _rowid_ in (1,2,3,null)");
    open("select rowid, nome from bancos");
    EXPECT_EQ(table("bancos").rowCount(), 3);
}

TEST_P(HostileSql, RandomPiecesOfTheDialectNeverDoHarm) {
    const std::vector<std::string> pieces{
        "select ", " from ",   " where ",  " order by ", "*",       ",",          "(",
        ")",       " and ",    " or ",     " not ",      "'",       "''",         "\"",
        "[",       "]",        "#",        "#1/2/2024#", "=",       "<>",         "<",
        "&",       "+",        "-",        "/",          ".",       ";",          "--",
        "/*",      " null ",   " true ",   " in ",       " like ",  " between ",  " as ",
        " inner ", " join ",   " on ",     " left ",     " union ", " group by ", " having ",
        "mid$(",   "sum(",     "count(*)", "iif(",       "date()",  "left(",      " mod ",
        "bancos",  "cheques ", "codigo ",  "nome ",      "valor",   "bompara ",   "cliente",
        "1",       "2.5",      "1e9",      "'a'",        "'%a'",    "é",          "\xff",
        " x ",     "$",        "!",        "@",          "0x1",     "\n",         " distinct "};
    std::mt19937 random(11);
    for (int i = 0; i < 6000; ++i) {
        std::string text;
        for (auto length = random() % 12; length > 0; --length)
            text += pieces[random() % pieces.size()];
        open(text);
        open("select * from bancos where " + text);
        std::string twice = "select ";
        open(twice.append(text).append(" from bancos, cheques order by ").append(text));
        filter(text);
    }
    EXPECT_EQ(table("bancos").rowCount(), 3);
    EXPECT_EQ(table("cheques").rowCount(), 6);
}

TEST_P(HostileSql, CutStatementsFailOrWorkAtEveryPlace) {
    const std::string statement =
        "Select * from (cheques inner join cliente_fornecedor on "
        "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
        "cheques.banco=bancos.codigo  where bompara between #01/01/2024# and #12/31/2024#"
        " and mid$(cliente_fornecedor.nome,1,2)='jo'order by cliente_fornecedor.nome,bompara";
    for (std::size_t i = 0; i <= statement.size(); ++i) {
        open(statement.substr(0, i));
        open(statement.substr(i));
        open(statement.substr(0, i) + "'" + statement.substr(i));
    }
}

// ---- what a statement may take

TEST_P(HostileSql, AJoinWithoutEndStopsAfterItsSteps) {
    ado::Engine engine(connection.database(), {.steps = 200'000});
    static_cast<void>(engine.spelling().table("bancos"));
    auto endless = engine.prepare("select count(*) from " + banksTimes(20));
    EXPECT_EQ(errorOf([&] { (void)endless.step(); }), Errc::full);
    EXPECT_GT(engine.longestRun(), 100'000U);
    EXPECT_LE(engine.longestRun(), 220'000U);

    auto rowByRow = engine.prepare("select 1 from " + banksTimes(20));
    const auto walk = [&] {
        while (rowByRow.step()) {
        }
    };
    EXPECT_EQ(errorOf(walk), Errc::full) << "all steps of a run count together";
    auto again = engine.prepare("select count(*) from " + banksTimes(8));
    for (int run = 0; run < 16; ++run) {
        EXPECT_TRUE(again.step()) << "each run counts for itself";
        again.reset();
    }
    auto next = engine.prepare("select codigo from bancos");
    EXPECT_TRUE(next.step());
}

TEST_P(HostileSql, ASortIsBoundedInMemoryAndOnTheDisk) {
    ado::Engine engine(connection.database(),
                       {.bytes = std::size_t{8} << 20, .sorted = std::uint64_t{32} << 20});
    static_cast<void>(engine.spelling().table("bancos"));
    auto wide = engine.prepare("select b1.nome, '" + std::string(10'000, 'x') + "' as x from " +
                               banksTimes(9) + " order by x, b1.nome");
    EXPECT_EQ(errorOf([&] { (void)wide.step(); }), Errc::full);
    auto next = engine.prepare("select codigo from bancos");
    EXPECT_TRUE(next.step());
    EXPECT_LE(engine.mostSorted(), std::uint64_t{32} << 20);
    EXPECT_GT(engine.mostSorted(), std::uint64_t{16} << 20);
    const ado::Engine asEver(connection.database());
}

TEST_P(HostileSql, WhatIsTooLargeForMemoryIsSortedOnTheDisk) {
    ado::Engine engine(connection.database(), {.bytes = std::size_t{8} << 20});
    static_cast<void>(engine.spelling().table("bancos"));
    // b1 falls while what it is read by grows.
    auto wide =
        engine.prepare("select b1.codigo, b2.codigo, '" + std::string(10'000, 'x') +
                       "' as x from " + banksTimes(7) + " order by x, b1.codigo desc, b2.codigo");
    std::vector<std::pair<std::int64_t, std::int64_t>> order;
    while (wide.step())
        order.emplace_back(-wide.integer(0), wide.integer(1));
    EXPECT_EQ(order.size(), 2187U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_GT(engine.mostSorted(), std::uint64_t{16} << 20);

    auto narrow = engine.prepare("select codigo from bancos order by nome");
    const std::uint64_t before = engine.mostSorted();
    while (narrow.step()) {
    }
    EXPECT_EQ(engine.mostSorted(), before);
}

TEST_P(HostileSql, ASmallListIsSortedInMemory) {
    ado::Engine engine(connection.database());
    static_cast<void>(engine.spelling().table("bancos"));
    auto list = engine.prepare("select distinct b1.nome, b2.nome, b3.codigo from " + banksTimes(6) +
                               " order by b1.nome desc");
    while (list.step()) {
    }
    EXPECT_EQ(engine.mostSorted(), 0U);
}

TEST_P(HostileSql, ALargeFilesListMayTakeMore) {
    EXPECT_GE(ado::Bounds::forFileOf(2'000'000'000).steps, 13'000'000U * 100);
    EXPECT_GE(ado::Bounds::forFileOf(2'000'000'000).sorted, 2'000'000'000U);
    EXPECT_EQ(ado::Bounds::forFileOf(0).steps, ado::Bounds().steps);
}

TEST_P(HostileSql, WhatIsKeptOfAnAnswerIsBounded) {
    Recordset rows;
    rows.Open("select b1.nome & '" + std::string(30'000, 'x') + "' as x from " + banksTimes(9),
              connection);
    EXPECT_EQ(errorOf([&] { (void)rows.RecordCount(); }), Errc::full);
    rows.Close();
    rows.Open("select b1.nome & '" + std::string(30'000, 'x') + "' as x from " + banksTimes(9),
              connection, ado::CursorType::ForwardOnly);
    int walked = 0;
    for (; !rows.EOF(); rows.MoveNext())
        ++walked;
    EXPECT_EQ(walked, 19'683) << "nothing is kept of what has been passed";
    rows.Close();
    rows.Open("bancos", connection);
    EXPECT_EQ(rows.RecordCount(), 3);
}

TEST_P(HostileSql, AReportOfAMillionChequesIsFarFromTheBounds) {
    constexpr int kCheques = 2000;
    connection.BeginTrans();
    for (int i = 0; i < kCheques; ++i)
        add("cheques", {
                           {"cliente", std::int64_t{1 + i % 3}},
                           {"banco",   std::int64_t{1 + i % 3}},
                           {"data",    day(2024,                1 + i % 12, 1)},
                           {"bompara",       day(2024,                              1 + i % 12, 15)},
                           {"valor",jet::Currency{i}}
        });
    connection.CommitTrans();
    ado::Engine engine(connection.database());
    for (const char* table : {"cheques", "cliente_fornecedor", "bancos"})
        static_cast<void>(engine.spelling().table(table));
    auto report = engine.prepare(
        "select cheques._rowid_, cliente_fornecedor._rowid_, bancos._rowid_ from (cheques inner "
        "join cliente_fornecedor on cheques.cliente=cliente_fornecedor.codigo) inner join bancos "
        "on cheques.banco=bancos.codigo where cheques.data between 45000 and 46000 order by "
        "cliente_fornecedor.nome, cheques.bompara");
    int rows = 0;
    while (report.step())
        ++rows;
    EXPECT_GE(rows, kCheques);
    EXPECT_GT(engine.longestRun(), 0U);
    EXPECT_LT(engine.longestRun() / kCheques * 1'000'000, ado::Bounds().steps);
}

} // namespace
