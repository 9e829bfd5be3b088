#include "controls/box/ActiveText.h"

#include "support/FormTest.h"

#include <QClipboard>
#include <QGuiApplication>

namespace {

class MaskedBox : public FormTest {
protected:
    MaskedBox() {
        box_.show();
        activate(box_);
        box_.setFocus();
    }
    void telephone() { box_.setMasks("(99) 9999-9999;(99) 99999-9999"); }
    void paste(const QString& text) {
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(&box_, Qt::Key_V, Qt::ControlModifier);
    }

    ActiveText box_;
};

TEST_F(MaskedBox, SetsTheSignsOfAPostalCode) {
    box_.setMasks("99999-999");
    type("14800");
    EXPECT_EQ(box_.text(), "14800");
    type("123");
    EXPECT_EQ(box_.text(), "14800-123");
    type("9");
    EXPECT_EQ(box_.text(), "14800-123") << "no room";
}

TEST_F(MaskedBox, TakesTelephonesOfEightAndNineDigits) {
    telephone();
    type("1632221234");
    EXPECT_EQ(box_.text(), "(16) 3222-1234");
    type("5");
    EXPECT_EQ(box_.text(), "(16) 32221-2345");
    press(Qt::Key_Backspace);
    EXPECT_EQ(box_.text(), "(16) 3222-1234");
}

TEST_F(MaskedBox, WithoutRoomForItsSignsShowsTheDigitsAlone) {
    telephone();
    box_.setRoom(14);
    type("1632221234");
    EXPECT_EQ(box_.text(), "(16) 3222-1234");
    type("5");
    EXPECT_EQ(box_.text(), "16322212345");
    press(Qt::Key_Backspace);
    EXPECT_EQ(box_.text(), "(16) 3222-1234");
    box_.clear();
    box_.setRoom(8);
    type("1632221234");
    EXPECT_EQ(box_.text(), "16322212") << "no more than there is room for";
    box_.setMasks("99999-999");
    press(Qt::Key_A, Qt::ControlModifier);
    paste("14800-123");
    EXPECT_EQ(box_.text(), "14800123");
}

TEST_F(MaskedBox, TakesDigitsOnly) {
    telephone();
    type("(1a6) 3-");
    EXPECT_EQ(box_.text(), "(16) 3");
}

TEST_F(MaskedBox, WhatItRefusesLeavesItAsItWas) {
    telephone();
    type("1632221234");
    box_.selectAll();
    type("a");
    paste("ramal");
    QInputMethodEvent composed;
    composed.setCommitString("á");
    QCoreApplication::sendEvent(&box_, &composed);
    EXPECT_EQ(box_.selectedText(), "(16) 3222-1234");
}

TEST_F(MaskedBox, ErasesBackOverTheSigns) {
    telephone();
    type("163");
    for (const char* left : {"(16", "(1", ""}) {
        press(Qt::Key_Backspace);
        EXPECT_EQ(box_.text(), QString(left));
    }
}

TEST_F(MaskedBox, KeepsTheCaretAtTheDigitsItWasAt) {
    telephone();
    type("1632221234");
    box_.setCursorPosition(6); // after the 3
    press(Qt::Key_Backspace);
    EXPECT_EQ(box_.text(), "(16) 2221-234");
    type("9");
    EXPECT_EQ(box_.text(), "(16) 9222-1234");
    EXPECT_EQ(box_.cursorPosition(), 6);
}

TEST_F(MaskedBox, TakesThePastedDigits) {
    box_.setMasks("99999-999");
    paste("14.800-123 SP");
    EXPECT_EQ(box_.text(), "14800-123");
    box_.selectAll();
    paste("148001234567");
    EXPECT_EQ(box_.text(), "14800-123");
}

TEST_F(MaskedBox, KeepsWhatWasStoredInAnotherForm) {
    telephone();
    for (const char* stored : {"3222-1234 ramal 2", "1632221234", ""}) {
        box_.setText(stored);
        EXPECT_EQ(box_.text(), QString(stored));
    }
    box_.setText("3222-1234 ramal 2");
    press(Qt::Key_End);
    press(Qt::Key_Backspace);
    EXPECT_EQ(box_.text(), "3222-1234 ramal ");
}

} // namespace
