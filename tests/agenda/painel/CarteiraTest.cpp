#include "agenda/painel/Carteira.h"

#include "agenda/Agenda.h"
#include "jet/Database.h"
#include "support/OtherStations.h"

#include <QTest>

#include <gmock/gmock.h>

#include <array>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Portfolio : public Agenda {
protected:
    static std::string told(const Vencimentos::Soma& soma) {
        return Vencimentos::texto(soma).toStdString();
    }
    /// From so many days from today to so many.
    std::string due(int from, int to) { return told(carteira_.devidos({daqui(from), daqui(to)})); }
    std::string late() { return told(carteira_.devidos({{}, daqui(-1)})); }
    std::string inHand() { return told(carteira_.emMaos()); }
    std::string bounced() { return told(carteira_.semFundos()); }
    std::vector<std::string> largest(std::size_t many) {
        std::vector<std::string> lines;
        for (const auto& [codigo, soma] : carteira_.maiores(many))
            lines.push_back(std::to_string(codigo) + ": " + told(soma));
        return lines;
    }
    /// Has it look at once, and waits until it knows what is expected.
    template <class Condition>
    bool eventually(Condition&& condition) {
        carteira_.acompanhar(true);
        return QTest::qWaitFor(condition);
    }
    bool eventuallyInHand(const std::string& expected) {
        const bool met = eventually([&] { return carteira_.completa() && inHand() == expected; });
        EXPECT_EQ(inHand(), expected);
        return met;
    }

    Carteira carteira_;
};

INSTANTIATE_TEST_SUITE_P(, Portfolio, everywhere(), keptName);

} // namespace

TEST_P(Portfolio, SumsByDueDateAndByClient) {
    givenCheques();
    given("semfundos", {
                           {{"cliente", number(kAna)}, {"valor", money(7)}    },
                           {{"cliente", number(kAna)}, {"valor", money(8, 50)}}
    });
    EXPECT_FALSE(carteira_.completa());
    ASSERT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
    EXPECT_EQ(carteira_.andamento(), 1);
    EXPECT_EQ(late(), "2 cheques, R$ 30,05");
    EXPECT_EQ(due(0, 0), "2 cheques, R$ 100,99");
    EXPECT_EQ(due(0, 6), "4 cheques, R$ 3.100,99");
    EXPECT_EQ(due(8, 28), "0 cheques, R$ 0,00");
    EXPECT_EQ(due(-40, 3000), "9 cheques, R$ 31.131,04");
    EXPECT_EQ(bounced(), "2 cheques, R$ 15,50");
    EXPECT_THAT(largest(2), ElementsAre("3: 4 cheques, R$ 57.000,00", "1: 3 cheques, R$ 6.020,05"));
    EXPECT_EQ(largest(5).size(), 3U);
}

/// While a deletion can't be written another station writes: it is undone by the next reading, and
/// who made it has to be told, whoever read.
TEST_P(Portfolio, WhatIsUndoneWhileItReadsIsHandedOn) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    givenCheques();
    ASSERT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
    carteira_.acompanhar(false);
    data().Automacao.flush();
    data().rsBancos.MoveFirst();
    data().rsBancos.Delete();
    {
        const WritingProgram other(shop().file(), GetParam());
        EXPECT_THROW(data().Automacao.flush(), jet::Error);
    }
    {
        jet::Database other(shop().file());
        jet::Table& banks = other.table("bancos");
        jet::Row bank(banks.columns().size());
        bank[*banks.findColumn("nome")] = std::string("Banco de outra estação");
        banks.insert(bank);
        other.flush();
    }
    EXPECT_EQ(data().perdido(), "");
    QString lost;
    EXPECT_TRUE(eventually([&] {
        lost = data().perdido();
        return !lost.isEmpty();
    }));
    EXPECT_TRUE(lost.contains("outra estação alterou o banco de dados")) << qPrintable(lost);
    EXPECT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
    EXPECT_EQ(rows("select * from bancos").size(), 3U);
}

TEST_P(Portfolio, OfEqualClientsTheLowerCodeComesFirst) {
    given("cheques", {cheque(kCarla, kNorte, "1", daqui(0), money(5)),
                      cheque(kBento, kNorte, "2", daqui(0), money(5))});
    ASSERT_TRUE(eventuallyInHand("2 cheques, R$ 10,00"));
    EXPECT_THAT(largest(2), ElementsAre("1: 1 cheque, R$ 5,00", "3: 1 cheque, R$ 5,00"));
}

TEST_P(Portfolio, FollowsWhatIsChangedHere) {
    givenCheques();
    ASSERT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
    ado::Recordset& cheques = data().rsCheques;
    cheques.MoveFirst();
    cheques.Find("numero='000110'");
    cheques.Delete();
    cheques.MoveFirst();
    cheques.Find("numero='000103'");
    cheques["valor"] = money(1);
    cheques["bompara"] = noDia(daqui(1));
    cheques["cliente"] = number(kCarla);
    cheques.Update();
    ASSERT_TRUE(eventuallyInHand("9 cheques, R$ 31.032,04"));
    EXPECT_EQ(due(0, 0), "1 cheque, R$ 0,99");
    EXPECT_EQ(due(1, 1), "2 cheques, R$ 1.001,00");
    EXPECT_THAT(largest(1), ElementsAre("3: 4 cheques, R$ 25.001,00"));
}

