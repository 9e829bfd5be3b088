#include "controls/MessageBox.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include <ostream>
#include <utility>

namespace {

struct IconLook {
    QMessageBox::Icon icon;
    const char* said; ///< in the messages of failed tests
};

const IconLook& look(MessageIcon icon) {
    static constexpr IconLook kLooks[] = {
        {QMessageBox::NoIcon,      "no icon"    },
        {QMessageBox::Information, "information"},
        {QMessageBox::Warning,     "exclamation"},
        {QMessageBox::Question,    "question"   },
        {QMessageBox::Critical,    "critical"   },
    };
    return kLooks[static_cast<std::size_t>(icon)];
}

QString withPlainLineBreaks(QString text) { return text.replace("\r\n", "\n").replace('\r', '\n'); }

MessageAnswer askOperator(const Message& message) {
    QMessageBox box(look(message.icon).icon, message.title, withPlainLineBreaks(message.text),
                    QMessageBox::NoButton, QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (message.buttons == MessageButtons::ok) {
        QPushButton* ok = box.addButton("OK", QMessageBox::AcceptRole);
        box.setDefaultButton(ok);
        box.setEscapeButton(ok);
        box.exec();
        return MessageAnswer::ok;
    }
    QPushButton* yes = box.addButton("&Sim", QMessageBox::YesRole);
    QPushButton* no = box.addButton("&Não", QMessageBox::NoRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes ? MessageAnswer::yes : MessageAnswer::no;
}

MessageFunction& messageFunction() {
    static MessageFunction function;
    return function;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Message& message) {
    return out << '"' << message.title.toStdString() << "\": \"" << message.text.toStdString()
               << "\" (" << look(message.icon).said << ", "
               << (message.buttons == MessageButtons::ok ? "OK" : "Sim/Não") << ')';
}

MessageAnswer showMessage(const Message& message) {
    return messageFunction() ? messageFunction()(message) : askOperator(message);
}

MessageAnswer showMessage(const QString& text, const QString& title, MessageIcon icon,
                          MessageButtons buttons) {
    return showMessage({text, title, icon, buttons});
}

MessageFunction setMessageFunction(MessageFunction function) {
    return std::exchange(messageFunction(), std::move(function));
}
