#include "controls/system/EndOfSession.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <utility>
#include <windows.h>

/// The request comes to every window, as a message; that it is meant, with the second one.
class EndOfSession::Listener final : public QAbstractNativeEventFilter {
public:
    explicit Listener(std::function<void()> told) : told_(std::move(told)) {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
        const auto* const sent = static_cast<const MSG*>(message);
        if (sent->message == WM_ENDSESSION && sent->wParam != FALSE)
            told_();
        return false;
    }

private:
    std::function<void()> told_;
};

EndOfSession::EndOfSession(std::function<void()> told)
    : listener_(std::make_unique<Listener>(std::move(told))) {}

EndOfSession::~EndOfSession() = default;
