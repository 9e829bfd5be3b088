#include "jet/database/DatabaseParts.h"

#include "jet/disk/FolderAdvice.h"

#include <utility>

namespace jet {

void Database::Parts::share(bool mayWrite, std::function<void()> onChange) {
    sharing.emplace(pager.file(), pager.format(), mayWrite,
                    [this, onChange = std::move(onChange)](const Snapshot::TellChanged& changed) {
                        work.overtaken();
                        pager.refresh(pager.log().isKept() ? changed() : std::nullopt);
                        onChange();
                        work.tellOvertaken();
                    });
    pager.refresh();
    pager.share(*sharing);
    work.share(*sharing);
}

const std::optional<std::string>& Database::Parts::told() noexcept {
    try {
        if (sharing && !std::exchange(lookedAround_, true))
            advice_ = adviceOn(path, pager.file().disk());
        told_ = sharing ? sharing->notice() : std::nullopt;
        if (advice_)
            told_ = told_ ? *told_ + "\n\n" + *advice_ : *advice_;
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // Without memory for a sentence there is none.
    }
    return told_;
}

void Database::Parts::lose(Entry& entry, const Error& why) {
    lost.push_back(nullptr);
    entry.table->lose(why);
    lost.back() = std::move(entry.table);
}

} // namespace jet
