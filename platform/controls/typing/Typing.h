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

/// Whether a key with a character is a command by Alt, as an access key is, and types nothing.
[[nodiscard]] bool commandsByAlt(const QKeyEvent& key);

/// Whether the event would put a text that has no digit in place of what is marked: a letter, what
/// two keys compose, or what is pasted by keyboard.
[[nodiscard]] bool typesNoDigit(const QEvent& event);

/// Whether the focus goes to another control of the window, as against a message box, a menu or
/// another window that comes in front for a while.
[[nodiscard]] bool leavesControl(const QFocusEvent& event);
