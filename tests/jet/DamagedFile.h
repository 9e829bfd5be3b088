#pragma once

#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/page/DataPage.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <vector>

/// A small file made by the engine, closed, and open to surgery byte by byte. It holds
///   "Cheques": numbered key, name and client indexed, date, memo; rows of every kind: moved to
///   another
///              page, with a memo in the row, in one part, in a chain;
///   "Outra":   a few rows;
///   "Larga":   a definition of two pages.
class DamagedFile {
public:
    explicit DamagedFile(jet::Version version);

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
    [[nodiscard]] const jet::Format& format() const noexcept { return format_; }

    [[nodiscard]] std::span<std::byte> page(jet::PageNo page);
    template <class T>
    [[nodiscard]] T get(jet::PageNo at, std::size_t offset) {
        return jet::load<T>(page(at).data() + offset);
    }
    template <class T>
    void put(jet::PageNo at, std::size_t offset, std::type_identity_t<T> value) {
        jet::store<T>(page(at).data() + offset, value);
    }
    /// Where a slot's entry stands on its page, and where its bytes.
    [[nodiscard]] std::size_t slotAt(std::size_t slot) const {
        return format_.dataPage.slot(slot).at;
    }
    [[nodiscard]] jet::Slot slot(jet::RowId id);
    [[nodiscard]] std::span<std::byte> bytesOf(jet::RowId id);
    /// Where a block of the definition of "Cheques" begins, on its page; where its first column's
    /// name.
    [[nodiscard]] std::size_t columnBlock(std::size_t column) const;
    [[nodiscard]] std::size_t realIndexBlock(std::size_t index);
    [[nodiscard]] std::size_t logicalIndexBlock(std::size_t index);
    [[nodiscard]] std::size_t columnNames() const { return columnBlock(cheques.columns.size()); }
    /// The commit pair of a user (see CommitPairs.h).
    void putPair(std::size_t user, std::uint16_t value) {
        put<std::uint16_t>(jet::PageNo{0}, format_.header.commitPairs.at + 2 * user, value);
    }
    void setBit(jet::RowId map, jet::PageNo page, bool on);
    void resize(std::size_t bytes) { bytes_.resize(bytes); }
    /// An empty page at the end, in use and nobody's.
    jet::PageNo addPage();
    /// The page says that it has so many slots; those it hasn't got are deleted ones.
    void addSlots(jet::PageNo page, std::uint16_t count);
    /// Takes all damage back.
    void restore() { bytes_ = sound_; }

    /// Changes made by the engine's own means, for damage that is sound byte by byte.
    template <class Change>
    void withDatabase(Change&& change) {
        save();
        {
            jet::Database database(path_);
            change(database);
        }
        reload();
    }

    void save() const;
    /// Saves, and checks.
    [[nodiscard]] jet::Report check() const;

    // The anatomy of the sound file.
    jet::TableDefinition cheques;
    jet::TableDefinition other;
    jet::TableDefinition wide;
    std::vector<jet::PageNo> pages;                ///< data pages of "Cheques"
    std::vector<jet::RowId> rows;                  ///< all rows of "Cheques"
    jet::RowId plain, inRow, single, chain, moved; ///< some of them
    jet::RowId singlePart;                         ///< where the content of `single` is
    std::vector<jet::RowId> chainParts;
    jet::PageNo otherPage{}; ///< the data page of "Outra"
    /// Where the memo's definition is in the rows `single` and `chain`.
    std::size_t singleField = 0;
    std::size_t chainField = 0;

private:
    void make(jet::Version version);
    void study();
    void reload();

    TemporaryFolder folder_;
    std::filesystem::path path_;
    const jet::Format& format_;
    std::vector<std::byte> bytes_;
    std::vector<std::byte> sound_;
};

/// A report's findings, a line each.
[[nodiscard]] std::string listed(const jet::Report& report);
