// The day's panel in the main window's work area.
#include "shell/AreaDeTrabalho.h"

#include "agenda/FrmAgenda.h"
#include "agenda/FrmFicha.h"
#include "agenda/painel/PainelDoDia.h"
#include "controls/box/ListView.h"
#include "shell/MDICheques.h"
#include "support/ChequeShop.h"

#include <QSettings>
#include <QTemporaryDir>

namespace {

class WorkArea : public Everywhere<ChequeShop> {
protected:
    void SetUp() override {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_.path());
        ChequeShop::SetUp();
        given("cheques", {
                             {{"cliente", number(kAna)},
                              {"banco", number(kNorte)},
                              {"numero", words("000101")},
                              {"valor", money(10)}}
        });
    }
    static MDICheques& openMain() {
        MDICheques& window = MDICheques::instance();
        window.show();
        activate(window);
        return window;
    }
    static bool shows(const char* name) {
        return control(MDICheques::instance(), name).isVisible();
    }

    QTemporaryDir settings_;
};

INSTANTIATE_TEST_SUITE_P(, WorkArea, everywhere(), keptName);

TEST_P(WorkArea, BeginsWithThePanelAndLeavesItTheFocusByTabOnly) {
    openMain();
    EXPECT_TRUE(shows("PainelDoDia"));
    EXPECT_FALSE(shows("cmdpainel"));
    EXPECT_EQ(focus(), "MDICheques");
    press(Qt::Key_Return);
    press(Qt::Key_Space); // nothing is opened by them
    press(Qt::Key_Tab);
    EXPECT_EQ(focus(), "cmdhoje");
    whileModal<FrmAgenda>([](FrmAgenda&) { press(Qt::Key_Escape); });
    press(Qt::Key_Return);
    activate(openMain());
    EXPECT_EQ(focus(), "cmdhoje");
}

TEST_P(WorkArea, ThePanelIsSwitchedOffAndOnAndRemembersIt) {
    click(openMain(), "cmdocultar");
    EXPECT_FALSE(shows("PainelDoDia"));
    EXPECT_TRUE(shows("cmdpainel"));
    WindowList::instance().clear();
    openMain();
    EXPECT_FALSE(shows("PainelDoDia"));
    click(openMain(), "cmdpainel");
    EXPECT_TRUE(shows("PainelDoDia"));
    EXPECT_FALSE(shows("cmdpainel"));
    WindowList::instance().clear();
    openMain();
    EXPECT_TRUE(shows("PainelDoDia"));
}

TEST_P(WorkArea, ThePanelRestsBehindReports) {
    auto& window = openMain();
    auto* first = new QWidget;
    auto* second = new QWidget;
    window.mostrarDentro(*first);
    EXPECT_FALSE(shows("PainelDoDia"));
    EXPECT_FALSE(control(window, "PainelDoDia").findChild<QTimer*>("Relogio")->isActive());
    window.mostrarDentro(*second);
    first->parentWidget()->close();
    EXPECT_FALSE(shows("PainelDoDia"));
    second->parentWidget()->close();
    EXPECT_TRUE(shows("PainelDoDia"));
    click(window, "cmdocultar");
    auto* third = new QWidget;
    window.mostrarDentro(*third);
    EXPECT_FALSE(shows("cmdpainel"));
    third->parentWidget()->close();
    EXPECT_TRUE(shows("cmdpainel"));
    EXPECT_FALSE(shows("PainelDoDia"));
}

TEST_P(WorkArea, F6ShowsTheSheetOfTheClientChosenInThePanel) {
    auto& window = openMain();
    window.resize(1024, 700);
    auto& clients = control<ListView>(window, "lstclientes");
    ASSERT_TRUE(QTest::qWaitFor([&] { return clients.count() == 1; }));
    enter(window, "lstclientes");
    std::string whose;
    whileModal<FrmFicha>([&](FrmFicha& form) {
        whose = text(form, "txtcliente").toStdString();
        press(Qt::Key_Escape);
    });
    press(Qt::Key_F6);
    EXPECT_EQ(whose, "Ana Costa");
}

} // namespace
