// The preview worked by keys and clicks.
#include "print/ReportPreview.h"

#include "controls/look/Spoken.h"
#include "controls/look/Style.h"
#include "print/OtherPrograms.h"
#include "print/PageView.h"
#include "print/ReportFixture.h"
#include "print/ReportPrinting.h"
#include "support/FormChecks.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QMouseEvent>
#include <QProgressDialog>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>

#include <tuple>

namespace {

using testing::ElementsAre;

class Preview : public ReportTest {
protected:
    Preview() {
        preview_.resize(1100, 700);
        preview_.show();
        activate(preview_);
        preview_.setFocus();
        // No printer is asked for by accident.
        setPrinterFunctions({[] { return false; }, [](QPrinter&, int, QWidget*) { return false; }});
    }
    ~Preview() override {
        setPrinterFunctions({});
        applyColours(ColourScheme::light);
    }

    void begin(qint64 rows) {
        ASSERT_TRUE(shop_.begin(inventedRows(rows)));
        takeAll();
    }
    [[nodiscard]] QString said(const char* name) const { return text(preview_, name); }
    [[nodiscard]] PageView& view() const { return control<PageView>(preview_, "pages"); }

    static FileRequest newFile(const QString& title, const QString& name, const QString& filter) {
        return {FileChoice::newFile, title, name, filter};
    }
    const FileRequest kPdf =
        newFile("Salvar como PDF", "Relatório de Cheques.pdf", "Documento PDF (*.pdf)");
    const FileRequest kXlsx =
        newFile("Salvar como planilha", "Relatório de Cheques.xlsx", "Planilha (*.xlsx)");
    const FileRequest kCsv = newFile("Salvar como CSV", "Relatório de Cheques.csv",
                                     "Texto separado por ponto e vírgula (*.csv)");

    /// The picture of what the viewport shows.
    QImage picture() { return view().viewport()->grab().toImage(); }
    int spots(const QColor& colour) {
        const QImage image = picture();
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y) == colour ? 1 : 0;
        return count;
    }

    ReportPreview preview_{report_};
};

TEST_F(Preview, WithoutAReportOffersNothing) {
    EXPECT_EQ(said("pageCount"), "");
    for (const char* name : {"print", "pdf", "xlsx", "csv", "first", "previous", "next", "last",
                             "hit-previous", "hit-next"})
        EXPECT_FALSE(control(preview_, name).isEnabled()) << name;
    EXPECT_EQ(faultsOf(preview_), QStringList());
}

