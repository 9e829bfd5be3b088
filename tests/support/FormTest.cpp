#include "support/FormTest.h"

#include "controls/box/DropDownList.h"
#include "controls/box/ListView.h"
#include "controls/window/Failure.h"
#include "controls/window/Form.h"
#include "controls/window/NavigationBar.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QStyleOptionViewItem>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace {

/// Where keys go. When a window has gone, a desktop gives the keys to the one in front; where there
/// is none that does, the first that can take them gets them.
QWidget& keyTarget() {
    if (!QApplication::activeWindow()) {
        const QWidgetList windows = QApplication::topLevelWidgets();
        const auto front = std::ranges::find_if(
            windows, [](const QWidget* window) { return window->isVisible(); });
        if (front != windows.end()) {
            (*front)->activateWindow();
            static_cast<void>(QTest::qWaitForWindowActive(*front));
        }
    }
    QWidget* target = QApplication::focusWidget();
    if (!target)
        target = QApplication::activeWindow();
    if (!target)
        throw std::runtime_error("no window to type into");
    return *target;
}

QPoint middleOfRow(ListView& list, int row) {
    const QRect place = list.rowRect(row);
    return {place.left() + place.width() / 2, place.center().y()};
}

/// Where the test before has ended the program no window would wait any more: Qt takes that back
/// only when a program begins. Not at that test's end, as events would still come to what it has
/// left.
void beginAnew() {
    QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
    QCoreApplication::exec();
}

} // namespace

FormTest::FormTest() {
    beginAnew();
    setMessageFunction([this](const Message& message) { return answerMessage(message); });
    setFileFunction([this](const FileRequest& request) { return answerFile(request); });
    setFailureHandler([this](const std::exception_ptr& failure) { takeFailure(failure); });
    setPromptHook([this](const QString& text) { prompt_ = text; });
}

FormTest::~FormTest() {
    setMessageFunction({});
    setFileFunction({});
    setFailureHandler({});
    setPromptHook({});
}

void FormTest::TearDown() {
    WindowList::instance().clear();
    for (const ExpectedMessage& missing : messages_)
        ADD_FAILURE() << "announced, but never shown: " << missing.message;
    for (const ExpectedFile& missing : files_)
        ADD_FAILURE() << "announced, but never asked: " << missing.request;
    for (const QString& missing : failures_)
        ADD_FAILURE() << "announced, but nothing failed: " << missing.toStdString();
    EXPECT_EQ(modalsDue_, 0) << "announced windows were never shown";
}

namespace {

bool becomesActive(QWidget& window) {
    window.activateWindow();
    // Not qWaitForWindowActive(): that takes a window for active when the one it stands in front of
    // is.
    return QTest::qWaitFor([&] { return QApplication::activeWindow() == &window; });
}

} // namespace

void FormTest::activate(QWidget& window) {
    QWidget between;
    if (QApplication::activeWindow() != &window &&
        QGuiApplication::focusWindow() == window.windowHandle()) {
        // Hidden and shown again: the offscreen platform didn't notice that it lost the focus.
        between.show();
        becomesActive(between);
    }
    if (!becomesActive(window))
        throw std::runtime_error("the window doesn't become active");
}

void FormTest::click(QWidget& form, const QString& name) {
    auto& button = control<QAbstractButton>(form, name);
    // A check box takes clicks on its mark and its text, which end before the widget may do.
    const bool mark = !button.inherits("QPushButton") && !button.inherits("QToolButton");
    const QPoint at = mark ? QPoint(8, button.height() / 2) : button.rect().center();
    QTest::mouseClick(&button, Qt::LeftButton, {}, at);
}

void FormTest::click(QWidget& form, const QString& name, int index) {
    QTest::mouseClick(control<NavigationBar>(form, name).button(index), Qt::LeftButton);
}

void FormTest::clickRow(QWidget& form, const QString& name, int row) {
    auto& list = control<ListView>(form, name);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, middleOfRow(list, row));
}

