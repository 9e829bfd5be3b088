#pragma once

#include "jet/disk/File.h"
#include "jet/page/Format.h"

#include <array>
#include <optional>

namespace jet {

/// The 256 pairs of bytes in page 0 by which those who write a file tell each other of it: pair n
/// is user n's, pair 0 that of who has the file alone. Each is a little-endian number:
///
///   0x0000          the user is writing a transaction at this moment, or died doing so
///   0x0001          the user met a damaged page
///   0x0100 and up   grows by one with each transaction that the user has written
///
/// Whoever compares all of them with an older copy knows whether anything has been written since.
class CommitPairs {
public:
    static constexpr std::size_t kUsers = 256;
    /// One of the pairs, among them.
    [[nodiscard]] static constexpr Field<std::uint16_t> pair(std::size_t user) noexcept {
        return {Field<std::uint16_t>::size * user};
    }
    static constexpr std::size_t kBytes = Field<std::uint16_t>::size * kUsers;
    static constexpr std::uint16_t kWriting = 0x0000;
    static constexpr std::uint16_t kDamaged = 0x0001;
    static constexpr std::uint16_t kFirst = 0x0100;

    CommitPairs() = default;
    explicit CommitPairs(std::span<const std::byte, kBytes> bytes);
    /// As they stand in the file. @throws Error{io}.
    CommitPairs(const File& file, const Format& format);

    [[nodiscard]] std::span<const std::byte, kBytes> bytes() const noexcept { return bytes_; }
    [[nodiscard]] std::uint16_t operator[](std::size_t user) const noexcept;
    void set(std::size_t user, std::uint16_t value) noexcept;
    /// The lowest user whose pair has the value.
    [[nodiscard]] std::optional<std::size_t> find(std::uint16_t value) const noexcept;
    [[nodiscard]] bool operator==(const CommitPairs& other) const noexcept;

    /// Writes one pair, and no byte else, and returns when the disk has it.
    static void write(File& file, const Format& format, std::size_t user, std::uint16_t value);
    /// What follows a value when its user has written.
    [[nodiscard]] static std::uint16_t after(std::uint16_t value) noexcept;

private:
    std::array<std::byte, kBytes> bytes_{};
};

} // namespace jet
