#pragma once

#include <QAccessibleWidget>

#include <functional>

class QLabel;

/// What a screen reader is told of the controls where Qt's own account leaves something out: names
/// are what the labels say, values what the controls hold. A value is also a text to be read, as of
/// values a Linux desktop passes on numbers only.
///
/// A status text (a QLabel with an accessible name) has its text as its value. A drop-down
/// list keeps its name when something is chosen in it, and has its text as its value. A check box
/// that is ticked by a reader's action does what it does when it is clicked.

/// Call it before the first window is read; further calls do nothing.
void installSpoken();

/// Sets what a status text says and has the change told. Where there isn't room for all of it,
/// `shown` is what is seen.
void showStatus(QLabel& label, const QString& text);
void showStatus(QLabel& label, const QString& text, const QString& shown);

/// Has a status text be told at once, whatever the reader is at: as a notification. showStatus()
/// shows it while there is a text, and hides it when there is none.
void tellAtOnce(QLabel& label);

/// Has the change of what a widget shows be told, if it is one since the last call. Of one that
/// isn't on show nothing is told.
void tellText(QWidget& widget, const QString& text);

/// Sets what a widget is described by. Set by Qt, the same words would be told again.
void describe(QWidget& widget, const QString& words);

/// Has a change be told that Qt doesn't tell itself.
void tell(QAccessibleEvent& change);
/// Whether anybody hears it: else the work for it may be left out.
[[nodiscard]] bool isHeard();

/// Who hears the changes in place of the desktop's readers, in tests; an empty function restores
/// those. @return the function replaced.
using Listener = std::function<void(QAccessibleEvent&)>;
Listener setListener(Listener listener);

/// The account of a widget that shows a text, which nobody types there.
class SpokenText : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    using QAccessibleWidget::QAccessibleWidget;

    [[nodiscard]] QString text(QAccessible::Text which) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    void selection(int index, int* start, int* end) const override;
    [[nodiscard]] int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    [[nodiscard]] int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    [[nodiscard]] QString text(int start, int end) const override;
    [[nodiscard]] int characterCount() const override;
    [[nodiscard]] QRect characterRect(int) const override { return rect(); }
    [[nodiscard]] int offsetAtPoint(const QPoint&) const override { return 0; }
    void scrollToSubstring(int, int) override {}
    [[nodiscard]] QString attributes(int offset, int* start, int* end) const override;

protected:
    /// Its value.
    [[nodiscard]] virtual QString shown() const = 0;
};

/// From now on the widgets of a class, and of those derived from it, are told by an Account, which
/// is made with the widget. Further calls do nothing.
template <class Account, class Widget>
void installAccount() {
    [[maybe_unused]] static const bool once = [] {
        QAccessible::installFactory(
            [](const QString& className, QObject* object) -> QAccessibleInterface* {
                auto* widget = className == Widget::staticMetaObject.className()
                                   ? qobject_cast<Widget*>(object)
                                   : nullptr;
                return widget ? new Account(*widget) : nullptr;
            });
        return true;
    }();
}
