#include "jet/share/Journal.h"

#include "jet/Error.h"
#include "jet/disk/SideFile.h"
#include "jet/value/Checksum.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace jet {

namespace {

/// The name and, last, the version: another one's sums or fields may be others.
constexpr std::string_view kMagic = "JETUNDO2";

// The header: what kMagic is followed by.
constexpr Field<std::uint32_t> kPageSize{8};
constexpr Field<std::uint32_t> kUser{12};
constexpr Field<std::uint32_t> kAnnounced{16};
constexpr Field<std::uint32_t> kFileBefore{20};
constexpr Field<std::uint32_t> kFileAfter{24};
constexpr Field<std::uint32_t> kChanges{28};
constexpr Field<std::uint64_t> kIdentity{32};
constexpr Stretch kZeros{40, 16};
constexpr Field<std::uint64_t> kHeaderSum{56}; ///< of all before it
constexpr std::size_t kHeader = 64;
static_assert(fill(kMagic.size(), kHeader,
                   {kPageSize, kUser, kAnnounced, kFileBefore, kFileAfter, kChanges, kIdentity,
                    kZeros, kHeaderSum}));
constexpr std::size_t kPrefix = kHeader + CommitPairs::kBytes;

/// What each change begins with; a checksum for each sector of the page follows.
struct EntryLayout {
    static constexpr Field<PageNo> page{0};
    static constexpr Field<std::uint32_t> hasBefore{4};
    static constexpr std::size_t sums = hasBefore.end();
    [[nodiscard]] static constexpr Field<std::uint32_t> sum(std::size_t sector) noexcept {
        return {sums + Field<std::uint32_t>::size * sector};
    }
    [[nodiscard]] static std::size_t size(const Format& format) noexcept {
        return sum(format.pageSize / Journal::kSector).at;
    }
};
/// What the journal ends with: the checksum of everything.
constexpr Field<std::uint64_t> kSum{0};

/// Written and read in portions of this size.
constexpr std::size_t kPortion = std::size_t{256} << 10;
/// A journal that has grown beyond this is cut, not kept for the next transaction.
constexpr std::uint64_t kLargestKept = std::uint64_t{1} << 20;

/// Writes a file from its beginning, in portions.
class PortionWriter {
public:
    explicit PortionWriter(File& file) : file_(file) { buffer_.reserve(kPortion); }

    void put(std::span<const std::byte> bytes) {
        sum_ = checksum(bytes, sum_);
        if (buffer_.size() + bytes.size() > kPortion)
            flush();
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    }
    void finish() {
        std::array<std::byte, kSum.size> sum{};
        store(sum.data(), kSum, sum_);
        put(sum);
        flush();
    }

private:
    void flush() {
        file_.write(at_, buffer_);
        at_ += buffer_.size();
        buffer_.clear();
    }
    File& file_;
    Bytes buffer_;
    std::uint64_t at_ = 0;
    std::uint64_t sum_ = 0;
};

std::uint64_t headerSum(const Bytes& bytes) {
    return checksum(std::span(bytes).first(kHeaderSum.at));
}

Bytes prefixOf(const JournalHeader& header, const Format& format) {
    Bytes bytes(kPrefix);
    std::memcpy(bytes.data(), kMagic.data(), kMagic.size());
    store(bytes.data(), kPageSize, static_cast<std::uint32_t>(format.pageSize));
    store(bytes.data(), kUser, header.user);
    store(bytes.data(), kAnnounced, header.announced);
    store(bytes.data(), kFileBefore, header.fileBefore);
    store(bytes.data(), kFileAfter, header.fileAfter);
    store(bytes.data(), kChanges, header.changes);
    store(bytes.data(), kIdentity, header.identity);
    store(bytes.data(), kHeaderSum, headerSum(bytes));
    std::ranges::copy(header.pairs.bytes(), bytes.begin() + kHeader);
    return bytes;
}

} // namespace

std::filesystem::path Journal::pathFor(const std::filesystem::path& database) {
    std::filesystem::path path = database;
    path += "-journal";
    return path;
}

std::uint64_t Journal::identityOf(const File& database, const Format& format) {
    Bytes page(format.pageSize);
    database.read(0, page);
    const auto pairs = page.begin() + static_cast<std::ptrdiff_t>(format.header.commitPairs.at);
    std::fill(pairs, pairs + CommitPairs::kBytes, std::byte{});
    return checksum(page);
}

