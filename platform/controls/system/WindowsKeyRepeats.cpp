#include "controls/system/KeyRepeats.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QKeyEvent>

#include <windows.h>

/// The message of a key says whether it was down before. Qt takes a key for held down whose letting
/// go went to another's window, as of a key that has closed a dialog or brought up one of the
/// system's; and it dates keys when it gets them, several in one moment after some work.
class KeyRepeats::Signs final : public QAbstractNativeEventFilter {
public:
    Signs() { QCoreApplication::instance()->installNativeEventFilter(this); }

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
        const auto* const sent = static_cast<const MSG*>(message);
        if (sent->message == WM_KEYDOWN || sent->message == WM_SYSKEYDOWN) {
            key_ = static_cast<quint32>(sent->wParam);
            wasDown_ = (HIWORD(sent->lParam) & KF_REPEAT) != 0;
        }
        return false;
    }

    [[nodiscard]] bool isHeld(const QKeyEvent& key) const {
        return key.nativeVirtualKey() == key_ ? wasDown_ : key.isAutoRepeat();
    }

private:
    quint32 key_ = 0;
    bool wasDown_ = false;
};

KeyRepeats::KeyRepeats() : signs_(std::make_unique<Signs>()) {}

KeyRepeats::~KeyRepeats() = default;

void KeyRepeats::notice(const QKeyEvent& key) {
    if (key.type() != QEvent::KeyRelease)
        held_ = signs_->isHeld(key);
}