void FormTest::clickCheckBox(QWidget& form, const QString& name, int row) {
    auto& list = control<ListView>(form, name);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.checkBoxRect(row).center());
}

void FormTest::clickColumn(QWidget& form, const QString& name, int column) {
    QHeaderView& head = *control<ListView>(form, name).header();
    const int x = head.sectionViewportPosition(column) + head.sectionSize(column) / 2;
    QTest::mouseClick(head.viewport(), Qt::LeftButton, {}, QPoint(x, head.height() / 2));
}

void FormTest::enter(QWidget& form, const QString& name) {
    control(form, name).setFocus(Qt::TabFocusReason);
}

void FormTest::type(const QString& text) {
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, &keyTarget(), static_cast<Qt::Key>(c.toUpper().unicode()),
                            QString(c), Qt::NoModifier);
}

void FormTest::type(QWidget& form, const QString& name, const QString& text) {
    enter(form, name);
    type(text);
}

void FormTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(&keyTarget(), key, modifiers);
}

QString FormTest::focus() {
    const QWidget* widget = QApplication::focusWidget();
    while (widget && (widget->objectName().isEmpty() || widget->objectName().startsWith("qt_")))
        widget = widget->parentWidget(); // part of a control
    return widget ? widget->objectName() : QString();
}

QString FormTest::text(const QWidget& form, const QString& name) {
    const QWidget& found = control(form, name);
    if (const auto* list = qobject_cast<const DropDownList*>(&found))
        return list->text();
    if (const auto* label = qobject_cast<const QLabel*>(&found); label && label->buddy())
        return label->text().remove('&');
    const QVariant text = found.property("text");
    if (!text.isValid())
        throw std::runtime_error("no text in " + name.toStdString());
    return text.toString();
}

void FormTest::expectMessage(const QString& title, const QString& text, MessageIcon icon,
                             MessageButtons buttons, MessageAnswer answer) {
    messages_.push_back({
        {text, title, icon, buttons},
        answer
    });
}

void FormTest::expectFile(const FileRequest& request, const std::optional<QString>& answer) {
    files_.push_back({request, answer});
}

void FormTest::expectFailure(const QString& part) { failures_.push_back(part); }

MessageAnswer FormTest::answerMessage(const Message& message) {
    if (messages_.empty()) {
        ADD_FAILURE() << "nobody announced " << message;
        return message.buttons == MessageButtons::ok ? MessageAnswer::ok : MessageAnswer::no;
    }
    const ExpectedMessage expected = std::move(messages_.front());
    messages_.pop_front();
    EXPECT_EQ(message, expected.message);
    return expected.answer;
}

std::optional<QString> FormTest::answerFile(const FileRequest& request) {
    if (files_.empty()) {
        ADD_FAILURE() << "nobody announced the file dialog " << request;
        return std::nullopt;
    }
    const ExpectedFile expected = std::move(files_.front());
    files_.pop_front();
    EXPECT_EQ(request, expected.request);
    return expected.answer;
}

void FormTest::takeFailure(const std::exception_ptr& failure) {
    QString said = "an exception of no standard type";
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        said = QString::fromUtf8(error.what());
    } catch (...) {
    }
    if (failures_.empty()) {
        ADD_FAILURE() << "nobody announced the failure: " << said.toStdString();
        return;
    }
    const QString expected = std::exchange(failures_.front(), {});
    failures_.pop_front();
    EXPECT_TRUE(said.contains(expected))
        << "failed with: " << said.toStdString() << "\nannounced: " << expected.toStdString();
}

void FormTest::announceModal(const std::function<bool()>& work) {
    ++modalsDue_;
    tryModal(work);
}

void FormTest::tryModal(const std::function<bool()>& work) {
    QTimer::singleShot(0, &lifetime_,
                       [this, work] { work() ? void(--modalsDue_) : tryModal(work); });
}
