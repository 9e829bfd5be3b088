#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace jet {

/// A file that is being made under a name of its own, beside the one it is for. Gone with its lock
/// file when this object goes, unless it has got its name.
class UnnamedFile {
public:
    /// The file itself is made by whoever writes it.
    explicit UnnamedFile(const std::filesystem::path& target);
    ~UnnamedFile();
    UnnamedFile(const UnnamedFile&) = delete;
    UnnamedFile& operator=(const UnnamedFile&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
    /// Gives the file, complete and synced, its name, in one step and for good. What has the name
    /// is replaced.
    /// @throws Error{io, readOnly, full}.
    void takeName();

    /// Whether a file's name is one of those given by this class.
    [[nodiscard]] static bool isOne(const std::filesystem::path& path);

private:
    std::filesystem::path target_;
    std::filesystem::path path_;
};

/// @throws Error{exists} if there is something at `path`.
void requireAbsent(const std::filesystem::path& path);

/// Renames, replacing what is there, and returns when the disk knows.
/// @throws Error{io, readOnly, full}.
void renameForGood(const std::filesystem::path& from, const std::filesystem::path& to);

/// A database file at one moment, to be compared with itself later.
class FileState {
public:
    /// @throws Error{notFound, io}.
    explicit FileState(const std::filesystem::path& path);
    friend bool operator==(const FileState&, const FileState&) = default;

private:
    std::string head_; ///< the first page: those at work in the file leave their marks there
    std::uint64_t size_ = 0;
    std::filesystem::file_time_type written_;
};

/// Calls `read` for the file at `path`; whether nobody has changed it meanwhile.
[[nodiscard]] bool unchangedWhile(const std::filesystem::path& path,
                                  const std::function<void()>& read);

} // namespace jet
