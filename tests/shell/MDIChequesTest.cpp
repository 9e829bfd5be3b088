// The main window's menus and buttons, and the windows that they open.
#include "agenda/FrmAgenda.h"
#include "agenda/FrmFicha.h"
#include "agenda/FrmHistorico.h"
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmApagar.h"
#include "reports/FrmFiltroRelat.h"
#include "reports/Relatorios.h"
#include "reports/frmRel_ChequesSF.h"
#include "shell/Comandos.h"
#include "shell/MainWindow.h"
#include "shell/Mirtal.h"
#include "shell/frmAbout.h"
#include "shell/frmcaminho.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QWindow>

#include <cstddef>
#include <set>

namespace {

using testing::ElementsAre;

INSTANTIATE_TEST_SUITE_P(, MainWindow, everywhere(), keptName);

TEST_P(MainWindow, IsCalledValtrino) { EXPECT_EQ(openMain().windowTitle(), "Valtrino"); }

/// A mode word that no report has stands for the bounced cheques.
TEST(Commands, EachReportOfTheMenusIsOneOfItsOwn) {
    std::size_t reports = 0;
    std::set<QString> titles;
    for (const Comandos::Menu& menu : Comandos::menus())
        for (const Comandos::Entrada& entry : menu.entradas)
            if (entry.comando != nullptr && entry.comando->abrir == &FrmFiltroRelat::mostrar) {
                ++reports;
                titles.insert(Relatorios::titulo(entry.comando->modo));
            }
    EXPECT_GT(reports, 1U);
    EXPECT_EQ(titles.size(), reports);
}

TEST_P(MainWindow, HasTheWholeMenuTree) {
    std::vector<std::string> tree;
    for (QAction* top : openMain().menuBar()->actions()) {
        tree.push_back((top->menu()->objectName() + " " + top->text()).toStdString());
        for (const QAction* entry : top->menu()->actions())
            tree.push_back(("  " + entry->objectName() + " " +
                            (entry->isSeparator() ? "-" : entry->text()) +
                            (entry->isEnabled() ? "" : " [off]"))
                               .toStdString());
    }
    EXPECT_THAT(tree, ElementsAre("mnuar &Arquivos",                            //
                                  "  mnucli &Clientes",                         //
                                  "  mnubancos &Bancos",                        //
                                  "  sep1 -",                                   //
                                  "  mnusair &Sair",                            //
                                  "mnumov &Movimentos",                         //
                                  "  mnuentrada &Entrada de Cheques",           //
                                  "  mnubaixa &Baixa de Cheques",               //
                                  "  mnurenegociar &Renegociar cheques",        //
                                  "  mnusfundos &Cadastrar Cheques sem Fundos", //
                                  "  mnuconscheques Con&sultar CPF",            //
                                  "mnurelat &Relatórios",                       //
                                  "  mnurrec &Cheques recebidos",               //
                                  "  mnursfundos Cheques sem &fundos",          //
                                  "mnuutil &Utilitários",                       //
                                  "  mnuapagar &Apagar Cheques ",               //
                                  "  mnucaminho &Diretório de dados",           //
                                  "mnusobre A&juda",                            //
                                  "  mnuabout &Sobre o Sistema",                //
                                  "  mnuimportar &Importar Arquivos [off]",     //
                                  "  mnuverif &Verifica Clientes [off]"));
}

TEST_P(MainWindow, HasTheWholeToolbar) {
    auto& bar = control<QToolBar>(openMain(), "Toolbar1");
    std::vector<std::string> buttons;
    for (const QAction* button : bar.actions()) {
        if (button->isSeparator()) {
            buttons.emplace_back("-");
            continue;
        }
        EXPECT_FALSE(button->icon().isNull()) << button->objectName().toStdString();
        buttons.push_back((button->objectName() + ": " + button->toolTip()).toStdString());
    }
    EXPECT_THAT(buttons, ElementsAre("clientes: Cadastro de Clientes", //
                                     "bancos: Cadastro de Bancos",     //
                                     "-",
                                     "cheques: Entrada de Cheques",         //
                                     "baixar: Baixar Cheques",              //
                                     "negociar: Renegociar Cheques",        //
                                     "lancarsf: Lançar Cheques sem Fundos", //
                                     "consulta: Consulta CPF",              //
                                     "-",
                                     "relatcheque: Relatorio de Cheques",             //
                                     "relatsemfundo: Relatório de cheques sem fundo", //
                                     "-", "sair: Sair do Sistema"));
}

// The two reports have names of their own, and all that is parted stays parted.
TEST_P(MainWindow, TheToolbarTellsTheReportsFromTheWindowsOfTheSameCheques) {
    openMain();
    EXPECT_EQ(action("relatcheque").text(), "Rel. recebidos");
    EXPECT_EQ(action("relatsemfundo").text(), "Rel. sem fundos");
    EXPECT_EQ(action("cheques").text(), "Entrada");
    EXPECT_EQ(action("lancarsf").text(), "Sem fundos");
}

TEST_P(MainWindow, OpensTheBanksModallyFromMenuAndToolbar) {
    openMain();
    for (const char* name : {"mnubancos", "bancos"}) {
        bool seen = false;
        whileModal<frmBancos>([&](frmBancos& form) {
            seen = true;
            EXPECT_TRUE(form.isModal());
            click(form, "cmdFechar");
        });
        action(name).trigger();
        EXPECT_TRUE(seen) << name;
    }
}

TEST_P(MainWindow, F7OpensTheAgendaAndF8TheHistoryFromAnyWindow) {
    int seen = 0;
    const auto look = [&](QWidget& from) {
        whileModal<FrmAgenda>([&](const FrmAgenda&) {
            ++seen;
            press(Qt::Key_F7); // it is there
            press(Qt::Key_Escape);
        });
        press(Qt::Key_F7);
        activate(from);
        whileModal<FrmHistorico>([&](const FrmHistorico&) {
            ++seen;
            press(Qt::Key_F8);
            press(Qt::Key_Escape);
        });
        press(Qt::Key_F8);
    };
    look(openMain());
    whileModal<frmBancos>([&](frmBancos& form) {
        look(form);
        activate(form);
        click(form, "cmdFechar");
    });
    action("mnubancos").trigger();
    EXPECT_EQ(seen, 4);
}

// Behind another modal window it couldn't be used: what is in front of it goes, as by Esc.
TEST_P(MainWindow, TheKeyOfAnOpenWindowReturnsToIt) {
    openMain();
    bool returned = false;
    whileModal<FrmAgenda>([&](FrmAgenda& agenda) {
        whileModal<FrmHistorico>([](const FrmHistorico& history) {
            press(Qt::Key_F7);
            EXPECT_FALSE(history.isVisible());
        });
        press(Qt::Key_F8);
        EXPECT_EQ(QApplication::activeModalWidget(), &agenda);
        activate(agenda);
        returned = true;
        press(Qt::Key_Escape);
    });
    press(Qt::Key_F7);
    EXPECT_TRUE(returned);
}

TEST_P(MainWindow, TheKeyOfAnOpenWindowTakesNothingThatIsTypedInFrontOfIt) {
    openMain();
    whileModal<FrmAgenda>([&](const FrmAgenda& agenda) {
        whileModal<frmBancos>([&](frmBancos& banks) {
            type(banks, "txtNome", "Banco do Cais");
            expectMessage("Mensagem", "O que foi digitado ainda não foi salvo.\n\nSair sem salvar?",
                          MessageIcon::question, MessageButtons::yesNo, MessageAnswer::no);
            press(Qt::Key_F7);
            EXPECT_TRUE(banks.isVisible());
            EXPECT_EQ(text(banks, "txtNome"), "Banco do Cais");
            EXPECT_EQ(QApplication::activeModalWidget(), &banks);
            banks.unload();
        });
        frmBancos::instance().showModal();
        activate(const_cast<FrmAgenda&>(agenda));
        press(Qt::Key_Escape);
    });
    press(Qt::Key_F7);
}

TEST_P(MainWindow, F6ShowsTheSheetInFrontAlsoWhereOneIsOpenBehind) {
    openMain();
    int sheets = 0;
    whileModal<FrmFicha>([&](const FrmFicha& first) {
        whileModal<FrmAgenda>([&](FrmAgenda& agenda) {
            whileModal<FrmFicha>([&](const FrmFicha& second) {
                EXPECT_NE(&second, &first);
                EXPECT_EQ(QApplication::activeModalWidget(), &second);
                ++sheets;
                press(Qt::Key_Escape);
            });
            press(Qt::Key_F6);
            EXPECT_EQ(QApplication::activeModalWidget(), &agenda);
            activate(agenda);
            press(Qt::Key_Escape);
        });
        press(Qt::Key_F7);
        EXPECT_FALSE(first.isVisible());
        ++sheets;
    });
    press(Qt::Key_F6);
    EXPECT_EQ(sheets, 2);
}

TEST_P(MainWindow, OpensTheClientsModallyFromMenuAndToolbar) {
    openMain();
    for (const char* name : {"mnucli", "clientes"}) {
        bool seen = false;
        whileModal<frmCliFor>([&](frmCliFor& form) {
            seen = true;
            EXPECT_TRUE(form.isModal());
            click(form, "cmdFechar");
        });
        action(name).trigger();
        EXPECT_TRUE(seen) << name;
    }
}

TEST_P(MainWindow, TellsTheProductInAWindowThatEscCloses) {
    openMain();
    whileModal<frmAbout>([](frmAbout& form) {
        EXPECT_EQ(form.windowTitle(), "Valtrino");
        EXPECT_FALSE(control<QLabel>(form, "imgProduto").pixmap().isNull());
        press(Qt::Key_Escape);
    });
    action("mnuabout").trigger();
}

TEST_P(MainWindow, OpensTheReportsFilterFromMenuAndToolbar) {
    auto& window = openMain();
    const struct {
        const char* action;
        const char* mode;
        const char* title;
    } commands[] = {
        {"mnurrec",       "relch", "Relatório de Cheques Recebidos" },
        {"mnursfundos",   "relsf", "Relatório de Cheques sem fundos"},
        {"relatcheque",   "relch", "Relatório de Cheques Recebidos" },
        {"relatsemfundo", "relsf", "Relatório de Cheques sem fundos"},
    };
    for (const auto& [name, mode, title] : commands) {
        Mirtal::modo.clear();
        activate(window);
        action(name).trigger();
        EXPECT_EQ(Mirtal::modo, mode) << name;
        EXPECT_TRUE(FrmFiltroRelat::instance().isVisible()) << name;
        EXPECT_FALSE(FrmFiltroRelat::instance().isModal()) << name;
        EXPECT_EQ(FrmFiltroRelat::instance().windowTitle(), title) << name;
        // It can't get lost behind the main window.
        EXPECT_EQ(FrmFiltroRelat::instance().windowHandle()->transientParent(),
                  window.windowHandle());
        FrmFiltroRelat::instance().unload();
    }
}

TEST_P(MainWindow, ReportsOpenInsideIt) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Maria")}, {"tipo", yes(true)}}
    });
    given("bancos", {{{"nome", words("Caixa")}}});
    given("cheques", {
                         {{"numero", words("000001")},
                          {"cliente", number(1)},
                          {"banco", number(1)},
                          {"data", day(2026, 1, 10)},
                          {"valor", jet::Currency{10'000}}}
    });
    auto& window = openMain();
    action("mnurrec").trigger();
    auto& filter = FrmFiltroRelat::instance();
    activate(filter);
    type(filter, "txtdtinicial", "01012026");
    click(filter, "CmdImprimir");
    auto* report = window.findChild<frmRel_ChequesSF*>();
    ASSERT_NE(report, nullptr);
    EXPECT_TRUE(report->isVisible());
    EXPECT_TRUE(filter.isVisible());
    // Closed and asked for again, it is there again.
    report->parentWidget()->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.findChild<frmRel_ChequesSF*>(), nullptr);
    activate(filter);
    enter(filter, "CmdImprimir");
    press(Qt::Key_Space);
    auto* again = window.findChild<frmRel_ChequesSF*>();
    ASSERT_NE(again, nullptr);
    // By its own key too, whatever had the focus then has it again.
    activate(window);
    again->setFocus();
    press(Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.findChild<frmRel_ChequesSF*>(), nullptr);
    EXPECT_TRUE(QTest::qWaitFor([] { return focus() == "CmdImprimir"; }, 60'000));
}

TEST_P(MainWindow, OpensTheChequeListForSettlementFromMenuAndToolbar) {
    openMain();
    for (const char* name : {"mnubaixa", "baixar"}) {
        Mirtal::modo = "localizarCH";
        bool seen = false;
        whileModal<FrmLocCHTerceiros>([&](FrmLocCHTerceiros& form) {
            seen = true;
            EXPECT_TRUE(form.isModal());
            EXPECT_EQ(form.windowTitle(), "Baixa de cheques recebidos");
            EXPECT_EQ(Mirtal::modo, "Baixar");
            click(form, "cmdsair");
        });
        action(name).trigger();
        EXPECT_TRUE(seen) << name;
    }
}

TEST_P(MainWindow, OpensTheEntryOfChequesFromMenuAndToolbarAndFromItTheList) {
    openMain();
    for (const char* name : {"mnuentrada", "cheques"}) {
        bool listed = false;
        whileModal<FrmLancarCheques>([&](FrmLancarCheques& form) {
            EXPECT_TRUE(form.isModal());
            whileModal<FrmLocCHTerceiros>([&](FrmLocCHTerceiros& list) {
                listed = true;
                EXPECT_TRUE(list.isModal());
                EXPECT_EQ(list.windowTitle(), "Localizar Cheque Recebidos");
                click(list, "cmdsair");
            });
            click(form, "CmdLocalizar");
            click(form, "CmdSair");
        });
        action(name).trigger();
        EXPECT_TRUE(listed) << name;
    }
}

TEST_P(MainWindow, OpensThePurgeFromTheMenuAndShowsItsPrompts) {
    auto& window = openMain();
    Mirtal::modo = "Consulta";
    bool seen = false;
    whileModal<FrmApagar>([&](FrmApagar& form) {
        seen = true;
        EXPECT_TRUE(form.isModal());
        EXPECT_EQ(text(window, "pnlMensagem"), "Informe data incial");
        click(form, "cmdsair");
    });
    action("mnuapagar").trigger();
    EXPECT_TRUE(seen);
    EXPECT_EQ(text(window, "pnlMensagem"), "");
    EXPECT_EQ(Mirtal::modo, "Consulta");
}

TEST_P(MainWindow, OpensTheBouncedChequesFromMenuAndToolbarAndFromThemTheList) {
    openMain();
    for (const char* name : {"mnusfundos", "lancarsf"}) {
        Mirtal::modo = "Baixar";
        bool listed = false;
        whileModal<FrmLancasSFundos>([&](FrmLancasSFundos& form) {
            EXPECT_TRUE(form.isModal());
            EXPECT_EQ(Mirtal::modo, "Baixar") << "left alone";
            whileModal<FrmLocCHTerceiros>([&](FrmLocCHTerceiros& list) {
                listed = true;
                EXPECT_TRUE(list.isModal());
                click(list, "cmdsair");
            });
            click(form, "CmdLocalizar");
            click(form, "CmdSair");
        });
        action(name).trigger();
        EXPECT_TRUE(listed) << name;
    }
}

TEST_P(MainWindow, OpensTheConsultationModallyFromMenuAndToolbar) {
    openMain();
    for (const char* name : {"mnuconscheques", "consulta"}) {
        Mirtal::modo = "Baixar";
        bool seen = false;
        whileModal<FrmConsultaCH>([&](FrmConsultaCH& form) {
            seen = true;
            EXPECT_TRUE(form.isModal());
            EXPECT_EQ(Mirtal::modo, "Baixar") << "left alone";
            click(form, "CmdSair");
        });
        action(name).trigger();
        EXPECT_TRUE(seen) << name;
    }
}

TEST_P(MainWindow, OpensTheRenegotiationModallyFromMenuAndToolbar) {
    openMain();
    for (const char* name : {"mnurenegociar", "negociar"}) {
        Mirtal::modo = "Consulta";
        bool seen = false;
        whileModal<FrmRenegociar>([&](FrmRenegociar& form) {
            seen = true;
            EXPECT_TRUE(form.isModal());
            EXPECT_EQ(Mirtal::modo, "Consulta");
            click(form, "CmdSair");
        });
        action(name).trigger();
        EXPECT_TRUE(seen) << name;
    }
}

TEST_P(MainWindow, OpensTheFolderChooserModally) {
    openMain();
    bool seen = false;
    whileModal<frmcaminho>([&](frmcaminho& form) {
        seen = true;
        EXPECT_TRUE(form.isModal());
        click(form, "cmdsair");
    });
    action("mnucaminho").trigger();
    EXPECT_TRUE(seen);
}

TEST_P(MainWindow, EntriesThatAreOffDoNothing) {
    openMain();
    for (const char* name : {"mnuimportar", "mnuverif"})
        action(name).trigger();
    EXPECT_EQ(rows("select * from cliente_fornecedor").size(), 0U);
}

} // namespace
