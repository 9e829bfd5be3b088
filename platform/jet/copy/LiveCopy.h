#pragma once

#include "jet/disk/File.h"

#include <stop_token>

namespace jet {

/// Copies a database that others are at work in, and keeps nobody from saving: it is read in parts,
/// and between two parts whoever wants to writes. What has been written meanwhile is copied again;
/// the journal of the last transaction tells which pages that is, and the commit pairs whether it
/// was only that one. So what is left to be copied gets less however often a shop saves, until it
/// fits into one part: that one completes the copy, all of it being of one state then.
///
/// Where the pages can't be told (a foreign program writes; a station that writes without a pause)
/// the copy begins anew, a few times. At last all the rest is read at once, if that takes nobody's
/// time: kMostAtOnce.
struct LiveCopy {
    static constexpr std::size_t kPart = std::size_t{256} << 10;
    static constexpr std::size_t kMostAtOnce = std::size_t{4} << 20;

    /// Fills `target`, which is empty, and syncs it.
    /// @throws Error{locked} if the database never stood still long enough, Error{cancelled} soon
    ///         after `stop` asks for it; Error{notFound, unsupported, corrupt} for what isn't a
    ///         database; Error{io, full}.
    static void into(File& target, const std::filesystem::path& database,
                     const std::stop_token& stop);
};

} // namespace jet
