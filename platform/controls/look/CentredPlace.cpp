#include "controls/look/CentredPlace.h"

#include "controls/look/ScreenFit.h"

#include <QApplication>
#include <QLayout>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {

/// What the desktop puts around a window; nothing before it is on show.
QMargins frameOf(const QWidget& window) {
    return window.windowHandle() ? window.windowHandle()->frameMargins() : QMargins();
}

} // namespace

void CentredPlace::centre(std::optional<int> top) {
    const QWidget* owner = QApplication::activeWindow();
    const bool frameless = window_.windowFlags() & Qt::FramelessWindowHint;
    frame_ = frameOf(window_.isVisible() || frameless || !owner ? window_ : *owner);
    top_ = top;
    centred_ = due_ = true;
    if (window_.isVisible())
        place();
}

void CentredPlace::open() {
    window_.ensurePolished();
    scrollWhereTooLarge(window_, room());
    if (!std::exchange(opened_, true) && window_.layout()) {
        window_.layout()->activate();
        const bool sized = window_.testAttribute(Qt::WA_Resized);
        window_.resize((sized ? window_.size() : window_.sizeHint()).boundedTo(room()));
        due_ = true;
    }
    if (due_ && centred_)
        place();
}

void CentredPlace::stayWithin() {
    if (scrollWhereTooLarge(window_, room()) && !window_.isMaximized())
        window_.resize(window_.size().boundedTo(room()));
}

QRect CentredPlace::area() const {
    const QWidget* owner = QApplication::activeWindow();
    return (owner ? owner->screen() : window_.screen())->availableGeometry();
}

QSize CentredPlace::room() const {
    QMargins frame = window_.isVisible() ? frameOf(window_) : frame_;
    if (!(window_.windowFlags() & Qt::FramelessWindowHint)) // the least, while nobody has told
        frame.setTop(
            std::max(frame.top(), window_.style()->pixelMetric(QStyle::PM_TitleBarHeight)));
    return area().size().shrunkBy(frame);
}

void CentredPlace::place() {
    const QSize whole = window_.size().expandedTo(window_.minimumSizeHint()).grownBy(frame_);
    const int across = std::max(0, (area().width() - whole.width()) / 2);
    const int down = top_.value_or(std::max(0, (area().height() - whole.height()) / 2));
    window_.move(area().topLeft() + QPoint(across, down));
}

void CentredPlace::settle() {
    if (!std::exchange(due_, false))
        return;
    const QMargins frame = frameOf(window_);
    if (std::exchange(frame_, frame) == frame)
        return;
    if (!window_.isMaximized())
        window_.resize(window_.size().boundedTo(room()));
    if (centred_)
        place();
}
