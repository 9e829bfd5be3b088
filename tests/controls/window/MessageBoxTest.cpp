#include "controls/window/MessageBox.h"

#include "controls/typing/KeyHabits.h"
#include "support/QtPrinters.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <utility>

namespace {

/// Shows the message and presses a key in it. `look` sees the box before.
MessageAnswer answered(const Message& message, Qt::Key key,
                       const std::function<void(QMessageBox&)>& look = {}) {
    QTimer::singleShot(0, qApp, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(box));
        if (look)
            look(*box);
        QTest::keyClick(QApplication::focusWidget(), key);
        if (box->isVisible()) {
            ADD_FAILURE() << "the key doesn't answer";
            box->reject();
        }
    });
    return showMessage(message);
}

const Message kQuestion = {"Deseja realmente excluir este registro ?", "Exclusão",
                           MessageIcon::critical, MessageButtons::yesNo};

TEST(MessageBox, ShowsTextTitleAndCaptionsAsTheyStand) {
    answered({"<b>não</b> & \"sim\"", "Advertência", MessageIcon::exclamation, MessageButtons::ok},
             Qt::Key_Return, [](QMessageBox& box) {
                 EXPECT_EQ(box.text(), "<b>não</b> & \"sim\"");
                 EXPECT_EQ(box.textFormat(), Qt::PlainText);
                 EXPECT_TRUE(box.textInteractionFlags() & Qt::TextSelectableByMouse);
                 EXPECT_EQ(box.windowTitle(), "Advertência");
                 EXPECT_EQ(box.icon(), QMessageBox::Warning);
                 EXPECT_FALSE(box.iconPixmap().isNull());
                 ASSERT_EQ(box.buttons().size(), 1);
                 EXPECT_EQ(box.buttons()[0]->text(), "OK");
             });
}

TEST(MessageBox, IsAsWideAsItsTitle) {
    const QString title = "Relatório de Cheques Recebidos e dos Devolvidos";
    answered({"Sim.", title, MessageIcon::exclamation, MessageButtons::ok}, Qt::Key_Return,
             [&](QMessageBox& box) {
                 QFont bold = box.font();
                 bold.setBold(true);
                 const QFontMetrics metrics(bold);
                 EXPECT_GT(box.width(), metrics.horizontalAdvance(title) + 5 * metrics.height());
             });
}

TEST(MessageBox, AShortTextStandsBesideItsIconsMiddleALongOneBeginsWithIt) {
    const auto places = [](const QString& text) {
        std::pair<QRect, QRect> both;
        answered({text, "Mensagem", MessageIcon::exclamation, MessageButtons::ok}, Qt::Key_Return,
                 [&](QMessageBox& box) {
                     both = {box.findChild<QLabel*>("qt_msgboxex_icon_label")->geometry(),
                             box.findChild<QLabel*>("qt_msgbox_label")->geometry()};
                 });
        return both;
    };
    const auto [icon, text] = places("Cheque não cadastrado ");
    EXPECT_NEAR(icon.center().y(), text.center().y(), 1);
    const auto [longIcon, longText] = places(QString("uma linha\n").repeated(9));
    EXPECT_NEAR(longIcon.top(), longText.top(), 1);
}

TEST(MessageBox, NeedsNoIcon) {
    answered({"CGC/CPF Inválido !", "Mensagem", MessageIcon::none, MessageButtons::ok},
             Qt::Key_Return, [](QMessageBox& box) {
                 EXPECT_EQ(box.icon(), QMessageBox::NoIcon);
                 EXPECT_TRUE(box.iconPixmap().isNull());
             });
}

TEST(MessageBox, ACarriageReturnAloneBeginsANewLine) {
    answered({"um\r\rdois\r\ntrês\nquatro", "", MessageIcon::critical, MessageButtons::ok},
             Qt::Key_Escape,
             [](QMessageBox& box) { EXPECT_EQ(box.text(), "um\n\ndois\ntrês\nquatro"); });
}

TEST(MessageBox, AsksInPortuguese) {
    answered(kQuestion, Qt::Key_Return, [](QMessageBox& box) {
        QStringList captions;
        for (const auto* button : box.buttons())
            captions << button->text().remove('&');
        captions.sort();
        EXPECT_EQ(captions, (QStringList{"Não", "Sim"}));
    });
}

TEST(MessageBox, AKeyHeldDownAnswersNothing) {
    KeyHabits::install();
    const auto answer = answered(kQuestion, Qt::Key_Escape, [](QMessageBox& box) {
        for (QWidget* target : {QApplication::focusWidget(), static_cast<QWidget*>(&box)})
            QTest::simulateEvent(target, true, Qt::Key_Return, Qt::NoModifier, "", true, 0);
        EXPECT_TRUE(box.isVisible());
    });
    EXPECT_EQ(answer, MessageAnswer::no);
}

TEST(MessageBox, EnterAndEscAnswerTheHarmlessOne) {
    EXPECT_EQ(answered(kQuestion, Qt::Key_Return), MessageAnswer::no);
    EXPECT_EQ(answered(kQuestion, Qt::Key_Return,
                       [](QMessageBox& box) {
                           for (auto* button : box.buttons())
                               if (button->text() == "&Sim")
                                   button->setFocus();
                       }),
              MessageAnswer::yes);
    EXPECT_EQ(answered(kQuestion, Qt::Key_Escape), MessageAnswer::no);
    const Message note = {"Operação concluída !", "Mensagem", MessageIcon::information,
                          MessageButtons::ok};
    EXPECT_EQ(answered(note, Qt::Key_Return), MessageAnswer::ok);
    EXPECT_EQ(answered(note, Qt::Key_Escape), MessageAnswer::ok);
}

TEST(MessageBox, CanBeAnsweredByAFunction) {
    std::optional<Message> seen;
    setMessageFunction([&](const Message& message) {
        seen = message;
        return MessageAnswer::no;
    });
    EXPECT_EQ(showMessage(kQuestion), MessageAnswer::no);
    setMessageFunction({});
    EXPECT_EQ(seen, kQuestion);
}

} // namespace
