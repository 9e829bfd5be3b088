#include "controls/box/DatePicker.h"

#include "controls/look/Icons.h"
#include "controls/typing/Formato.h"
#include "controls/typing/Typing.h"

#include <QAction>
#include <QCalendarWidget>
#include <QFrame>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTextCharFormat>
#include <QToolButton>
#include <QVBoxLayout>
#include <QValidator>

#include <algorithm>
#include <functional>
#include <utility>

namespace {

const QDate kFirst(100, 1, 1);
const QDate kLast(9999, 12, 31);

constexpr int kWholeDate = 10; // characters of dd/mm/yyyy
constexpr QChar kBar = u'/';

/// Lets through digits and bars, as many as a date can have; a pasted date in any form.
class DateValidator final : public QValidator {
public:
    using QValidator::QValidator;

    State validate(QString& text, int& caret) const override {
        static const QRegularExpression kTypable(
            "^[0-9]{0,2}(/[0-9]{0,2}(/[0-9]{0,4})?)?$|^[0-9]*$");
        if (text.size() <= kWholeDate && kTypable.match(text).hasMatch())
            return Acceptable;
        const auto pasted = parseDate(text);
        if (!pasted)
            return Invalid;
        text = formatDate(*pasted);
        caret = static_cast<int>(text.size());
        return Acceptable;
    }
};

/// "010" becomes "01/0", and "01" "01/": the bars that the digits call for.
QString withBars(const QString& typed) {
    QStringList parts = typed.split(kBar);
    while (parts.size() < 3 && parts.last().size() >= 2) {
        const QString all = parts.last();
        parts.last() = all.first(2);
        parts << all.sliced(2);
    }
    return parts.join(kBar);
}

/// The calendar of one DatePicker: a pop-up that reports the day it was given and goes.
class CalendarPopup final : public QFrame {
public:
    CalendarPopup(QWidget* owner, QDate day, const std::function<void(QDate)>& chosen)
        : QFrame(owner, Qt::Popup) {
        setAttribute(Qt::WA_DeleteOnClose);
        setFrameStyle(QFrame::StyledPanel);
        auto* calendar = new QCalendarWidget(this);
        calendar->setLocale(QLocale(QLocale::Portuguese, QLocale::Brazil));
        calendar->setFirstDayOfWeek(Qt::Sunday);
        calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
        calendar->setDateRange(kFirst, kLast);
        calendar->setSelectedDate(day);
        // Weekends are days like others here, and red on dark is hard to read.
        for (const Qt::DayOfWeek weekend : {Qt::Saturday, Qt::Sunday})
            calendar->setWeekdayTextFormat(weekend, QTextCharFormat());
        drawArrow(*calendar, "qt_calendar_prevmonth", "previous");
        drawArrow(*calendar, "qt_calendar_nextmonth", "next");
        auto* today = new QPushButton("&Hoje", this);

        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(4, 4, 4, 4);
        column->addWidget(calendar);
        column->addWidget(today);

        const auto choose = [this, chosen](QDate date) {
            chosen(date);
            close();
        };
        connect(calendar, &QCalendarWidget::clicked, this, choose);
        connect(calendar, &QCalendarWidget::activated, this, choose); // Enter
        connect(today, &QPushButton::clicked, this, [choose] { choose(QDate::currentDate()); });
        calendar->setFocus();
    }

private:
    /// The arrows stand on the accent colour, as the month between them does.
    static void drawArrow(const QCalendarWidget& calendar, const char* button, const char* icon) {
        if (auto* arrow = calendar.findChild<QToolButton*>(button))
            arrow->setIcon(Icons::named(icon).pixmap(arrow->iconSize(), arrow->devicePixelRatioF(),
                                                     QIcon::Selected));
    }
};

} // namespace

DatePicker::DatePicker(QWidget* parent) : QLineEdit(parent) {
    setInputMethodHints(Qt::ImhDate);
    setValidator(new DateValidator(this));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    open_ = addAction(Icons::named("calendar"), TrailingPosition);
    open_->setToolTip("Calendário (F4)");
    connect(open_, &QAction::triggered, this, &DatePicker::openCalendar);
    connect(this, &QLineEdit::textEdited, this, &DatePicker::readWholeText);
    show(value_);
}

void DatePicker::setValue(QDate value) {
    take(value);
    show(value_);
}

void DatePicker::take(QDate value) {
    if (!value.isValid() || value < kFirst || value > kLast || value == value_)
        return;
    value_ = value;
    emit changed();
}

void DatePicker::show(QDate value) { setText(formatDate(value)); }

void DatePicker::readText() {
    if (const auto date = typed())
        take(*date);
}

void DatePicker::readWholeText() {
    if (text().size() >= kWholeDate)
        readText();
}

std::optional<QDate> DatePicker::typed() const {
    if (notBefore_)
        return parseDate(text(), {YearRule::Kind::notBefore, notBefore_->value()});
    return parseDate(text());
}

bool DatePicker::settle() {
    const auto date = typed();
    if (!date)
        return false;
    take(*date);
    show(value_);
    return true;
}

