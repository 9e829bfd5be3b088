#include "controls/system/EndOfSession.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

/// The request comes as a signal, in the middle of anything: it is handed on through a pipe.
class EndOfSession::Listener {
public:
    explicit Listener(std::function<void()> told) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
            return; // then the system ends the program as it ends every other
        told_ = ends[1];
        notifier_ = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, std::move(told));
        for (const int signal : {SIGTERM, SIGHUP, SIGINT})
            std::signal(signal, [](int) { (void)!::write(told_, "", 1); });
    }

private:
    static inline int told_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

EndOfSession::EndOfSession(std::function<void()> told)
    : listener_(std::make_unique<Listener>(std::move(told))) {}

EndOfSession::~EndOfSession() = default;
