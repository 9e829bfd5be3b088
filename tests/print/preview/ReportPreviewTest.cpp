// The preview worked by keys and clicks.
#include "controls/look/Spoken.h"
#include "controls/look/Style.h"
#include "print/preview/Preview.h"
#include "support/FormChecks.h"

#include <QComboBox>
#include <QScrollBar>
#include <QSpinBox>
#include <QToolButton>

namespace {

using testing::ElementsAre;

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
