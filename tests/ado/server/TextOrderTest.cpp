// Texts on a server go as they do in a file, whatever is in them.
#include "ado/ConnectionString.h"
#include "ado/Migration.h"
#include "ado/ServerShop.h"
#include "ado/Shop.h"
#include "ado/server/ServerOrder.h"
#include "ado/server/ServerSchema.h"
#include "ado/server/ServerWire.h"
#include "jet/TableDefinition.h"
#include "jet/Utf8.h"
#include "support/Cluster.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using jet::Version;

/// A database with what orders texts as a file of the version does.
class TextOrder : public testing::TestWithParam<Version> {
protected:
    void SetUp() override {
        if (const std::string why = Cluster::absence(); !why.empty())
            GTEST_SKIP() << why;
        wire.emplace(Cluster::instance(shopTables()).newDatabase());
        static_cast<void>(wire->run("create schema valtrino"));
        static_cast<void>(wire->run("create schema valtrino_estacoes"));
        ado::createFoundation(*wire, GetParam());
    }
    [[nodiscard]] const jet::Collation& order() const {
        return jet::Collation::general(GetParam());
    }

    /// Which of the texts have another key on the server than in a file.
    std::string differences(const std::vector<std::string>& texts) {
        std::string list;
        for (const std::string& text : texts)
            list.append(list.empty() ? "" : ",").append("\"" + escaped(text) + "\"");
        const ado::ServerRows keys =
            wire->run("select jet_chave(t) from unnest($1::text[]) with ordinality as u (t, n) "
                      "order by n",
                      {
                          {1009, "{" + list + "}"}
        });
        std::string found;
        for (int row = 0; row < keys.rows(); ++row) {
            jet::Bytes key;
            order().appendSortKey(key, texts[static_cast<std::size_t>(row)]);
            if (const std::string wanted = "\\x" + digits(key); keys.field(row, 0) != wanted)
                found += "\"" + texts[static_cast<std::size_t>(row)] +
                         "\": " + keys.field(row, 0).value_or("null") + ", in a file " + wanted +
                         "\n";
        }
        return found;
    }

    std::optional<ado::ServerWire> wire;

private:
    static std::string escaped(const std::string& text) {
        std::string made;
        for (const char c : text) {
            if (c == '"' || c == '\\')
                made += '\\';
            made += c;
        }
        return made;
    }
    static std::string digits(const jet::Bytes& bytes) {
        std::string text;
        for (const std::byte byte : bytes)
            for (const unsigned shift : {4U, 0U})
                text += "0123456789abcdef"[std::to_integer<unsigned>(byte) >> shift & 15U];
        return text;
    }
};
INSTANTIATE_TEST_SUITE_P(, TextOrder, testing::Values(Version::jet3, Version::jet4),
                         [](const auto& chosen) {
                             return chosen.param == Version::jet3 ? "Jet3" : "Jet4";
                         });

std::string utf8(std::u32string_view characters) {
    std::string text;
    for (const char32_t character : characters)
        jet::appendUtf8(text, character);
    return text;
}

TEST_P(TextOrder, CharactersAlone) {
    std::vector<std::string> texts;
    const auto add = [&](char32_t from, char32_t to, char32_t step) {
        for (char32_t character = from; character < to; character += step)
            if (character < 0xD800 || character > 0xDFFF)
                texts.push_back(utf8(std::u32string(1, character)));
    };
    add(1, 0x600, 1);        // whatever a code page of here has, and more
    add(0x2000, 0x2200, 1);  // signs
    add(0x3040, 0x3100, 1);  // kana
    add(0x600, 0x10000, 29); // of all others some
    add(0x10000, 0x110000, 9973);
    EXPECT_EQ(differences(texts), "");
}

TEST_P(TextOrder, TextsOfManyKinds) {
    const std::u32string_view alphabets[] = {
        U"aAáâbcsS' -.1",      U"0123456789-/.",
        U"sßeéæœaëdǅǄ'-",      U"aeé\u0301\u0303\u0001\u0002-' ",
        U"アァあｱかがガ-a",    U"a😀𐐁넀é-",
        U"中文ab한ГгÑñ\u0378", U"_@^`a\t\nBéº°ª–—’“½Þ"};
    std::mt19937 random(1);
    std::vector<std::string> texts{std::string(300, 'x') + "é-", "ana  ", "  ", " ana", "a''b"};
    for (const std::u32string_view alphabet : alphabets)
        for (int i = 0; i < 300; ++i) {
            std::u32string text;
            for (std::size_t left = random() % 9; left > 0; --left)
                text += alphabet[random() % alphabet.size()];
            texts.push_back(utf8(text));
        }
    EXPECT_EQ(differences(texts), "");
}

