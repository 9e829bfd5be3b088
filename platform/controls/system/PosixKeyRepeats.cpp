#include "controls/system/KeyRepeats.h"

#include <QKeyEvent>

/// Some screens tell only by the time: the key is pressed again in the very moment in which it was
/// let go.
class KeyRepeats::Signs {
public:
    int releasedKey = 0;
    quint64 releasedAt = 0;
};

KeyRepeats::KeyRepeats() : signs_(std::make_unique<Signs>()) {}

KeyRepeats::~KeyRepeats() = default;

void KeyRepeats::notice(const QKeyEvent& key) {
    if (key.type() == QEvent::KeyRelease) {
        signs_->releasedKey = key.key();
        signs_->releasedAt = key.timestamp();
        return;
    }
    held_ = key.isAutoRepeat() || (signs_->releasedAt != 0 && key.key() == signs_->releasedKey &&
                                   key.timestamp() == signs_->releasedAt);
}
