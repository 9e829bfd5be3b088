#pragma once

#include <QObject>

class QKeyEvent;

/// What holds for keys in every window of the program, message boxes included.
///
/// A key held down presses no button: not the one that it is on, nor a dialog's default one, nor
/// one by its access key. Texts and lists repeat it. And a key with Alt that is nobody's access key
/// types nothing.
class KeyHabits final : public QObject {
public:
    /// Has the keys of the application watched from now on; does so once.
    static void install();

    /// Whether the key at work repeats because it is held down. Some screens tell only by its time:
    /// it is pressed again in the very moment in which it was let go.
    [[nodiscard]] static bool isHeld() noexcept { return held_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using QObject::QObject;

    void notice(const QKeyEvent& key);

    inline static bool held_ = false;
    int releasedKey_ = 0;
    quint64 releasedAt_ = 0;
};