/// A file, and the same on a server.
class SameOrder : public testing::TestWithParam<Version> {
protected:
    void SetUp() override {
        if (const std::string why = Cluster::absence(); !why.empty())
            GTEST_SKIP() << why;
        const std::filesystem::path path = folder / "automacao.mdb";
        jet::Database::create(path, GetParam());
        {
            jet::Database database(path);
            jet::Table& table = database.createTable({
                "textos",
                {{"codigo", jet::ColumnType::longInteger, 0, true},
                  {"nome", jet::ColumnType::text, 50},
                  {"numero", jet::ColumnType::longInteger}},
                {{"PrimaryKey", {{"codigo"}}, true},                                                 {"nome", {{"nome"}}}}
            });
            for (const std::string& text : texts())
                table.insert(
                    jet::Row{jet::Value(), text, static_cast<std::int32_t>(text.size() % 3)});
        }
        address = Cluster::instance(shopTables()).newDatabase();
        static_cast<void>(ado::migrateToServer(path, address, {}, {}, {}, {}));
        file.Open("Data Source=" + ado::quotedValue(path.string()));
        server.Open("Data Source=" + ado::quotedValue(address));
    }
    void TearDown() override {
        server.Close();
        file.Close();
    }

    /// All that a file of code page 1252 holds, between letters, alone and doubled, and words.
    const std::vector<std::string>& texts() {
        if (!texts_.empty())
            return texts_;
        texts_ = {"",      "Ana",    "ANA",    "ana ",   "Aná",   "aná  ", "co-op",
                  "coop",  "co op",  "d'agua", "D'Água", "dagua", "ação",  "acao",
                  "AÇÃO",  "Süß",    "suss",   "SÜSS",   "æ",     "AE",    "1234-5",
                  "12345", "12-345", "º",      "o",      "ª",     "Nº 1"};
        const jet::TextCodec codec(Version::jet3, 1252);
        for (unsigned i = 1; i < 256; ++i) {
            const auto byte = static_cast<std::byte>(i);
            const std::string one = codec.decode({&byte, 1});
            texts_.push_back("a" + one + "b");
            if (i % 3 == 0)
                texts_.push_back(one);
            if (i % 5 == 0)
                texts_.emplace_back("x").append(one).append(one);
        }
        return texts_;
    }
    static std::string quoted(const std::string& text) {
        std::string made = "'";
        for (const char c : text)
            made.append(c == '\'' ? 2 : 1, c);
        return made + "'";
    }
    static std::string answer(ado::Connection& connection, const std::string& statement) {
        ado::Recordset rows;
        rows.Open(statement, connection);
        std::string all;
        for (; !rows.EOF(); rows.MoveNext())
            all += rows["r"].text() + "|";
        return all;
    }
    void same(const std::string& statement) {
        EXPECT_EQ(answer(server, statement), answer(file, statement)) << statement;
    }

    TemporaryFolder folder;
    std::string address; ///< of the server
    ado::Connection file;
    ado::Connection server;

private:
    std::vector<std::string> texts_;
};
INSTANTIATE_TEST_SUITE_P(, SameOrder, testing::Values(Version::jet3, Version::jet4),
                         [](const auto& chosen) {
                             return chosen.param == Version::jet3 ? "Jet3" : "Jet4";
                         });

TEST_P(SameOrder, OfLists) {
    same("select codigo as r from textos order by nome");
    same("select codigo as r from textos order by nome desc");
    same("select codigo as r from textos order by numero desc, nome");
    same("select codigo as r, nome & '' as n from textos order by nome & '', codigo");
    same("select codigo as r, nome & '' as n from textos order by n desc, codigo");
    same("select codigo as r, mid$(nome,2,9) from textos order by 2, codigo");
    same("select codigo as r from (select codigo, nome from textos) as t order by t.nome, codigo");
    same("select t.codigo as r from textos t inner join textos u on t.codigo=u.codigo order by "
         "u.nome, t.codigo");
}

TEST_P(SameOrder, OfListsThatAreOddlySaid) {
    for (const char* const statement : {
             "select all codigo as r, nome as n from textos order by 2 asc, 1 desc",
             "select codigo as r, nome n from textos order by 2, 1",
             "select codigo as r, nome & '' as n from textos order by n asc, codigo",
             "select codigo as r, t.nome from textos t order by 2, 1",
             "select codigo as r from textos where codigo=3 union select codigo from textos where "
             "codigo<3 order by r",
             "select codigo as r from textos where codigo=3 union all select codigo from textos "
             "where codigo<4 order by r desc",
             "select codigo as r from textos where numero+1 in (1, 3) order by codigo",
             "select codigo as r from textos where 'x' & nome in ('xana', 'xacao') order by codigo",
             "select codigo as r from textos t where t.nome in ('ana', mid$('xacao', 2)) order by "
             "1",
         })
        same(statement);
    for (const char* const wrong : {"select codigo as r from textos order by 0",
                                    "select codigo as r from textos order by , nome",
                                    "select codigo as r from textos order by",
                                    "select codigo as r from textos where nome in ('a',, 'b')",
                                    "select codigo as r from textos where nome in ('a'",
                                    "select codigo as r from textos where nome in ('a', )"})
        for (ado::Connection* const one : {&file, &server})
            EXPECT_THROW(static_cast<void>(answer(*one, wrong)), jet::Error) << wrong;
}

