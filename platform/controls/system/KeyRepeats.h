#pragma once

#include <memory>

class QKeyEvent;

/// Whether a key that comes repeats because it is held down, as the system tells it.
///
/// Make it after the application, and have it notice every key that is pressed or let go, in their
/// order.
class KeyRepeats {
public:
    KeyRepeats();
    ~KeyRepeats();
    KeyRepeats(const KeyRepeats&) = delete;
    KeyRepeats& operator=(const KeyRepeats&) = delete;

    void notice(const QKeyEvent& key);
    /// The key pressed last.
    [[nodiscard]] bool isHeld() const noexcept { return held_; }

private:
    class Signs; ///< by which it is told
    std::unique_ptr<Signs> signs_;
    bool held_ = false;
};
