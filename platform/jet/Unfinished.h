#pragma once

#include <atomic>
#include <filesystem>

namespace jet {

/// The name of a file that this program is making, or has only for its work, and that nobody must
/// find when the program ends before its time. While one lives, removeAll() takes the file away.
class Unfinished {
public:
    /// Of a name that removeAll() finds, or null.
    using Place = std::atomic<const std::filesystem::path::value_type*>;

    explicit Unfinished(const std::filesystem::path& path);
    ~Unfinished();
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    /// For a program that a signal ends: may be called by what handles it, and nothing else of the
    /// program may go on afterwards.
    static void removeAll() noexcept;

private:
    std::filesystem::path path_;
    Place* place_ = nullptr; ///< null if there are too many: then it may stay
};

} // namespace jet
