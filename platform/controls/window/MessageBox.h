#pragma once

#include <QString>

#include <functional>
#include <iosfwd>

/// The message boxes of the program, all through one function that tests replace.

enum class MessageIcon : unsigned char { none, information, exclamation, question, critical };
/// backOrStored: between what the operator has typed and what is stored.
enum class MessageButtons : unsigned char { ok, yesNo, backOrStored };
enum class MessageAnswer : unsigned char { ok, yes, no, back, stored };

/// A message box with all that can be said about it.
struct Message {
    /// Plain text, never rich text. "\n", "\r" and "\r\n" each begin a new line.
    QString text;
    QString title;
    MessageIcon icon = MessageIcon::information;
    MessageButtons buttons = MessageButtons::ok;

    friend bool operator==(const Message&, const Message&) = default;
};

/// For the messages of failed tests.
std::ostream& operator<<(std::ostream& out, const Message& message);

/// Shows the message, modal to the whole program, and waits for the answer.
///
/// The buttons are "OK", or "Sim" and "Não", or "Voltar ao que digitei" and "Ficar com o gravado".
/// Enter, Esc and the close box answer the harmless one, "OK", "Não", "Voltar": what is asked with
/// "Sim" and "Não" deletes something. The text can be marked and copied with the mouse.
MessageAnswer showMessage(const Message& message);

/// showMessage() with the parts in the order they are usually said.
MessageAnswer showMessage(const QString& text, const QString& title, MessageIcon icon,
                          MessageButtons buttons = MessageButtons::ok);

/// Whether a message waits for its answer.
[[nodiscard]] bool isMessageOnShow() noexcept;

/// Sets what is done before each message: it may wait for its answer for hours, and whatever others
/// wait for must have been given back by then. It mustn't throw.
void setBeforeMessages(std::function<void()> work);

/// What is asked in place of the operator.
using MessageFunction = std::function<MessageAnswer(const Message&)>;

/// Replaces what showMessage() does, in tests; an empty function restores it.
/// @return the function replaced.
MessageFunction setMessageFunction(MessageFunction function);
