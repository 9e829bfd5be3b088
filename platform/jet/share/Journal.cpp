#include "jet/share/Journal.h"

#include "jet/Error.h"
#include "jet/disk/SideFile.h"
#include "jet/page/Checksum.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace jet {

namespace {

constexpr std::string_view kMagic = "JETUNDO1";
constexpr std::size_t kHeader = 64;
constexpr std::size_t kHeaderSum = 56;
constexpr std::size_t kPrefix = kHeader + CommitPairs::kBytes;
constexpr std::size_t kEntryHead = 8;
/// Written and read in portions of this size.
constexpr std::size_t kPortion = std::size_t{256} << 10;
/// A journal that has grown beyond this is cut, not kept for the next transaction.
constexpr std::uint64_t kLargestKept = std::uint64_t{1} << 20;

/// Writes a file from its beginning, in portions.
class Writer {
public:
    explicit Writer(File& file) : file_(file) { buffer_.reserve(kPortion); }

    void put(std::span<const std::byte> bytes) {
        sum_.add(bytes);
        if (buffer_.size() + bytes.size() > kPortion)
            flush();
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    }
    void finish() {
        std::array<std::byte, 8> sum{};
        store<std::uint64_t>(sum.data(), sum_.value());
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
    Checksum sum_;
};

Bytes prefixOf(const JournalHeader& header, const Format& format) {
    Bytes bytes(kPrefix);
    std::memcpy(bytes.data(), kMagic.data(), kMagic.size());
    std::size_t at = kMagic.size();
    for (const std::uint32_t number :
         {static_cast<std::uint32_t>(format.pageSize), header.user, std::uint32_t{header.announced},
          header.fileBefore, header.fileAfter, header.changes}) {
        store<std::uint32_t>(bytes.data() + at, number);
        at += 4;
    }
    store<std::uint64_t>(bytes.data() + at, header.identity);
    store<std::uint64_t>(bytes.data() + kHeaderSum,
                         Checksum::of(std::span(bytes).first(kHeaderSum)));
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
    const auto pairs = page.begin() + static_cast<std::ptrdiff_t>(format.commitPairsAt);
    std::fill(pairs, pairs + CommitPairs::kBytes, std::byte{});
    return Checksum::of(page);
}

Journal::Journal(const std::filesystem::path& database, const Format& format, Disk& disk)
    : database_(database), path_(pathFor(database)), format_(format), disk_(disk) {}

Journal::Found Journal::find(const std::filesystem::path& database, Disk& disk, bool forWriting) {
    using enum Found::What;
    const std::filesystem::path path = pathFor(database);
    try {
        const File file = side::open(path, false, disk);
        std::array<std::byte, 1> first{};
        if (file.size() > 0)
            file.read(0, first);
        if (first[0] != std::byte{})
            return {written, ""};
        if (forWriting)
            static_cast<void>(side::open(path, true, disk));
        return {};
    } catch (const Error& error) {
        if (error.code() == Errc::notFound)
            return {};
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
    try {
        file_ = side::open(path_, true, disk_);
        return true;
    } catch (const Error& error) {
        if (error.code() != Errc::notFound)
            throw;
    }
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
        Writer writer(*file_);
        writer.put(prefixOf(header, format_));
        Bytes head(kEntryHead + format_.pageSize / kSector * 4);
        for (const ChangedPages::Page& page : changed.pages) {
            const bool hasBefore = number(page.number) < changed.fileBefore;
            store<std::uint32_t>(head.data(), number(page.number));
            store<std::uint32_t>(head.data() + 4, hasBefore ? 1 : 0);
            for (std::size_t i = 0; i < format_.pageSize / kSector; ++i)
                store<std::uint32_t>(head.data() + kEntryHead + 4 * i,
                                     checksumOf(page.content.subspan(i * kSector, kSector)));
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

Journal::Reader::Reader(const std::filesystem::path& path, const Format& format, Disk& disk, Of of)
    : file_(side::open(path, false, disk)), format_(format), of_(of) {
    const Bytes bytes = prefix();
    isJournal_ = bytes.size() >= kMagic.size() &&
                 std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) == 0;
    if (!isJournal_ || bytes.size() < kPrefix ||
        load<std::uint64_t>(bytes.data() + kHeaderSum) !=
            Checksum::of(std::span(bytes).first(kHeaderSum)) ||
        load<std::uint32_t>(bytes.data() + 8) != format.pageSize)
        return;
    JournalHeader header;
    header.user = load<std::uint32_t>(bytes.data() + 12);
    header.announced = static_cast<std::uint16_t>(load<std::uint32_t>(bytes.data() + 16));
    header.fileBefore = load<std::uint32_t>(bytes.data() + 20);
    header.fileAfter = load<std::uint32_t>(bytes.data() + 24);
    header.changes = load<std::uint32_t>(bytes.data() + 28);
    header.identity = load<std::uint64_t>(bytes.data() + 32);
    header.pairs = CommitPairs(std::span(bytes).subspan<kHeader, CommitPairs::kBytes>());
    if (header.user < CommitPairs::kUsers && header.fileBefore > 0 &&
        header.fileBefore <= header.fileAfter)
        header_ = header;
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
    std::uint64_t at = 0;
    Checksum sum;
    const auto take = [&](std::span<std::byte> into) {
        if (into.size() > size - at)
            return false;
        file_.read(at, into);
        at += into.size();
        sum.add(into);
        return true;
    };
    sum.add(prefix());
    at = kPrefix;
    Bytes head(kEntryHead + format_.pageSize / kSector * 4);
    Bytes page(format_.pageSize);
    const std::uint32_t oldEnd = header_->fileBefore;
    std::uint32_t next = 1; // the lowest page that may follow
    for (std::uint32_t i = 0; i < header_->changes; ++i) {
        if (!take(head))
            return false;
        const auto changed = load<std::uint32_t>(head.data());
        const bool hasBefore = load<std::uint32_t>(head.data() + 4) == 1;
        // Of the new pages, which undoing cuts off, all are there.
        const bool inOrder = hasBefore ? changed >= next : changed == std::max(next, oldEnd);
        if (!inOrder || changed >= header_->fileAfter || hasBefore != (changed < oldEnd) ||
            (hasBefore && !take(page)))
            return false;
        visit({static_cast<PageNo>(changed),
               hasBefore ? std::span<const std::byte>(page) : std::span<const std::byte>(),
               std::span(head).subspan(kEntryHead)});
        next = changed + 1;
    }
    if (std::max(next, oldEnd) != header_->fileAfter)
        return false;
    const std::uint64_t expected = sum.value();
    Bytes trailer(8);
    return take(trailer) && load<std::uint64_t>(trailer.data()) == expected;
}

} // namespace jet
