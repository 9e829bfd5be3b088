// What the preview saves and prints, and a report whose rows have stopped coming.
#include "controls/look/Style.h"
#include "print/OtherPrograms.h"
#include "print/preview/Preview.h"
#include "support/FormChecks.h"

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QTimer>

#include <tuple>

using testing::ElementsAre;

namespace {

TEST_F(Preview, SavesAllThreeKindsByKeys) {
    begin(50);
    expectFile(kPdf, path("a.pdf"));
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(said("news"), "Salvo em " + path("a.pdf"));
    EXPECT_EQ(propertyOf(path("a.pdf"), "Pages"), "2");

    FileRequest next = kXlsx;
    next.path = path("Relatório de Cheques.xlsx"); // where the last one went
    expectFile(next, path("a.xlsx"));
    press(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(said("news"), "Salvo em " + path("a.xlsx"));

    next = kCsv;
    next.path = path("Relatório de Cheques.csv");
    expectFile(next, path("a.csv"));
    press(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(said("news"), "Salvo em " + path("a.csv"));
    EXPECT_EQ(files().size(), 3U);
}

TEST_F(Preview, SavesNothingWhenNoFileIsChosen) {
    begin(50);
    expectFile(kPdf, std::nullopt);
    click(preview_, "pdf");
    EXPECT_EQ(said("news"), "");
}

TEST_F(Preview, AddsTheEndingAndAsksBeforeItReplaces) {
    begin(50);
    expectFile(kCsv, path("a"));
    click(preview_, "csv");
    EXPECT_THAT(files(), ElementsAre("a.csv"));
    const auto before = std::filesystem::last_write_time(folder_ / "a.csv");
    std::filesystem::last_write_time(folder_ / "a.csv", before - std::chrono::hours(1));

    FileRequest next = kCsv;
    next.path = path("Relatório de Cheques.csv");
    expectFile(next, path("a"));
    expectMessage("Salvar como CSV",
                  QString("\"%1\" já existe. Deseja substituí-lo?").arg(path("a.csv")),
                  MessageIcon::question, MessageButtons::yesNo, MessageAnswer::no);
    click(preview_, "csv");
    EXPECT_EQ(std::filesystem::last_write_time(folder_ / "a.csv"), before - std::chrono::hours(1));
}

TEST_F(Preview, SaysWhyAFileCantBeWritten) {
    begin(50);
    expectFile(kPdf, path("nenhuma/a.pdf"));
    expectMessage("Salvar como PDF",
                  QString("Não foi possível gravar \"%1\": a pasta não existe ou não aceita "
                          "arquivos novos. Escolha outra pasta.")
                      .arg(path("nenhuma/a.pdf")));
    click(preview_, "pdf");
    EXPECT_THAT(files(), testing::IsEmpty());
}

/// Presses "Cancelar" as soon as the window with the bar is there.
void cancelWhenAsked() {
    QTimer::singleShot(0, [] {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* progress = qobject_cast<QProgressDialog*>(window)) {
                EXPECT_EQ(progress->windowModality(), Qt::ApplicationModal);
                auto* button = progress->findChild<QPushButton*>();
                EXPECT_EQ(button->text(), "Cancelar");
                button->click();
            }
    });
}

TEST_F(Preview, CancelsAFile) {
    preview_.setPatience(0);
    begin(1000);
    expectFile(kPdf, path("a.pdf"));
    cancelWhenAsked();
    click(preview_, "pdf");
    EXPECT_EQ(said("news"), "A gravação foi cancelada; nenhum arquivo foi criado ou alterado.");
    EXPECT_THAT(files(), testing::IsEmpty());
}

TEST_F(Preview, CancelsASearch) {
    preview_.setPatience(0);
    begin(5000);
    press(Qt::Key_F, Qt::ControlModifier);
    type("zebra");
    cancelWhenAsked();
    press(Qt::Key_Return);
    EXPECT_EQ(said("news"), "A busca foi cancelada.");
}

TEST_F(Preview, WithoutAPrinterTellsTheErrorEventAndStaysOnShow) {
    begin(50);
    press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::noPrinter)));
    EXPECT_EQ(preview_.page(), 1);
    EXPECT_EQ(said("pageCount"), "Página 1 de 2");
}

TEST_F(Preview, PrintsWhatIsAskedFor) {
    begin(300);
    setPrinterFunctions({[] { return true; },
                         [this](QPrinter& printer, int pageCount, QWidget* owner) {
                             EXPECT_EQ(pageCount, 7);
                             EXPECT_EQ(owner, &preview_);
                             printer.setOutputFileName(path("paper.pdf"));
                             printer.setPrintRange(QPrinter::CurrentPage);
                             return true;
                         }});
    preview_.goToPage(3);
    click(preview_, "print");
    EXPECT_EQ(said("news"), "O relatório foi enviado para a impressora.");
    EXPECT_EQ(linesOfPage(path("paper.pdf"), 1)[0].simplified().split(' ').last(), "3");
}

