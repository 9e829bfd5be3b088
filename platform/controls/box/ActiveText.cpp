#include "controls/box/ActiveText.h"

#include "controls/typing/Typing.h"

#include <QKeyEvent>

#include <algorithm>

namespace {

constexpr QChar kPlace = u'9';

} // namespace

ActiveText::ActiveText(QWidget* parent) : QLineEdit(parent) {
    setInputMethodHints(Qt::ImhDigitsOnly);
    connect(this, &QLineEdit::textEdited, this, &ActiveText::applyMask);
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) { before_ = text; });
}

void ActiveText::setMasks(const QString& masks) { masks_ = masks.split(';', Qt::SkipEmptyParts); }

qsizetype ActiveText::digits() const {
    return masks_.isEmpty() ? 0 : std::min<qsizetype>(masks_.last().count(kPlace), room_);
}

bool ActiveText::fitsSigns(const QString& text) const {
    const QString signs = masks_.join("");
    return std::ranges::all_of(text, [&](QChar c) { return isDigit(c) || signs.contains(c); });
}

QString ActiveText::masked(const QString& digits) const {
    const auto mask = std::ranges::find_if(masks_, [&](const QString& each) {
        return each.count(kPlace) >= digits.size() && each.size() <= room_;
    });
    if (mask == masks_.end())
        return digits;
    QString text;
    qsizetype next = 0;
    for (const QChar sign : *mask) {
        if (next == digits.size())
            break; // the signs after the last digit come with the next one
        text += sign == kPlace ? digits[next++] : sign;
    }
    return text;
}

void ActiveText::applyMask() {
    // A stored text with words in it is left to the operator's hand.
    if (masks_.isEmpty() || (!fitsSigns(text()) && !fitsSigns(before_)))
        return;
    const auto digitsBeforeCaret = onlyDigits(text().first(cursorPosition())).size();
    setText(masked(onlyDigits(text()).left(digits())));
    int caret = 0;
    for (qsizetype passed = 0; passed < digitsBeforeCaret && caret < text().size(); ++caret)
        passed += isDigit(text()[caret]) ? 1 : 0;
    setCursorPosition(caret);
}

bool ActiveText::event(QEvent* event) {
    if (masks_.isEmpty() || !typesNoDigit(*event))
        return QLineEdit::event(event);
    event->accept(); // refused before it takes the place of what is marked
    return true;
}

void ActiveText::keyPressEvent(QKeyEvent* event) {
    const bool full = !hasSelectedText() && onlyDigits(text()).size() >= digits();
    if (!masks_.isEmpty() && typesCharacter(*event) && full) {
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

#include "controls/box/moc_ActiveText.cpp"
