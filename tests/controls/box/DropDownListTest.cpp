#include "controls/box/DropDownList.h"

#include "support/CpuTimer.h"
#include "support/FormTest.h"

#include <QInputMethodEvent>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QVBoxLayout>

namespace {

class ClientList : public FormTest {
protected:
    ClientList() {
        auto* column = new QVBoxLayout(&window_);
        column->addWidget(&other_);
        column->addWidget(&list_);
        list_.addItem("Ana Souza", 11);
        list_.addItem("José Álvares", 12);
        list_.addItem("José Carlos", 13);
        list_.addItem("Maria", 14);
        window_.show();
        activate(window_);
        list_.setFocus(Qt::TabFocusReason);
    }
    [[nodiscard]] QLineEdit& line() { return *list_.lineEdit(); }

    QWidget window_;
    QLineEdit other_;
    DropDownList list_;
};

TEST_F(ClientList, HasNoneChosenUntilOneIs) {
    EXPECT_EQ(list_.listIndex(), -1);
    EXPECT_EQ(list_.text(), "");
    EXPECT_EQ(list_.count(), 4);
    EXPECT_EQ(list_.itemText(3), "Maria");
    EXPECT_EQ(list_.itemData(3), 14);
}

TEST_F(ClientList, TypingChoosesTheFirstEntryThatBeginsSo) {
    type("j");
    EXPECT_EQ(list_.listIndex(), 1);
    EXPECT_EQ(list_.text(), "José Álvares");
    EXPECT_EQ(line().cursorPosition(), 1);
    EXPECT_EQ(line().selectedText(), "osé Álvares");

    type("OSÉ c");
    EXPECT_EQ(list_.listIndex(), 2);
    EXPECT_EQ(list_.text(), "José Carlos");
    EXPECT_EQ(line().selectedText(), "arlos");
    EXPECT_EQ(line().cursorPosition(), 6);
    EXPECT_EQ(list_.itemData(list_.listIndex()), 13);
}

TEST_F(ClientList, TypingWhatNoEntryBeginsWithChoosesNone) {
    type("jx");
    EXPECT_EQ(list_.text(), "Jx") << "the marked rest gives way to the character as typed";
    EXPECT_EQ(list_.listIndex(), -1);
    EXPECT_EQ(line().cursorPosition(), 2);
}

TEST_F(ClientList, AccentsAreFoundEitherWayWhereNothingBeginsExactlySo) {
    list_.clear();
    for (const char* name :
         {"Mário Prado", "Marcos Lima", "Márcio Reis", "Ângela", "Jose\u0301 Luz"})
        list_.addItem(name);
    const auto typed = [this](const char* keys) {
        list_.setText("");
        type(keys);
        return (list_.text() + "|" + line().selectedText()).toStdString();
    };
    EXPECT_EQ(typed("mar"), "Marcos Lima|cos Lima") << "who begins exactly so comes first";
    EXPECT_EQ(typed("marc"), "Marcos Lima|os Lima");
    EXPECT_EQ(typed("marci"), "Márcio Reis|o Reis");
    EXPECT_EQ(typed("mari"), "Mário Prado|o Prado");
    EXPECT_EQ(typed("márcos"), "Marcos Lima| Lima");
    EXPECT_EQ(typed("ANG"), "Ângela|ela");
    EXPECT_EQ(typed("josé l"), "Jose\u0301 Luz|uz");
    EXPECT_EQ(typed("marx"), "Marx|");
    EXPECT_EQ(list_.listIndex(), -1);
}

TEST_F(ClientList, OnlyWhatStandsBeforeTheCaretCounts) {
    list_.setText("Jota");
    line().setCursorPosition(1);
    type("o");
    EXPECT_EQ(list_.text(), "José Álvares");
}

TEST_F(ClientList, TypingInTheMarkedTextStartsAnew) {
    type("maria");
    line().selectAll();
    type("a");
    EXPECT_EQ(list_.text(), "Ana Souza");
}

TEST_F(ClientList, ErasingMakesTheTextFree) {
    type("mari");
    press(Qt::Key_Backspace);
    EXPECT_EQ(list_.text(), "Mari");
    EXPECT_EQ(list_.listIndex(), -1);
}

TEST_F(ClientList, LeavingChoosesNothingBehindTheOperatorsBack) {
    list_.addItem("Mari", 15);
    type("maria");
    press(Qt::Key_Backspace);
    other_.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(list_.text(), "Mari");
    EXPECT_EQ(list_.listIndex(), -1);
}

TEST_F(ClientList, LeavingAnUntouchedChoiceKeepsIt) {
    type("jo");
    other_.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(list_.listIndex(), 1);
    EXPECT_EQ(list_.text(), "José Álvares");
    EXPECT_EQ(line().cursorPosition(), 0);
}

TEST_F(ClientList, AnAccentComposedOfTwoKeysTypesAheadToo) {
    type("JOS");
    QInputMethodEvent composed("", {});
    composed.setCommitString("é");
    QCoreApplication::sendEvent(&list_, &composed);
    EXPECT_EQ(list_.listIndex(), 1);
    EXPECT_EQ(line().cursorPosition(), 4);
}

TEST_F(ClientList, CommandsTypeNothing) {
    type("j");
    QTest::keyClick(&list_, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(line().selectedText(), "José Álvares");
    EXPECT_EQ(list_.listIndex(), 1);
}

TEST_F(ClientList, TypeAheadThatFindsNothingChangesNothing) {
    list_.setListIndex(3);
    EXPECT_FALSE(list_.typeAhead("z"));
    EXPECT_EQ(list_.listIndex(), 3);
    EXPECT_EQ(list_.text(), "Maria");
}

TEST_F(ClientList, SelectsAnEntryByItsText) {
    EXPECT_TRUE(list_.selectByText("José C"));
    EXPECT_EQ(list_.listIndex(), 2);
    EXPECT_EQ(list_.text(), "José Carlos");
    EXPECT_TRUE(list_.selectByText("Maria")) << "the caret stands at the beginning again";
    EXPECT_EQ(list_.listIndex(), 3);
    EXPECT_FALSE(list_.selectByText("Zilda"));
    EXPECT_EQ(list_.text(), "Maria");
}

TEST_F(ClientList, SelectingByTextCountsWhatStandsBeforeTheCaret) {
    list_.setText("Ma");
    line().setCursorPosition(2);
    EXPECT_TRUE(list_.selectByText("ria"));
    EXPECT_EQ(list_.listIndex(), 3);
}

TEST_F(ClientList, TellsAClickForEachEntryTheOperatorComesTo) {
    const QSignalSpy clicks(&list_, &DropDownList::clicked);
    type("jos");
    EXPECT_EQ(clicks.count(), 1);
    type("é c");
    EXPECT_EQ(clicks.count(), 2);
    press(Qt::Key_Down);
    EXPECT_EQ(clicks.count(), 3);
    EXPECT_EQ(list_.text(), "Maria");
    list_.setListIndex(0);
    list_.setText("livre");
    EXPECT_EQ(clicks.count(), 3) << "the program's own choices are not told";
}

TEST_F(ClientList, TellsAClickForAChoiceInTheOpenList) {
    const QSignalSpy clicks(&list_, &DropDownList::clicked);
    list_.showPopup();
    QTest::keyClick(list_.view(), Qt::Key_Down);
    QTest::keyClick(list_.view(), Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_EQ(list_.listIndex(), 1);
    EXPECT_EQ(line().selectedText(), "José Álvares");
    EXPECT_EQ(line().cursorPosition(), 0);
}

TEST_F(ClientList, TellsEveryChangeOfTheText) {
    const QSignalSpy changes(&list_, &DropDownList::changed);
    type("j");
    EXPECT_EQ(changes.count(), 1);
    type("z");
    EXPECT_EQ(changes.count(), 2);
    list_.setText("");
    EXPECT_EQ(changes.count(), 3);
}

TEST_F(ClientList, ClearingTakesEntriesAndText) {
    type("m");
    list_.clear();
    EXPECT_EQ(list_.count(), 0);
    EXPECT_EQ(list_.listIndex(), -1);
    EXPECT_EQ(list_.text(), "");
}

TEST_F(ClientList, AddingAnEntryLeavesAFreeTextAlone) {
    list_.clear();
    list_.setText("livre");
    list_.addItem("Primeiro", 1);
    EXPECT_EQ(list_.listIndex(), -1);
    EXPECT_EQ(list_.text(), "livre");
}

TEST_F(ClientList, TheWheelDoesNotChangeTheChoice) {
    list_.setListIndex(2);
    QWheelEvent wheel(QPointF(5, 5), list_.mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&list_, &wheel);
    EXPECT_EQ(list_.listIndex(), 2);
}

TEST_F(ClientList, TwentyThousandEntriesAreNoBurden) {
    const auto cost = [&](int entries) {
        list_.clear();
        const CpuTimer timer;
        for (int i = 0; i < entries; ++i)
            list_.addItem(QString("Cliente %1").arg(i, 6, 10, QChar('0')), i);
        const double filling = timer.milliseconds();
        type(QString("cliente %1").arg(entries - 1, 6, 10, QChar('0')));
        EXPECT_EQ(list_.itemData(list_.listIndex()), entries - 1);
        return std::pair(filling, timer.milliseconds() - filling);
    };
    const auto [fillingFew, typingFew] = cost(2'500);
    const auto [filling, typing] = cost(20'000);
    // Eight times as many: three times that leaves room for what else the machine does.
    EXPECT_LT(filling, 3 * 8 * fillingFew);
    EXPECT_LT(typing, 3 * 8 * typingFew);
}

} // namespace
