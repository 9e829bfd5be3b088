#include "ado/ConnectionString.h"
#include "ado/Shop.h"
#include "support/Versions.h"

#include <fstream>

namespace {

using ado::Connection;
using ado::Recordset;
using jet::Errc;
namespace fs = std::filesystem;

class ConnectionTest : public Shop {};
INSTANTIATE_TEST_SUITE_P(, ConnectionTest, bothVersions(), keptName);

TEST(ConnectionString, OnlyTheDataSourceCounts) {
    EXPECT_EQ(ado::dataSource("Provider=X;Persist Security Info=False;Data Source=/a/b.mdb"),
              "/a/b.mdb");
    EXPECT_EQ(ado::dataSource(" DATA SOURCE = /a b/c.mdb ; Provider=X"), "/a b/c.mdb");
    EXPECT_EQ(ado::dataSource("data source=\"/a;b/c.mdb\";x=y"), "/a;b/c.mdb");
    EXPECT_EQ(ado::dataSource("Data Source=/one;Data Source=/two"), "/two");
    EXPECT_EQ(ado::dataSource("Provider;Data Source=/a/b.mdb;Secure"), "/a/b.mdb");
    for (const char* none : {"", "Provider=X", "Data Source", "Data Source=;", "Data Source= "})
        EXPECT_EQ(errorOf([&] { (void)ado::dataSource(none); }), Errc::misuse) << none;
}

TEST(ConnectionString, AnAddressIsKeptWithoutItsPasswordWhereverItStands) {
    const std::pair<const char*, const char*> addresses[] = {
        {"postgresql://caixa:se:g@loja/base",                    "postgresql://caixa@loja/base"            },
        {"postgresql://caixa:@loja/base",                        "postgresql://caixa@loja/base"            },
        {"postgresql://:segredo@loja/base",                      "postgresql://@loja/base"                 },
        {"postgresql://caixa:segredo@a,b:5433/base?x=y",         "postgresql://caixa@a,b:5433/base?x=y"    },
        {"postgresql:///base?user=a&password=b&host=/c",         "postgresql:///base?user=a&host=/c"       },
        {"postgresql:///base?password=b",                        "postgresql:///base"                      },
        {"postgresql:///base?p%61ssword=b&sslpassword=c&user=a", "postgresql:///base?user=a"               },
        {"postgresql:///base?pass%&p%6=1&%zzword=2",             "postgresql:///base?pass%&p%6=1&%zzword=2"},
        {"postgresql://loja:5433/base?passfile=/d",              "postgresql://loja:5433/base?passfile=/d" },
        {"postgresql://loja/@b:c",                               "postgresql://loja/@b:c"                  },
        {"postgresql://",                                        "postgresql://"                           },
        {"/loja:a@b?password=c",                                 "/loja:a@b?password=c"                    },
    };
    for (const auto& [written, kept] : addresses)
        EXPECT_EQ(ado::withoutPassword(written), kept) << written;
    EXPECT_EQ(ado::withPassword("postgresql://a:b@loja/base?password=c", "d&ç"),
              "postgresql://a@loja/base?password=%64%26%C3%A7");
    EXPECT_EQ(ado::withPassword("postgresql:///base?user=a", "="),
              "postgresql:///base?user=a&password=%3D");
}

TEST(ConnectionString, AnyPathGoesThroughItInQuotesWhereItNeedsThem) {
    const struct {
        const char* path;
        const char* written;
    } cases[] = {
        {"/dados/a.mdb",            "/dados/a.mdb"                },
        {"/loja; filial=2/a.mdb",   "\"/loja; filial=2/a.mdb\""   },
        {"/D'Avila & Filhos/a.mdb", "/D'Avila & Filhos/a.mdb"     },
        {"/a=b/\"c\"/a.mdb",        "/a=b/\"c\"/a.mdb"            },
        {"\"c\"/a.mdb",             "\"\"\"c\"\"/a.mdb\""         },
        {"'c'/a.mdb",               "\"'c'/a.mdb\""               },
        {"/a;\"b\"'c/a.mdb\"",      "\"/a;\"\"b\"\"'c/a.mdb\"\"\""},
        {"\"",                      "\"\"\"\""                    },
        {";",                       "\";\""                       },
    };
    EXPECT_EQ(ado::quotedValue(""), "");
    for (const auto& [path, written] : cases) {
        EXPECT_EQ(ado::quotedValue(path), written);
        const std::string value = ado::quotedValue(path);
        EXPECT_EQ(ado::dataSource("Provider=X;Data Source=" + value + ";Y=Z"), path);
        EXPECT_EQ(ado::dataSource("Data Source = " + value + " "), path);
    }
}

TEST(ConnectionString, WhateverIsQuotedIsReadBackAsItWas) {
    const std::string signs = " \t;\"'=a";
    std::vector<std::string> values = {""};
    for (std::size_t from = 0, length = 1; length <= 5; ++length) {
        const std::size_t end = values.size();
        for (; from < end; ++from)
            for (const char sign : signs)
                values.push_back(values[from] + sign);
    }
    ASSERT_GT(values.size(), 19'000U);
    for (const std::string& value : values) {
        if (value.empty())
            continue;
        const std::string all = "Provider=X;Data Source=" + ado::quotedValue(value) + ";Y=Z";
        ASSERT_EQ(ado::dataSource(all).string(), value) << all;
    }
}

TEST(ConnectionString, QuotesThatDontGoAroundTheValueBelongToIt) {
    EXPECT_EQ(ado::dataSource("Data Source='a'/b.mdb"), "'a'/b.mdb");
    EXPECT_EQ(ado::dataSource("Data Source=\"a;b.mdb"), "\"a");
    EXPECT_EQ(ado::dataSource("Data Source='a;b'/c;d"), "'a;b'/c");
}

#ifndef _WIN32
TEST(ConnectionString, BackslashesSeparateFoldersAndDoubledOnesCountOnce) {
    EXPECT_EQ(ado::dataSource("Data Source=/dados\\\\automacao.mdb"), "/dados/automacao.mdb");
    EXPECT_EQ(ado::dataSource("Data Source=\\automacao.mdb"), "/automacao.mdb");
    EXPECT_EQ(ado::dataSource("Data Source=/dados/\\automacao.mdb"), "/dados/automacao.mdb");
}

TEST(ConnectionString, AFileIsFoundWhoseNameDiffersInCaseOnly) {
    TemporaryFolder folder;
    fs::create_directories(folder.path() / "Dados Ção");
    const auto touch = [&](const char* name) {
        std::ofstream(folder.path() / "Dados Ção" / name) << "x";
    };
    touch("AUTOMACAO.MDB");
    touch("automacao.mdb-journal");
    const auto wanted = folder.path() / "DADOS ÇÃO" / "automacao.mdb";
    EXPECT_EQ(ado::existingFile(wanted), folder.path() / "Dados Ção" / "AUTOMACAO.MDB");
    touch("automacao.mdb");
    EXPECT_EQ(ado::existingFile(wanted), folder.path() / "Dados Ção" / "automacao.mdb");
    EXPECT_EQ(errorOf([&] { (void)ado::existingFile(wanted / "automacao.mdb"); }), Errc::notFound)
        << "in a file there is none";
}

TEST(ConnectionString, OfSeveralNamesThatDifferInCaseOnlyTheFirstIsTaken) {
    TemporaryFolder folder;
    // In whatever order the system lists them.
    for (const char* name : {"AUTOMACAO.mdb", "Automacao.MDB", "AUTOMACAO.MDB", "automacao.MDB"})
        std::ofstream(folder.path() / name) << "x";
    EXPECT_EQ(ado::existingFile(folder.path() / "automacao.mdb"), folder.path() / "AUTOMACAO.MDB");
}

TEST(ConnectionString, APathWithoutAFolderIsOfTheCurrentOne) {
    TemporaryFolder folder;
    std::ofstream(folder.path() / "Automacao.mdb") << "x";
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    EXPECT_EQ(ado::existingFile("AUTOMACAO.MDB"), "Automacao.mdb");
    EXPECT_EQ(errorOf([] { (void)ado::existingFile("outro.mdb"); }), Errc::notFound);
    fs::current_path(before);
}
#endif

TEST(ConnectionString, AMissingDatabaseNamesThePath) {
    TemporaryFolder folder;
    Connection connection;
    try {
        connection.Open("Data Source=" + (folder.path() / "automacao.mdb").string());
        FAIL();
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), Errc::notFound);
        const std::string what = error.what();
        EXPECT_NE(what.find((folder.path() / "automacao.mdb").string()), std::string::npos) << what;
    }
    EXPECT_EQ(connection.State(), ado::State::Closed);
}

