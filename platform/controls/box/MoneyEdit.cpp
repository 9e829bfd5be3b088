#include "controls/box/MoneyEdit.h"

#include "controls/typing/Typing.h"

#include <QMouseEvent>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QValidator>

#include <algorithm>
#include <utility>

/// Lets through what is an amount or the beginning of one.
class MoneyValidator final : public QValidator {
public:
    explicit MoneyValidator(MoneyEdit* edit) : QValidator(edit), edit_(*edit) {}

    State validate(QString& text, int& caret) const override {
        static const QRegularExpression kBeginning("^-?,?$");
        static const QRegularExpression kTypable("^-?[0-9.]*(,[0-9]*)?$");
        if (kBeginning.match(text).hasMatch())
            return Acceptable;
        const auto read = parseMoney(text);
        if (!read)
            return Invalid;
        // An amount that the program set with more decimals may be shortened, not lengthened.
        if (read->decimals > std::max(edit_.decimals_, edit_.decimalsInText_))
            return Invalid;
        if (!kTypable.match(text).hasMatch()) {
            text = formatMoneyExactly(read->amount); // pasted: "R$ 1.234,56", "1,234.56"
            caret = static_cast<int>(text.size());
        }
        return Acceptable;
    }

private:
    const MoneyEdit& edit_;
};

MoneyEdit::MoneyEdit(QWidget* parent) : QLineEdit(parent) {
    setAlignment(Qt::AlignRight);
    setInputMethodHints(Qt::ImhFormattedNumbersOnly);
    setValidator(new MoneyValidator(this));
    show(valor_);
    connect(this, &QLineEdit::textChanged, this, &MoneyEdit::readText);
}

void MoneyEdit::setValor(Amount valor) { show(valor); }

void MoneyEdit::setDecimals(int decimals) { decimals_ = std::clamp(decimals, 0, kMoneyDecimals); }

void MoneyEdit::show(Amount valor) {
    QString text = isReadOnly() ? formatMoney(valor) : formatMoneyExactly(valor);
    decimalsInText_ = kMoneyDecimals; // the program may set as many as it likes
    {
        const QScopedValueRollback<bool> ours(showing_, true);
        setText(entered_ ? text.remove('.') : text);
    }
    decimalsInText_ = valor.tenThousandths % 100 == 0 ? kShownDecimals : kMoneyDecimals;
    take(valor);
}

void MoneyEdit::take(Amount valor) {
    if (std::exchange(valor_, valor) != valor)
        emit changed();
}

void MoneyEdit::readText() {
    if (showing_)
        return;
    const auto read = parseMoney(text());
    decimalsInText_ = read ? read->decimals : 0;
    take(read ? read->amount : Amount{});
}

void MoneyEdit::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ReadOnlyChange)
        show(valor_);
    QLineEdit::changeEvent(event);
}

void MoneyEdit::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    if (entered_)
        return; // back from a message box, a menu or another window
    entered_ = true;
    enteredByMouse_ = event->reason() == Qt::MouseFocusReason;
    show(valor_);
    selectAll();
}

void MoneyEdit::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    if (!leavesControl(*event))
        return;
    entered_ = false;
    show(valor_);
}

void MoneyEdit::mousePressEvent(QMouseEvent* event) {
    QLineEdit::mousePressEvent(event);
    if (std::exchange(enteredByMouse_, false))
        selectAll();
}

void MoneyEdit::keyPressEvent(QKeyEvent* event) {
    if (event->text() == "." && (event->modifiers() & Qt::KeypadModifier)) {
        QKeyEvent comma(event->type(), Qt::Key_Comma, Qt::KeypadModifier, ",");
        QLineEdit::keyPressEvent(&comma);
        return;
    }
    QLineEdit::keyPressEvent(event);
}

#include "controls/box/moc_MoneyEdit.cpp"
