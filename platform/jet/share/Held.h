#pragma once

#include "jet/share/LockFile.h"

namespace jet {

/// Gives back one of the lock file's bytes, which is held already.
class Held {
public:
    Held(LockFile& lock, std::uint64_t what) noexcept : lock_(lock), what_(what) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { lock_.unlock(what_); }

private:
    LockFile& lock_;
    std::uint64_t what_;
};

/// Says by one of the lock file's bytes that something is waited for, unless another says it.
class Announced {
public:
    /// @throws Error{io}.
    Announced(LockFile& lock, std::uint64_t what, Disk::Lock kind) {
        if (lock.tryLock(what, kind))
            held_.emplace(lock, what);
    }

private:
    std::optional<Held> held_;
};

} // namespace jet