TEST_P(ConnectionTest, OpensAndCloses) {
    EXPECT_EQ(connection.State(), ado::State::Open);
    EXPECT_EQ(errorOf([&] { connection.Open(); }), Errc::misuse);
    connection.Close();
    EXPECT_EQ(connection.State(), ado::State::Closed);
    connection.Close();
    EXPECT_EQ(errorOf([&] { (void)connection.database(); }), Errc::misuse);
    EXPECT_EQ(errorOf([&] { connection.BeginTrans(); }), Errc::misuse);
    connection.flushIfDue();
    connection.Open();
    EXPECT_EQ(connection.State(), ado::State::Open);
}

TEST_P(ConnectionTest, ARecordsetOpensTheConnectionItNeeds) {
    Connection other;
    Recordset rows;
    EXPECT_EQ(errorOf([&] { rows.Open("bancos", other); }), Errc::misuse);
    connection.Close();
    other.setConnectionString(connectionString());
    rows.Open("bancos", other);
    EXPECT_EQ(other.State(), ado::State::Open);
}

TEST_P(ConnectionTest, ClosingClosesTheRecordsets) {
    addSomeOfEach();
    Recordset whole;
    Recordset joined;
    whole.Open("bancos", connection);
    joined.Open("select * from bancos, cheques", connection);
    connection.Close();
    EXPECT_EQ(whole.State(), ado::State::Closed);
    EXPECT_EQ(joined.State(), ado::State::Closed);
    EXPECT_EQ(errorOf([&] { whole.MoveFirst(); }), Errc::misuse);
    whole.Open("bancos", connection);
    EXPECT_EQ(whole.RecordCount(), 3);
}

