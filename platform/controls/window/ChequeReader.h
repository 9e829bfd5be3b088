#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>
#include <vector>

class QKeyEvent;
class QWidget;

/// Tells the line that a cheque reader types into a window from what the clerk types there.
///
/// Such a reader is a keyboard to the computer: it types the line at the foot of the cheque, "<", 8
/// digits, "<", 10 digits, ">", 12 digits and ":", often with Enter behind it, much faster than
/// anybody could. From "<" on the keys of the window are held back; once they pause, the line is
/// told if they made a whole one. If they didn't, a clerk has typed them: the control that they
/// were meant for gets them, as soon as one doesn't belong to a line or they pause.
class ChequeReader final : public QObject {
    Q_OBJECT
public:
    static constexpr int kDigits = 30;

    /// For a window that outlives it.
    explicit ChequeReader(QWidget& window);
    ~ChequeReader() override;

signals:
    /// The digits of the line without its marks; "?" for one that the reader couldn't read.
    void lineRead(const QString& digits);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] bool takes(const QKeyEvent& key) const;
    void hold(const QKeyEvent& key, QWidget& control);
    void pause();
    void giveBack();

    QWidget& window_;
    QPointer<QWidget> control_; ///< that has the focus
    std::vector<std::unique_ptr<QKeyEvent>> held_;
    QString line_; ///< what they have typed, without what stands behind the line
    QTimer pause_;
    bool givingBack_ = false;
};
