#include "print/output/ProgressWindow.h"

#include "controls/typing/Formato.h"

#include <QCoreApplication>
#include <QProgressDialog>

#include <utility>

namespace {

constexpr qint64 kBetweenMs = 40;
constexpr int kSteps = 1000;

} // namespace

QString formatCount(qint64 count) {
    constexpr qint64 unit = 10'000;
    return formatMoney({count * unit}).chopped(3);
}

ProgressWindow::ProgressWindow(QWidget* owner, QString work, QString unit, int patienceMs)
    : owner_(owner), work_(std::move(work)), unit_(std::move(unit)), patienceMs_(patienceMs) {
    clock_.start();
    busy_.emplace();
}

ProgressWindow::~ProgressWindow() = default;

bool ProgressWindow::operator()(qint64 done, qint64 total) {
    const qint64 now = clock_.elapsed();
    if (cancelled_ || now < patienceMs_ || (window_ && now < told_ + kBetweenMs))
        return !cancelled_;
    told_ = now;
    if (!window_)
        open();
    window_->setLabelText(said(done, total));
    window_->setMaximum(total == 0 ? 0 : kSteps);
    window_->setValue(total == 0 ? 0 : static_cast<int>(done * kSteps / total));
    QCoreApplication::processEvents();
    cancelled_ = window_->wasCanceled();
    return !cancelled_;
}

void ProgressWindow::open() {
    busy_.reset();
    window_ = std::make_unique<QProgressDialog>(owner_);
    window_->setWindowTitle(work_);
    window_->setCancelButtonText("Cancelar");
    window_->setWindowModality(Qt::ApplicationModal);
    window_->setAutoClose(false);
    window_->setAutoReset(false);
    window_->setMinimumWidth(window_->fontMetrics().averageCharWidth() * 60);
    window_->show();
}

QString ProgressWindow::said(qint64 done, qint64 total) const {
    if (total == 0)
        return QString("Lendo as linhas do relatório: %1").arg(formatCount(done));
    if (done >= total)
        return work_ + ": concluindo";
    return QString("%1: %2 %3 de %4").arg(work_, unit_, formatCount(done), formatCount(total));
}
