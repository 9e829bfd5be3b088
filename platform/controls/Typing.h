#pragma once

#include <QFocusEvent>
#include <QKeyEvent>
#include <QString>

/// What the controls must know of keys and of the focus.

[[nodiscard]] inline bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

/// The digits of a text, in their order.
[[nodiscard]] QString onlyDigits(const QString& text);

/// Enter, that of the keypad too.
[[nodiscard]] bool isEnter(const QKeyEvent& key);

/// Whether a key types a character, as against editing, moving or giving a command.
[[nodiscard]] bool typesCharacter(const QKeyEvent& key);

/// Whether the focus goes to another control of the window, as against a message box, a menu or
/// another window that comes in front for a while.
[[nodiscard]] bool leavesControl(const QFocusEvent& event);
