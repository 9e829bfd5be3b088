// Files whose texts are in the order of a language: its code in the header and in every column.
#include "ado/Shop.h"
#include "jet/TableDefinition.h"
#include "support/Versions.h"

namespace {

using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

/// Flips bits; the same whether the byte is masked or not.
void flip(char& byte, unsigned bits) {
    byte = static_cast<char>(static_cast<unsigned char>(byte) ^ bits);
}

class OrdersTest : public Shop {
protected:
    OrdersTest() { addSomeOfEach(); }

    /// The whole file in that language, as if it had been made in it.
    void speak(std::uint16_t lcid, std::uint8_t variant = 0) {
        const jet::Format& format = jet::formatOf(GetParam());
        std::vector<std::size_t> places{format.isJet3() ? 0x3AU : 0x6EU};
        for (const std::string& name : connection.database().allTableNames()) {
            const jet::TableDefinition& table = connection.database().table(name).definition();
            const std::size_t columns = jet::number(table.page()) * format.pageSize +
                                        format.definition.size +
                                        table.realIndexes.size() * format.statistics.size;
            for (std::size_t i = 0; i < table.columns.size(); ++i)
                places.push_back(columns + i * format.column.size + format.column.language.at);
        }
        changeBytes([&](std::string& bytes) {
            for (const std::size_t place : places) {
                const auto change = static_cast<unsigned>(spoken_ ^ lcid);
                flip(bytes.at(place), change & 0xFFU);
                flip(bytes.at(place + 1), change >> 8);
                flip(bytes.at(place + 2), variant);
            }
        });
        spoken_ = lcid;
        ASSERT_EQ(connection.database().sortOrder().lcid, lcid);
        ASSERT_EQ(table("cliente_fornecedor").columns()[1].order.lcid, lcid);
    }

    void addClient(const std::string& name) {
        Recordset rows;
        rows.Open("cliente_fornecedor", connection);
        rows.AddNew();
        rows["nome"] = name;
        rows.Update();
    }

private:
    std::uint16_t spoken_ = 0x0409;
};
INSTANTIATE_TEST_SUITE_P(, OrdersTest, bothVersions(), keptName);

TEST_P(OrdersTest, AFileInPortugueseIsWrittenAndSearchedLikeAnyOther) {
    for (const std::uint16_t lcid : {std::uint16_t{1046}, std::uint16_t{2070}}) {
        SCOPED_TRACE(lcid);
        speak(lcid);
        for (const char* name : {"Ávila", "AVILA", "Conceição", "wanda", "Ypê", "Zilá", "Kátia"})
            addClient(name);
        EXPECT_EQ(
            column("select nome from cliente_fornecedor where nome>='AVILA' order by nome", "nome"),
            (Strings{"AVILA", "Ávila", "Conceição", "JOÃO", "joão pequeno", "Kátia", "wanda", "Ypê",
                     "Zé", "Zilá"}));
        Recordset rows;
        rows.Open("cliente_fornecedor", connection);
        rows.Find("nome='CONCEIÇÃO'");
        ASSERT_FALSE(rows.EOF());
        rows["nome"] = "Água";
        rows.Update();
        EXPECT_EQ(column("select codigo from cliente_fornecedor where nome='água'", "codigo"),
                  Strings{rows["codigo"].text()});
        EXPECT_TRUE(column("select codigo from cliente_fornecedor where nome='conceição'", "codigo")
                        .empty());
        for (const char* name : {"Água", "Ávila", "AVILA", "wanda", "Ypê", "Zilá", "Kátia"}) {
            rows.MoveFirst();
            rows.Find(std::string("nome='") + name + "'");
            ASSERT_FALSE(rows.EOF()) << name;
            rows.Delete();
        }
    }
}

TEST_P(OrdersTest, ANewTableOfSuchAFileIsInItsLanguage) {
    speak(1046);
    jet::Table& made = connection.database().createTable(
        {"nova", {{"nome", jet::ColumnType::text, 50}}, {{"nome", {{"nome"}}}}});
    EXPECT_EQ(made.columns()[0].order, connection.database().sortOrder());
    Recordset rows;
    rows.Open("nova", connection);
    for (const char* name : {"b", "Á", "a"}) {
        rows.AddNew();
        rows["nome"] = name;
        rows.Update();
    }
    EXPECT_EQ(column("select nome from nova order by nome", "nome"), (Strings{"a", "Á", "b"}));
}

TEST_P(OrdersTest, AFileInALanguageWithLettersOfItsOwnIsReadAndNotChanged) {
    struct Language {
        std::uint16_t lcid;
        std::uint8_t variant;
    };
    // Traditional Spanish, Turkish, and German as in a telephone book, which only Jet 4 can tell
    // from German as in a dictionary.
    for (const Language& language : {
             Language{1034, 0},
             Language{1055, 0},
             Language{1031, 1}
    }) {
        if (language.variant != 0 && GetParam() == jet::Version::jet3)
            continue;
        speak(language.lcid, language.variant);
        EXPECT_EQ(column("select nome from cliente_fornecedor order by codigo", "nome"),
                  (Strings{"Ana", "JOÃO", "joão pequeno", "Zé"}));
        try {
            addClient("Ñandu");
            ADD_FAILURE() << language.lcid;
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::readOnly);
            EXPECT_NE(std::string(error.what()).find(std::to_string(language.lcid)),
                      std::string::npos)
                << error.what();
        }
        speak(1033, language.variant);
    }
}

} // namespace