TEST_P(ConnectionTest, ATransactionIsUndoneUnlessCommitted) {
    Recordset rows;
    rows.Open("bancos", connection);
    const auto addBank = [&](const char* name) {
        rows.AddNew();
        rows["cod_banco"] = 104;
        rows["nome"] = name;
        rows.Update();
    };
    {
        ado::Transaction transaction(connection);
        EXPECT_TRUE(connection.inTransaction());
        addBank("perdido");
        EXPECT_EQ(rows.RecordCount(), 1);
    }
    EXPECT_FALSE(connection.inTransaction());
    rows.Requery();
    EXPECT_TRUE(rows.EOF());
    EXPECT_EQ(rows.RecordCount(), 0);
    {
        ado::Transaction transaction(connection);
        addBank("guardado");
        transaction.commit();
    }
    connection.Close();
    connection.Open();
    EXPECT_EQ(column("bancos", "nome"), std::vector<std::string>{"guardado"});
    EXPECT_EQ(errorOf([&] { connection.CommitTrans(); }), Errc::misuse);
    EXPECT_EQ(errorOf([&] { connection.RollbackTrans(); }), Errc::misuse);
    connection.BeginTrans();
    EXPECT_EQ(errorOf([&] { connection.BeginTrans(); }), Errc::misuse);
}

TEST_P(ConnectionTest, WhatATransactionHasUndoneIsToldOnce) {
    addSomeOfEach();
    Recordset rows;
    rows.Open("bancos", connection);
    EXPECT_FALSE(connection.hasUndone());
    { ado::Transaction transaction(connection); }
    EXPECT_FALSE(connection.hasUndone()) << "nothing had been changed";
    {
        ado::Transaction transaction(connection);
        rows["nome"] = "perdido";
        rows.Update();
    }
    EXPECT_TRUE(connection.hasUndone());
    EXPECT_FALSE(connection.hasUndone());
    {
        ado::Transaction transaction(connection);
        rows["nome"] = "perdido";
        rows.Update();
        EXPECT_TRUE(connection.inTransaction());
        connection.Close();
    }
    EXPECT_FALSE(connection.inTransaction());
    EXPECT_FALSE(connection.hasUndone());
    connection.Open();
    EXPECT_EQ(column("bancos", "nome").front(), "Banco do Norte");
}

TEST_P(ConnectionTest, WhatIsGatheredCanBeDiscarded) {
    addSomeOfEach();
    connection.flush();
    Recordset list;
    list.Open("select * from bancos where codigo>0", connection);
    list["nome"] = "nunca gravado";
    list.Update();
    list.MoveNext();
    list.Delete();
    connection.discard();
    list.Requery();
    EXPECT_EQ(column(list, "nome"),
              (std::vector<std::string>{"Banco do Norte", "Banco do Sul", "Agrário"}));
    EXPECT_EQ(connection.database().tally().gathered, 0U);
}

TEST_P(ConnectionTest, ClosingUndoesATransactionLeftOpen) {
    connection.BeginTrans();
    Recordset rows;
    rows.Open("bancos", connection);
    rows.AddNew();
    rows["nome"] = "perdido";
    rows.Update();
    connection.Close();
    connection.Open();
    EXPECT_EQ(table("bancos").rowCount(), 0);
}

} // namespace
