// The menu of the lists that show cheques or clients, and the keys that it stands for.
#include "shell/MenuDaLista.h"

#include "agenda/FrmAgenda.h"
#include "agenda/FrmFicha.h"
#include "agenda/FrmHistorico.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/ListView.h"
#include "shell/MDICheques.h"
#include "shell/Mirtal.h"
#include "shell/frmlocalizar.h"
#include "support/ChequeShop.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ListMenu : public Everywhere<ChequeShop> {
protected:
    void SetUp() override {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_.path());
        ChequeShop::SetUp();
        const QDate today = QDate::currentDate();
        given("cheques", {cheque(kAna, "000101", today), cheque(kBento, "000102", today)});
        MDICheques::instance().show();
    }

    static Row cheque(int client, const char* numero, const QDate& due) {
        return {
            {"cliente",   number(client)},
            {"banco",     number(kNorte)},
            {"numero",    words(numero) },
            {"bompara",   day(due.year(), due.month(), due.day())},
            {"valor", money(10)              }
        };
    }
    /// What the menu on show offers; nothing if there is none.
    static std::vector<std::string> menu() {
        std::vector<std::string> entries;
        if (const QWidget* shown = QApplication::activePopupWidget())
            for (const QAction* each : shown->actions())
                entries.push_back(each->text().toStdString());
        return entries;
    }
    /// Keys go to the menu as long as it is there.
    static void choose(Qt::Key key) { QTest::keyClick(QApplication::activePopupWidget(), key); }
    static void askByMouse(ListView& list, QPoint point) {
        QContextMenuEvent asked(QContextMenuEvent::Mouse, point,
                                list.viewport()->mapToGlobal(point));
        QApplication::sendEvent(list.viewport(), &asked);
    }
    static void askByKey(ListView& list) {
        QContextMenuEvent asked(QContextMenuEvent::Keyboard, QPoint(),
                                list.mapToGlobal(list.rect().center()));
        QApplication::sendEvent(&list, &asked);
    }
    /// The client whose sheet `work` opens.
    std::string sheetAfter(const std::function<void()>& work) {
        std::string whose;
        whileModal<FrmFicha>([&](FrmFicha& form) {
            whose = text(form, "txtcliente").toStdString();
            press(Qt::Key_Escape);
        });
        work();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !whose.empty(); }));
        return whose;
    }

private:
    QTemporaryDir settings_;
};

INSTANTIATE_TEST_SUITE_P(, ListMenu, everywhere(), keptName);

TEST_P(ListMenu, OfTheAgendaOpensTheSheetOfTheRowUnderTheMouse) {
    auto& agenda = open<FrmAgenda>();
    auto& list = control<ListView>(agenda, "lstcheques");
    askByMouse(list, list.rowRect(1).center());
    EXPECT_THAT(menu(), ElementsAre("&Ficha do cliente\tF6", "&Histórico\tF8"));
    EXPECT_EQ(list.currentRow(), 1);
    EXPECT_FALSE(list.isChecked(1));
    EXPECT_EQ(sheetAfter([] { choose(Qt::Key_F); }), "Bento Dias");
    EXPECT_THAT(menu(), IsEmpty());
}

