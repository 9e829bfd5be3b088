#pragma once

#include "jet/Committer.h"
#include "jet/Database.h"
#include "jet/Header.h"
#include "jet/LockFile.h"

namespace jet {

/// What an open file consists of; shared by Database and its tables, of no interest to others.
struct Database::Parts {
    struct Entry {
        std::string name;
        PageNo definition;
        bool user;
        std::unique_ptr<Table> table; ///< made when first asked for
    };

    std::filesystem::path path;
    Header header;
    TextSettings texts;
    LockFile lock; ///< outlives the pager: what is written is written under it
    std::optional<std::string> readOnly;
    std::optional<std::string> notice; ///< of what recovery found
    Pager pager;
    std::optional<Committer> committer; ///< of a file that may be changed
    PageAllocator pages;
    std::map<std::string, Entry> catalog; ///< by folded name
    bool explicitTransaction = false;
    bool catalogChanged = false; ///< by the open transaction
    std::optional<std::chrono::steady_clock::time_point> pendingSince;

    Parts(std::filesystem::path where, Header head, TextSettings textSettings, File file,
          bool writable)
        : path(std::move(where)), header(std::move(head)), texts(textSettings),
          lock(path, file.disk()), pager(std::move(file), formatOf(header.version), writable),
          pages(pager) {}

    /// Runs one change: all of it happens or nothing. Outside an explicit transaction it becomes
    /// part of what the next flush writes.
    template <class Change>
    auto statement(Change&& change) {
        flushIfDue();
        if (!pager.inTransaction()) {
            pager.begin();
            pendingSince = std::chrono::steady_clock::now();
        }
        Pager::Statement undo(pager);
        if constexpr (std::is_void_v<decltype(change())>) {
            change();
            undo.keep();
        } else {
            auto result = change();
            undo.keep();
            return result;
        }
    }

    void flush() {
        if (!pendingSince)
            return;
        pager.commit();
        pendingSince.reset();
    }
    void flushIfDue() {
        if (pendingSince && std::chrono::steady_clock::now() - *pendingSince >= kLongestPending)
            flush();
    }

private:
    static constexpr std::chrono::milliseconds kLongestPending{500};
};

} // namespace jet
