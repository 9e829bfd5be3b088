#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace jet {

/// An open file of the operating system. Everything fails with Error{io}, naming the file and the
/// system's reason; reading past the end is a failure too.
class File {
public:
    enum class Mode { read, readWrite, createNew };

    /// @throws Error{notFound}, Error{exists} (createNew), Error{readOnly} (no permission to
    /// write),
    ///         Error{io}.
    File(std::filesystem::path path, Mode mode);
    ~File();
    File(File&& other) noexcept;
    File& operator=(File&& other) = delete;
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
    [[nodiscard]] std::uint64_t size() const;
    void read(std::uint64_t offset, std::span<std::byte> into) const;
    /// @throws Error{full} when the disk has no room.
    void write(std::uint64_t offset, std::span<const std::byte> from);
    void truncate(std::uint64_t size);
    /// Returns when what was written has reached the disk.
    void sync();

    /// Takes the one byte at `offset` for this open file alone, until close. False if another has
    /// it.
    [[nodiscard]] bool tryLock(std::uint64_t offset);
    /// Whether another open file has any of `count` bytes from `offset`.
    [[nodiscard]] bool isLockedByAnother(std::uint64_t offset, std::uint64_t count) const noexcept;
    /// Whether `path` still names this very file.
    [[nodiscard]] bool isAt(const std::filesystem::path& path) const noexcept;

private:
    std::filesystem::path path_;
    int handle_;
};

} // namespace jet
