#pragma once

#include "jet/Disk.h"
#include "jet/Types.h"
#include "jet/Unfinished.h"

#include <functional>
#include <vector>

namespace jet {

/// A file that is being made under a name of its own, beside the one it is for. Gone with what may
/// lie beside it when this object goes, or the program (see Unfinished), unless it has got its
/// name. What a program that was killed has left of one is in nobody's way, since the next one has
/// another name, and goes when the next one is made for the same target.
class UnnamedFile {
public:
    /// The file itself is made by whoever writes it.
    explicit UnnamedFile(const std::filesystem::path& target, Disk& disk = Disk::system());
    ~UnnamedFile();
    UnnamedFile(const UnnamedFile&) = delete;
    UnnamedFile& operator=(const UnnamedFile&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
    [[nodiscard]] Disk& disk() const noexcept { return disk_; }
    /// Gives the file, complete and synced, its name, in one step and for good. What has the name
    /// is replaced.
    /// @throws Error{io, readOnly, full}; see hasName().
    void takeName();
    /// Whether it has got its name, so that the power alone can take it back.
    [[nodiscard]] bool hasName() const;

    /// Whether a file's name is one of those given by this class.
    [[nodiscard]] static bool isOne(const std::filesystem::path& path);

private:
    std::filesystem::path target_;
    std::filesystem::path path_;
    Disk& disk_;
    Unfinished unfinished_;
    Unfinished journal_;
    Unfinished lockFile_;
};

/// The bytes of one file into a new one, synced, which gets the rights of `like` before there is
/// anything in it.
/// @return whether it could get all of them.
/// @throws Error{notFound, readOnly, full, io}.
bool copyFile(const std::filesystem::path& from, const UnnamedFile& to,
              const std::filesystem::path& like);
/// @throws also Error{exists}.
bool copyFile(const std::filesystem::path& from, const std::filesystem::path& to,
              const std::filesystem::path& like, Disk& disk);

/// A file, or what lay beside it, that was being made for another when its program ended, or that
/// still is.
struct LeftPart {
    std::filesystem::path path;
    bool dead; ///< surely: its program was of this machine, and runs no more
};
/// Those made for `target`, beside it.
[[nodiscard]] std::vector<LeftPart> partsOf(const std::filesystem::path& target,
                                            Disk& disk = Disk::system());

/// @throws Error{exists} if there is something at `path`.
void requireAbsent(const std::filesystem::path& path, Disk& disk);

/// A database file at one moment, to be compared with itself later.
class FileState {
public:
    /// @throws Error{notFound, io}.
    FileState(const std::filesystem::path& path, Disk& disk);
    friend bool operator==(const FileState&, const FileState&) = default;

private:
    Bytes head_; ///< the first page: those at work in the file leave their marks there
    std::uint64_t size_ = 0;
    std::int64_t changedAt_ = 0;
};

/// Calls `read` for the file at `path`; whether nobody has changed it meanwhile.
[[nodiscard]] bool unchangedWhile(const std::filesystem::path& path,
                                  const std::function<void()>& read, Disk& disk = Disk::system());

} // namespace jet
