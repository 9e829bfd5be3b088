#pragma once

#include "jet/page/ChangedPages.h"
#include "jet/page/CommitPairs.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace jet {

/// What a journal says of the transaction that it can undo.
struct JournalHeader {
    std::uint32_t user{};       ///< whose pair tells how far the transaction has come
    std::uint16_t announced{};  ///< the pair when the transaction is complete
    std::uint32_t fileBefore{}; ///< pages of the file
    std::uint32_t fileAfter{};
    std::uint32_t changes{};
    std::uint64_t identity{}; ///< of the file: identityOf()
    CommitPairs pairs;        ///< of the file before the transaction
};

/// The file beside a database (same name and "-journal") that can undo the transaction being
/// written: the old content of every page that the transaction changes. Written whole, in one pass,
/// and on the disk before the first byte of the database changes; empty when none is being written.
///
///   offset  size
///        0     8  "JETUNDO2"; zeros: empty, and what follows is of a transaction that is finished
///        8     4  page size
///       12     4  user
///       16     4  announced pair
///       20     4  pages of the file before
///       24     4  pages of the file after
///       28     4  changes that follow
///       32     8  identity of the file
///       40    16  zero
///       56     8  checksum() of the 56 bytes before
///       64   512  the commit pairs before
///   then for each change, in page order, every page new at the end of the file among them:
///              4  page number
///              4  1 if the old page follows, 0 for a page new at the end of the file
///      4 for each 512 bytes of a page: low half of the checksum() of its new content
///      page size  the old page
///   at the end
///              8  checksum() of everything before, part by part: the first 576 bytes, then of
///                 each change what is ahead of the old page, and the old page
///
/// The file stays, emptied by zeros over its beginning, while the database is open: then a
/// transaction costs no change of names in the folder, and who copies the file meanwhile learns
/// which pages the last one has changed. It is removed when the last one leaves.
class Journal {
public:
    static constexpr std::size_t kSector = 512; ///< what a disk writes whole or not at all

    [[nodiscard]] static std::filesystem::path pathFor(const std::filesystem::path& database);
    /// Of the first page, commit pairs aside: what a file keeps all its life.
    [[nodiscard]] static std::uint64_t identityOf(const File& database, const Format& format);
    [[nodiscard]] static std::uint32_t sectorSum(std::span<const std::byte> sector) noexcept;

    /// What lies where a database's journal would.
    struct Found {
        enum class What : std::uint8_t {
            nothing, ///< or an empty journal
            written, ///< by a transaction
            unusable ///< we may not use it, or it is no file of ours: `why` says it, in Portuguese
        };
        What what = What::nothing;
        std::string why;
    };
    /// `forWriting`: whether transactions are to be written with it.
    [[nodiscard]] static Found find(const std::filesystem::path& database, Disk& disk,
                                    bool forWriting = false);

    Journal(const File& database, const Format& format);

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

    /// Writes a transaction's journal; the disk has it, name and all, on return.
    /// @throws Error{full, io, readOnly}, what `changed.before` throws: then the journal is empty.
    void write(const JournalHeader& header, const ChangedPages& changed);
    /// Makes it empty. Needn't have reached the disk on return: see Committer.
    /// @throws Error{io}.
    void empty();
    /// Takes the file away, if there is one; where that isn't allowed (a folder in which each
    /// account may only remove its own files) it is made empty, for good.
    /// @throws Error{io, readOnly}.
    static void remove(const std::filesystem::path& journal, Disk& disk);
    void remove();

    struct Entry {
        PageNo page;
        std::span<const std::byte> before; ///< empty for a page new at the end
        std::span<const std::byte> sums;   ///< one for each sector of the new page
        [[nodiscard]] std::uint32_t sum(std::size_t sector) const noexcept {
            constexpr std::size_t kSize = Field<std::uint32_t>::size;
            return load(sums.data(), Field<std::uint32_t>{kSize * sector});
        }
    };
    /// Reads the journal that is there.
    class Reader {
    public:
        /// `finished`: what an empty journal says of the transaction before; of no use for undoing.
        enum class Of : std::uint8_t { unfinished, finished };
        /// @throws Error{notFound, io}.
        Reader(const std::filesystem::path& path, const Format& format, Disk& disk,
               Of of = Of::unfinished);
        /// Nothing if there is none, or the first bytes aren't a journal's of this format.
        [[nodiscard]] const std::optional<JournalHeader>& header() const noexcept {
            return header_;
        }
        /// What its first bytes say that it is, or was to become.
        enum class Kind : std::uint8_t { stranger, journal, ofAnotherVersion };
        [[nodiscard]] Kind kind() const noexcept { return kind_; }
        /// Calls `visit` for each change. False, when all have been visited, if the bytes aren't
        /// those that were written: it was cut off.
        bool readAll(const std::function<void(const Entry&)>& visit);

    private:
        [[nodiscard]] static Kind kindOf(std::span<const std::byte> bytes) noexcept;
        [[nodiscard]] Bytes prefix() const;

        File file_;
        const Format& format_;
        Of of_;
        std::optional<JournalHeader> header_;
        Kind kind_ = Kind::stranger;
    };

    /// Which pages the last transaction has changed, if it is all that was written between two
    /// states of a file: its empty journal tells. Nothing if that can't be told, or they are more
    /// than `most`.
    [[nodiscard]] static std::optional<std::vector<PageNo>>
    changesBetween(const CommitPairs& before, const CommitPairs& after,
                   const std::filesystem::path& database, const Format& format, Disk& disk,
                   std::uint32_t most);

private:
    void open();
    [[nodiscard]] bool openOrMake();

    const File& database_;
    std::filesystem::path path_;
    const Format& format_;
    Disk& disk_;
    std::optional<File> file_;
    bool nameOnDisk_ = false;
};

} // namespace jet
