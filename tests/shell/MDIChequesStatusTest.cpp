// What the main window tells at its foot, where it stands, and what its end closes.
#include "jet/Backup.h"
#include "registers/frmBancos.h"
#include "shell/MainWindow.h"
#include "shell/Mirtal.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QLabel>
#include <QToolBar>
#include <QToolButton>

#include <memory>

namespace {

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
    // The copies are looked through beside the window, which is asked again until that has ended.
    const auto told = std::make_shared<Message>();
    setMessageFunction([told](const Message& message) {
        *told = message;
        return MessageAnswer::ok;
    });
    for (const QDeadlineTimer patience(60'000); !patience.hasExpired();) {
        click(window, "pnlDano");
        if (!told->text.contains("sendo conferidas"))
            break;
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
    EXPECT_EQ(
        *told,
        (Message{mark.toolTip() +
                     "\n\nEnquanto o arquivo estiver assim, nenhuma cópia de segurança é apagada. "
                     "A cópia boa mais recente é\n" +
                     sound +
                     "\n\nPara voltar a ela, feche o programa em todas as estações e peça ao "
                     "técnico que execute\n\nvaltrino-mdb restore \"" +
                     sound + "\" \"" + QString::fromStdString(shop().file().string()) +
                     "\"\n\nO arquivo de agora fica guardado ao lado. O que foi lançado depois da "
                     "cópia terá de ser lançado de novo.",
                 "Mensagem", MessageIcon::exclamation}));

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
