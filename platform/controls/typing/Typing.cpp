#include "controls/typing/Typing.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>

#include <algorithm>
#include <iterator>

QString onlyDigits(const QString& text) {
    QString digits;
    std::ranges::copy_if(text, std::back_inserter(digits), isDigit);
    return digits;
}

bool isEnter(const QKeyEvent& key) {
    return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
}

bool typesCharacter(const QKeyEvent& key) {
    // AltGr arrives as Ctrl and Alt at once, and does type.
    constexpr Qt::KeyboardModifiers kCommand = Qt::ControlModifier | Qt::AltModifier;
    const Qt::KeyboardModifiers held = key.modifiers() & kCommand;
    const bool command = held && held != kCommand;
    return !command && !key.text().isEmpty() && key.text().front().isPrint();
}

bool commandsByAlt(const QKeyEvent& key) {
    const Qt::KeyboardModifiers held = key.modifiers();
    const bool types = held & Qt::ControlModifier; // AltGr; with Ctrl alone Alt isn't held
    return (held & Qt::AltModifier) && !types && !key.text().isEmpty() &&
           key.text().front().isPrint();
}

bool typesNoDigit(const QEvent& event) {
    const auto without = [](const QString& text) {
        return !text.isEmpty() && onlyDigits(text).isEmpty();
    };
    if (event.type() == QEvent::InputMethod)
        return without(static_cast<const QInputMethodEvent&>(event).commitString());
    if (event.type() != QEvent::KeyPress)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(event);
    if (key.matches(QKeySequence::Paste))
        return without(QGuiApplication::clipboard()->text());
    return typesCharacter(key) && without(key.text());
}

bool leavesControl(const QFocusEvent& event) {
    return event.reason() != Qt::ActiveWindowFocusReason &&
           event.reason() != Qt::PopupFocusReason && event.reason() != Qt::MenuBarFocusReason;
}
