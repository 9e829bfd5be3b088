#pragma once

#include <functional>
#include <memory>

/// The system's request that the program ends: the machine is switched off, the session closed, or
/// somebody wants it so. It is told where the program looks at its events, and the time that is
/// left then is short.
///
/// Make it after the application; one at a time.
class EndOfSession {
public:
    explicit EndOfSession(std::function<void()> told);
    ~EndOfSession();
    EndOfSession(const EndOfSession&) = delete;
    EndOfSession& operator=(const EndOfSession&) = delete;

private:
    class Listener;
    std::unique_ptr<Listener> listener_;
};
