#include "controls/CentredPlace.h"

#include <QApplication>
#include <QLayout>
#include <QScreen>
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
    window_.ensurePolished();
    if (window_.layout())
        window_.layout()->activate();
    if (!window_.testAttribute(Qt::WA_Resized))
        window_.adjustSize();
    const QWidget* owner = QApplication::activeWindow();
    const bool frameless = window_.windowFlags() & Qt::FramelessWindowHint;
    frame_ = frameOf(window_.isVisible() || frameless || !owner ? window_ : *owner);
    top_ = top;
    due_ = true;
    place();
}

void CentredPlace::place() {
    const QWidget* owner = QApplication::activeWindow();
    const QRect area = (owner ? owner->screen() : window_.screen())->availableGeometry();
    const QSize whole = window_.size().expandedTo(window_.minimumSizeHint()).grownBy(frame_);
    const int across = std::max(0, (area.width() - whole.width()) / 2);
    const int down = top_.value_or(std::max(0, (area.height() - whole.height()) / 2));
    window_.move(area.topLeft() + QPoint(across, down));
}

void CentredPlace::settle() {
    if (!std::exchange(due_, false))
        return;
    const QMargins frame = frameOf(window_);
    if (std::exchange(frame_, frame) != frame)
        place();
}
