#include "controls/box/DatePicker.h"

#include "controls/typing/Formato.h"
#include "support/FormTest.h"

#include <QCalendarWidget>
#include <QClipboard>
#include <QGuiApplication>
#include <QLocale>
#include <QPushButton>
#include <QSignalSpy>
#include <QVBoxLayout>

namespace {

class DateBox : public FormTest {
protected:
    DateBox() {
        auto* column = new QVBoxLayout(&window_);
        column->addWidget(&other_);
        column->addWidget(&date_);
        window_.show();
        activate(window_);
        date_.setValue(QDate(2025, 12, 24));
        enter();
    }
    void enter() { date_.setFocus(Qt::TabFocusReason); }
    void leave() { other_.setFocus(Qt::TabFocusReason); }
    /// What is shown after typing over everything and leaving.
    QString after(const QString& typed) {
        date_.setValue(QDate(2025, 12, 24));
        leave();
        enter();
        type(typed);
        leave();
        return date_.text();
    }

    QWidget window_;
    QLineEdit other_;
    DatePicker date_;
};

TEST_F(DateBox, HoldsTodayAtFirst) { EXPECT_EQ(DatePicker().value(), QDate::currentDate()); }

TEST_F(DateBox, ShowsDayMonthYearWhateverTheLocale) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    date_.setValue(QDate(2026, 2, 1));
    EXPECT_EQ(date_.text(), "01/02/2026");
    EXPECT_EQ(DatePicker().text().size(), 10);
    QLocale::setDefault(QLocale::system());
}

TEST_F(DateBox, MarksTheWholeDateWhenEntered) { EXPECT_EQ(date_.selectedText(), "24/12/2025"); }

TEST_F(DateBox, MarksTheWholeDateWhenEnteredByMouseButLetsThenPlaceTheCaret) {
    leave();
    QTest::mouseClick(&date_, Qt::LeftButton, {}, QPoint(30, date_.height() / 2));
    EXPECT_EQ(date_.selectedText(), "24/12/2025");
    QTest::mouseClick(&date_, Qt::LeftButton, {}, QPoint(30, date_.height() / 2));
    EXPECT_FALSE(date_.hasSelectedText());
}

TEST_F(DateBox, DigitsAloneMakeADate) {
    type("0");
    EXPECT_EQ(date_.text(), "0");
    type("1");
    EXPECT_EQ(date_.text(), "01/");
    type("022026");
    EXPECT_EQ(date_.text(), "01/02/2026");
    EXPECT_EQ(date_.value(), QDate(2026, 2, 1)) << "before it is left";
}

TEST_F(DateBox, BarsCanBeTypedAsWell) {
    type("01/02/2026");
    EXPECT_EQ(date_.text(), "01/02/2026");
    EXPECT_EQ(after("1/2/26"), "01/02/2026");
    EXPECT_EQ(after("1.2.2026"), "01/02/2026");
    EXPECT_EQ(after("5/11"), formatDate(*parseDate("5/11")));
}

TEST_F(DateBox, WhatIsNoDateGoesBackToTheLastOne) {
    EXPECT_EQ(after("31022026"), "24/12/2025");
    EXPECT_EQ(after("31"), "24/12/2025");
    EXPECT_EQ(after("01/01/0099"), "24/12/2025");
    EXPECT_EQ(date_.value(), QDate(2025, 12, 24));
}

TEST_F(DateBox, LettersAreNotTyped) {
    type("a0x1b");
    EXPECT_EQ(date_.text(), "01/");
}

TEST_F(DateBox, ErasingABarAndTypingOnBringsItBack) {
    type("01");
    press(Qt::Key_Backspace);
    EXPECT_EQ(date_.text(), "01");
    type("0");
    EXPECT_EQ(date_.text(), "01/0");
}

TEST_F(DateBox, InAWholeDateADigitOverwrites) {
    press(Qt::Key_Home);
    type("17");
    EXPECT_EQ(date_.text(), "17/12/2025");
    type("03");
    EXPECT_EQ(date_.text(), "17/03/2025");
    EXPECT_EQ(date_.value(), QDate(2025, 3, 17));
    type("20269");
    EXPECT_EQ(date_.text(), "17/03/2026");
}

TEST_F(DateBox, ArrowsStepThePartAtTheCaret) {
    press(Qt::Key_Up);
    EXPECT_EQ(date_.text(), "25/12/2025");
    date_.setCursorPosition(4);
    press(Qt::Key_Up);
    EXPECT_EQ(date_.text(), "25/01/2026");
    EXPECT_EQ(date_.cursorPosition(), 4);
    press(Qt::Key_End);
    press(Qt::Key_Down);
    EXPECT_EQ(date_.text(), "25/01/2025");
    press(Qt::Key_PageDown);
    EXPECT_EQ(date_.text(), "25/12/2024");
}

TEST_F(DateBox, SteppingStopsAtTheEndsOfTheCalendar) {
    date_.setValue(QDate(9999, 12, 31));
    press(Qt::Key_Up);
    EXPECT_EQ(date_.value(), QDate(9999, 12, 31));
    date_.setValue(QDate(100, 1, 1));
    press(Qt::Key_Down);
    EXPECT_EQ(date_.value(), QDate(100, 1, 1));
}

TEST_F(DateBox, RefusesADateOutsideItsYears) {
    date_.setValue(QDate(99, 12, 31));
    date_.setValue(QDate(10000, 1, 1));
    date_.setValue({});
    EXPECT_EQ(date_.value(), QDate(2025, 12, 24));
}

