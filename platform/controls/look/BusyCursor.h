#pragma once

#include <QCursor>
#include <QGuiApplication>

/// The hourglass, while it lives.
class BusyCursor {
public:
    BusyCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
    ~BusyCursor() { QGuiApplication::restoreOverrideCursor(); }
};
