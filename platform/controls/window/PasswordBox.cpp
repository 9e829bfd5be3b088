#include "controls/window/PasswordBox.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr int kCharactersSeen = 28;
constexpr int kCharactersInALine = 70;

std::optional<QString> askForPassword(const QString& text, const QString& title) {
    QDialog box(QApplication::activeWindow());
    box.setWindowTitle(title);
    auto* const column = new QVBoxLayout(&box);
    auto* const reason = new QLabel(text);
    reason->setTextFormat(Qt::PlainText);
    reason->setTextInteractionFlags(Qt::TextSelectableByMouse);
    reason->setWordWrap(true);
    reason->setMinimumWidth(kCharactersInALine * reason->fontMetrics().averageCharWidth());
    column->addWidget(reason);
    auto* const row = new QHBoxLayout;
    auto* const label = new QLabel("&Senha:");
    auto* const field = new QLineEdit;
    field->setObjectName("txtSenha");
    field->setEchoMode(QLineEdit::Password);
    field->setMinimumWidth(kCharactersSeen * field->fontMetrics().averageCharWidth());
    label->setBuddy(field);
    row->addWidget(label);
    row->addWidget(field, 1);
    column->addLayout(row);
    auto* const buttons = new QDialogButtonBox;
    buttons->addButton("OK", QDialogButtonBox::AcceptRole)->setDefault(true);
    buttons->addButton("&Cancelar", QDialogButtonBox::RejectRole);
    column->addWidget(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
    field->setFocus();
    if (box.exec() != QDialog::Accepted)
        return std::nullopt;
    return field->text();
}

PasswordFunction& passwordFunction() {
    static PasswordFunction function;
    return function;
}

} // namespace

std::optional<QString> askPassword(const QString& text, const QString& title) {
    return passwordFunction() ? passwordFunction()(text, title) : askForPassword(text, title);
}

PasswordFunction setPasswordFunction(PasswordFunction function) {
    return std::exchange(passwordFunction(), std::move(function));
}