TEST_P(Portfolio, FollowsWhatAnotherStationChanges) {
    ASSERT_TRUE(eventuallyInHand("0 cheques, R$ 0,00"));
    EXPECT_THAT(largest(1), IsEmpty());
    byAnother([](ado::Connection& other) {
        for (const auto& [name, value] : {
                 std::pair("cheques", money(12, 34)), {"semfundos", money(1)}
        }) {
            ado::Recordset table;
            table.Open(name, other);
            table.AddNew();
            table["valor"] = value;
            table.Update();
        }
    });
    ASSERT_TRUE(eventuallyInHand("1 cheque, R$ 12,34"));
    EXPECT_EQ(bounced(), "1 cheque, R$ 1,00");
    EXPECT_THAT(largest(1), IsEmpty()); // nobody gave it
}

TEST_P(Portfolio, RestsWhileNobodyLooks) {
    ASSERT_TRUE(eventuallyInHand("0 cheques, R$ 0,00"));
    carteira_.acompanhar(false);
    int changes = 0;
    QObject::connect(&carteira_, &Carteira::mudou, [&] { ++changes; });
    givenCheques();
    QCoreApplication::processEvents();
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(carteira_.completa());
    EXPECT_EQ(inHand(), "0 cheques, R$ 0,00");
    ASSERT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
}

TEST_P(Portfolio, SurvivesTheDatabaseBeingClosedAndOpened) {
    givenCheques();
    ASSERT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
    data().fechar();
    EXPECT_TRUE(eventually([&] { return !carteira_.completa(); }));
    data().abrir();
    EXPECT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
}

TEST_P(Portfolio, SurvivesItUnseen) {
    givenCheques();
    ASSERT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
    data().fechar();
    data().abrir();
    given("cheques", {cheque(kAna, kNorte, "1", daqui(0), money(1))});
    EXPECT_TRUE(eventuallyInHand("11 cheques, R$ 63.132,04"));
}

TEST_P(Portfolio, WaitsForTheEndOfATransaction) {
    ASSERT_TRUE(eventuallyInHand("0 cheques, R$ 0,00"));
    data().Automacao.BeginTrans();
    givenCheques();
    carteira_.acompanhar(true);
    QCoreApplication::processEvents();
    EXPECT_EQ(inHand(), "0 cheques, R$ 0,00");
    data().Automacao.CommitTrans();
    EXPECT_TRUE(eventuallyInHand("10 cheques, R$ 63.131,04"));
}

TEST_P(Portfolio, DoesntWaitForAnotherStationThatIsWritingButReadsInTheEnd) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    data().Automacao.flush();
    jet::Database other(shop().file());
    const jet::DatabaseTransaction writing(other);
    other.claim();
    for (int look = 0; look < 6; ++look) {
        carteira_.acompanhar(true);
        QCoreApplication::processEvents();
        EXPECT_FALSE(carteira_.completa()) << look;
    }
    EXPECT_TRUE(eventually([&] { return carteira_.completa(); }));
}

TEST_P(Portfolio, OfAFileWithoutBouncedChequesHasNone) {
    remake([](jet::TableSpec& made) {
        if (made.name == "semfundos")
            made.columns.clear();
    });
    given("cheques", {cheque(kAna, kNorte, "1", daqui(0), money(1))});
    EXPECT_TRUE(eventuallyInHand("1 cheque, R$ 1,00"));
    EXPECT_EQ(bounced(), "0 cheques, R$ 0,00");
}

TEST_P(Portfolio, OfAFileWithoutAmountsIsNotComplete) {
    remake([](jet::TableSpec& made) {
        if (made.name == "cheques")
            std::erase_if(made.columns,
                          [](const jet::ColumnSpec& column) { return column.name == "valor"; });
    });
    carteira_.acompanhar(true);
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    EXPECT_FALSE(carteira_.completa());
    EXPECT_EQ(inHand(), "0 cheques, R$ 0,00");
}

TEST_P(Portfolio, OfADamagedFileIsNotComplete) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    for (int i = 0; i < 200; ++i)
        given("cheques", {cheque(kAna, kNorte, "1", daqui(0), money(1))});
    ASSERT_TRUE(eventuallyInHand("200 cheques, R$ 200,00"));
    jet::RowCursor last = data().Automacao.database().table("cheques").scan();
    ASSERT_TRUE(last.last());
    const auto at = static_cast<std::streamoff>(number(last.id().page)) *
                    (GetParam() == jet::Version::jet3 ? 2048 : 4096);
    const auto write = [&](char kindOfPage) {
        data().fechar();
        std::fstream file(shop().file(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(at).put(kindOfPage);
    };
    write('?');
    data().abrir();
    EXPECT_TRUE(eventually([&] { return !carteira_.completa(); })); // of another opening
    EXPECT_TRUE(eventually([&] { return carteira_.andamento() == 1; }));
    EXPECT_FALSE(carteira_.completa());
    write(1);
    data().abrir();
    EXPECT_TRUE(eventuallyInHand("200 cheques, R$ 200,00"));
}

TEST_P(Portfolio, OfMoreThanCanBeSummedIsNotComplete) {
    const jet::Value most = jet::Currency{std::numeric_limits<std::int64_t>::max()};
    given("cheques", {cheque(kAna, kNorte, "1", daqui(0), most)});
    ASSERT_TRUE(eventually([&] { return carteira_.completa(); }));
    given("cheques", {cheque(kBento, kNorte, "2", daqui(1), money(1))});
    EXPECT_TRUE(eventually([&] { return !carteira_.completa(); }));
    ado::Recordset& cheques = data().rsCheques;
    cheques.MoveFirst();
    cheques.Delete();
    EXPECT_TRUE(eventuallyInHand("1 cheque, R$ 1,00"));
}
