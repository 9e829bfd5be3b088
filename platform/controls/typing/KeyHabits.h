#pragma once

#include "controls/system/KeyRepeats.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class QKeyEvent;
class QWindow;

/// What holds for keys in every window of the program, message boxes included.
///
/// A key held down presses no button: not the one that it is on, nor a dialog's default one, nor
/// one by its access key. Texts and lists repeat it. And a key with Alt that is nobody's access key
/// types nothing.
///
/// What is typed while the program waits is worked off when it goes on; meanwhile another program
/// may have come in front. Keys reach the fields that they were typed for all the same: the window
/// is the active one for as long as its keys last, so that Enter leads on in it and marks what it
/// comes to.
class KeyHabits final : public QObject {
public:
    /// Has the keys of the application watched from now on; does so once.
    static void install();

    /// Whether the key at work repeats because it is held down.
    [[nodiscard]] static bool isHeld() noexcept { return held_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using QObject::QObject;

    /// For a key of a window that has been left since, until no more of them come.
    void comeBackTo(const QWindow& window);
    void leaveAgain();

    inline static bool held_ = false;
    KeyRepeats repeats_;
    QTimer leaving_;
    QPointer<QWindow> inFront_; ///< what has; null: another program
};