TEST_F(Preview, ShowsTheFirstPageWhileTheRestComesIn) {
    ASSERT_TRUE(shop_.begin(inventedRows(200'000)));
    EXPECT_EQ(said("pageCount"), "Página 1 de 2 (lendo as linhas: 47)");
    EXPECT_TRUE(control(preview_, "pdf").isEnabled());
    press(Qt::Key_PageDown, Qt::ControlModifier); // the second page has one row so far
    EXPECT_EQ(preview_.page(), 2);
    takeAll();
    EXPECT_EQ(said("pageCount"), "Página 2 de 4.348");
}

TEST_F(Preview, GrowsByItself) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    const int before = view().verticalScrollBar()->maximum();
    ASSERT_TRUE(QTest::qWaitFor([&] { return report_.isComplete(); }, 60'000));
    EXPECT_EQ(said("pageCount"), "Página 1 de 66");
    EXPECT_GT(view().verticalScrollBar()->maximum(), before);
    EXPECT_EQ(preview_.page(), 1);
}

TEST_F(Preview, TurnsPagesByKeys) {
    begin(300);
    press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(preview_.page(), 2);
    press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(preview_.page(), 7);
    press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(preview_.page(), 7);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(preview_.page(), 6);
    press(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(preview_.page(), 1);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(preview_.page(), 1);
}

TEST_F(Preview, TellsReadersWhatStandsOnAnotherPage) {
    begin(300);
    std::vector<std::pair<QString, QString>> told;
    setListener([&](QAccessibleEvent& change) {
        if (change.object() == &view() && change.type() == QAccessible::TextUpdated)
            told.emplace_back(view().accessibleDescription(),
                              static_cast<QAccessibleTextUpdateEvent&>(change).textInserted());
    });
    press(Qt::Key_PageDown, Qt::ControlModifier);
    setListener({});
    EXPECT_THAT(told, ElementsAre(std::pair(QString("Página 2"), view().spokenPage())));
}

// What was last in sight is still seen; where whole pages are, it goes by these.
TEST_F(Preview, GoesOnByWhatIsSeen) {
    begin(300);
    QScrollBar& bar = *view().verticalScrollBar();
    const int seen = view().viewport()->height();
    for (const auto& [on, back] : {
             std::pair(std::pair(Qt::Key_PageDown, Qt::NoModifier),
                       std::pair(Qt::Key_PageUp, Qt::NoModifier)),
             {{Qt::Key_Space, Qt::NoModifier}, {Qt::Key_Space, Qt::ShiftModifier}}
    }) {
        press(on.first, on.second);
        EXPECT_GT(bar.value(), seen / 2);
        EXPECT_LT(bar.value(), seen);
        EXPECT_EQ(preview_.page(), 1);
        press(on.first, on.second);
        EXPECT_LT(bar.value(), 2 * seen);
        press(back.first, back.second);
        press(back.first, back.second);
        EXPECT_EQ(bar.value(), 0);
    }
    press(Qt::Key_0, Qt::ControlModifier);
    for (int page = 2; page <= 3; ++page) {
        press(Qt::Key_PageDown);
        EXPECT_TRUE(view().viewport()->rect().contains(view().pageRect(page)));
    }
    press(Qt::Key_F, Qt::ControlModifier); // from the search box too, where blanks are typed
    press(Qt::Key_PageUp);
    EXPECT_EQ(preview_.page(), 2);
    type(" ");
    EXPECT_EQ(preview_.page(), 2);
}

TEST_F(Preview, ReachesTheTotalAndTheStart) {
    preview_.setPatience(0);
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    QScrollBar& bar = *view().verticalScrollBar();
    for (const auto modifier : {Qt::NoModifier, Qt::ControlModifier}) {
        press(Qt::Key_End, modifier);
        EXPECT_TRUE(report_.isComplete());
        EXPECT_EQ(preview_.page(), 66);
        const QRect page = view().pageRect(66);
        const QRectF total = report_.placeOf(3000, 0, 0, 6);
        const qreal foot = page.top() + page.height() * total.bottom() / 297;
        EXPECT_LE(foot, view().viewport()->height());
        EXPECT_GT(foot, 0);
        EXPECT_FALSE(control(preview_, "last").isEnabled());
        press(Qt::Key_PageUp);
        EXPECT_TRUE(control(preview_, "last").isEnabled());
        press(Qt::Key_Home, modifier);
        EXPECT_EQ(bar.value(), 0);
        EXPECT_EQ(preview_.page(), 1);
    }
}

TEST_F(Preview, IsClosedByEscAndButton) {
    begin(3);
    int asked = 0;
    QObject::connect(&preview_, &ReportPreview::closeAsked, &shop_, [&] { ++asked; });
    press(Qt::Key_Escape);
    EXPECT_EQ(asked, 1);
    click(preview_, "close");
    EXPECT_EQ(asked, 2);
    press(Qt::Key_F, Qt::ControlModifier);
    press(Qt::Key_Escape); // leaves the search first
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(focus(), "pages");
}

TEST_F(Preview, KeepsTheFocusWhereAToolHasNoMoreToDo) {
    begin(60);
    enter(preview_, "next");
    press(Qt::Key_Space);
    EXPECT_EQ(preview_.page(), 2);
    EXPECT_EQ(focus(), "pages");
}

TEST_F(Preview, HasAllItsToolsInSightAt800) {
    begin(300);
    for (const int width : {800, 560}) {
        preview_.resize(width, 600);
        QTest::qWait(1);
        for (const char* name :
             {"print", "pdf", "xlsx", "csv", "first", "previous", "number", "next", "last",
              "zoom-out", "zoom", "zoom-in", "find", "hits", "hit-previous", "hit-next", "close"}) {
            const QWidget& tool = control(preview_, name);
            const QRect place(tool.mapTo(&preview_, QPoint()), tool.size());
            EXPECT_TRUE(tool.isVisible()) << name;
            EXPECT_TRUE(preview_.rect().contains(place)) << name << " at " << width;
            EXPECT_LE(place.bottom(), view().y()) << name;
        }
        EXPECT_EQ(faultsOf(preview_), QStringList());
    }
}

// ---- The mouse

class PagesUnderTheMouse : public Preview {
protected:
    PagesUnderTheMouse() {
        begin(100);
        view().setZoom(100);
    }
    /// On the viewport, where a field of a row shows its text.
    [[nodiscard]] QRect placeOf(qint64 row, qsizetype field, qsizetype length = 1) const {
        const qreal dots = view().logicalDpiX() / 25.4;
        const QRectF place = report_.placeOf(row, field, 0, length);
        return QRectF(place.topLeft() * dots, place.size() * dots)
            .translated(view().pageRect(report_.pageOf(row)).topLeft())
            .toRect();
    }
    void drag(QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton) {
        QWidget* const pages = view().viewport();
        QTest::mousePress(pages, button, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, pages->mapToGlobal(to), Qt::NoButton, button, {});
        QCoreApplication::sendEvent(pages, &move);
        QTest::mouseRelease(pages, button, {}, to);
    }
    QString copied() {
        QApplication::clipboard()->clear();
        press(Qt::Key_C, Qt::ControlModifier);
        return QApplication::clipboard()->text();
    }
};

TEST_F(PagesUnderTheMouse, AreDraggedFromWhereNoTextIs) {
    const int before = view().verticalScrollBar()->value();
    const QPoint margin = view().pageRect(1).topLeft() + QPoint(20, 300);
    drag(margin, margin - QPoint(0, 150));
    EXPECT_EQ(view().verticalScrollBar()->value(), before + 150);
    drag(placeOf(20, 1).center(), placeOf(20, 1).center() + QPoint(0, 100), Qt::MiddleButton);
    EXPECT_EQ(view().verticalScrollBar()->value(), before + 50);
    EXPECT_EQ(copied(), "");
    EXPECT_EQ(view().viewport()->cursor().shape() == Qt::ClosedHandCursor, false);
}

TEST_F(PagesUnderTheMouse, MarkTextThatIsCopied) {
    const QColor mark(0xb4, 0xd5, 0xfe);
    EXPECT_EQ(spots(mark), 0);
    const QRect name = placeOf(1, 1, 5); // "Maria Aparecida da Conceição"
    drag(QPoint(name.left(), name.center().y()), QPoint(name.right() + 1, name.center().y()));
    EXPECT_EQ(copied(), "Maria");
    EXPECT_EQ(said("news"), "O texto marcado foi copiado.");
    EXPECT_GT(spots(mark), 100);
    // From right to left it is the same.
    drag(QPoint(name.right() + 1, name.center().y()), QPoint(name.left(), name.center().y()));
    EXPECT_EQ(copied(), "Maria");
    // Over several rows: columns by tabs, as a spreadsheet takes them.
    drag(placeOf(1, 0).topLeft() + QPoint(0, 4), placeOf(2, 5, 10).bottomRight());
    EXPECT_EQ(copied(), "100001\tMaria Aparecida da Conceição\t02/01/2026\t79,20\tBanco Comercial "
                        "do Vale do Paraíba\t01/02/2026\n"
                        "100002\tJoão Batista dos Santos\t03/01/2026\t158,39\tCaixa\t02/02/2026");
    // A click takes the mark away.
    QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, name.center());
    EXPECT_EQ(spots(mark), 0);
    EXPECT_EQ(copied(), "");
}

TEST_F(PagesUnderTheMouse, ShowWhetherTextsAreThere) {
    QTest::mouseMove(view().viewport(), placeOf(1, 1, 5).center());
    EXPECT_EQ(view().viewport()->cursor().shape(), Qt::IBeamCursor);
    QTest::mouseMove(view().viewport(), view().pageRect(1).topLeft() + QPoint(20, 300));
    EXPECT_EQ(view().viewport()->cursor().shape(), Qt::OpenHandCursor);
}

TEST_F(PagesUnderTheMouse, AreCopiedAsAWhole) {
    press(Qt::Key_A, Qt::ControlModifier);
    const QStringList lines = copied().split('\n');
    ASSERT_EQ(lines.size(), 3 + 100 + 1); // header and headings once
    EXPECT_EQ(lines[0], "Relatório de Cheques\tPágina: 1");
    EXPECT_EQ(lines[1], "Referente ao período: 01/01/2026\ta 31/12/2026\tData: 20/11/2026");
    EXPECT_EQ(lines[2], "Cheque\tNome\tDt. Emissão\tValor Cheque\tBanco\tBom Para");
    EXPECT_EQ(lines.last(), "Total: " + formatMoney(shop_.total));
    // In the search box the keys are the box's.
    press(Qt::Key_F, Qt::ControlModifier);
    type("ana");
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(copied(), "ana");
}

TEST_F(Preview, TurnsPagesByButtons) {
    begin(300);
    EXPECT_FALSE(control(preview_, "first").isEnabled());
    EXPECT_FALSE(control(preview_, "previous").isEnabled());
    click(preview_, "next");
    EXPECT_EQ(preview_.page(), 2);
    click(preview_, "last");
    EXPECT_EQ(preview_.page(), 7);
    EXPECT_FALSE(control(preview_, "next").isEnabled());
    EXPECT_FALSE(control(preview_, "last").isEnabled());
    click(preview_, "previous");
    EXPECT_EQ(preview_.page(), 6);
    click(preview_, "first");
    EXPECT_EQ(preview_.page(), 1);
}

TEST_F(Preview, GoesToTheTypedPage) {
    begin(300);
    press(Qt::Key_G, Qt::ControlModifier);
    EXPECT_EQ(focus(), "number");
    type("5");
    press(Qt::Key_Return);
    EXPECT_EQ(preview_.page(), 5);
    EXPECT_EQ(focus(), "pages");
    EXPECT_EQ(control<QSpinBox>(preview_, "number").value(), 5);
    EXPECT_EQ(said("pageCount"), "Página 5 de 7");
}

// Left by its key, a box gives the focus back to the button, the pages or the other box.
TEST_F(Preview, GivesTheFocusBack) {
    begin(300);
    int closed = 0;
    QObject::connect(&preview_, &ReportPreview::closeAsked, &shop_, [&] { ++closed; });
    for (const char* from : {"pages", "zoom-in", "pdf", "zoom"}) {
        enter(preview_, from);
        press(Qt::Key_F, Qt::ControlModifier);
        type("ana");
        press(Qt::Key_G, Qt::ControlModifier);
        EXPECT_EQ(focus(), "number");
        type("3");
        press(Qt::Key_Return);
        EXPECT_EQ(focus(), "find");
        press(Qt::Key_Escape);
        EXPECT_EQ(focus(), from);
        press(Qt::Key_G, Qt::ControlModifier);
        press(Qt::Key_Escape);
        EXPECT_EQ(focus(), from);
        EXPECT_EQ(closed, 0);
    }
    press(Qt::Key_Escape); // in none of them
    EXPECT_EQ(closed, 1);
    click(preview_, "close");
    EXPECT_EQ(closed, 2);
}

TEST_F(Preview, PutsThePageNumberBack) {
    begin(300);
    preview_.goToPage(4);
    press(Qt::Key_G, Qt::ControlModifier);
    type("7");
    press(Qt::Key_Escape);
    EXPECT_EQ(preview_.page(), 4);
    EXPECT_EQ(control<QSpinBox>(preview_, "number").text(), "4");
    EXPECT_EQ(focus(), "pages");
}

TEST_F(Preview, GivesTheFocusToThePagesWhereItsPlaceTakesNone) {
    begin(300);
    enter(preview_, "next");
    press(Qt::Key_G, Qt::ControlModifier);
    type("7"); // behind it there is no next one
    press(Qt::Key_Return);
    EXPECT_EQ(preview_.page(), 7);
    EXPECT_EQ(focus(), "pages");
}

TEST_F(Preview, TellsThePageScrolledTo) {
    begin(300);
    QScrollBar& bar = *view().verticalScrollBar();
    bar.setValue(view().pageRect(3).top() + bar.value());
    EXPECT_EQ(preview_.page(), 3);
    bar.setValue(bar.maximum());
    EXPECT_EQ(preview_.page(), 7);
}

TEST_F(Preview, TurnsPagesWhereSeveralAreInSight) {
    begin(300);
    view().setZoom(25);
    for (int page = 2; page <= 7; ++page) {
        press(Qt::Key_PageDown, Qt::ControlModifier);
        EXPECT_EQ(preview_.page(), page);
    }
    for (int page = 6; page >= 1; --page) {
        press(Qt::Key_PageUp, Qt::ControlModifier);
        EXPECT_EQ(preview_.page(), page);
    }
}

TEST_F(Preview, ZoomsByKeys) {
    begin(300);
    EXPECT_EQ(view().percent(), 100);
    press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(view().percent(), 125);
    press(Qt::Key_Equal, Qt::ControlModifier);
    EXPECT_EQ(view().percent(), 150);
    press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(view().percent(), 125);
    press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(view().percent(), 100);
    EXPECT_EQ(control<QComboBox>(preview_, "zoom").currentText(), "100 %");
    for (int i = 0; i < 20; ++i)
        press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(view().percent(), 25);
    for (int i = 0; i < 20; ++i)
        press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(view().percent(), 400);
}

TEST_F(Preview, FitsThePageInTheWindow) {
    begin(300);
    view().goToPage(3);
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(control<QComboBox>(preview_, "zoom").currentText(), "Página inteira");
    EXPECT_TRUE(view().viewport()->rect().contains(view().pageRect(3)));
    EXPECT_EQ(preview_.page(), 3);
    press(Qt::Key_PageDown);
    EXPECT_TRUE(view().viewport()->rect().contains(view().pageRect(4)));

    press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(control<QComboBox>(preview_, "zoom").currentText(), "Largura da página");
    for (const int width : {1100, 800}) {
        preview_.resize(width, 700);
        QTest::qWait(1);
        const int room = view().viewport()->width();
        EXPECT_LT(view().pageRect(4).width(), room);
        EXPECT_GT(view().pageRect(4).width(), room - 40);
        EXPECT_FALSE(view().horizontalScrollBar()->isVisible());
    }
}

TEST_F(Preview, ZoomsByItsList) {
    begin(50);
    auto& zoom = control<QComboBox>(preview_, "zoom");
    enter(preview_, "zoom");
    press(Qt::Key_Down);
    EXPECT_EQ(view().percent(), 125);
    press(Qt::Key_Home);
    EXPECT_EQ(zoom.currentText(), "Página inteira");
    EXPECT_EQ(view().zoom(), PageView::Zoom::page);
}

TEST_F(Preview, FindsAndMarksAText) {
    begin(200);
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(focus(), "find");
    const QColor mark(0xff, 0xe0, 0x66);
    const QColor current(0xff, 0xa8, 0x3d);
    EXPECT_EQ(spots(mark), 0);
    type("conceicao");
    EXPECT_GT(spots(mark), 0);
    EXPECT_EQ(spots(current), 0);
    press(Qt::Key_Return);
    EXPECT_GT(spots(current), 0);
    ASSERT_TRUE(view().hit());
    EXPECT_EQ(view().hit()->row, 1);
    press(Qt::Key_F3);
    EXPECT_EQ(view().hit()->row, 8);
    press(Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(view().hit()->row, 1);
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(view().hit()->row, 197);
    EXPECT_EQ(preview_.page(), 5);
    EXPECT_EQ(said("news"), "A busca chegou ao início do relatório e continuou do fim.");
    EXPECT_GT(spots(current), 0); // brought into sight
    press(Qt::Key_F3);
    EXPECT_EQ(said("news"), "A busca chegou ao fim do relatório e continuou do início.");
    EXPECT_EQ(preview_.page(), 1);
    press(Qt::Key_Escape);
    EXPECT_EQ(focus(), "pages");
    EXPECT_EQ(spots(mark) + spots(current), 0);
}

TEST_F(Preview, SaysHowManyHitsThereAre) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    // The window that tells of a long search, here or on a slow machine, has had the focus.
    const auto look = [this](Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        press(key, modifiers);
        activate(preview_);
    };
    press(Qt::Key_F, Qt::ControlModifier);
    type("caixa");
    EXPECT_EQ(said("hits"), "");
    look(Qt::Key_Return);
    EXPECT_EQ(said("hits"), "1 de 1.000");
    look(Qt::Key_F3);
    EXPECT_EQ(said("hits"), "2 de 1.000");
    for (int i = 0; i < 2; ++i)
        look(Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(said("hits"), "1.000 de 1.000");
    look(Qt::Key_F3);
    EXPECT_EQ(said("hits"), "1 de 1.000");
    press(Qt::Key_A, Qt::ControlModifier);
    type("total");
    EXPECT_EQ(said("hits"), "");
    look(Qt::Key_Return);
    EXPECT_EQ(said("hits"), "1 de 1");
    EXPECT_EQ(preview_.page(), 66);
    EXPECT_GT(spots(QColor(0xff, 0xa8, 0x3d)), 0); // marked, in sight
    press(Qt::Key_Escape);
    EXPECT_EQ(said("hits"), "");
}

TEST_F(Preview, SaysWhenATextIsntThere) {
    begin(20);
    press(Qt::Key_F, Qt::ControlModifier);
    type("zebra");
    press(Qt::Key_Return);
    EXPECT_EQ(said("news"), "\"zebra\" não foi encontrado nas linhas do relatório.");
    type("s");
    EXPECT_EQ(said("news"), "");
}

TEST_F(Preview, ShowsTheNewReportFromItsFirstPage) {
    begin(300);
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_F, Qt::ControlModifier);
    type("ana");
    begin(20);
    EXPECT_EQ(preview_.page(), 1);
    EXPECT_EQ(said("pageCount"), "Página 1 de 1");
    EXPECT_EQ(said("find"), "");
}

TEST_F(Preview, PaperIsWhiteInDarkColoursToo) {
    begin(3);
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        applyColours(scheme);
        ReportPreview preview(report_);
        preview.resize(1100, 700);
        auto& pages = control<PageView>(preview, "pages");
        const QImage image = pages.viewport()->grab().toImage();
        EXPECT_EQ(image.pixelColor(pages.pageRect(1).topLeft() + QPoint(8, 8)), Qt::white);
        EXPECT_EQ(image.pixelColor(3, 3), QGuiApplication::palette().color(QPalette::Mid));
    }
}

TEST_F(Preview, HasEverythingNamedAndUncut) {
    begin(300);
    QCoreApplication::processEvents(); // the foot makes room for its text
    EXPECT_EQ(faultsOf(preview_), QStringList());
    for (const auto* button : preview_.findChildren<QToolButton*>())
        if (!button->objectName().isEmpty() && button->defaultAction()) {
            EXPECT_TRUE(button->toolTip().contains('(')) << button->toolTip().toStdString();
            EXPECT_FALSE(button->icon().isNull());
        }
}

// ---- Files and printing

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

// ---- A report whose rows have stopped coming

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

// ---- Rows that change meanwhile

TEST_F(Preview, StaysOnItsPageWhenTheRowsCameAnew) {
    class Changing final : public RowSource {
    public:
        [[nodiscard]] QStringList columns() const override { return LayoutDoRelatorio::colunas(); }
        NextRow next(std::vector<ReportValue>& values) override {
            if (++given_ != 1200)
                return rows_->next(values);
            rows_ = inventedRows(900);
            return NextRow::anew;
        }

    private:
        std::unique_ptr<RowSource> rows_ = inventedRows(3000);
        int given_ = 0;
    };
    ASSERT_TRUE(shop_.begin(std::make_unique<Changing>()));
    {
        const Relatorio::Run run(report_);
        ASSERT_EQ(report_.takeAll(run, [](qint64 done, qint64) { return done < 960; }),
                  RowsState::coming);
    }
    EXPECT_EQ(said("pageCount"), "Página 1 de 22 (lendo as linhas: 1.007)");
    preview_.goToPage(22);
    {
        const Relatorio::Run run(report_);
        ASSERT_EQ(report_.takeAll(run, [](qint64 done, qint64) { return done > 500; }),
                  RowsState::coming);
    }
    EXPECT_TRUE(report_.comesAnew());
    EXPECT_EQ(preview_.page(), 22);
    EXPECT_THAT(
        said("pageCount").toStdString(),
        testing::StartsWith("Página 22 de 27 (os dados mudaram; lendo as linhas outra vez: 63)"));
    takeAll();
    EXPECT_EQ(said("pageCount"), "Página 20 de 20");
}

} // namespace
