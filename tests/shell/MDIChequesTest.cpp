#include "shell/MDICheques.h"

#include "agenda/FrmAgenda.h"
#include "agenda/FrmFicha.h"
#include "agenda/FrmHistorico.h"
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "jet/Backup.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmApagar.h"
#include "reports/FrmFiltroRelat.h"
#include "reports/Relatorios.h"
#include "reports/frmRel_ChequesSF.h"
#include "shell/Comandos.h"
#include "shell/Mirtal.h"
#include "shell/frmAbout.h"
#include "shell/frmcaminho.h"
#include "support/ShopTest.h"

#include <QAction>
#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QWindow>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <set>

namespace {

using testing::ElementsAre;

class MainWindow : public Everywhere<ShopTest> {
protected:
    void SetUp() override {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_.path());
        ShopTest::SetUp();
        MDICheques::mostrarMensagens();
    }
    static MDICheques& openMain() {
        MDICheques& window = MDICheques::instance();
        window.show();
        activate(window);
        return window;
    }
    static QAction& action(const char* name) {
        auto* found = MDICheques::instance().findChild<QAction*>(name);
        if (!found)
            throw std::runtime_error(std::string("no action ") + name);
        return *found;
    }
    /// The value of a commit pair that no station has.
    void noteInFile(std::uint16_t value) const {
        std::fstream file(shop().file(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp((GetParam() == jet::Version::jet3 ? 0x600 : 0xE00) + 2 * 200);
        file.put(static_cast<char>(value & 0xFF)).put(static_cast<char>(value >> 8));
    }
    static void expectDataClosed() {
        for (const ado::Recordset* rs :
             {&data().rsCheques, &data().rsCliente, &data().rsBancos, &data().rsSemFundos})
            EXPECT_EQ(rs->State(), ado::State::Closed);
        EXPECT_EQ(data().Automacao.State(), ado::State::Closed);
    }

    QTemporaryDir settings_;
};

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

TEST_P(MainWindow, TellsAmongTheNewsThatNoHistoryIsKept) {
    auto& window = openMain();
    window.avisar();
    data().Automacao.store().createTable(
        {.name = Historico::kTabela,
         .columns = {{.name = "id", .type = jet::ColumnType::longInteger}},
         .indexes = {}});
    given("cheques", {{{"numero", words("1")}}});
    data().rsCheques.MoveFirst();
    data().rsCheques.Delete();
    EXPECT_EQ(text(window, "pnlNoticia"), "O histórico não está sendo gravado: a tabela "
                                          "\"valtrino_historico\" é de outro programa.");
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

TEST_P(MainWindow, ThePromptStandsInTheStatusBarWhileABankIsTyped) {
    auto& window = openMain();
    whileModal<frmBancos>([&](frmBancos& form) {
        EXPECT_EQ(text(window, "pnlMensagem"), "Código de identificação do banco.");
        press(Qt::Key_Return);
        EXPECT_EQ(text(window, "pnlMensagem"), "Nome do banco.");
        click(form, "cmdFechar");
    });
    action("mnubancos").trigger();
    EXPECT_EQ(text(window, "pnlMensagem"), "");
}

TEST_P(MainWindow, TheFirstPromptMakesTheWindow) {
    Mirtal::mensagem("Digite o valor do cheque");
    EXPECT_EQ(text(MDICheques::instance(), "pnlMensagem"), "Digite o valor do cheque");
    EXPECT_FALSE(MDICheques::instance().isVisible());
}

TEST_P(MainWindow, ALongPromptDoesNotWidenTheWindow) {
    auto& window = openMain();
    window.resize(700, 500);
    Mirtal::mensagem(QString(1000, 'x'));
    QApplication::processEvents();
    EXPECT_EQ(window.width(), 700);
}

TEST_P(MainWindow, NewsOfTheCopyLeaveThePromptOfTheFieldWhereItIs) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    auto& window = openMain();
    const auto& news = control<QLabel>(window, "pnlNoticia");
    EXPECT_FALSE(news.isVisible());
    whileModal<frmBancos>([&](frmBancos& form) {
        enter(form, "txtNome");
        window.cuidarDaCopia();
        for (const QDeadlineTimer patience(60'000); !news.isVisible() && !patience.hasExpired();)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        EXPECT_THAT(news.text().toStdString(),
                    testing::StartsWith("Cópia de segurança do dia feita: "));
        EXPECT_EQ(news.toolTip(), news.text());
        EXPECT_EQ(text(window, "pnlMensagem"), "Nome do banco.");
        click(form, "cmdFechar");
    });
    action("mnubancos").trigger();
    window.largarCopia();
}

TEST_P(MainWindow, ToolbarTextsGiveWayInANarrowWindow) {
    auto& window = openMain();
    const auto& bar = control<QToolBar>(window, "Toolbar1");
    window.resize(1366, 700);
    EXPECT_EQ(bar.toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
    window.resize(500, 400);
    EXPECT_EQ(bar.toolButtonStyle(), Qt::ToolButtonIconOnly);
    EXPECT_LE(bar.sizeHint().width(), 500);
}

TEST_P(MainWindow, SaysThatTheFileHasErrorsUntilItHasNone) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    auto& window = openMain();
    const auto& mark = control<QToolButton>(window, "pnlDano");
    const auto until = [&](bool shown) {
        for (const QDeadlineTimer patience(60'000);
             mark.isVisible() != shown && !patience.hasExpired();)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        return mark.isVisible() == shown;
    };
    EXPECT_FALSE(mark.isVisible());
    const auto copy = jet::Backup(shop().file()).makeIfDue();
    ASSERT_TRUE(copy);
    noteInFile(0x0001); // as a program does that meets a damaged page
    window.cuidarDaCopia();
    ASSERT_TRUE(until(true));
    EXPECT_EQ(mark.text(), "Arquivo com erros");
    EXPECT_FALSE(mark.icon().isNull());
    // A prompt doesn't wipe it out.
    Mirtal::mensagem("Digite o valor do cheque");
    EXPECT_TRUE(mark.isVisible());
    EXPECT_THAT(mark.toolTip().toStdString(), testing::HasSubstr("página danificada"));
    const QString sound = QString::fromStdString(copy->string());
    expectMessage("Mensagem",
                  mark.toolTip() +
                      "\n\nEnquanto o arquivo estiver assim, nenhuma cópia de segurança é apagada. "
                      "A cópia boa mais recente é\n" +
                      sound +
                      "\n\nPara voltar a ela, feche o programa em todas as estações e peça ao "
                      "técnico que execute\n\nvaltrino-mdb restore \"" +
                      sound + "\" \"" + QString::fromStdString(shop().file().string()) +
                      "\"\n\nO arquivo de agora fica guardado ao lado. O que foi lançado depois da "
                      "cópia terá de ser lançado de novo.");
    click(window, "pnlDano");

    // Another start of the program knows at once, and looks whether it is still so.
    window.largarCopia();
    noteInFile(0x0100);
    window.cuidarDaCopia();
    EXPECT_TRUE(until(false));
    window.largarCopia();
}

TEST_P(MainWindow, SairClosesTheData) {
    openMain();
    action("mnusair").trigger();
    expectDataClosed();
}

TEST_P(MainWindow, TheSairButtonClosesTheData) {
    openMain();
    action("sair").trigger();
    expectDataClosed();
}

TEST_P(MainWindow, ClosingTheWindowClosesTheData) {
    openMain().close();
    expectDataClosed();
}

TEST_P(MainWindow, SairClosesTheDataThoughAnotherWindowIsOpen) {
    openMain();
    open<frmBancos>();
    action("mnusair").trigger();
    expectDataClosed();
}

TEST_P(MainWindow, StandsWhereItStoodInTheLastRun) {
    const QRect place(40, 30, 660, 480);
    auto& first = openMain();
    first.showNormal();
    first.setGeometry(place);
    first.close();
    WindowList::instance().clear();
    EXPECT_EQ(openMain().geometry(), place);
}

TEST_P(MainWindow, FillsTheScreenInTheFirstRun) { EXPECT_TRUE(openMain().isMaximized()); }

} // namespace