QString DatePicker::refusal() const {
    if (typed())
        return {};
    const QString wanted =
        "Digite dia, mês e ano, como em " + formatDate(QDate::currentDate()) + ".";
    return text().isEmpty() ? wanted : "\"" + text() + "\" não é uma data. " + wanted;
}

QSize DatePicker::sizeHint() const {
    // Just as wide as a date and its picture.
    const QSize base = QLineEdit::sizeHint();
    return {fontMetrics().horizontalAdvance("00/00/0000 ") + 2 * base.height(), base.height()};
}

void DatePicker::openCalendar() {
    if (isReadOnly() || !isEnabled() || calendar_)
        return;
    calendar_ = new CalendarPopup(this, value_, [this](QDate day) { setValue(day); });
    const QSize size = calendar_->sizeHint();
    const QRect area = screen()->availableGeometry();
    QPoint at = mapToGlobal(rect().bottomLeft());
    if (at.y() + size.height() > area.bottom())
        at = mapToGlobal(rect().topLeft()) - QPoint(0, size.height());
    at.setX(std::clamp(at.x(), area.left(), std::max(area.left(), area.right() - size.width())));
    calendar_->move(at);
    calendar_->show();
}

void DatePicker::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    if (std::exchange(entered_, true))
        return; // back from a message box, a menu or the calendar
    enteredByMouse_ = event->reason() == Qt::MouseFocusReason;
    selectAll();
}

void DatePicker::mousePressEvent(QMouseEvent* event) {
    QLineEdit::mousePressEvent(event);
    if (std::exchange(enteredByMouse_, false))
        selectAll();
}

void DatePicker::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    if (!leavesControl(*event))
        return;
    entered_ = false;
    if (!settle())
        show(value_);
}

// Comes before the windows hear of the leaving: they are to find the date that was typed. The text
// stays as it is: the same is told when another window comes in front.
bool DatePicker::event(QEvent* event) {
    if (event->type() == QEvent::FocusAboutToChange && entered_ &&
        leavesControl(*static_cast<QFocusEvent*>(event)))
        readText();
    return QLineEdit::event(event);
}

void DatePicker::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ReadOnlyChange)
        open_->setVisible(!isReadOnly());
    QLineEdit::changeEvent(event);
}

DatePicker::Part DatePicker::partAtCaret() const {
    if (hasSelectedText())
        return Part::day;
    switch (text().first(cursorPosition()).count(kBar)) {
    case 0:
        return Part::day;
    case 1:
        return Part::month;
    default:
        return Part::year;
    }
}

void DatePicker::step(Part part, int by) {
    readText();
    const int caret = cursorPosition();
    const bool whole = hasSelectedText();
    switch (part) {
    case Part::day:
        setValue(value_.addDays(by));
        break;
    case Part::month:
        setValue(value_.addMonths(by));
        break;
    case Part::year:
        setValue(value_.addYears(by));
        break;
    }
    if (whole)
        selectAll();
    else
        setCursorPosition(caret);
}

void DatePicker::typeDigit(const QString& digit) {
    if (!hasSelectedText() && text().size() == kWholeDate) {
        int at = cursorPosition();
        if (at < kWholeDate && text()[at] == kBar)
            ++at;
        if (at == kWholeDate)
            return;
        setSelection(at, 1);
        insert(digit);
        if (at + 1 < kWholeDate && text()[at + 1] == kBar)
            setCursorPosition(at + 2);
        return;
    }
    insert(digit);
    const QString dressed = withBars(text());
    if (cursorPosition() == text().size() && dressed != text()) {
        setText(dressed);
        readWholeText();
    }
}

void DatePicker::typeBar() {
    // After the second digit the bar has come by itself already.
    const int at = cursorPosition();
    if (hasSelectedText() || at == 0 || text()[at - 1] == kBar)
        return;
    if (at < text().size()) {
        const auto bar = text().indexOf(kBar, at);
        if (bar >= 0)
            setCursorPosition(static_cast<int>(bar) + 1);
        return;
    }
    insert(QString(kBar));
}

void DatePicker::keyPressEvent(QKeyEvent* event) {
    const bool alt = event->modifiers() & Qt::AltModifier;
    const int key = event->key();
    if (key == Qt::Key_F4 || (alt && key == Qt::Key_Down))
        return openCalendar();
    if (isReadOnly())
        return QLineEdit::keyPressEvent(event);
    if (key == Qt::Key_Up || key == Qt::Key_Down)
        return step(partAtCaret(), key == Qt::Key_Up ? 1 : -1);
    if (key == Qt::Key_PageUp || key == Qt::Key_PageDown)
        return step(Part::month, key == Qt::Key_PageUp ? 1 : -1);
    if (!typesCharacter(*event))
        return QLineEdit::keyPressEvent(event);
    const QString typed = event->text();
    if (isDigit(typed.front()))
        typeDigit(typed);
    else if (QStringLiteral("/.-, ").contains(typed.front()))
        typeBar();
}

#include "controls/box/moc_DatePicker.cpp"
