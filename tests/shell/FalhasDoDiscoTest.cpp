// What the operator is told when the disk doesn't take what was deleted or settled, and what the
// other stations notice of it.
#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/ListView.h"
#include "shell/FailingShop.h"
#include "shell/Gravacao.h"
#include "shell/MDICheques.h"

#include <QAction>

#include <cerrno>
#include <chrono>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

INSTANTIATE_TEST_SUITE_P(, FailingShop, inFiles(), keptName);

// ---- the purge

TEST_P(FailingShop, ThePurgeIsDoneWhenTheDiskHasIt) {
    auto& form = open<FrmApagar>();
    Strings then;
    setMessageFunction([&](const Message& message) {
        EXPECT_EQ(message.text, "Operação concluída !");
        then = onDisk();
        return MessageAnswer::ok;
    });
    purge(form);
    EXPECT_THAT(then, ElementsAre("2"));
    EXPECT_THAT(failed_, IsEmpty());
}

TEST_P(FailingShop, APurgeThatTheDiskRefusesIsntDoneAndNoneIsGone) {
    auto& form = open<FrmApagar>();
    Strings said;
    Mirtal::aoMostrarMensagem([&](const QString& text) { said.push_back(text.toStdString()); });
    fail(ENOSPC);
    purge(form);
    ASSERT_EQ(failed_.size(), 1U);
    EXPECT_THAT(failed_[0], testing::HasSubstr("o disco está cheio"));
    EXPECT_THAT(failed_[0],
                testing::EndsWith("Nenhum cheque foi excluído. Os outros continuam cadastrados."));
    EXPECT_EQ(said.back(), "");
    EXPECT_THAT(onDisk(), ElementsAre("1", "2", "3", "4", "5"));
    EXPECT_EQ(data().rsCheques.RecordCount(), 5) << "nor on this screen";
    anotherSaves();
    disk_.refused.clear();
    expectMessage("Mensagem", "Operação concluída !", MessageIcon::information);
    click(form, "cmdExcluir"); // the period still stands there
    EXPECT_THAT(onDisk(), ElementsAre("2"));
}

TEST_P(FailingShop, APurgeCutOffHalfWaySaysHowManyAreGone) {
    auto& form = open<FrmApagar>();
    Mirtal::aoMostrarMensagem([&](const QString& text) {
        if (text != "Registros excluídos..:4")
            return;
        data().Automacao.flush(); // three, as after half a second
        fail(EIO);
    });
    purge(form);
    ASSERT_EQ(failed_.size(), 1U);
    EXPECT_THAT(failed_[0], testing::EndsWith(
                                "3 cheques já foram excluídos. Os outros continuam cadastrados."));
    EXPECT_THAT(onDisk(), ElementsAre("2", "5"));
    EXPECT_EQ(data().rsCheques.RecordCount(), 2);
}

// ---- the settlement

TEST_P(FailingShop, ASettlementCutOffHalfWaySaysHowManyAreGone) {
    Mirtal::modo = "Baixar";
    auto& form = open<FrmLocCHTerceiros>();
    click(form, "chkdescontar");
    for (int row = 0; row < 5; ++row)
        clickCheckBox(form, "lstterceiros", row);
    control<ListView>(form, "lstterceiros").setText(1, 0, "x'"); // the second fails
    press(Qt::Key_S, Qt::AltModifier);
    ASSERT_EQ(failed_.size(), 1U);
    EXPECT_THAT(failed_[0],
                testing::EndsWith("1 cheque já foi baixado. Os outros continuam cadastrados."));
    EXPECT_THAT(onDisk(), ElementsAre("2", "3", "4", "5"));
    fail(ENOSPC);
    control<ListView>(form, "lstterceiros").setText(1, 0, "2");
    press(Qt::Key_S, Qt::AltModifier);
    ASSERT_EQ(failed_.size(), 2U);
    EXPECT_THAT(failed_[1],
                testing::EndsWith("Nenhum cheque foi baixado. Os outros continuam cadastrados."));
    EXPECT_EQ(control<ListView>(form, "lstterceiros").count(), 5)
        << "an emptied list says it is done";
    EXPECT_THAT(onDisk(), ElementsAre("2", "3", "4", "5"));
    anotherSaves();
    disk_.refused.clear();
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(onDisk(), IsEmpty());
}

