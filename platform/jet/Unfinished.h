#pragma once

#include <atomic>
#include <filesystem>
#include <string>

namespace jet {

/// The name of a file that this program is making, or has only for its work, and that nobody must
/// find when the program ends before its time. While one lives, removeAll() takes the file away.
class Unfinished {
public:
    explicit Unfinished(const std::filesystem::path& path);
    ~Unfinished();
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    /// For a program that a signal ends: may be called by what handles it, and nothing else of the
    /// program may go on afterwards.
    static void removeAll() noexcept;

private:
    std::string path_;
    std::atomic<const char*>* place_ = nullptr; ///< null if there are too many: then it may stay
};

} // namespace jet
