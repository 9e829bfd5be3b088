#pragma once

#include "jet/disk/File.h"

namespace jet {

/// The files that stations keep beside a database, under names that follow from its name: there may
/// be anything under such a name, put there by anybody. It is looked at without following a link
/// and without waiting for anybody, and used only if it is a regular file of that one name. All
/// accounts that may use the database may use them, whoever has made them.
namespace side {

/// So often is tried again what others have undone meanwhile.
inline constexpr int kMostRounds = 100;

/// The file that is there; nothing where there is none.
/// @throws Error{readOnly, io} saying what is there instead, or why it can't be opened.
[[nodiscard]] std::optional<File> find(const std::filesystem::path& path, bool forWriting,
                                       Disk& disk);
/// The same of one that is known to be there. @throws Error{notFound} too.
[[nodiscard]] File open(const std::filesystem::path& path, bool forWriting, Disk& disk);

/// Makes the file, nothing in it yet.
/// @throws Error{exists, readOnly, full, io}.
[[nodiscard]] File make(const std::filesystem::path& path, Disk& disk);

enum class Holds : std::uint8_t {
    data, ///< pages of the database: nobody may read them who mayn't read that
    names ///< locks and names of machines: who may read the database must be able to lock
};
/// Gives `file` the rights of the database, as far as we may, and those of reading and writing to
/// whoever owns it. Where the database's owner can't be its owner too, he may still use it, if it
/// holds nothing secret.
void share(File& file, const File& database, Holds what) noexcept;

} // namespace side

} // namespace jet
