// The help: every window has its page, which F1 opens; pages are searched, followed, gone back from
// and printed.
#include "print/ReportPrinting.h"
#include "shell/EveryWindow.h"
#include "shell/Manual.h"
#include "shell/PaginaDeAjuda.h"
#include "support/TemporaryFolder.h"

#include <QImage>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextDocument>

#include <gmock/gmock.h>

#include <set>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class Help : public EveryWindow {
protected:
    ~Help() override { setPrinterFunctions({}); }

    static PaginaDeAjuda& page(const QWidget& help) {
        return control<PaginaDeAjuda>(help, "txtpagina");
    }
    /// The page that F1 opens here; it is closed by Esc.
    static QString afterF1() {
        QString seen = "none";
        whenHelpIsOpen([&](FrmAjuda& help) {
            seen = page(help).pagina();
            press(Qt::Key_Escape);
        });
        press(Qt::Key_F1);
        return seen;
    }
    static void whenHelpIsOpen(std::function<void(FrmAjuda&)> work) {
        current().whileModal<FrmAjuda>(std::move(work));
    }
    static Help& current() { return *current_; }
    void SetUp() override {
        EveryWindow::SetUp();
        current_ = this;
    }
    static std::vector<QString> targetsOf(const QString& html, const char* attribute) {
        const QRegularExpression target(QString("%1=\"([^\"]*)\"").arg(attribute));
        std::vector<QString> found;
        for (auto it = target.globalMatch(html); it.hasNext();)
            found.push_back(it.next().captured(1));
        return found;
    }

private:
    static inline Help* current_ = nullptr;
};

TEST_F(Help, EveryWindowHasItsPage) {
    std::set<QString> pages;
    for (const State& state : states()) {
        const QString name = state.show().objectName();
        const QString page = Manual::paginaDe(name);
        EXPECT_TRUE(Manual::paginas().contains(page)) << state.name << ": " << name.toStdString();
        pages.insert(page);
    }
    EXPECT_GT(pages.size(), 15U);
    EXPECT_EQ(Manual::paginaDe("frmSplash"), "");
}

TEST_F(Help, EveryPageHasAHeadingAndLeadsSomewhere) {
    ASSERT_THAT(Manual::paginas(), SizeIs(testing::Gt(20)));
    int pictures = 0;
    for (const QString& page : Manual::paginas()) {
        const QString html = Manual::html(page);
        EXPECT_NE(Manual::titulo(page), "") << page.toStdString();
        EXPECT_NE(Manual::titulo(page), page) << page.toStdString();
        for (const QString& link : targetsOf(html, "a href"))
            EXPECT_NE(Manual::html(QString(link).remove(".html")), "")
                << page.toStdString() << ": " << link.toStdString();
        for (const QString& picture : targetsOf(html, "src")) {
            ++pictures;
            const QImage light = Manual::figura(picture, false);
            EXPECT_FALSE(light.isNull()) << page.toStdString() << ": " << picture.toStdString();
            EXPECT_EQ(light.size(), Manual::figura(picture, true).size());
            // Those of the journeys are light only.
            EXPECT_EQ(light != Manual::figura(picture, true), picture.contains("-light-"));
        }
    }
    EXPECT_GT(pictures, 20);
}

TEST_F(Help, F1OpensThePageOfTheWindowInFront) {
    auto& main = open<MDICheques>();
    EXPECT_EQ(afterF1(), "principal");
    QString banks;
    whileModal<frmBancos>([&](frmBancos& form) {
        banks = afterF1();
        activate(form);
        press(Qt::Key_Escape);
    });
    main.findChild<QAction*>("mnubancos")->trigger();
    EXPECT_EQ(banks, "bancos");
    QString itself;
    whenHelpIsOpen([&](FrmAjuda& help) {
        press(Qt::Key_F1);
        itself = page(help).pagina();
        press(Qt::Key_Escape);
    });
    press(Qt::Key_F1);
    EXPECT_EQ(itself, "ajuda");
}

TEST_F(Help, F1TellsOfWhatTheMainWindowShowsInside) {
    auto& main = open<MDICheques>();
    main.mostrarDentro(frmRel_ChequesSF::instance());
    activate(main);
    EXPECT_EQ(afterF1(), "visualizar");
}

TEST_F(Help, F1WorksInFrontOfWhatIsToBePrintedToo) {
    open<MDICheques>();
    auto& printed = JanelaDeImpressao::instance();
    printed.show();
    activate(printed);
    EXPECT_EQ(QApplication::activeModalWidget(), &printed);
    EXPECT_EQ(afterF1(), "visualizar");
    printed.close();
}

TEST_F(Help, WaitsUntilAQuestionIsAnswered) {
    open<MDICheques>();
    QDialog question;
    question.setModal(true);
    question.show();
    activate(question);
    press(Qt::Key_F1);
    EXPECT_FALSE(FrmAjuda::instance().isVisible());
}

