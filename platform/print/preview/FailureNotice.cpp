#include "print/preview/FailureNotice.h"

#include "controls/look/Spoken.h"
#include "controls/window/Failure.h"
#include "print/Relatorio.h"
#include "print/output/ProgressWindow.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

FailureNotice::FailureNotice(const Relatorio& report, QWidget* parent)
    : QFrame(parent), report_(report), failed_(new QLabel(this)) {
    setFrameShape(QFrame::Box);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    hide();
    failed_->setObjectName("failed");
    tellAtOnce(*failed_);
    failed_->setTextFormat(Qt::PlainText);
    failed_->setForegroundRole(QPalette::ToolTipText);
    failed_->setWordWrap(true);
    auto* again = new QPushButton("&Tentar de novo", this);
    again->setObjectName("again");
    again->setAutoDefault(false);
    again->setToolTip("Ler as linhas do relatório outra vez");
    connect(again, &QPushButton::clicked, this, &FailureNotice::againAsked);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 6, 8, 6);
    row->addWidget(failed_, 1);
    row->addWidget(again);
    connectGuarded(&report_, &Relatorio::began, this, &FailureNotice::showState);
    connectGuarded(&report_, &Relatorio::rowsTaken, this, &FailureNotice::showState);
    showState();
}

void FailureNotice::showState() {
    const bool failed = report_.state() == RowsState::failed;
    if (failed == isVisibleTo(parentWidget()))
        return;
    failed_->setText(failed ? QString("Relatório incompleto: a leitura das linhas parou depois de "
                                      "%1. Ele não pode ser impresso nem salvo.")
                                  .arg(formatCount(report_.rows().size()))
                            : QString());
    const bool leavesFocus = !failed && isAncestorOf(window()->focusWidget());
    setVisible(failed);
    if (leavesFocus)
        emit focusLeft();
    if (!failed)
        return;
    QAccessibleEvent alert(failed_, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

#include "print/preview/moc_FailureNotice.cpp"
