#include "print/preview/PageMouse.h"

#include "controls/window/Failure.h"
#include "print/PageView.h"

#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>

PageMouse::PageMouse(PageView& view) : QObject(&view), view_(view) {
    view_.viewport()->setMouseTracking(true);
    view_.viewport()->installEventFilter(this);
}

bool PageMouse::eventFilter(QObject*, QEvent* event) {
    const auto mouse = [event]() -> const QMouseEvent& {
        return static_cast<QMouseEvent&>(*event);
    };
    bool taken = false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        guarded([&] { taken = pressed(mouse()); });
        return taken;
    case QEvent::MouseMove:
        return guarded([&] { moved(mouse()); });
    case QEvent::MouseButtonRelease:
        return guarded([&] { released(); });
    default:
        return false;
    }
}

bool PageMouse::pressed(const QMouseEvent& event) {
    if (event.button() != Qt::LeftButton && event.button() != Qt::MiddleButton)
        return false;
    from_ = event.position().toPoint();
    isClick_ = event.button() == Qt::LeftButton;
    const auto point = view_.pointAt(from_);
    if (isClick_ && point && view_.selection().isOnText(*point)) {
        doing_ = Doing::marking;
        view_.selection().begin(*point);
        view_.viewport()->update();
    } else {
        doing_ = Doing::moving;
        view_.viewport()->setCursor(Qt::ClosedHandCursor);
    }
    return true;
}

void PageMouse::moved(const QMouseEvent& event) {
    const QPoint at = event.position().toPoint();
    if (doing_ == Doing::nothing)
        return showCursor(at);
    if (isClick_ && (at - from_).manhattanLength() < QApplication::startDragDistance())
        return;
    isClick_ = false;
    QScrollBar& down = *view_.verticalScrollBar();
    QScrollBar& right = *view_.horizontalScrollBar();
    if (doing_ == Doing::moving) {
        down.setValue(down.value() - (at.y() - from_.y()));
        right.setValue(right.value() - (at.x() - from_.x()));
        from_ = at;
        return;
    }
    // Beyond the edge the pages come along.
    const QRect seen = view_.viewport()->rect();
    const int beyond = at.y() < seen.top() ? -1 : at.y() > seen.bottom() ? 1 : 0;
    down.setValue(down.value() + beyond * down.singleStep());
    if (const auto point = view_.pointAt(at))
        view_.selection().extend(*point);
    view_.viewport()->update();
}

void PageMouse::released() {
    if (isClick_) {
        view_.selection().clear();
        view_.viewport()->update();
    }
    doing_ = Doing::nothing;
    showCursor(view_.viewport()->mapFromGlobal(QCursor::pos()));
}

void PageMouse::showCursor(QPoint at) {
    const auto point = view_.pointAt(at);
    const bool text = point && view_.selection().isOnText(*point);
    view_.viewport()->setCursor(text ? Qt::IBeamCursor : Qt::OpenHandCursor);
}

#include "print/preview/moc_PageMouse.cpp"
