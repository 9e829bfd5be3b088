#include "controls/window/PasswordBox.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

/// Asks, types a text and presses a key. `look` sees the box before.
std::optional<QString> typedPassword(const QString& text, Qt::Key key,
                                     const std::function<void(QDialog&)>& look = {},
                                     const QString& why = "O servidor pede <b>a senha</b>.") {
    QTimer::singleShot(0, qApp, [&] {
        auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(box));
        QTest::keyClicks(QApplication::focusWidget(), text);
        if (look)
            look(*box);
        QTest::keyClick(QApplication::focusWidget(), key);
        if (box->isVisible()) {
            ADD_FAILURE() << "the key doesn't answer";
            box->reject();
        }
    });
    return askPassword(why, "Senha do servidor");
}

TEST(PasswordBox, ShowsNothingOfWhatIsTypedAndGivesItWithEnter) {
    const auto given = typedPassword("se gredo", Qt::Key_Return, [](QDialog& box) {
        EXPECT_EQ(box.windowTitle(), "Senha do servidor");
        const auto labels = box.findChildren<QLabel*>();
        ASSERT_EQ(labels.size(), 2);
        EXPECT_EQ(labels[0]->text(), "O servidor pede <b>a senha</b>.");
        EXPECT_EQ(labels[0]->textFormat(), Qt::PlainText);
        const auto* field = box.findChild<QLineEdit*>("txtSenha");
        ASSERT_NE(field, nullptr);
        EXPECT_EQ(field->echoMode(), QLineEdit::Password);
        EXPECT_EQ(field->displayText(), QString(8, field->displayText().at(0)));
        EXPECT_NE(field->displayText(), field->text());
        EXPECT_EQ(labels[1]->buddy(), field);
        EXPECT_EQ(box.focusWidget(), field);
    });
    EXPECT_EQ(given, "se gredo");
}

TEST(PasswordBox, FitsASmallScreenHoweverMuchThereIsToSay) {
    static constexpr int kSmallScreen = 800;
    typedPassword(
        "segredo", Qt::Key_Escape,
        [](QDialog& box) {
            EXPECT_LT(box.width(), kSmallScreen);
            const auto* const why = box.findChild<QLabel*>();
            EXPECT_GE(why->height(), why->heightForWidth(why->width()));
        },
        QString("A conexão caiu, e a senha de antes não vale mais. ").repeated(5));
}

TEST(PasswordBox, EscGivesNothing) {
    EXPECT_EQ(typedPassword("segredo", Qt::Key_Escape), std::nullopt);
}

TEST(PasswordBox, CancelarGivesNothing) {
    EXPECT_EQ(typedPassword("segredo", Qt::Key_Space,
                            [](QDialog& box) {
                                for (auto* button : box.findChildren<QPushButton*>())
                                    if (button->text() == "&Cancelar")
                                        button->setFocus();
                            }),
              std::nullopt);
}

} // namespace
