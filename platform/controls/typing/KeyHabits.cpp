#include "controls/typing/KeyHabits.h"

#include "controls/typing/Typing.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QWindow>

namespace {

/// Whether the object would take Enter or Space for being pressed.
bool pressesButton(const QObject& watched, const QKeyEvent& key) {
    if (const auto* button = qobject_cast<const QAbstractButton*>(&watched))
        return (isEnter(key) && !button->isCheckable()) || key.key() == Qt::Key_Space;
    return isEnter(key) && qobject_cast<const QDialog*>(&watched); // its default button
}

/// Menus know what a letter means, with Alt and without.
bool isMenu(const QObject& watched) {
    return qobject_cast<const QMenu*>(&watched) || qobject_cast<const QMenuBar*>(&watched);
}

/// What is shown in it; a popup belongs to the window behind it.
QWidget* shownIn(const QWindow* window) {
    for (QWidget* shown : QApplication::topLevelWidgets())
        if (window && shown->windowHandle() == window && shown->isVisible() &&
            shown->windowType() != Qt::Popup)
            return shown;
    return nullptr;
}

} // namespace

void KeyHabits::install() {
    static QPointer<KeyHabits> installed;
    if (installed)
        return;
    installed = new KeyHabits(qApp);
    qApp->installEventFilter(installed);
    installed->leaving_.setSingleShot(true);
    connect(&installed->leaving_, &QTimer::timeout, installed, &KeyHabits::leaveAgain);
}

void KeyHabits::comeBackTo(const QWindow& window) {
    QWidget* const shown = shownIn(&window);
    if (&window == QGuiApplication::focusWindow() || !shown || QApplication::activePopupWidget())
        return;
    if (!leaving_.isActive())
        inFront_ = QGuiApplication::focusWindow();
    leaving_.start();
    QApplication::setActiveWindow(shown);
}

void KeyHabits::leaveAgain() {
    QWidget* const shown = shownIn(inFront_);
    const QWidget* const modal = QApplication::activeModalWidget();
    if (QApplication::activePopupWidget() || (modal && modal != shown))
        return; // what the keys have brought up stays in front
    QApplication::setActiveWindow(shown);
    if (shown)
        inFront_->requestActivate(); // Qt has asked for the other one meanwhile
}

bool KeyHabits::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease && type != QEvent::ShortcutOverride)
        return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    repeats_.notice(key);
    held_ = repeats_.isHeld();
    if (type != QEvent::KeyRelease && watched->isWindowType())
        comeBackTo(static_cast<const QWindow&>(*watched));
    if (type == QEvent::KeyRelease || !watched->isWidgetType())
        return false;
    if (type == QEvent::ShortcutOverride) {
        if (!held_ || !commandsByAlt(key) || isMenu(*watched))
            return false;
        event->accept(); // the access key's button isn't asked
        return true;
    }
    return (held_ && pressesButton(*watched, key)) || (commandsByAlt(key) && !isMenu(*watched));
}
