#pragma once

#include "jet/Disk.h"

#include <chrono>
#include <optional>
#include <vector>
#include <windows.h>

namespace jet::windows {

/// A handle of the system's, closed when this goes.
class Owned {
public:
    explicit Owned(HANDLE handle = INVALID_HANDLE_VALUE) noexcept : handle_(handle) {}
    Owned(Owned&& other) noexcept;
    Owned& operator=(Owned&& other) noexcept;
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { close(); }
    void close() noexcept;
    [[nodiscard]] bool isOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const noexcept { return handle_; }

private:
    HANDLE handle_;
};

/// A path as the system takes it whatever its length.
[[nodiscard]] std::wstring forCalls(const std::filesystem::path& path);

/// What `path` itself names, a link not being followed: a handle to ask it, or none.
[[nodiscard]] Owned lookAt(const std::filesystem::path& path) noexcept;

/// When it was changed, on Disk's clock.
[[nodiscard]] std::int64_t changeOf(const FILETIME& time) noexcept;

/// An open file. A database (`keepsClosed`) is open for reading only: the handle for writing is
/// there from the first write to the next sync, or as long as it is claimed, so that a program of
/// another maker that asks for the file alone is refused, and one that writes is noticed.
class FileHandle final : public Disk::Handle {
public:
    /// `flags` are those of CreateFile() for a handle that writes.
    FileHandle(std::filesystem::path path, Owned file, bool writes, bool keepsClosed, DWORD flags)
        : path_(std::move(path)), file_(std::move(file)), writes_(writes),
          keepsClosed_(keepsClosed), flags_(flags) {}

    std::int64_t size() override;
    std::int64_t read(std::uint64_t offset, std::span<std::byte> into) override;
    std::int64_t write(std::uint64_t offset, std::span<const std::byte> from) override;
    int truncate(std::uint64_t size) override;
    int sync() override;
    int claimWriting() override;
    void endWriting() noexcept override;
    int lock(Disk::Lock kind, std::uint64_t offset, std::uint64_t count) override;
    std::int64_t firstHeld(Disk::Lock meeting, std::uint64_t offset, std::uint64_t count) override;
    std::int64_t changedAt() override;
    bool isAt(const std::filesystem::path& path) override;
    int attributes(Disk::Attributes& into) override;
    int setOwner(std::uint32_t owner, std::uint32_t group) override;
    int setMode(std::uint32_t mode) override;
    [[nodiscard]] bool remembers() const noexcept override { return false; }

private:
    /// A lock that this handle holds: the system has no other way to tell them from those of
    /// others.
    struct Held {
        Disk::Lock kind;
        std::uint64_t from;
        std::uint64_t end;
    };
    /// Opens the file for writing, once more. 0, or an error number.
    int openWriter(DWORD share);
    /// The handle that writes, made if need be; or null and an error number.
    HANDLE writer(int& error);
    /// What to give to LockFileEx; true if nobody else is in the way.
    bool take(Disk::Lock kind, std::uint64_t from, std::uint64_t end) const;
    void giveBack(std::uint64_t from, std::uint64_t end) const;
    /// Whether another has a lock there that one of that kind would meet; no byte of it is ours.
    bool isOthers(Disk::Lock meeting, std::uint64_t from, std::uint64_t end) const;
    /// Whether another shares what we have: ours is given back for that, for a moment.
    bool isShared(const Held& held) const;

    std::filesystem::path path_;
    Owned file_;
    Owned writer_;
    bool writes_;
    bool keepsClosed_;
    DWORD flags_;
    bool claimed_ = false;
    /// When the name it was opened by was last seen to lead to the disk that it is on.
    std::chrono::steady_clock::time_point sameDiskAt_ = std::chrono::steady_clock::now();
    std::vector<Held> held_; ///< no two meet
};

} // namespace jet::windows