// ---- while a message is on show

TEST_P(FailingShop, BeforeAMessageIsShownWhatWaitsIsWritten) {
    deleteOutsideATransaction();
    int boxes = 0;
    setMessageFunction([&](const Message&) {
        ++boxes;
        EXPECT_THAT(onDisk(), ElementsAre("2", "3", "4", "5"));
        anotherSaves();
        return MessageAnswer::ok;
    });
    showMessage("Deseja ?", "Mensagem", MessageIcon::question);
    EXPECT_EQ(boxes, 1);
}

TEST_P(FailingShop, WhatCantBeWrittenIsSaidOnceAndWrittenWhileTheMessageIsOnShow) {
    beginHistory();
    const Gravacao gravacao(10ms);
    Strings boxes;
    setMessageFunction([&](const Message& message) {
        boxes.push_back(message.text.toStdString());
        EXPECT_THAT(onDisk(), ElementsAre("1", "2", "3", "4", "5"));
        disk_.refused.clear(); // somebody has made room
        until([] { return onDisk() == Strings{"2", "3", "4", "5"}; });
        return MessageAnswer::ok;
    });
    fail(ENOSPC);
    deleteOutsideATransaction();
    until([&] { return !boxes.empty(); });
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_THAT(boxes[0],
                testing::AllOf(testing::HasSubstr("o disco está cheio"),
                               testing::EndsWith("o programa continua tentando sozinho.")));
    EXPECT_THAT(failed_, IsEmpty());
}

TEST_P(FailingShop, OverAMessageOnShowNoOtherIsPut) {
    beginHistory();
    const Gravacao gravacao(10ms);
    int deepest = 0;
    int depth = 0;
    Strings boxes;
    setMessageFunction([&](const Message& message) {
        deepest = std::max(deepest, ++depth);
        boxes.push_back(message.text.toStdString());
        if (boxes.size() == 1) {
            fail(EIO);
            deleteOutsideATransaction();
            // It is tried, and fails, while this message is on show.
            until([&] { return disk_.spared < -2; });
            anotherSaves();
        }
        --depth;
        return MessageAnswer::ok;
    });
    showMessage("Leia com calma", "Mensagem", MessageIcon::information);
    // In the end that the other station was first.
    until([&] { return boxes.back().find("foram desfeitas") != std::string::npos; });
    EXPECT_EQ(deepest, 1);
    EXPECT_LE(boxes.size(), 3U);
    EXPECT_EQ(onDisk().size(), 5U);
    EXPECT_EQ(data().rsCheques.RecordCount(), 5);
}

// ---- the end of the program

TEST_P(FailingShop, EachFailedEndOfTheProgramGetsItsSecondChance) {
    beginHistory();
    auto& window = MDICheques::instance();
    window.show();
    auto& end = *window.findChild<QAction*>("mnusair");
    int told = 0;
    setMessageFunction([&](const Message& message) {
        ++told;
        EXPECT_TRUE(message.text.endsWith("Saindo de novo agora, elas se perdem."));
        return MessageAnswer::ok;
    });
    for (int time = 1; time <= 2; ++time) {
        fail(EIO);
        deleteOutsideATransaction();
        end.trigger();
        EXPECT_EQ(told, time);
        EXPECT_TRUE(data().aberto());
        disk_.refused.clear(); // and the program goes on for the day
        data().Automacao.flush();
    }
    EXPECT_THAT(onDisk(), ElementsAre("3", "4", "5"));
    fail(EIO);
    deleteOutsideATransaction();
    end.trigger();
    window.findChild<QAction*>("mnurrec")->trigger(); // other work
    end.trigger();
    EXPECT_EQ(told, 4);
    EXPECT_TRUE(data().aberto());
    end.trigger();
    EXPECT_FALSE(data().aberto());
    EXPECT_EQ(failed_.size(), 1U) << "and that is told";
}

} // namespace
