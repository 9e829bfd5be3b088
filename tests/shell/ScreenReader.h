#pragma once

#include "controls/look/Spoken.h"
#include "shell/EveryWindow.h"

#include <QAccessible>
#include <QAccessibleEvent>
#include <QPointer>

#include <set>
#include <string>
#include <vector>

/// Works the windows as who hears them does: what is there is found by its role and name in the
/// accessible tree, is worked by the actions it offers or by keys where the focus is, and is read
/// there. Values are read as texts: of values the desktop passes on numbers only.
class ScreenReader : public EveryWindow {
protected:
    using EveryWindow::EveryWindow;
    void SetUp() override {
        EveryWindow::SetUp();
        told().clear();
        setListener(&note);
    }
    void TearDown() override {
        setListener({});
        EveryWindow::TearDown();
    }

    struct Spoken {
        QAccessibleInterface* at;
        QAccessible::Role role;
        QString name;
        QString value;
        QString description;
    };
    /// What is on show, the thing itself first.
    static std::vector<Spoken> allOf(QAccessibleInterface* at) {
        std::vector<Spoken> all;
        collect(at, all);
        return all;
    }
    static std::vector<Spoken> allOf(QWidget& window) {
        return allOf(QAccessible::queryAccessibleInterface(&window));
    }
    /// The text that stands there; "" where none can be read.
    static QString textOf(QAccessibleInterface& at) {
        const QAccessibleTextInterface* text = at.textInterface();
        return text ? text->text(0, text->characterCount()) : QString();
    }

    /// The window of this title, brought to the front.
    static QAccessibleInterface& window(const QString& title) {
        QAccessibleInterface& all = *QAccessible::queryAccessibleInterface(qApp);
        for (int i = 0; i < all.childCount(); ++i) {
            QAccessibleInterface* at = all.child(i);
            if (at->text(QAccessible::Name) != title || at->state().invisible)
                continue;
            activate(*qobject_cast<QWidget*>(at->object()));
            return *at;
        }
        throw std::runtime_error("no window is called " + title.toStdString());
    }
    /// Nothing if it isn't on show.
    static QAccessibleInterface* seek(QAccessibleInterface& from, QAccessible::Role role,
                                      const QString& name) {
        for (const Spoken& spoken : allOf(&from))
            if (spoken.role == role && spoken.name == name)
                return spoken.at;
        return nullptr;
    }
    static QAccessibleInterface& find(QAccessibleInterface& from, QAccessible::Role role,
                                      const QString& name) {
        if (QAccessibleInterface* found = seek(from, role, name))
            return *found;
        throw std::runtime_error("nothing there is called " + name.toStdString());
    }
    static std::string read(QAccessibleInterface& from, QAccessible::Role role,
                            const QString& name) {
        return textOf(find(from, role, name)).toStdString();
    }

    /// Presses a button, or ticks or unticks a box, by the action it offers.
    static void act(QAccessibleInterface& from, QAccessible::Role role, const QString& name) {
        QAccessibleInterface& control = find(from, role, name);
        const QPointer<QObject> object = control.object();
        const bool ticks = role == QAccessible::CheckBox;
        const QString& action = ticks ? QAccessibleActionInterface::toggleAction()
                                      : QAccessibleActionInterface::pressAction();
        EXPECT_TRUE(control.actionInterface()->actionNames().contains(action));
        control.actionInterface()->doAction(action);
        // Pressed that way a button is seen to go down and up.
        EXPECT_TRUE(QTest::qWaitFor([&] { return !object || !object->property("down").toBool(); }));
    }
    /// Gives the focus, by Tab where the control has no action for that, and the control must then
    /// say that it has it.
    static void focusOn(QAccessibleInterface& control) {
        constexpr int kMostControls = 50;
        if (QAccessibleActionInterface* actions = control.actionInterface())
            actions->doAction(QAccessibleActionInterface::setFocusAction());
        for (int i = 0; i < kMostControls && !control.state().focused; ++i)
            press(Qt::Key_Tab);
        EXPECT_TRUE(control.state().focused) << control.text(QAccessible::Name).toStdString();
    }
    /// Types into the field of that name, and Enter.
    static void fill(QAccessibleInterface& from, QAccessible::Role role, const QString& name,
                     const QString& text) {
        focusOn(find(from, role, name));
        type(text);
        press(Qt::Key_Return);
    }

    /// Waits until the list has so many rows: they are there soon after they have been read.
    static bool hasRows(QAccessibleInterface& list, int count) {
        return QTest::qWaitFor([&] { return list.tableInterface()->rowCount() >= count; });
    }
    /// A row of a list as it is heard when it is come to; "" if it isn't there.
    static std::string row(QAccessibleInterface& list, int row) {
        const QAccessibleTableInterface& table = *list.tableInterface();
        if (!hasRows(list, row + 1))
            return "";
        const QAccessibleInterface* cell = table.cellAt(row, 0);
        return (cell->text(QAccessible::Name) + ", " + cell->text(QAccessible::Description))
            .toStdString();
    }

    /// Goes down the list, which has the focus, until that row is heard.
    static void comeTo(QAccessibleInterface& list, const std::string& heard) {
        const QAccessibleTableInterface& table = *list.tableInterface();
        for (int i = 0; i < table.rowCount(); ++i, press(Qt::Key_Down)) {
            EXPECT_TRUE(table.cellAt(i, 0)->state().focused) << i;
            if (row(list, i) == heard)
                return;
        }
        ADD_FAILURE() << "not in the list: " << heard;
    }

    /// What has been told of a change, a line each: "<event> <name>: <text>".
    static std::vector<std::string>& told() {
        static std::vector<std::string> all;
        return all;
    }

private:
    static void collect(QAccessibleInterface* at, std::vector<Spoken>& into) {
        if (!at || !at->isValid() || at->state().invisible)
            return;
        into.push_back({at, at->role(), at->text(QAccessible::Name), at->text(QAccessible::Value),
                        at->text(QAccessible::Description)});
        for (int i = 0; i < at->childCount(); ++i)
            collect(at->child(i), into);
    }
    static void note(QAccessibleEvent& event) {
        QAccessibleInterface* at = event.accessibleInterface();
        const std::string name = at->text(QAccessible::Name).toStdString();
        const auto add = [&](const char* what, const QString& text) {
            told().push_back(what + (" " + name) + ": " + text.toStdString());
        };
        switch (event.type()) {
        case QAccessible::TextUpdated:
            add("text", static_cast<QAccessibleTextUpdateEvent&>(event).textInserted());
            break;
        case QAccessible::ObjectShow:
            if (at->role() == QAccessible::Notification)
                add("notification", textOf(*at));
            break;
        case QAccessible::StateChanged:
            if (static_cast<QAccessibleStateChangeEvent&>(event).changedStates().checked)
                add("tick", at->state().checked ? "yes" : "no");
            break;
        default:
            break;
        }
    }
};
