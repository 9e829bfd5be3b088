#pragma once

#include "jet/Database.h"
#include "jet/database/UnitOfWork.h"
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
    const Collation& textOrder; ///< of texts that no column orders
    TextSettings texts;
    std::optional<Hindrance> readOnly; ///< why it was opened only for reading
    std::optional<std::string> damage; ///< that a table's own check has found last
    Pager pager;
    PageAllocator pages;
    std::optional<Sharing> sharing;       ///< leaves before the file is closed
    std::map<std::string, Entry> catalog; ///< by folded name
    /// Tables that the file has no more: whoever holds one is told so, as long as it is open.
    std::vector<std::unique_ptr<Table>> lost;
    UnitOfWork work; ///< ends before the pager

    /// Of a file that nobody else knows: Sharing comes with share().
    Parts(std::filesystem::path where, Header head, TextSettings textSettings, File file,
          bool writable)
        : path(std::move(where)), header(std::move(head)),
          textOrder(Collation::closest(header.version, header.order)), texts(textSettings),
          pager(std::move(file), formatOf(header.version), writable), pages(pager), work(pager) {}

    /// `onChange` is called when another has written, after all pages have been forgotten.
    void share(bool mayWrite, std::function<void()> onChange);
    /// Takes a table out of use.
    void lose(Entry& entry, const Error& why);
    /// All that the operator must know of the opening; looks around the file the first time.
    [[nodiscard]] const std::optional<std::string>& told() noexcept;
    /// Why no table can be changed, or nothing: the one answer to whoever asks.
    [[nodiscard]] std::optional<Hindrance> hindrance(Presence::Look look) {
        return readOnly ? readOnly : sharing ? sharing->hindrance(look) : std::nullopt;
    }
    /// @throws what keeps the file from being changed as long as it is open.
    void requireWritable() {
        if (const auto why = hindrance(Presence::Look::known))
            throw why->error();
    }

    /// One change, or several that belong together.
    /// @throws as requireWritable() and UnitOfWork::Change.
    [[nodiscard]] UnitOfWork::Change change() {
        requireWritable();
        return UnitOfWork::Change(work);
    }

private:
    bool lookedAround_ = false;
    std::optional<std::string> advice_; ///< on the folder, once we have looked around
    std::optional<std::string> told_;
};

} // namespace jet
