#pragma once

#include "controls/window/Failure.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <chrono>

/// Keeps the windows painted during long work, which asks after each of its steps whether it is
/// time again. What the operator presses meanwhile waits until the work is done: it may close or
/// open the very window that works. No other handler runs in its middle.
class Repainting {
public:
    explicit Repainting(std::chrono::milliseconds interval)
        : interval_(interval), next_(interval) {}

    [[nodiscard]] bool due() const { return next_.hasExpired(); }
    void repaint() {
        const HandlersPaused paused;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        next_.setRemainingTime(interval_);
    }
    void repaintIfDue() {
        if (due())
            repaint();
    }

private:
    std::chrono::milliseconds interval_;
    QDeadlineTimer next_;
};
