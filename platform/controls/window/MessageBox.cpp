#include "controls/window/MessageBox.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGridLayout>
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

// The box is as wide as its title, in bold as many desktops have it, with the buttons beside it: by
// itself it is cut where the text is short. And a short text stands beside the middle of the icon:
// by itself it stands higher, the icon reaching into an empty row under it.
void layOut(QMessageBox& box) {
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    if (!grid)
        return;
    constexpr int kButtonsOfTitle = 5; // in heights of a line
    QFont bold = box.font();
    bold.setBold(true);
    const QFontMetrics title(bold);
    const int width =
        title.horizontalAdvance(box.windowTitle()) + kButtonsOfTitle * 2 * title.height();
    grid->addItem(new QSpacerItem(width, 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
                  grid->rowCount(), 0, 1, grid->columnCount());
    if (auto* icon = box.findChild<QWidget*>("qt_msgboxex_icon_label");
        icon && icon->isVisibleTo(&box)) {
        grid->removeWidget(icon);
        grid->addWidget(icon, 0, 0, Qt::AlignTop);
    }
}

MessageAnswer askOperator(const Message& message) {
    QMessageBox box(look(message.icon).icon, message.title, withPlainLineBreaks(message.text),
                    QMessageBox::NoButton, QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (message.buttons == MessageButtons::ok) {
        QPushButton* ok = box.addButton("OK", QMessageBox::AcceptRole);
        box.setDefaultButton(ok);
        box.setEscapeButton(ok);
        layOut(box);
        box.exec();
        return MessageAnswer::ok;
    }
    const bool question = message.buttons == MessageButtons::yesNo;
    QPushButton* first =
        box.addButton(question ? "&Sim" : "&Voltar ao que digitei", QMessageBox::YesRole);
    QPushButton* second =
        box.addButton(question ? "&Não" : "&Ficar com o gravado", QMessageBox::NoRole);
    QPushButton* const harmless = question ? second : first;
    box.setDefaultButton(harmless);
    box.setEscapeButton(harmless);
    layOut(box);
    box.exec();
    const bool other = box.clickedButton() == second;
    if (question)
        return other ? MessageAnswer::no : MessageAnswer::yes;
    return other ? MessageAnswer::stored : MessageAnswer::back;
}

int onShow = 0;

std::function<void()>& beforeMessages() {
    static std::function<void()> work;
    return work;
}

MessageFunction& messageFunction() {
    static MessageFunction function;
    return function;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Message& message) {
    return out << '"' << message.title.toStdString() << "\": \"" << message.text.toStdString()
               << "\" (" << look(message.icon).said << ", "
               << (message.buttons == MessageButtons::ok      ? "OK"
                   : message.buttons == MessageButtons::yesNo ? "Sim/Não"
                                                              : "Voltar/Ficar")
               << ')';
}

MessageAnswer showMessage(const Message& message) {
    if (beforeMessages())
        beforeMessages()();
    struct OnShow {
        OnShow() { ++onShow; }
        OnShow(const OnShow&) = delete;
        OnShow& operator=(const OnShow&) = delete;
        ~OnShow() { --onShow; }
    } const counted;
    return messageFunction() ? messageFunction()(message) : askOperator(message);
}

bool isMessageOnShow() noexcept { return onShow > 0; }

void setBeforeMessages(std::function<void()> work) { beforeMessages() = std::move(work); }

MessageAnswer showMessage(const QString& text, const QString& title, MessageIcon icon,
                          MessageButtons buttons) {
    return showMessage({text, title, icon, buttons});
}

MessageFunction setMessageFunction(MessageFunction function) {
    return std::exchange(messageFunction(), std::move(function));
}
