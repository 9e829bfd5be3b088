#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>

class QWidget;

/// Boxes that are entered for a moment and left by a key: the focus then goes back to where it was.
class FocusReturn final : public QObject {
    Q_OBJECT
public:
    /// @param within where it may go back to
    /// @param otherwise gets it if it was elsewhere, or what had it takes none any more
    FocusReturn(QWidget& within, QWidget& otherwise);

    void watch(QWidget& box);
    /// Takes the focus from the box, if that has it.
    void leave(QWidget& box);

private:
    void moved(QWidget* from, QWidget* to);

    QWidget& within_;
    QWidget& otherwise_;
    QHash<QWidget*, QPointer<QWidget>> before_; ///< by box
    bool leaving_ = false;
};
