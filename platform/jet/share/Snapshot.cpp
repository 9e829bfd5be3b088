#include "jet/share/Snapshot.h"

#include "jet/share/Journal.h"

#include <algorithm>
#include <utility>

namespace jet {

CommitPairs Snapshot::inFile() const { return {presence_.database(), presence_.format()}; }

bool Snapshot::holds(std::chrono::steady_clock::time_point now) {
    if (overtaken_)
        return false;
    if (now - heard_ < hold_)
        return true;
    presence_.database().lookAgain();
    if (!isCurrent())
        return false;
    heard_ = now;
    return true;
}

bool Snapshot::confirm(const CommitPairs& pairs,
                       std::chrono::steady_clock::time_point readAt) noexcept {
    if (pairs != pairs_ || overtaken_)
        return false;
    heard_ = readAt;
    return true;
}

void Snapshot::replace(const CommitPairs& pairs) {
    const CommitPairs known = std::exchange(pairs_, pairs);
    try {
        forget_([&] { return changedSince(known); });
        overtaken_ = false;
    } catch (...) {
        pairs_ = known;
        throw;
    }
    noteWriters(known);
}

Snapshot::Changed Snapshot::changedSince(const CommitPairs& known) const {
    constexpr std::uint32_t kMost = 256; // beyond it to read of them costs more than it spares
    if (overtaken_)
        return std::nullopt;
    const File& file = presence_.database();
    return Journal::changesBetween(known, pairs_, file.path(), presence_.format(), file.disk(),
                                   kMost);
}

void Snapshot::count() noexcept {
    const unsigned user = presence_.lock().user();
    pairs_.set(user, CommitPairs::after(pairs_[user]));
}

void Snapshot::refuse() {
    overtaken_ = true;
    throw Error(Errc::conflict,
                "Outro programa gravou no arquivo do banco de dados sem avisar as estações. Nada "
                "foi gravado aqui; confira os dados e repita a alteração. Se isso se repetir, "
                "descubra que programa é esse e feche-o antes de continuar.");
}

void Snapshot::noteWriters(const CommitPairs& before) {
    ++changes_;
    const LockFile& lock = presence_.lock();
    for (std::size_t user = 1; presence_.isShared() && user < CommitPairs::kUsers; ++user)
        if (before[user] != pairs_[user] && user != lock.user())
            writers_[user] = {changes_, lock.nameOf(static_cast<unsigned>(user))};
}

std::vector<std::string> Snapshot::writersSince(std::uint64_t changes) const {
    std::vector<std::string> names;
    for (const auto& [user, writer] : writers_)
        if (writer.changes > changes && std::ranges::find(names, writer.name) == names.end())
            names.push_back(writer.name);
    return names;
}

} // namespace jet
