#pragma once

#include "jet/share/Presence.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace jet {

/// The state of the file that we know, as the commit pairs tell it: as long as they are the same
/// nobody has written, and what is remembered of the file holds.
class Snapshot {
public:
    /// Which pages of the file have become others, as far as that can be told.
    using Changed = std::optional<std::vector<PageNo>>;
    /// Reads the journal for it.
    using TellChanged = std::function<Changed()>;
    using Forget = std::function<void(const TellChanged&)>;

    /// `forget` is called when all that is remembered of the file has to go; it may throw.
    Snapshot(Presence& presence, Forget forget) : presence_(presence), forget_(std::move(forget)) {}

    /// Whether the file's pairs are still ours. One call of the system. @throws Error{io}.
    [[nodiscard]] bool isCurrent() const { return inFile() == pairs_; }
    /// The same, relying on what was last heard as long as setHold() says; never after refuse().
    [[nodiscard]] bool holds(std::chrono::steady_clock::time_point now);
    /// Zero at first.
    void setHold(std::chrono::milliseconds time) noexcept { hold_ = time; }

    /// The state of the file from here on: as read when nothing was known of it, or by us.
    void start(const CommitPairs& pairs) noexcept { pairs_ = pairs; }
    [[nodiscard]] const CommitPairs& pairs() const noexcept { return pairs_; }
    [[nodiscard]] CommitPairs inFile() const;
    /// Whether pairs that were read at that time are ours, and so all that is remembered holds.
    [[nodiscard]] bool confirm(const CommitPairs& pairs,
                               std::chrono::steady_clock::time_point readAt) noexcept;
    /// Others have written, and are done: all that is remembered goes.
    /// @throws what `forget` does; then the old pairs stay, and the next reading tries again.
    void replace(const CommitPairs& pairs);
    /// We have written.
    void count() noexcept;
    /// Somebody has written who told nobody: all that is remembered goes before the next section.
    /// @throws Error{conflict}, always.
    [[noreturn]] void refuse();

    /// How often it was found that others have written: a moment, for writersSince().
    [[nodiscard]] std::uint64_t changesByOthers() const noexcept { return changes_; }
    /// The names of the stations that are known to have written since.
    [[nodiscard]] std::vector<std::string> writersSince(std::uint64_t changes) const;

private:
    [[nodiscard]] Changed changedSince(const CommitPairs& known) const;
    void noteWriters(const CommitPairs& before);

    struct Writer {
        std::uint64_t changes; ///< as of when it was noticed
        std::string name;      ///< as of then: another may have the number later
    };

    Presence& presence_;
    Forget forget_;
    CommitPairs pairs_;
    bool overtaken_ = false; ///< see refuse()
    std::uint64_t changes_ = 1;
    std::map<std::size_t, Writer> writers_; ///< by user
    std::chrono::steady_clock::time_point heard_{};
    std::chrono::milliseconds hold_{};
};

} // namespace jet