std::uint32_t Journal::sectorSum(std::span<const std::byte> sector) noexcept {
    return static_cast<std::uint32_t>(checksum(sector));
}

Journal::Journal(const File& database, const Format& format)
    : database_(database), path_(pathFor(database.path())), format_(format),
      disk_(database.disk()) {}

Journal::Found Journal::find(const std::filesystem::path& database, Disk& disk, bool forWriting) {
    using enum Found::What;
    const std::filesystem::path path = pathFor(database);
    try {
        const std::optional<File> file = side::find(path, false, disk);
        if (!file)
            return {};
        std::array<std::byte, 1> first{};
        if (file->size() > 0)
            file->read(0, first);
        if (first[0] != std::byte{})
            return {written, ""};
        if (forWriting)
            static_cast<void>(side::find(path, true, disk));
        return {};
    } catch (const Error& error) {
        return {unusable, error.what()};
    }
}

void Journal::open() {
    // Somebody tidying the folder may have taken it away.
    if (file_ && file_->isAt(path_))
        return;
    file_.reset();
    nameOnDisk_ = false;
    for (int round = 0; round < side::kMostRounds; ++round)
        if (openOrMake())
            return;
    throw Error(Errc::io,
                "O arquivo \"" + path_.string() + "\" não se deixa abrir: a pasta muda sem parar.");
}

bool Journal::openOrMake() {
    file_ = side::find(path_, true, disk_);
    if (file_)
        return true;
    try {
        file_ = side::make(path_, disk_);
    } catch (const Error& error) {
        if (error.code() != Errc::exists)
            throw;
        return false;
    }
    side::share(*file_, database_, side::Holds::data);
    return true;
}

void Journal::write(const JournalHeader& header, const ChangedPages& changed) {
    open();
    try {
        PortionWriter writer(*file_);
        writer.put(prefixOf(header, format_));
        Bytes head(EntryLayout::size(format_));
        for (const ChangedPages::Page& page : changed.pages) {
            const bool hasBefore = number(page.number) < changed.fileBefore;
            store(head.data(), EntryLayout::page, page.number);
            store(head.data(), EntryLayout::hasBefore, hasBefore ? 1 : 0);
            for (std::size_t i = 0; i < format_.pageSize / kSector; ++i)
                store(head.data(), EntryLayout::sum(i),
                      sectorSum(page.content.subspan(i * kSector, kSector)));
            writer.put(head);
            if (hasBefore)
                writer.put(changed.before(page.number));
        }
        writer.finish();
        file_->sync();
        if (!nameOnDisk_) {
            File::syncFolderOf(disk_, path_);
            nameOnDisk_ = true;
        }
    } catch (...) {
        // A disk without room gets back what the journal took.
        try {
            file_->truncate(0);
        } catch (...) {
            // As it is it does no harm: no pair says that it is needed.
            file_.reset();
        }
        throw;
    }
}

void Journal::empty() {
    if (!file_)
        open();
    if (file_->size() > kLargestKept) {
        file_->truncate(0);
    } else {
        const std::array<std::byte, kMagic.size()> zeros{};
        file_->write(0, zeros);
    }
}

void Journal::remove(const std::filesystem::path& journal, Disk& disk) {
    try {
        File::remove(disk, journal);
    } catch (const Error& error) {
        if (error.code() != Errc::readOnly)
            throw;
        File file = side::open(journal, true, disk);
        file.write(0, std::array<std::byte, kHeader>{});
        file.sync();
    }
}

void Journal::remove() {
    file_.reset();
    if (disk_.exists(path_))
        remove(path_, disk_);
}

std::optional<std::vector<PageNo>> Journal::changesBetween(const CommitPairs& before,
                                                           const CommitPairs& after,
                                                           const std::filesystem::path& database,
                                                           const Format& format, Disk& disk,
                                                           std::uint32_t most) {
    try {
        Reader journal(pathFor(database), format, disk, Reader::Of::finished);
        const auto& header = journal.header();
        if (!header || header->pairs != before || header->changes > most)
            return std::nullopt;
        CommitPairs made = header->pairs;
        made.set(header->user, header->announced);
        std::vector<PageNo> changed;
        if (made != after ||
            !journal.readAll([&](const Entry& entry) { changed.push_back(entry.page); }))
            return std::nullopt;
        return changed;
    } catch (const Error&) {
        return std::nullopt; // there is none, or none that could tell
    }
}

