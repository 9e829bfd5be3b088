#include "controls/box/ListView.h"

#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/typing/KeyHabits.h"
#include "support/FormTest.h"

#include <QElapsedTimer>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <array>

namespace {

class BankList : public FormTest {
protected:
    BankList() {
        KeyHabits::install();
        list_ = new ListView;
        list_->setObjectName("lstListagem");
        auto* column = new QVBoxLayout(&window_);
        column->setContentsMargins(0, 0, 0, 0);
        column->addWidget(list_);
        // clang-format off
        list_->setColumns({
            {"Código", 1000},
            {"Nome",   3000},
            {"Valor ", 1000, Qt::AlignRight}
        });
        // clang-format on
        window_.resize(500, 300);
        window_.show();
        activate(window_);
    }
    /// What the columns share: the scroll bar keeps its place, shown or not.
    [[nodiscard]] int room() const {
        return list_->maximumViewportSize().width() -
               list_->verticalScrollBar()->sizeHint().width();
    }
    void fill(int rows) {
        for (int i = 0; i < rows; ++i)
            list_->addItem({
                .key = QString("00000 %1").arg(i),
                .text = QString::number(100 + i),
                .subItems = {QString("Banco %1").arg(i), "1,00"},
                .icon = {                          },
                .checked = false
            });
    }

