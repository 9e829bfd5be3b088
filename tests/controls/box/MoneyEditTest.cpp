#include "controls/box/MoneyEdit.h"

#include "support/FormTest.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <ostream>

void PrintTo(const Amount& amount, std::ostream* out) { *out << amount.tenThousandths; }

namespace {

/// A money box and another box to leave it for.
class MoneyBox : public FormTest {
protected:
    MoneyBox() {
        auto* column = new QVBoxLayout(&window_);
        column->addWidget(&other_);
        column->addWidget(&money_);
        window_.show();
        activate(window_);
    }
    void enter() { money_.setFocus(Qt::TabFocusReason); }
    void leave() { other_.setFocus(Qt::TabFocusReason); }
    /// What the box shows and holds after the text is typed over everything.
    void typeOver(const QString& text) {
        leave();
        enter();
        type(text);
    }
    void paste(const QString& text) {
        leave();
        enter();
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(&money_, Qt::Key_V, Qt::ControlModifier);
    }

    QWidget window_;
    QLineEdit other_;
    MoneyEdit money_;
};

TEST_F(MoneyBox, ShowsNothingAsZero) {
    EXPECT_EQ(money_.text(), "0,00");
    EXPECT_EQ(money_.valor(), Amount{0});
    EXPECT_TRUE(money_.alignment() & Qt::AlignRight);
}

TEST_F(MoneyBox, GroupsWhenLeftAndNotWhenEntered) {
    typeOver("1234,5");
    EXPECT_EQ(money_.valor(), Amount{12'345'000});
    leave();
    EXPECT_EQ(money_.text(), "1.234,50");
    enter();
    EXPECT_EQ(money_.text(), "1234,50");
    EXPECT_EQ(money_.selectedText(), "1234,50");
}

TEST_F(MoneyBox, MarksAllWhenEnteredByMouseButLetsThenPlaceTheCaret) {
    leave();
    QTest::mouseClick(&money_, Qt::LeftButton, {}, money_.rect().center());
    EXPECT_EQ(money_.selectedText(), "0,00");
    QTest::mouseClick(&money_, Qt::LeftButton, {}, money_.rect().center());
    EXPECT_FALSE(money_.hasSelectedText());
}

TEST_F(MoneyBox, TakesANegativeAmount) {
    typeOver("-5");
    leave();
    EXPECT_EQ(money_.valor(), Amount{-50'000});
    EXPECT_EQ(money_.text(), "-5,00");
}

TEST_F(MoneyBox, RefusesAsTypedWhatCannotBeAnAmount) {
    typeOver("1x2,3,4-56");
    EXPECT_EQ(money_.text(), "12,34");
    typeOver("--7");
    EXPECT_EQ(money_.text(), "-7");
}

TEST_F(MoneyBox, TakesAsManyDecimalsAsItIsSetFor) {
    typeOver("1,2345");
    EXPECT_EQ(money_.text(), "1,23");
    money_.setDecimals(4);
    typeOver("1,23456");
    EXPECT_EQ(money_.text(), "1,2345");
    EXPECT_EQ(money_.valor(), Amount{12'345});
}

TEST_F(MoneyBox, ReadsPointsBetweenThousandsAndThePointOfAForeignKeyboard) {
    typeOver("1.234,56");
    EXPECT_EQ(money_.valor(), Amount{12'345'600});
    typeOver("1234.56");
    leave();
    EXPECT_EQ(money_.text(), "1.234,56");
}

TEST_F(MoneyBox, TheKeypadsDecimalKeyGivesTheComma) {
    typeOver("12");
    QTest::sendKeyEvent(QTest::Click, &money_, Qt::Key_Period, ".", Qt::KeypadModifier);
    type("5");
    EXPECT_EQ(money_.text(), "12,5");
}

TEST_F(MoneyBox, UnderstandsPastedAmounts) {
    for (const char* text : {"1.234,56", "R$ 1.234,56", "1234.56", "1,234.56", " 1234,56\n"}) {
        money_.setValor({});
        paste(text);
        EXPECT_EQ(money_.valor(), Amount{12'345'600}) << text;
        leave();
        EXPECT_EQ(money_.text(), "1.234,56") << text;
    }
}

TEST_F(MoneyBox, RefusesToPasteWhatIsNoAmount) {
    money_.setValor({70'000});
    paste("doze reais");
    EXPECT_EQ(money_.valor(), Amount{70'000});
}

TEST_F(MoneyBox, HoldsTheWholeRangeAndNoMore) {
    money_.setDecimals(4);
    typeOver("922337203685477,5807");
    EXPECT_EQ(money_.valor(), Amount{std::numeric_limits<std::int64_t>::max()});
    leave();
    EXPECT_EQ(money_.text(), "922.337.203.685.477,5807");
    typeOver("922337203685477,5808");
    EXPECT_EQ(money_.text(), "922337203685477,580");
    typeOver("-922337203685477,5808");
    EXPECT_EQ(money_.valor(), Amount{std::numeric_limits<std::int64_t>::min()});
    typeOver("9223372036854775");
    EXPECT_EQ(money_.text(), "922337203685477");
}

TEST_F(MoneyBox, KeepsFourDecimalsThatTheProgramSet) {
    money_.setValor({12'345'678});
    EXPECT_EQ(money_.text(), "1.234,5678");
    enter();
    leave();
    EXPECT_EQ(money_.valor(), Amount{12'345'678});
    enter();
    press(Qt::Key_End);
    press(Qt::Key_Backspace);
    EXPECT_EQ(money_.valor(), Amount{12'345'670});
    type("9");
    EXPECT_EQ(money_.valor(), Amount{12'345'670}) << "no longer than it was";
}

TEST_F(MoneyBox, OnlyForShowingItRoundsToTwoDecimalsAndHoldsThemAll) {
    money_.setReadOnly(true);
    const QSignalSpy changes(&money_, &MoneyEdit::changed);
    money_.setValor({4'944'180});
    EXPECT_EQ(money_.text(), "494,42");
    EXPECT_EQ(money_.valor(), Amount{4'944'180});
    enter();
    leave();
    EXPECT_EQ(money_.valor(), Amount{4'944'180});
    EXPECT_EQ(changes.count(), 1);
    money_.setReadOnly(false);
    EXPECT_EQ(money_.text(), "494,4180") << "to be typed into: as it will be saved";
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(MoneyBox, TellsEachChangeOfTheAmountAndNothingElse) {
    const QSignalSpy changes(&money_, &MoneyEdit::changed);
    typeOver("12,0");
    EXPECT_EQ(changes.count(), 2) << "1 and 12; the comma and the zero change nothing";
    leave();
    money_.setValor({120'000});
    EXPECT_EQ(changes.count(), 2);
    money_.setValor({});
    EXPECT_EQ(changes.count(), 3);
}

TEST_F(MoneyBox, WhatItRefusesLeavesItAsItWas) {
    money_.setValor({50'000});
    enter();
    ASSERT_EQ(money_.selectedText(), "5,00");
    type("a");
    EXPECT_EQ(money_.selectedText(), "5,00");
    QInputMethodEvent composed;
    composed.setCommitString("á");
    QCoreApplication::sendEvent(&money_, &composed);
    EXPECT_EQ(money_.selectedText(), "5,00");
    QGuiApplication::clipboard()->setText("reais");
    QTest::keyClick(&money_, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(money_.selectedText(), "5,00");
}

TEST_F(MoneyBox, AnEmptiedBoxIsZero) {
    money_.setValor({50'000});
    enter();
    press(Qt::Key_Delete);
    EXPECT_EQ(money_.valor(), Amount{0});
    leave();
    EXPECT_EQ(money_.text(), "0,00");
}

} // namespace