TEST_P(SameOrder, OfKeysThatAreTexts) {
    for (ado::Connection* const one : {&file, &server}) {
        one->store().createTable({
            "siglas",
            {{"sigla", jet::ColumnType::text, 20}, {"r", jet::ColumnType::longInteger}},
            {{"PrimaryKey", {{"sigla"}}, true}                                   }
        });
        ado::Recordset rows;
        rows.Open("siglas", *one);
        std::int32_t count = 0;
        for (const char* const text : {"b-a", "ba", "a'b", "ab", "Áb", "co-op", "coop", "z"}) {
            rows.AddNew();
            rows["sigla"] = text;
            rows["r"] = ++count;
            rows.Update();
        }
        rows.AddNew();
        rows["sigla"] = "CO-op";
        EXPECT_THROW(rows.Update(), jet::Error);
        rows.CancelUpdate();
        rows.MoveFirst();
        rows.Find("sigla='áB'");
        rows["r"] = 60;
        rows.Update();
    }
    same("siglas");
    same("select * from siglas where sigla>'ab' order by sigla desc");
}

TEST_P(SameOrder, OfComparisons) {
    for (std::size_t i = 0; i < texts().size(); i += 4) {
        const std::string text = quoted(texts()[i]);
        same("select codigo as r from textos where nome=" + text + " order by codigo");
        same("select count(*) as r from textos where nome<" + text);
        same("select count(*) as r from textos where mid$(nome,1,2)=mid$(" + text + ",1,2)");
        same("select count(*) as r from textos where nome between 'a' and " + text);
    }
    same("select count(*) as r from textos where nome in ('aeb','ana','coop')");
    same("select count(*) as r from textos t where codigo<9 or t.nome not in ('aeb','ana','co-op') "
         "and not codigo in (20,30+1,(40)) and nome & '' in ('aéb','coop','ANA')");
    same("select count(*) as r from textos t inner join textos u on t.nome=u.nome");
    same("select count(*) as r from textos where nome in (select nome & 'b' from textos)");
    same("select min(nome) as r from textos");
    same("select max(nome) as r from textos where codigo>1");
}

TEST_P(SameOrder, OfWhatIsAlike) {
    for (std::size_t i = 0; i < texts().size(); i += 4) {
        const std::string text = texts()[i];
        same("select codigo as r from textos where nome like " + quoted(text + "%") +
             " order by codigo");
    }
}

/// A shop of a version that ordered otherwise says so, and what to do.
TEST(ServerOrder, OfAVersionOfBeforeIsTold) {
    if (const std::string why = Cluster::absence(); !why.empty())
        GTEST_SKIP() << why;
    const std::string address = Cluster::instance(shopTables()).newDatabase();
    ado::createShopOnServer(address, shopTables());
    Cluster::answer(address, "drop function valtrino.jet_chave(text) cascade");
    ado::Connection connection;
    try {
        connection.Open("Data Source=" + ado::quotedValue(address));
        FAIL();
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), jet::Errc::unsupported);
        EXPECT_NE(std::string(error.what()).find("valtrino-mdb migrate"), std::string::npos);
    }
}

/// A list of a text's order, a search in it and a prefix of it are served by the index.
TEST_P(SameOrder, GoesByTheIndex) {
    ado::ServerWire wire(ado::serverAddress("Data Source=" + ado::quotedValue(address)).value());
    for (const char* const part :
         {"order by jet_chave(nome) nulls first, codigo limit 32",
          "where nome = 'ana' collate texto", "where nome >= 'b' collate texto and nome < 'c'",
          "where jet_chave(nome) > jet_chave('b') order by jet_chave(nome), codigo limit 32"}) {
        static_cast<void>(wire.run("set enable_seqscan = off"));
        const ado::ServerRows plan =
            wire.run(std::string("explain (costs off) select * from textos ") + part);
        std::string all;
        for (int row = 0; row < plan.rows(); ++row)
            all += plan.field(row, 0).value_or("") + "\n";
        EXPECT_NE(all.find("textos_jet_chave_codigo_idx"), std::string::npos) << part << all;
    }
}

} // namespace
