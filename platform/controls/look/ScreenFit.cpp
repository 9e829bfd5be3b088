#include "controls/look/ScreenFit.h"

#include <QApplication>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace {

constexpr int kAround = 12; ///< of what is brought into sight, on all sides

/// A control and the label that says what it is, in `within`.
QRect placeOf(const QWidget& control, const QWidget& within) {
    QRect place(control.mapTo(&within, QPoint()), control.size());
    for (const auto* label : within.findChildren<QLabel*>())
        if (label->buddy() == &control)
            place |= QRect(label->mapTo(&within, QPoint()), label->size());
    return place;
}

class Scrolled final : public QScrollArea {
public:
    explicit Scrolled(QWidget* window) : QScrollArea(window) {
        setFrameShape(NoFrame);
        setWidgetResizable(true);
        setFocusPolicy(Qt::NoFocus);
        connect(qApp, &QApplication::focusChanged, this, &Scrolled::bringFocusIntoSight);
    }
    /// One bar alone mustn't call for the other.
    [[nodiscard]] QSize sizeHint() const override {
        return widget()->sizeHint() + QSize(verticalScrollBar()->sizeHint().width(),
                                            horizontalScrollBar()->sizeHint().height());
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QScrollArea::resizeEvent(event);
        bringFocusIntoSight();
    }

private:
    /// Where there is no room for all of it, its beginning.
    void bringFocusIntoSight() {
        const QWidget* focused = QApplication::focusWidget();
        if (!focused || !widget() || !widget()->isAncestorOf(focused))
            return;
        const QRect place = placeOf(*focused, *widget());
        ensureVisible(place.right(), place.bottom(), kAround, kAround);
        ensureVisible(place.left(), place.top(), kAround, kAround);
    }
};

bool hasRoom(const QWidget& window, const QSize& room) {
    const QSize least = window.layout()->totalMinimumSize();
    return least.boundedTo(room) == least;
}

/// The part that takes the height.
QWidget* bodyOf(const QVBoxLayout& column) {
    for (int i = 0; i < column.count(); ++i)
        if (column.stretch(i) > 0)
            return column.itemAt(i)->widget();
    return nullptr;
}

void scrollBody(QWidget& window) {
    auto* column = qobject_cast<QVBoxLayout*>(window.layout());
    QWidget* body = column ? bodyOf(*column) : nullptr;
    if (!body || qobject_cast<QScrollArea*>(body))
        return;
    auto* area = new Scrolled(&window); // within the window: else its fields lose their order
    delete column->replaceWidget(body, area, Qt::FindDirectChildrenOnly);
    area->setWidget(body);
    area->show();
}

void scrollWhole(QWidget& window) {
    auto* area = new Scrolled(&window);
    auto* whole = new QWidget(&window);
    whole->setLayout(window.layout());
    area->setWidget(whole);
    auto* column = new QVBoxLayout(&window);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(area);
    area->show();
}

} // namespace

bool scrollWhereTooLarge(QWidget& window, const QSize& room) {
    if (!window.layout() || hasRoom(window, room) ||
        dynamic_cast<Scrolled*>(window.layout()->itemAt(0)->widget()))
        return false;
    QWidget* const focused = window.focusWidget();
    scrollBody(window);
    if (!hasRoom(window, room))
        scrollWhole(window);
    window.layout()->activate();
    if (focused)
        focused->setFocus(); // which it loses when it is moved
    return true;
}
