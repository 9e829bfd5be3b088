#pragma once

#include <QDate>
#include <QLineEdit>
#include <QPointer>

#include <optional>

class QFrame;

/// A box for a date, shown as dd/mm/yyyy whatever the machine's locale. It always holds a date of
/// the years 100 to 9999, today's at first.
///
/// Typing. Entering it marks the whole date. Digits alone will do, the bars come by themselves:
/// "01022026"; what parseDate() reads is taken, so "1/2" and "010226" are dates too. In a whole
/// date a typed digit overwrites the one after the caret. Up and Down step the day, month or year
/// at the caret, PageUp and PageDown the month. F4, Alt+Down or the picture at the right open a
/// calendar.
///
/// A date typed without a year is the one nearest to today, or, if setNotBefore() names another
/// box, the first one not before the date of that.
///
/// The value follows the text as soon as it is a whole date. By the time that a window hears of the
/// leaving (Form::lostFocus()) it is the date that was typed. A text that is no date has the last
/// value beside it; refusal() says so, and a Form doesn't let the control be left with it. If it is
/// left all the same, to close the window, it goes back to that value.
///
/// A box that can't be typed into offers no calendar.
class DatePicker final : public QLineEdit {
    Q_OBJECT
public:
    explicit DatePicker(QWidget* parent = nullptr);

    [[nodiscard]] QDate value() const noexcept { return value_; }
    /// A date outside the years 100 to 9999, or none, leaves the value as it is.
    void setValue(QDate value);

    /// For a date that comes after another: a due date, with the box of the issue date, which must
    /// outlive this one.
    void setNotBefore(const DatePicker* other) { notBefore_ = other; }

    /// What to tell the operator of a text that is no date; "" if it is one.
    [[nodiscard]] QString refusal() const;

    /// Opens the calendar under the box; does nothing where the box can't be typed into.
    void openCalendar();

    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// value() changed, by the operator or by the program.
    void changed();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    enum class Part : unsigned char { day, month, year };

    [[nodiscard]] Part partAtCaret() const;
    void step(Part part, int by);
    void take(QDate value);
    void show(QDate value);
    void readText();
    void readWholeText();
    /// The date that the text is.
    [[nodiscard]] std::optional<QDate> typed() const;
    /// Takes and shows the date that the text is. @return false if it is none.
    bool settle();
    void typeDigit(const QString& digit);
    void typeBar();

    const DatePicker* notBefore_ = nullptr;
    QDate value_ = QDate::currentDate();
    QAction* open_;
    QPointer<QFrame> calendar_;
    bool entered_ = false;
    bool enteredByMouse_ = false;
};