TEST_F(Preview, AsksForThePrinterWithNothingInTheWay) {
    preview_.setPatience(0);
    ASSERT_TRUE(shop_.begin(inventedRows(5000)));
    bool asked = false;
    setPrinterFunctions({[] { return true; },
                         [&](QPrinter&, int, QWidget*) {
                             asked = true;
                             EXPECT_EQ(QApplication::overrideCursor(), nullptr);
                             for (const QWidget* window : QApplication::topLevelWidgets())
                                 EXPECT_FALSE(qobject_cast<const QProgressDialog*>(window));
                             return false;
                         }});
    click(preview_, "print");
    EXPECT_TRUE(asked);
}

TEST_F(Preview, SaysThatPrintingWasGivenUpOrFailed) {
    begin(30);
    bool choose = false;
    setPrinterFunctions({[] { return true; },
                         [&](QPrinter& printer, int, QWidget*) {
                             printer.setOutputFileName(path("nenhuma/paper.pdf"));
                             return choose;
                         }});
    click(preview_, "print");
    EXPECT_EQ(said("news"), "A impressão foi cancelada.");
    choose = true;
    expectMessage("Impressão",
                  "A impressora não aceitou o relatório. Verifique se está ligada e pronta.");
    click(preview_, "print");
}

class BrokenPreview : public Preview {
protected:
    /// Gives some rows, then fails.
    class BreakingRows final : public RowSource {
    public:
        explicit BreakingRows(qint64 count) : rows_(inventedRows(count)) {}
        [[nodiscard]] QStringList columns() const override { return rows_->columns(); }
        NextRow next(std::vector<ReportValue>& values) override {
            const NextRow found = rows_->next(values);
            if (found == NextRow::none)
                throw std::runtime_error("a rede caiu");
            return found;
        }

    private:
        std::unique_ptr<RowSource> rows_;
    };

    BrokenPreview() {
        EXPECT_TRUE(shop_.begin(std::make_unique<BreakingRows>(1234)));
        expectFailure("a rede caiu");
        EXPECT_TRUE(QTest::qWaitFor([&] { return report_.state() == RowsState::failed; }, 60'000));
    }
};

TEST_F(BrokenPreview, SaysSoOverThePages) {
    EXPECT_TRUE(control(preview_, "failed").isVisible());
    EXPECT_LT(control(preview_, "failed").mapTo(&preview_, QPoint()).y(), view().y());
    EXPECT_EQ(said("failed"), "Relatório incompleto: a leitura das linhas parou depois de 1.234. "
                              "Ele não pode ser impresso nem salvo.");
    EXPECT_EQ(said("pageCount"), "Página 1 de 27 (incompleto)");
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        applyColours(scheme);
        EXPECT_EQ(faultsOf(preview_), QStringList());
    }
}

TEST_F(BrokenPreview, NeitherPrintsNorSaves) {
    setPrinterFunctions({[] { return true; },
                         [](QPrinter&, int, QWidget*) {
                             ADD_FAILURE() << "the printer is asked for";
                             return false;
                         }});
    for (const auto& [key, modifiers, title] :
         {std::tuple(Qt::Key_P, Qt::KeyboardModifiers(Qt::ControlModifier), "Impressão"),
          std::tuple(Qt::Key_S, Qt::KeyboardModifiers(Qt::ControlModifier), "Salvar como PDF"),
          std::tuple(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier, "Salvar como planilha"),
          std::tuple(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier, "Salvar como CSV")}) {
        expectMessage(title, kIncomplete);
        press(key, modifiers);
        EXPECT_EQ(said("news"), "");
    }
    EXPECT_EQ(printReport(report_, 1, nullptr, goOn), PrintOutcome::incomplete);
}

TEST_F(BrokenPreview, SearchesWhatHasCome) {
    press(Qt::Key_F, Qt::ControlModifier);
    type("100000");
    press(Qt::Key_Return);
    EXPECT_EQ(said("news"), "");
    EXPECT_TRUE(view().hit());
    press(Qt::Key_A, Qt::ControlModifier);
    type("zebra");
    for (const auto modifiers : {Qt::NoModifier, Qt::ShiftModifier}) {
        press(Qt::Key_Return, modifiers);
        EXPECT_EQ(said("news"),
                  "\"zebra\" não foi encontrado nas linhas lidas; o relatório está incompleto.");
    }
}

TEST_F(BrokenPreview, OffersToTryAgain) {
    int asked = 0;
    QObject::connect(&preview_, &ReportPreview::againAsked, &shop_, [&] {
        ++asked;
        begin(60);
    });
    press(Qt::Key_T, Qt::AltModifier);
    ASSERT_TRUE(QTest::qWaitFor([&] { return asked == 1; }, 60'000)); // seen to go down first
    EXPECT_FALSE(control(preview_, "failed").isVisible());
    EXPECT_EQ(said("pageCount"), "Página 1 de 2");
    EXPECT_EQ(focus(), "pages");
}

} // namespace
