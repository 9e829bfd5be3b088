#include "controls/box/BarChart.h"

#include "controls/look/Spoken.h"
#include "support/FormTest.h"

#include <QImage>
#include <QSignalSpy>
#include <QToolTip>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

class Bars : public FormTest {
protected:
    Bars() {
        chart_.resize(300, 150);
        chart_.setBars({
            {"seg", "segunda, 2 cheques", 20},
            {"ter", "terça, nenhum",     0 },
            {"qua", "quarta, 1 cheque",   10},
        });
        chart_.show();
        activate(chart_);
        chart_.setFocus();
    }
    [[nodiscard]] std::vector<int> told() const {
        std::vector<int> bars;
        bars.reserve(static_cast<std::size_t>(said_.size()));
        for (const QList<QVariant>& each : said_)
            bars.push_back(each.front().toInt());
        return bars;
    }
    /// How many pixels of a column's middle have the colour of the bars.
    int tall(int bar) {
        chart_.clearFocus();
        const QImage picture = chart_.grab().toImage();
        const QRgb colour = chart_.palette().color(QPalette::Highlight).rgb();
        int pixels = 0;
        for (int y = 0; y < picture.height(); ++y)
            pixels += picture.pixel(chart_.columnRect(bar).center().x(), y) == colour ? 1 : 0;
        return pixels;
    }

    BarChart chart_;
    QSignalSpy said_{&chart_, &BarChart::barClicked};
};

TEST_F(Bars, AreAsTallAsTheirFigures) {
    EXPECT_EQ(tall(1), 0);
    EXPECT_NEAR(tall(0), 2 * tall(2), 2);
    EXPECT_GT(tall(2), 20);
    chart_.setBars({
        {"a", "", 1e9},
        {"b", "", 1  }
    });
    EXPECT_EQ(tall(1), 2); // little isn't nothing
}

TEST_F(Bars, AreWorkedByKeys) {
    EXPECT_EQ(chart_.currentBar(), 0);
    press(Qt::Key_Left);
    EXPECT_EQ(chart_.currentBar(), 0);
    press(Qt::Key_Right);
    press(Qt::Key_Return);
    press(Qt::Key_End);
    press(Qt::Key_Space);
    press(Qt::Key_Right);
    EXPECT_EQ(chart_.currentBar(), 2);
    press(Qt::Key_Home);
    press(Qt::Key_Enter);
    EXPECT_THAT(told(), ElementsAre(1, 2, 0));
}

TEST_F(Bars, TellWhichOneIsCurrent) {
    const QSignalSpy current(&chart_, &BarChart::currentBarChanged);
    press(Qt::Key_Right);
    chart_.setBars({});
    ASSERT_EQ(current.size(), 2);
    EXPECT_EQ(current[0].front().toInt(), 1);
    EXPECT_EQ(current[1].front().toInt(), -1);
}

TEST_F(Bars, AreWorkedByTheMouse) {
    QTest::mouseClick(&chart_, Qt::LeftButton, {}, chart_.columnRect(2).center());
    EXPECT_EQ(chart_.currentBar(), 2);
    QTest::mousePress(&chart_, Qt::LeftButton, {}, chart_.columnRect(0).center());
    QTest::mouseRelease(&chart_, Qt::LeftButton, {}, chart_.columnRect(1).center());
    QTest::mouseClick(&chart_, Qt::RightButton, {}, chart_.columnRect(0).center());
    EXPECT_THAT(told(), ElementsAre(2));
}

TEST_F(Bars, HaveTheirWordsUnderTheMouse) {
    const QPoint over = chart_.columnRect(2).center();
    QHelpEvent asks(QEvent::ToolTip, over, chart_.mapToGlobal(over));
    QApplication::sendEvent(&chart_, &asks);
    EXPECT_EQ(QToolTip::text(), "quarta, 1 cheque");
    QToolTip::hideText();
}

TEST_F(Bars, AreToldToScreenReaders) {
    QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&chart_);
    ASSERT_TRUE(told);
    EXPECT_EQ(told->role(), QAccessible::Chart);
    press(Qt::Key_Right);
    EXPECT_EQ(told->text(QAccessible::Value), "terça, nenhum");
}

TEST_F(Bars, ThatAreGoneLeaveNothingToPress) {
    press(Qt::Key_End);
    chart_.setBars({
        {"a", "só esta", 1}
    });
    EXPECT_EQ(chart_.currentBar(), 0);
    chart_.setBars({});
    EXPECT_EQ(chart_.currentBar(), -1);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Right, Qt::Key_Home})
        press(key);
    QTest::mouseClick(&chart_, Qt::LeftButton, {}, chart_.rect().center());
    EXPECT_EQ(told().size(), 0U);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&chart_)->text(QAccessible::Value), "");
}

TEST_F(Bars, ShowWhichOneIsCurrentWhileTheyHaveTheFocus) {
    const auto picture = [&] { return chart_.grab().toImage(); };
    const QImage first = picture();
    press(Qt::Key_Right);
    const QImage second = picture();
    EXPECT_NE(first, second);
    chart_.clearFocus();
    EXPECT_NE(picture(), second);
}

TEST_F(Bars, LeaveOutLabelsThatHaveNoRoom) {
    std::vector<BarChart::Bar> many;
    many.reserve(30);
    for (int i = 0; i < 30; ++i)
        many.push_back({QString("%1/11").arg(i + 1, 2, 10, QChar('0')), "", 1.0 + i});
    chart_.setBars(many);
    const QImage drawn = chart_.grab().toImage();
    // No column of pixels below the line is without a gap for long: the labels stand apart.
    const int top = chart_.height() - chart_.fontMetrics().height();
    const QRgb ground = drawn.pixel(0, chart_.height() - 1);
    int inked = 0;
    int longest = 0;
    for (int x = 0; x < drawn.width(); ++x) {
        bool ink = false;
        for (int y = top; y < drawn.height(); ++y)
            ink = ink || drawn.pixel(x, y) != ground;
        inked = ink ? inked + 1 : 0;
        longest = std::max(longest, inked);
    }
    EXPECT_GT(longest, 0);
    EXPECT_LT(longest, chart_.fontMetrics().horizontalAdvance("30/11"));
}

} // namespace