TEST_F(Help, IsSearchedWithoutRegardToCaseAndAccents) {
    const auto found = Manual::procurar("BORDERO");
    ASSERT_THAT(found, Not(IsEmpty()));
    EXPECT_EQ(found.front().pagina, "bordero"); // it has the word in its heading
    for (const auto& each : found)
        EXPECT_THAT(each.trecho.toLower().toStdString(), HasSubstr("borderô"));
    EXPECT_LT(Manual::procurar("bordero depositar conta").size(), found.size());
    EXPECT_THAT(Manual::procurar("zzyzx"), IsEmpty());
    EXPECT_THAT(Manual::procurar(" "), IsEmpty());
}

TEST_F(Help, ShowsWhatIsFoundAndGoesBackThere) {
    auto& help = open<FrmAjuda>();
    auto& shown = page(help);
    type(help, "txtprocurar", "súmula");
    press(Qt::Key_Return);
    EXPECT_THAT(shown.toPlainText().toStdString(), HasSubstr("1 página"));
    EXPECT_EQ(shown.pagina(), "");
    EXPECT_EQ(focus(), "txtpagina");
    press(Qt::Key_Tab); // to the only link
    press(Qt::Key_Return);
    EXPECT_EQ(shown.pagina(), "agenda");
    EXPECT_EQ(shown.textCursor().selectedText(), "Súmula");
    press(Qt::Key_V, Qt::AltModifier);
    EXPECT_THAT(shown.toPlainText().toStdString(), HasSubstr("Procura: súmula"));
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(shown.pagina(), "index");
    EXPECT_FALSE(control(help, "cmdvoltar").isEnabled());
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(focus(), "txtprocurar");
}

TEST_F(Help, SaysThatNothingIsFoundAndWhatIsMissing) {
    auto& help = open<FrmAjuda>();
    expectMessage("Advertência", "Digite o que deve ser procurado na ajuda.");
    click(help, "cmdlocalizar");
    EXPECT_EQ(focus(), "txtprocurar");
    type(help, "txtprocurar", "<b>zzyzx&");
    press(Qt::Key_Return);
    EXPECT_THAT(page(help).toPlainText().toStdString(),
                testing::AllOf(HasSubstr("Procura: <b>zzyzx&"),
                               HasSubstr("Nenhuma página do manual tem estas palavras.")));
    expectMessage("Advertência", "Abra a página que deve ser impressa.");
    click(help, "cmdimprimir");
    click(help, "cmdindice");
    EXPECT_EQ(page(help).pagina(), "index");
}

TEST_F(Help, IsPrintedPageByPage) {
    auto& help = open<FrmAjuda>();
    bool installed = false;
    int asked = 0;
    QTemporaryDir folder;
    setPrinterFunctions({[&] { return installed; },
                         [&](QPrinter& printer, int pages, QWidget*) {
                             ++asked;
                             EXPECT_GE(pages, 1);
                             printer.setOutputFormat(QPrinter::PdfFormat);
                             printer.setOutputFileName(folder.filePath("page.pdf"));
                             return true;
                         }});
    expectMessage("Impressão", "É necessário existir uma impressora instalada no Windows.");
    click(help, "cmdimprimir");
    EXPECT_EQ(asked, 0);
    installed = true;
    click(help, "cmdimprimir");
    EXPECT_EQ(asked, 1);
    EXPECT_GT(QFileInfo(folder.filePath("page.pdf")).size(), 5000);
}

TEST_F(Help, PicturesAreNoWiderThanTheWindowAndFollowItsColours) {
    auto& help = open<FrmAjuda>();
    auto& shown = page(help);
    shown.abrir("principal");
    const auto picture = [&] {
        return shown.document()
            ->resource(QTextDocument::ImageResource, QUrl("principal-light-100.png"))
            .value<QImage>();
    };
    const auto width = [&] { return picture().deviceIndependentSize().width(); };
    for (const int wide : {500, 700}) {
        help.resize(wide, 500);
        QCoreApplication::processEvents();
        EXPECT_LE(width(), shown.viewport()->width());
        EXPECT_GT(width(), shown.viewport()->width() - 20);
        EXPECT_EQ(shown.horizontalScrollBar()->maximum(), 0);
    }
    const QImage light = picture();
    applyColours(ColourScheme::dark);
    QCoreApplication::processEvents();
    EXPECT_LT(picture().pixelColor(2, 2).lightness(), light.pixelColor(2, 2).lightness());
    applyColours(ColourScheme::light);
}

TEST_F(Help, NoHeadingOfTheWholeManualStandsAloneAtTheFootOfASheet) {
    const TemporaryFolder folder;
    QPdfWriter paper(QString::fromStdString((folder.path() / "manual.pdf").string()));
    paper.setResolution(300);
    paper.setPageSize(QPageSize(QPageSize::A4));
    const auto manual = Manual::paraPapel(Manual::paginas());
    ASSERT_TRUE(Manual::tituloNoPe(*manual, paper)); // else there is nothing to be seen here
    Manual::manterTitulos(*manual, paper);
    EXPECT_FALSE(Manual::tituloNoPe(*manual, paper));
}

} // namespace
