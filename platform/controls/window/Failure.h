#pragma once

#include <QObject>

#include <exception>
#include <functional>

/// Where every exception of a window ends. Qt forbids an exception to leave a slot or an event
/// handler, so whatever runs a handler runs it through guarded(); what the handler threw goes to
/// the one failure handler that the program sets at start-up: it says once what failed and, unless
/// that can be tried again, ends the program.
///
/// While the failure handler is at work (its message box lets events through), and while handlers
/// are paused, no other handler runs: nothing works on with half-done data.

using FailureHandler = std::function<void(std::exception_ptr)>;

/// Sets the one failure handler. Without one, a failure ends the program by std::terminate.
/// @return the handler set before, so that a test can put it back.
FailureHandler setFailureHandler(FailureHandler handler);

/// Hands `failure` to the failure handler.
void endWithReport(const std::exception_ptr& failure);

/// Whether the failure handler is at work.
[[nodiscard]] bool isFailing() noexcept;

/// While one lives guarded() runs nothing: for who lets windows be painted in the middle of work.
class HandlersPaused {
public:
    HandlersPaused() noexcept;
    HandlersPaused(const HandlersPaused&) = delete;
    HandlersPaused& operator=(const HandlersPaused&) = delete;
    ~HandlersPaused();
    [[nodiscard]] static bool anyLives() noexcept;
};

/// Runs `work`; what it throws ends in endWithReport().
/// @return whether it ran to its end.
template <class Work>
bool guarded(Work&& work) {
    if (isFailing() || HandlersPaused::anyLives())
        return false;
    try {
        work();
        return true;
    } catch (...) {
        endWithReport(std::current_exception());
        return false;
    }
}

/// The same for what nobody has asked for, such as figures that are kept up with: that it can't be
/// done is told by whatever is on show then, and breaks in on nobody's work.
/// @return whether it ran to its end.
template <class Work>
bool quietly(Work&& work) {
    if (isFailing() || HandlersPaused::anyLives())
        return false;
    try {
        work();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// Connects a signal to a private member function of a window, under the guard. The handler may
/// take fewer arguments than the signal has.
///
///     connectGuarded(mnusair, &QAction::triggered, this, &MDICheques::mnusair_Click);
template <class Sender, class Signal, class Self, class... Args>
void connectGuarded(Sender* sender, Signal signal, Self* self, void (Self::*handler)(Args...)) {
    QObject::connect(sender, signal, self, [self, handler](Args... args) {
        guarded([&] { (self->*handler)(args...); });
    });
}
