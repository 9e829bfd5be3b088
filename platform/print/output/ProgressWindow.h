#pragma once

#include "controls/look/BusyCursor.h"

#include <QElapsedTimer>
#include <QString>

#include <memory>
#include <optional>

class QProgressDialog;
class QWidget;

/// What long work shows: for a moment the hourglass, then a window with a bar and "Cancelar", which
/// keeps the operator from everything else meanwhile.
class ProgressWindow {
public:
    /// @param work as in "Gravando o PDF"
    /// @param unit what is counted, as in "página"
    ProgressWindow(QWidget* owner, QString work, QString unit, int patienceMs);
    ~ProgressWindow();

    /// To be told from time to time; total 0 while rows are taken in. Lets the window live.
    /// @return false once the operator has cancelled.
    bool operator()(qint64 done, qint64 total);
    [[nodiscard]] bool isCancelled() const noexcept { return cancelled_; }

private:
    void open();
    [[nodiscard]] QString said(qint64 done, qint64 total) const;

    QWidget* owner_;
    QString work_;
    QString unit_;
    int patienceMs_;
    bool cancelled_ = false;
    QElapsedTimer clock_;
    qint64 told_ = 0;
    std::optional<BusyCursor> busy_;
    std::unique_ptr<QProgressDialog> window_;
};

/// A count with its points: "2.500".
[[nodiscard]] QString formatCount(qint64 count);
