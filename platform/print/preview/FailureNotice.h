#pragma once

#include <QFrame>

class QLabel;
class Relatorio;

/// What stands over the pages of a report whose rows have stopped coming half-way: it says so and
/// offers to try again. Hidden while all is well.
class FailureNotice final : public QFrame {
    Q_OBJECT
public:
    explicit FailureNotice(const Relatorio& report, QWidget* parent = nullptr);

signals:
    /// The operator wants the report to be begun again.
    void againAsked();
    /// The notice has gone, and with it the button that had the focus.
    void focusLeft();

private:
    void showState();

    const Relatorio& report_;
    QLabel* failed_;
};