TEST_F(DateBox, UnderstandsPastedDates) {
    for (const char* text : {"01/02/2026", "2026-02-01", "1-2-2026", " 01/02/2026 "}) {
        date_.setValue(QDate(2025, 12, 24));
        leave();
        enter();
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(&date_, Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(date_.value(), QDate(2026, 2, 1)) << text;
    }
    QGuiApplication::clipboard()->setText("amanhã");
    QTest::keyClick(&date_, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(date_.text(), "01/02/2026");
}

TEST_F(DateBox, WhatItRefusesLeavesItAsItWas) {
    leave();
    enter();
    ASSERT_EQ(date_.selectedText(), "24/12/2025");
    type("a");
    EXPECT_EQ(date_.selectedText(), "24/12/2025");
    QInputMethodEvent composed;
    composed.setCommitString("á");
    QCoreApplication::sendEvent(&date_, &composed);
    EXPECT_EQ(date_.selectedText(), "24/12/2025");
    QGuiApplication::clipboard()->setText("amanhã");
    QTest::keyClick(&date_, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(date_.selectedText(), "24/12/2025");
}

TEST_F(DateBox, TellsChangesOfTheDateOnce) {
    const QSignalSpy changes(&date_, &DatePicker::changed);
    type("01022026");
    leave();
    EXPECT_EQ(changes.count(), 1);
    date_.setValue(QDate(2026, 2, 1));
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(DateBox, TheCalendarIsWorkedByKeys) {
    press(Qt::Key_F4);
    auto* calendar = date_.findChild<QCalendarWidget*>();
    ASSERT_NE(calendar, nullptr);
    EXPECT_EQ(calendar->selectedDate(), QDate(2025, 12, 24));
    EXPECT_EQ(calendar->locale().language(), QLocale::Portuguese);
    EXPECT_TRUE(calendar->hasFocus() || calendar->isAncestorOf(QApplication::focusWidget()));
    press(Qt::Key_Right);
    press(Qt::Key_Return);
    EXPECT_EQ(date_.value(), QDate(2025, 12, 25));
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(DateBox, TheCalendarHasAButtonForToday) {
    press(Qt::Key_Down, Qt::AltModifier);
    auto* today = date_.findChild<QPushButton*>();
    ASSERT_NE(today, nullptr);
    QTest::mouseClick(today, Qt::LeftButton);
    EXPECT_EQ(date_.value(), QDate::currentDate());
}

TEST_F(DateBox, EscInTheCalendarChangesNothing) {
    press(Qt::Key_F4);
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(date_.value(), QDate(2025, 12, 24));
}

TEST_F(DateBox, ADateThatCannotBeTypedIntoStaysAsItIs) {
    date_.setReadOnly(true);
    press(Qt::Key_Up);
    press(Qt::Key_F4);
    type("01");
    EXPECT_EQ(date_.value(), QDate(2025, 12, 24));
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(DateBox, ADateThatCannotBeTypedIntoOffersNoCalendar) {
    ASSERT_EQ(date_.actions().size(), 1);
    const QAction& calendar = *date_.actions().front();
    EXPECT_TRUE(calendar.isVisible());
    date_.setReadOnly(true);
    EXPECT_FALSE(calendar.isVisible());
    date_.setReadOnly(false);
    EXPECT_TRUE(calendar.isVisible());
}

TEST_F(DateBox, ADateWithoutAYearCanBeTheFirstOneNotBeforeThatOfAnotherBox) {
    DatePicker issue;
    date_.setNotBefore(&issue);
    issue.setValue(QDate(2019, 11, 22));
    EXPECT_EQ(after("1502"), "15/02/2020");
    EXPECT_EQ(after("2211"), "22/11/2019");
    EXPECT_EQ(after("15022018"), "15/02/2018");
    issue.setValue(QDate(2021, 11, 22));
    EXPECT_EQ(after("1502"), "15/02/2022");
}

TEST_F(DateBox, SaysWhyATextIsNoDate) {
    EXPECT_EQ(date_.refusal(), "");
    type("3102");
    const QString example = formatDate(QDate::currentDate());
    EXPECT_EQ(date_.refusal(),
              "\"31/02/\" não é uma data. Digite dia, mês e ano, como em " + example + ".");
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    EXPECT_EQ(date_.refusal(), "Digite dia, mês e ano, como em " + example + ".");
}

/// Remembers the date that the box holds when a window hears that it is left.
class DateOnLeaving final : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FocusOut)
            date = qobject_cast<DatePicker*>(watched)->value();
        return false;
    }
    QDate date;
};

TEST_F(DateBox, HoldsTheTypedDateWhenAWindowHearsOfTheLeaving) {
    DateOnLeaving heard;
    date_.installEventFilter(&heard);
    type("1/2/26");
    leave();
    EXPECT_EQ(heard.date, QDate(2026, 2, 1));
    enter();
    type("31/2");
    leave();
    EXPECT_EQ(heard.date, QDate(2026, 2, 1)) << "no date: the last one";
    EXPECT_EQ(date_.text(), "01/02/2026");
}

// As the screen tells it when another window comes in front: without the reason.
TEST_F(DateBox, IsTypedOnInWhenAnotherWindowHasGoneAgain) {
    const auto anotherComesAndGoes = [&] {
        QFocusEvent about(QEvent::FocusAboutToChange);
        QFocusEvent out(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QFocusEvent in(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
        for (QFocusEvent* event : {&about, &out, &in})
            QApplication::sendEvent(&date_, event);
    };
    anotherComesAndGoes();
    EXPECT_EQ(date_.selectedText(), "24/12/2025");
    type("0102");
    anotherComesAndGoes();
    type("2026");
    EXPECT_EQ(date_.text(), "01/02/2026");
    EXPECT_EQ(date_.value(), QDate(2026, 2, 1));
}

} // namespace