TEST_P(ListMenu, ComesByTheMenuKeyAndByShiftF10) {
    auto& agenda = open<FrmAgenda>();
    auto& list = control<ListView>(agenda, "lstcheques");
    enter(agenda, "lstcheques");
    askByKey(list);
    EXPECT_EQ(menu().size(), 2U);
    choose(Qt::Key_Escape);
    EXPECT_THAT(menu(), IsEmpty());
    press(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(menu().size(), 2U);
    choose(Qt::Key_Escape);
    EXPECT_TRUE(agenda.isVisible());
}

TEST_P(ListMenu, IsNotOnNothingNorOnHeadingsNorOnSums) {
    auto& agenda = open<FrmAgenda>();
    auto& list = control<ListView>(agenda, "lstcheques");
    askByMouse(list, QPoint(5, list.viewport()->height() - 2));
    EXPECT_THAT(menu(), IsEmpty());
    askByKey(list); // no row is current
    EXPECT_THAT(menu(), IsEmpty());
    auto& days = control<ListView>(agenda, "lstdias");
    askByMouse(days, days.rowRect(0).center());
    EXPECT_THAT(menu(), IsEmpty());
}

TEST_P(ListMenu, OfTheHistoryAndItsKeyOpenTheSheetOfTheRowsClient) {
    data().rsCheques.MoveLast();
    data().rsCheques["valor"] = 99;
    data().rsCheques.Update();
    auto& history = open<FrmHistorico>();
    auto& list = control<ListView>(history, "lsthistorico");
    ASSERT_EQ(list.count(), 1);
    EXPECT_EQ(history.clienteMostrado(), std::nullopt);
    askByMouse(list, list.rowRect(0).center());
    EXPECT_THAT(menu(), ElementsAre("&Ficha do cliente\tF6", "&Agenda\tF7"));
    EXPECT_EQ(sheetAfter([] { choose(Qt::Key_F); }), "Bento Dias");
    activate(history);
    EXPECT_EQ(sheetAfter([] { press(Qt::Key_F6); }), "Bento Dias");
}

TEST_P(ListMenu, OfTheClientsFoundOpensTheSheetAndChoosesNone) {
    auto& finder = open<frmlocalizar>();
    type(finder, "txtpesquisar", "c");
    auto& list = control<ListView>(finder, "LstEncontrado");
    ASSERT_EQ(list.count(), 1);
    askByMouse(list, list.rowRect(0).center());
    EXPECT_EQ(sheetAfter([] { choose(Qt::Key_F); }), "Carla Reis");
    EXPECT_TRUE(finder.isVisible());
}

TEST_P(ListMenu, OfTheChequesToSettleOpensTheSheetOfTheRowsClient) {
    given("semfundos", {
                           {{"cliente", number(kCarla)},
                            {"banco", number(kNorte)},
                            {"numero", words("000900")},
                            {"valor", money(10)}}
    });
    const std::pair<const char*, const char*> kWhoseIsLast[] = {
        {"Baixar",      "Bento Dias"},
        {"localizarCH", "Bento Dias"},
        {"localizarSF", "Carla Reis"},
    };
    for (const auto& [mode, whose] : kWhoseIsLast) {
        SCOPED_TRACE(mode);
        Mirtal::modo = mode;
        auto& finder = open<FrmLocCHTerceiros>();
        EXPECT_EQ(finder.clienteMostrado(), std::nullopt);
        type(finder, "txtbanco", "B");
        auto& list = control<ListView>(finder, "lstterceiros");
        ASSERT_GT(list.count(), 0);
        askByMouse(list, list.rowRect(list.count() - 1).center());
        EXPECT_EQ(sheetAfter([] { choose(Qt::Key_F); }), whose);
        activate(finder);
        press(Qt::Key_Escape);
    }
}

TEST_P(ListMenu, OfAChequeThatAnotherHasSettledSinceTellsOfNoClient) {
    Mirtal::modo = "Baixar";
    auto& finder = open<FrmLocCHTerceiros>();
    type(finder, "txtbanco", "B");
    auto& list = control<ListView>(finder, "lstterceiros");
    list.setCurrentRow(0);
    EXPECT_EQ(finder.clienteMostrado(), kAna);
    data().rsCheques.MoveFirst();
    data().rsCheques.Delete();
    EXPECT_EQ(finder.clienteMostrado(), std::nullopt);
}

TEST_P(ListMenu, OfThePanelOpensTheAgendaToo) {
    auto& window = MDICheques::instance();
    activate(window);
    auto& list = control<ListView>(window, "lstclientes");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.count() == 2; }));
    askByMouse(list, list.rowRect(0).center());
    EXPECT_EQ(menu().size(), 3U);
    bool seen = false;
    whileModal<FrmAgenda>([&](FrmAgenda&) {
        seen = true;
        press(Qt::Key_Escape);
    });
    choose(Qt::Key_A);
    EXPECT_TRUE(QTest::qWaitFor([&] { return seen; }));
}

} // namespace
