#include "controls/Typing.h"

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

bool leavesControl(const QFocusEvent& event) {
    return event.reason() != Qt::ActiveWindowFocusReason &&
           event.reason() != Qt::PopupFocusReason && event.reason() != Qt::MenuBarFocusReason;
}