    QWidget window_;
    ListView* list_;
};

TEST_F(BankList, GivesBackWhatWasAdded) {
    fill(3);
    EXPECT_EQ(list_->count(), 3);
    EXPECT_EQ(list_->item(1).key, "00000 1");
    EXPECT_EQ(list_->text(1, 0), "101");
    EXPECT_EQ(list_->text(1, 1), "Banco 1");
    EXPECT_EQ(list_->text(1, 2), "1,00");
    list_->setText(1, 1, "Outro");
    EXPECT_EQ(list_->text(1, 1), "Outro");
    list_->clear();
    EXPECT_EQ(list_->count(), 0);
}

TEST_F(BankList, ARowMayHaveFewerSubItemsThanColumns) {
    list_->addItem({.key = "k", .text = "1", .subItems = {}, .icon = {}, .checked = false});
    EXPECT_EQ(list_->text(0, 2), "");
    list_->setText(0, 2, "9,00");
    EXPECT_EQ(list_->text(0, 1), "");
    EXPECT_EQ(list_->text(0, 2), "9,00");
}

TEST_F(BankList, ShowsTheRowsInItsColumns) {
    fill(2);
    QCoreApplication::processEvents();
    const auto* model = list_->model();
    ASSERT_EQ(model->rowCount(), 2);
    EXPECT_EQ(model->index(1, 1).data().toString(), "Banco 1");
    EXPECT_EQ(model->headerData(0, Qt::Horizontal).toString(), "Código");
    EXPECT_TRUE(model->index(0, 2).data(Qt::TextAlignmentRole).value<Qt::Alignment>() &
                Qt::AlignRight);
}

TEST_F(BankList, TellsAClickOnARow) {
    fill(5);
    const QSignalSpy clicks(list_, &ListView::itemClicked);
    clickRow(window_, "lstListagem", 3);
    ASSERT_EQ(clicks.count(), 1);
    EXPECT_EQ(clicks[0][0].toString(), "00000 3");
    EXPECT_EQ(clicks[0][1].toInt(), 3);
    EXPECT_EQ(list_->currentRow(), 3);
    EXPECT_EQ(list_->selectionModel()->selectedRows().size(), 1);
}

TEST_F(BankList, ADoubleClickIsTwoClicks) {
    fill(5);
    const QSignalSpy clicks(list_, &ListView::itemClicked);
    const QPointF at = list_->rowRect(1).center();
    clickRow(window_, "lstListagem", 1);
    QMouseEvent second(QEvent::MouseButtonDblClick, at, list_->viewport()->mapToGlobal(at),
                       Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list_->viewport(), &second);
    QTest::mouseRelease(list_->viewport(), Qt::LeftButton, {}, at.toPoint());
    EXPECT_EQ(clicks.count(), 2);
}

TEST_F(BankList, TellsNothingOfAClickBesideTheRows) {
    fill(1);
    const QSignalSpy clicks(list_, &ListView::itemClicked);
    QTest::mouseClick(list_->viewport(), Qt::LeftButton, {},
                      QPoint(20, list_->viewport()->height() - 5));
    EXPECT_EQ(clicks.count(), 0);
}

TEST_F(BankList, ArrowsMoveAndEnterAndSpaceClick) {
    fill(5);
    list_->setFocus();
    list_->setCurrentRow(0);
    const QSignalSpy clicks(list_, &ListView::itemClicked);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(clicks.count(), 0);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
        press(key);
    ASSERT_EQ(clicks.count(), 3);
    EXPECT_EQ(clicks[2][0].toString(), "00000 2");
}

TEST_F(BankList, EnterInAnEmptyListDoesNothing) {
    list_->setFocus();
    const QSignalSpy clicks(list_, &ListView::itemClicked);
    press(Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 0);
}

TEST_F(BankList, TellsAClickOnAColumnsHead) {
    const QSignalSpy clicks(list_, &ListView::columnClicked);
    clickColumn(window_, "lstListagem", 1);
    ASSERT_EQ(clicks.count(), 1);
    EXPECT_EQ(clicks[0][0].toInt(), 1);
    EXPECT_EQ(clicks[0][1].toString(), "Nome");
}

TEST_F(BankList, ColumnsShareTheWidthAlsoWhenTheWindowGrows) {
    fill(1);
    for (const int width : {500, 1000}) {
        window_.resize(width, 300);
        QCoreApplication::processEvents();
        const int all = room();
        EXPECT_EQ(list_->columnWidth(0), all / 5);
        EXPECT_NEAR(list_->columnWidth(1), all * 0.6, 1);
        EXPECT_EQ(list_->columnWidth(0) + list_->columnWidth(1) + list_->columnWidth(2), all);
    }
}

TEST_F(BankList, TheFirstColumnHasRoomForItsCheckBoxAndIcon) {
    list_->setColumns({
        {"",     1   },
        {"Nome", 1000}
    });
    list_->setCheckBoxes(true);
    list_->addItem(
        {.key = "k", .text = "", .subItems = {}, .icon = Icons::named("banco"), .checked = false});
    const QRect box = list_->checkBoxRect(0);
    EXPECT_GE(list_->columnWidth(0), box.right() + 16);
    EXPECT_EQ(list_->columnWidth(0) + list_->columnWidth(1), room());
}

TEST_F(BankList, WhatIsListedMovesNoColumn) {
    const auto widths = [this] {
        return std::array{list_->columnWidth(0), list_->columnWidth(1), list_->columnWidth(2)};
    };
    for (const int share : {1, 20}) {
        list_->setColumns({
            {"",       share},
            {"Nome",   60   },
            {"Valor ", 20   }
        });
        list_->setCheckBoxes(share == 1);
        const auto empty = widths();
        for (const int rows : {1, 200}) {
            for (int row = 0; row < rows; ++row)
                list_->addItem({.key = QString::number(row),
                                .text = "104",
                                .subItems = {},
                                .icon = Icons::named("banco"),
                                .checked = false});
            for (int events = 0; events < 3; ++events) // rows, their layout, the scroll bar
                QCoreApplication::processEvents();
            EXPECT_EQ(widths(), empty) << rows;
        }
        EXPECT_TRUE(list_->verticalScrollBar()->isVisible());
    }
}

TEST_F(BankList, NoColumnIsNarrowerThanItsHeadingUnlessTheOperatorMakesItSo) {
    const auto needed = [&](int column) { return list_->header()->sectionSizeHint(column); };
    // clang-format off
    list_->setColumns({
        {"Código do banco", 1},
        {"Nome",            40},
        {"Valor R$",        1}
    });
    // clang-format on
    EXPECT_EQ(list_->columnWidth(0), needed(0));
    EXPECT_EQ(list_->columnWidth(2), needed(2));
    EXPECT_EQ(list_->columnWidth(0) + list_->columnWidth(1) + list_->columnWidth(2), room());
    window_.resize(60, 300);
    QCoreApplication::processEvents();
    for (int column = 0; column < 3; ++column)
        EXPECT_GE(list_->columnWidth(column), needed(column));
    EXPECT_GT(list_->horizontalScrollBar()->maximum(), 0);
    list_->header()->resizeSection(2, 20);
    window_.resize(500, 300);
    QCoreApplication::processEvents();
    EXPECT_LT(list_->columnWidth(2), list_->columnWidth(1));
}

TEST_F(BankList, AColumnHasRoomForWhatItMustHoweverNarrowTheListIs) {
    const QString amount = "000.000.000,00";
    list_->setColumns({
        {"Nome", 40 },
        { "R$", 1, Qt::AlignRight, "", amount}
    });
    list_->addItem(
        {.key = "k", .text = "Norte", .subItems = {amount}, .icon = {}, .checked = false});
    for (const int width : {500, 60}) {
        window_.resize(width, 300);
        QCoreApplication::processEvents();
        EXPECT_EQ(list_->columnWidth(1),
                  static_cast<QAbstractItemView*>(list_)->sizeHintForColumn(1));
    }
}

// Where the scroll bar will stand when there are more rows.
TEST_F(BankList, RowsAndHeadingsGoOnToTheEdge) {
    aplicarEstilo(*qApp); // which draws them
    fill(3);
    for (int row = 0; row < 3; ++row)
        list_->setText(row, 2, ""); // only the ground is looked at
    list_->setCurrentRow(2);
    QCoreApplication::processEvents();
    ASSERT_FALSE(list_->verticalScrollBar()->isVisible());
    const int end = list_->header()->length();
    const int edge = list_->viewport()->width();
    ASSERT_GT(edge, end + 8);
    const QImage rows = list_->viewport()->grab().toImage();
    for (int row = 0; row < 3; ++row) {
        const int y = list_->rowRect(row).center().y();
        for (int x = end - 3; x < edge - 3; ++x) // with the edge of the last column
            EXPECT_EQ(rows.pixelColor(x, y).name(), rows.pixelColor(end - 4, y).name())
                << row << ", " << x;
    }
    const QImage heads = list_->header()->viewport()->grab().toImage();
    for (int y = 0; y < heads.height(); ++y)
        EXPECT_EQ(heads.pixelColor(edge - 3, y).name(), heads.pixelColor(end - 3, y).name()) << y;

    const QSignalSpy clicks(list_, &ListView::itemClicked);
    QTest::mouseClick(list_->viewport(), Qt::LeftButton, {},
                      QPoint(edge - 3, list_->rowRect(1).center().y()));
    ASSERT_EQ(clicks.count(), 1);
    EXPECT_EQ(clicks[0][1].toInt(), 1);
}

TEST_F(BankList, AFirstColumnFitForItsCheckBoxAtAShareIsWiderAtAWiderOne) {
    list_->setColumns({
        {"",     250 },
        {"Nome", 9050}
    });
    list_->setFirstColumnFit(250);
    list_->setCheckBoxes(true);
    const int narrow = list_->columnWidth(0);
    EXPECT_GT(narrow, room() * 250 / 9300) << "what the check box needs, not the share";
    list_->setCheckBoxes(false);
    list_->setColumnWidthShare(0, 300);
    EXPECT_EQ(list_->columnWidth(0), narrow * 300 / 250);
    list_->header()->resizeSection(0, 30);
    window_.resize(600, 300);
    QCoreApplication::processEvents();
    EXPECT_LT(list_->columnWidth(0), narrow) << "as the operator dragged it";
}

TEST_F(BankList, AFirstColumnWithRoomForTheIconOnlyShowsNoText) {
    list_->setColumns({
        {"",     50 },
        {"Nome", 900}
    });
    list_->addItem(
        {.key = "k", .text = "4", .subItems = {}, .icon = Icons::named("banco"), .checked = false});
    const auto picture = [this](const char* text) {
        list_->setText(0, 0, text);
        return list_->viewport()->grab(list_->rowRect(0)).toImage();
    };
    EXPECT_EQ(picture("4"), picture(""));
    list_->setColumnWidthShare(0, 900);
    EXPECT_NE(picture("4"), picture(""));
}

TEST_F(BankList, AColumnTheOperatorDraggedKeepsItsProportion) {
    fill(1);
    list_->header()->resizeSection(0, 300);
    window_.resize(1000, 300);
    QCoreApplication::processEvents();
    EXPECT_GT(list_->columnWidth(0), 300);
}

TEST_F(BankList, CheckBoxesAreTickedByMouseAndSpaceWithoutAClick) {
    fill(3);
    list_->setCheckBoxes(true);
    const QSignalSpy clicks(list_, &ListView::itemClicked);
    const QSignalSpy checks(list_, &ListView::itemChecked);
    clickCheckBox(window_, "lstListagem", 1);
    EXPECT_TRUE(list_->isChecked(1));
    EXPECT_EQ(list_->currentRow(), 1);
    ASSERT_EQ(checks.count(), 1);
    EXPECT_EQ(checks[0][0].toInt(), 1);
    EXPECT_TRUE(checks[0][1].toBool());

    list_->setFocus();
    list_->setCurrentRow(2);
    press(Qt::Key_Space);
    EXPECT_TRUE(list_->isChecked(2));
    press(Qt::Key_Space);
    EXPECT_FALSE(list_->isChecked(2));
    EXPECT_EQ(checks.count(), 3);
    EXPECT_EQ(clicks.count(), 0);

    list_->setChecked(0, true);
    EXPECT_TRUE(list_->isChecked(0));
    EXPECT_EQ(checks.count(), 3) << "the program's own ticks are not told";
    clickRow(window_, "lstListagem", 0);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_TRUE(list_->isChecked(0));
}

TEST_F(BankList, SpaceTicksTheRowWhicheverColumnWasClicked) {
    fill(3);
    list_->setCheckBoxes(true);
    clickRow(window_, "lstListagem", 0); // in the middle column
    list_->setFocus();
    press(Qt::Key_Down);
    const QSignalSpy checks(list_, &ListView::itemChecked);
    press(Qt::Key_Space);
    EXPECT_TRUE(list_->isChecked(1));
    EXPECT_EQ(checks.count(), 1);
}

TEST_F(BankList, AKeyHeldDownActsOnce) {
    fill(3);
    list_->setFocus();
    list_->setCurrentRow(1);
    const QSignalSpy clicks(list_, &ListView::itemClicked);
    const auto repeat = [this](Qt::Key key) {
        QKeyEvent again(QEvent::KeyPress, key, Qt::NoModifier, " ", true);
        QCoreApplication::sendEvent(list_, &again);
    };
    press(Qt::Key_Return);
    repeat(Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 1);
    list_->setCheckBoxes(true);
    press(Qt::Key_Space);
    repeat(Qt::Key_Space);
    EXPECT_TRUE(list_->isChecked(1));
}

TEST_F(BankList, KeysBeginAtTheFirstRow) {
    list_->setCheckBoxes(true);
    list_->setFocus(Qt::TabFocusReason);
    fill(3);
    press(Qt::Key_Space);
    EXPECT_EQ(list_->currentRow(), 0);
    EXPECT_TRUE(list_->isChecked(0));
}

TEST_F(BankList, TheCurrentRowIsTheSelectedOneHoweverItBecameSo) {
    const auto selected = [this] {
        const auto rows = list_->selectionModel()->selectedRows();
        return rows.size() == 1 ? rows.front().row() : -1;
    };
    fill(5);
    list_->setFocus(Qt::TabFocusReason);
    QCoreApplication::processEvents(); // the rows come soon after
    EXPECT_EQ(selected(), 0);
    press(Qt::Key_Down);
    EXPECT_EQ(selected(), 1);
    press(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(list_->currentRow(), 2);
    EXPECT_EQ(selected(), 2);
    list_->setCurrentRow(list_->rowOf("00000 4"));
    EXPECT_EQ(selected(), 4);
    EXPECT_EQ(list_->rowOf("00000 5"), -1);
    list_->setCurrentRow(-1);
    EXPECT_EQ(selected(), -1);
    EXPECT_EQ(list_->currentRow(), -1);
}

TEST_F(BankList, ACaptionMayChange) {
    fill(1);
    list_->setColumnCaption(1, "Nome do Banco");
    EXPECT_EQ(list_->columnCaption(1), "Nome do Banco");
    EXPECT_EQ(list_->model()->headerData(1, Qt::Horizontal).toString(), "Nome do Banco");
    EXPECT_EQ(list_->text(0, 1), "Banco 0");
}

TEST_F(BankList, MayBeFilledAgainFromWithinAClick) {
    fill(3);
    QObject::connect(list_, &ListView::itemClicked, list_, [this] {
        list_->clear();
        fill(2);
    });
    clickRow(window_, "lstListagem", 2);
    EXPECT_EQ(list_->count(), 2);
}

/// Counts how often a view asks what an item looks like.
class CountingDelegate final : public QStyledItemDelegate {
public:
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        ++asked_;
        return QStyledItemDelegate::sizeHint(option, index);
    }
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        ++asked_;
        QStyledItemDelegate::paint(painter, option, index);
    }
    [[nodiscard]] int asked() const { return asked_; }

private:
    mutable int asked_ = 0;
};