Journal::Reader::Reader(const std::filesystem::path& path, const Format& format, Disk& disk, Of of)
    : file_(side::open(path, false, disk)), format_(format), of_(of) {
    const Bytes bytes = prefix();
    kind_ = kindOf(bytes);
    if (kind_ != Kind::journal || bytes.size() < kPrefix ||
        load(bytes.data(), kHeaderSum) != headerSum(bytes) ||
        load(bytes.data(), kPageSize) != format.pageSize)
        return;
    JournalHeader header;
    header.user = load(bytes.data(), kUser);
    header.announced = static_cast<std::uint16_t>(load(bytes.data(), kAnnounced));
    header.fileBefore = load(bytes.data(), kFileBefore);
    header.fileAfter = load(bytes.data(), kFileAfter);
    header.changes = load(bytes.data(), kChanges);
    header.identity = load(bytes.data(), kIdentity);
    header.pairs = CommitPairs(std::span(bytes).subspan<kHeader, CommitPairs::kBytes>());
    if (header.user < CommitPairs::kUsers && header.fileBefore > 0 &&
        header.fileBefore <= header.fileAfter)
        header_ = header;
}

Journal::Reader::Kind Journal::Reader::kindOf(std::span<const std::byte> bytes) noexcept {
    constexpr std::size_t kName = kMagic.size() - 1;
    if (bytes.size() < kMagic.size() || std::memcmp(bytes.data(), kMagic.data(), kName) != 0)
        return Kind::stranger;
    return bytes[kName] == std::byte{kMagic.back()} ? Kind::journal : Kind::ofAnotherVersion;
}

/// As it was written: of an empty journal the beginning is missing.
Bytes Journal::Reader::prefix() const {
    Bytes bytes(std::min<std::uint64_t>(file_.size(), kPrefix));
    file_.read(0, bytes);
    const auto begin = std::span(bytes).first(std::min(bytes.size(), kMagic.size()));
    if (begin.size() == kMagic.size() && of_ == Of::finished &&
        std::ranges::all_of(begin, [](auto b) { return b == std::byte{}; }))
        std::memcpy(begin.data(), kMagic.data(), kMagic.size());
    return bytes;
}

bool Journal::Reader::readAll(const std::function<void(const Entry&)>& visit) {
    const std::uint64_t size = file_.size();
    std::uint64_t at = kPrefix;
    std::uint64_t sum = checksum(prefix());
    const auto take = [&](std::span<std::byte> into) {
        if (into.size() > size - at)
            return false;
        file_.read(at, into);
        at += into.size();
        sum = checksum(into, sum);
        return true;
    };
    Bytes head(EntryLayout::size(format_));
    Bytes page(format_.pageSize);
    const std::uint32_t oldEnd = header_->fileBefore;
    std::uint32_t next = 1; // the lowest page that may follow
    for (std::uint32_t i = 0; i < header_->changes; ++i) {
        if (!take(head))
            return false;
        const std::uint32_t changed = number(load(head.data(), EntryLayout::page));
        const bool hasBefore = load(head.data(), EntryLayout::hasBefore) == 1;
        // Of the new pages, which undoing cuts off, all are there.
        const bool inOrder = hasBefore ? changed >= next : changed == std::max(next, oldEnd);
        if (!inOrder || changed >= header_->fileAfter || hasBefore != (changed < oldEnd) ||
            (hasBefore && !take(page)))
            return false;
        visit({static_cast<PageNo>(changed),
               hasBefore ? std::span<const std::byte>(page) : std::span<const std::byte>(),
               std::span(head).subspan(EntryLayout::sums)});
        next = changed + 1;
    }
    if (std::max(next, oldEnd) != header_->fileAfter)
        return false;
    const std::uint64_t expected = sum;
    Bytes trailer(kSum.size);
    return take(trailer) && load(trailer.data(), kSum) == expected;
}

} // namespace jet
