#include "controls/box/MemoEdit.h"

#include "controls/box/ClearControls.h"
#include "support/FormTest.h"

namespace {

class RemarksBox : public FormTest {
protected:
    RemarksBox() {
        box_.show();
        activate(box_);
        box_.setFocus();
    }

    MemoEdit box_;
};

TEST_F(RemarksBox, ControlEnterBeginsALineAndEnterAloneDoesNot) {
    type("um");
    press(Qt::Key_Return, Qt::ControlModifier);
    type("dois");
    press(Qt::Key_Return);
    press(Qt::Key_Enter, Qt::KeypadModifier);
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(box_.text(), "um\r\ndois");
}

TEST_F(RemarksBox, GivesBackWhatItWasGiven) {
    for (const QString text : {"", "uma linha", "a\r\nb", "a\nb\rc", "R$\u00a010 \u2028 b\r\n"}) {
        box_.setText(text);
        EXPECT_EQ(box_.text(), text);
    }
}

TEST_F(RemarksBox, EditedItEndsItsLinesInOneWay) {
    box_.setText("R$\u00a010\nb\rc\r\nd\u2028e");
    type("x");
    EXPECT_EQ(box_.text(), "xR$\u00a010\r\nb\r\nc\r\nd\r\ne");
    press(Qt::Key_Backspace);
    EXPECT_EQ(box_.text(), "R$\u00a010\nb\rc\r\nd\u2028e") << "as it was";
}

TEST_F(RemarksBox, IsClearedLikeAnyOther) {
    QWidget window;
    MemoEdit box(&window);
    box.setText("a\r\nb");
    limparControles(window);
    EXPECT_EQ(box.text(), "");
}

TEST_F(RemarksBox, TabMovesOn) { EXPECT_TRUE(box_.tabChangesFocus()); }

} // namespace