TEST_F(BankList, AHundredThousandRowsAreNoBurden) {
    CountingDelegate delegate;
    list_->setItemDelegate(&delegate);
    const QSignalSpy told(list_->model(), &QAbstractItemModel::rowsInserted);
    fill(100'000);
    QCoreApplication::processEvents();
    EXPECT_TRUE(list_->rowRect(99'999).isValid());
    QCoreApplication::processEvents();
    EXPECT_EQ(list_->model()->rowCount(), 100'000);
    EXPECT_EQ(told.count(), 1);
    EXPECT_GT(delegate.asked(), 0);
    EXPECT_LT(delegate.asked(), 1'000) << "only rows in sight are looked at";
}

TEST_F(BankList, RowsAreMadeWhenTheyAreLookedAt) {
    constexpr int kRows = 10'000;
    constexpr int kInSight = 40;
    fill(1);
    int made = 0;
    list_->addLater(kRows, [&](int row) {
        ++made;
        return ListItem{.key = QString::number(row),
                        .text = QString("Banco %1").arg(row),
                        .subItems = {},
                        .icon = {},
                        .checked = row % 2 == 0};
    });
    QCoreApplication::processEvents();
    list_->grab();
    EXPECT_GT(made, 0);
    EXPECT_LT(made, kInSight);
    EXPECT_EQ(list_->count(), kRows + 1);
    EXPECT_EQ(list_->text(0, 0), "100");
    list_->setCurrentRow(kRows);
    list_->grab();
    EXPECT_LT(made, 2 * kInSight);
    const int before = made;
    EXPECT_EQ(list_->text(kRows, 0), "Banco 10000");
    EXPECT_TRUE(list_->isChecked(kRows));
    EXPECT_EQ(made, before);
    EXPECT_EQ(list_->rowOf("9000"), 9000);
    list_->clear();
    fill(2);
    EXPECT_EQ(list_->text(1, 0), "101");
}

TEST_F(BankList, EventsBetweenTheRowsDoNotMakeItCrawl) {
    constexpr int kEach = 500;      // so many rows are shown one by one
    constexpr qint64 kAtLeast = 45; // milliseconds between two times that more are shown
    const QSignalSpy told(list_->model(), &QAbstractItemModel::rowsInserted);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20'000; ++i) {
        fill(1);
        QCoreApplication::processEvents();
    }
    EXPECT_LE(told.count(), kEach + 1 + timer.elapsed() / kAtLeast);
}

} // namespace
