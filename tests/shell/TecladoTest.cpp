// What holds for the keyboard in every window: access keys, and that no button looks as if Enter
// pressed it.
#include "shell/EveryWindow.h"
#include "support/Colours.h"
#include "support/FormChecks.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTabWidget>

#include <gmock/gmock.h>

#include <functional>
#include <map>

namespace {

using testing::IsEmpty;

class Keyboard : public EveryWindow {
protected:
    /// Does the work in every window that is a form, in each of its states.
    static void inEveryForm(const std::function<void(QWidget&)>& work) {
        for (const State& state : states())
            if (QWidget& window = state.show(); qobject_cast<Form*>(&window))
                work(window);
    }
    static std::string called(const QWidget& widget) {
        return (widget.window()->objectName() + "." + widget.objectName()).toStdString();
    }
    /// The letter of an access key; "" without one.
    static QString keyOf(const QString& caption) {
        return QKeySequence::mnemonic(caption).toString().section('+', -1);
    }
    /// Every caption of the window that has an access key or could have one.
    static QStringList captions(const QWidget& window) {
        QStringList all;
        for (const auto* label : window.findChildren<QLabel*>())
            if (label->buddy() && label->isVisible())
                all << label->text();
        for (const auto* button : window.findChildren<QAbstractButton*>())
            if (button->isVisible())
                all << button->text();
        if (const auto* tabs = window.findChild<QTabWidget*>())
            for (int i = 0; i < tabs->count(); ++i)
                all << tabs->tabText(i);
        return all;
    }
};

TEST_F(Keyboard, NoTwoControlsOfAWindowShareAnAccessKey) {
    for (const State& state : states())
        EXPECT_EQ(sharedAccessKeys(state.show()), QStringList()) << state.name;
}

// Deliberate: a purge deletes with a key of its own, as its caption has been designed.
TEST_F(Keyboard, ACommandHasTheSameKeyInEveryWindow) {
    const std::map<QString, QString> keys = {
        {"new",    "V"},
        {"save",   "S"},
        {"delete", "X"},
        {"find",   "L"},
        {"close",  "R"}
    };
    int commands = 0;
    inEveryForm([&](QWidget& window) {
        for (const auto* button : window.findChildren<QPushButton*>()) {
            const auto key = keys.find(button->property("iconName").toString());
            if (key == keys.end() || called(*button) == "FrmApagar.cmdExcluir")
                continue;
            ++commands;
            EXPECT_EQ(keyOf(button->text()), key->second) << called(*button);
        }
    });
    EXPECT_GT(commands, 20);
}

TEST_F(Keyboard, EveryFieldHasAnAccessKeyUnlessAllLettersOfItsLabelAreTaken) {
    int fields = 0;
    inEveryForm([&](QWidget& window) {
        QString taken;
        for (const QString& caption : captions(window))
            taken += keyOf(caption);
        for (const auto* label : window.findChildren<QLabel*>()) {
            const QWidget* field = label->buddy();
            if (!field || !label->isVisible() || !(field->focusPolicy() & Qt::TabFocus))
                continue;
            ++fields;
            if (!keyOf(label->text()).isEmpty())
                continue;
            for (const QChar letter : label->text().toUpper())
                EXPECT_TRUE(letter > u'Z' || letter < u'A' || taken.contains(letter))
                    << called(*label) << " could have " << QString(letter).toStdString();
        }
    });
    EXPECT_GT(fields, 50);
}

TEST_F(Keyboard, NoTwoEntriesOfAMenuShareAnAccessKey) {
    int keys = 0;
    const std::function<void(const QWidget&)> walk = [&](const QWidget& menu) {
        QStringList taken;
        for (const QAction* entry : menu.actions()) {
            if (entry->menu())
                walk(*entry->menu());
            if (entry->isSeparator())
                continue;
            const QString key = keyOf(entry->text());
            EXPECT_FALSE(key.isEmpty() || taken.contains(key)) << entry->text().toStdString();
            taken << key;
            ++keys;
        }
    };
    walk(*MDICheques::instance().menuBar());
    EXPECT_GT(keys, 15);
}

TEST_F(Keyboard, AFieldsAccessKeyGoesThere) {
    auto& form = open<FrmLancarCheques>();
    for (const auto& [key, field] : {
             std::pair{Qt::Key_B, "txtbanco"     },
             {Qt::Key_A, "txtvalor"     },
             {Qt::Key_T, "txtbompara"   },
             {Qt::Key_O, "txtobservacao"}
    }) {
        enter(form, "txtNome");
        press(key, Qt::AltModifier);
        EXPECT_EQ(focus(), field);
    }
}

TEST_F(Keyboard, NoButtonLooksAsIfEnterPressedItFromElsewhere) {
    std::vector<std::string> faults;
    inEveryForm([&](QWidget& window) {
        for (const auto* button : window.findChildren<QPushButton*>())
            if (button->isDefault() || button->autoDefault())
                faults.push_back(called(*button));
    });
    EXPECT_THAT(faults, IsEmpty());
}

/// How many points of a control's picture tell clearly that it has the focus.
int telling(QWidget& control, const QImage& without) {
    const QImage with = control.grab().toImage();
    int points = 0;
    for (int y = 0; y < with.height(); ++y)
        for (int x = 0; x < with.width(); ++x)
            points += contrast(with.pixelColor(x, y), without.pixelColor(x, y)) >= 3.0 ? 1 : 0;
    return points;
}

TEST_F(Keyboard, TheFocusIsToldAtAGlanceOnEveryControlOfEveryWindow) {
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        applyColours(scheme);
        int controls = 0;
        inEveryForm([&](QWidget& window) {
            activate(window);
            for (auto* control : window.findChildren<QWidget*>()) {
                if (!(control->focusPolicy() & Qt::TabFocus) || !control->isVisible() ||
                    !control->isEnabled() || control->focusProxy())
                    continue;
                control->clearFocus();
                const QImage without = control->grab().toImage();
                control->setFocus();
                if (!control->hasFocus()) // leaving a field may lead elsewhere
                    control->setFocus();
                ASSERT_TRUE(control->hasFocus()) << called(*control);
                ++controls;
                EXPECT_GE(telling(*control, without), (control->width() + control->height()) / 2)
                    << called(*control) << (scheme == ColourScheme::dark ? ", dark" : ", light");
            }
        });
        EXPECT_GT(controls, 100);
    }
    applyColours(ColourScheme::light);
}

TEST_F(Keyboard, NoPromptIsThatOfAControlThatHasLostTheFocus) {
    inEveryForm([&](QWidget& window) {
        activate(window);
        for (auto* button : window.findChildren<QPushButton*>()) {
            if (!button->isVisible() || !button->isEnabled())
                continue;
            button->setFocus();
            if (!button->hasFocus()) // leaving a field may lead elsewhere
                button->setFocus();
            EXPECT_EQ(prompt(), button->toolTip()) << called(*button);
        }
    });
}

} // namespace
