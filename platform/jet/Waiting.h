#pragma once

#include <chrono>
#include <functional>

namespace jet {

/// Called every few hundredths of a second while the engine waits for another station, so that a
/// program can keep its window painted; in the thread that waits. It must not use a database. None
/// unless set; one for the process.
void setWaitHook(std::function<void()> hook);

/// Tries again and again, with pauses of a few thousandths of a second, until `attempt` says
/// true or the time is over; then false.
bool waitFor(const std::function<bool()>& attempt, std::chrono::milliseconds longest);
/// The same without anything to try.
void pause(std::chrono::milliseconds time);

} // namespace jet
