#pragma once

#include "jet/Database.h"
#include "jet/page/Header.h"
#include "jet/share/Sharing.h"

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
    std::optional<std::string> readOnly; ///< why it was opened only for reading
    std::optional<std::string> damage;   ///< that a table's own check has found last
    Pager pager;
    PageAllocator pages;
    std::optional<Sharing> sharing;       ///< leaves before the file is closed
    std::map<std::string, Entry> catalog; ///< by folded name
    /// Tables that the file has no more: whoever holds one is told so, as long as it is open.
    std::vector<std::unique_ptr<Table>> lost;
    bool explicitTransaction = false;
    /// Around an explicit transaction that stands on gathered changes: these stay if it is undone.
    std::optional<Pager::Statement> onGathered;
    bool gathersTransactions = false; ///< what is gathered ends with one: see commitLater()
    bool catalogChanged = false;      ///< by the open transaction
    std::optional<std::chrono::steady_clock::time_point> pendingSince;
    Tally tally;
    std::uint64_t inTransaction = 0; ///< changes of the explicit one

    /// Of a file that nobody else knows: Sharing comes with share().
    Parts(std::filesystem::path where, Header head, TextSettings textSettings, File file,
          bool writable)
        : path(std::move(where)), header(std::move(head)), texts(textSettings),
          pager(std::move(file), formatOf(header.version), writable), pages(pager) {}

    /// `onNews` is called when another has written, after all pages have been forgotten.
    void share(bool mayWrite, std::function<void()> onNews);
    /// Takes a table out of use.
    void lose(Entry& entry, const Error& why);
    /// All that the operator must know of the opening; looks around the file the first time.
    [[nodiscard]] const std::optional<std::string>& told() noexcept;
    /// Why no table can be changed at this moment.
    [[nodiscard]] std::optional<std::string> whyNotWritable() {
        return readOnly ? readOnly : sharing ? sharing->whyNotWritable() : std::nullopt;
    }

    /// One change, or several that belong together: while it lives nobody else changes the file,
    /// and what is read is the newest. Outside an explicit transaction what was changed stays ours
    /// until it is flushed.
    class Change {
    public:
        /// @throws as Pager::claim().
        explicit Change(Parts& parts);
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
        ~Change();

    private:
        Parts& parts_;
    };

    /// Runs one change: all of it happens or nothing. Outside an explicit transaction it becomes
    /// part of what the next flush writes.
    template <class Body>
    auto statement(Body&& change) {
        const Change writing(*this);
        Pager::Statement undo(pager);
        const auto keep = [&] {
            undo.keep();
            if (explicitTransaction)
                ++inTransaction;
            else
                gather(1);
        };
        if constexpr (std::is_void_v<decltype(change())>) {
            change();
            keep();
        } else {
            auto result = change();
            keep();
            return result;
        }
    }

    /// Nothing is gathered and no transaction open any more; what wasn't written is undone.
    void end() noexcept;
    /// So many more changes wait to be written.
    void gather(std::uint64_t changes);
    /// Writes the changed pages. @throws as Pager::commit().
    void commit();
    void flush();
    void flushIfDue();

private:
    void dropGathered() noexcept;
    void setAside() noexcept;

    bool lookedAround_ = false;
    std::optional<std::string> advice_; ///< on the folder, once we have looked around
    std::optional<std::string> told_;
    unsigned changes_ = 0; ///< that live, one inside the other
    bool flushing_ = false;
    bool overtaken_ = false; ///< what was gathered has been dropped, and nobody told yet
    std::chrono::steady_clock::time_point askedForWaiting_{};
};

} // namespace jet
