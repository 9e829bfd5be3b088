#pragma once

#include <functional>
#include <windows.h>

namespace jet::windows {

/// The system's error as the number that this machine's own errors of files have elsewhere
/// (errno.h); EIO for what has none.
[[nodiscard]] int numberOf(DWORD error) noexcept;

/// `call` answers true if done. Tried again, for a bounded time, while something that soon ends is
/// in the way: a program that looks at every new file, an indexer, a name whose file is just going.
/// 0, or the error number.
[[nodiscard]] int patiently(const std::function<bool()>& call);

} // namespace jet::windows
