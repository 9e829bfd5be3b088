#pragma once

#include <QString>

#include <functional>
#include <optional>

/// Asks for a password, modal to the whole program: nobody reads along, nothing keeps it. Enter and
/// "OK" answer with what is typed; Esc, "Cancelar" and the close box with nothing.
/// @param text plain text: for what, and why it is asked.
[[nodiscard]] std::optional<QString> askPassword(const QString& text, const QString& title);

/// What is asked in place of the operator.
using PasswordFunction =
    std::function<std::optional<QString>(const QString& text, const QString& title)>;

/// Replaces what askPassword() does, in tests; an empty function restores it.
/// @return the function replaced.
PasswordFunction setPasswordFunction(PasswordFunction function);
