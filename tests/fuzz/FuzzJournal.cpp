// Puts a journal beside a database file, either of them as no program of ours would leave it, and
// recovers. What a journal says may only be done if it proves to be that of the file: fuzzed
// journals get whole checksums, so that the proof itself is put to the test. It is held against a
// second, slower reading of the same rules.
//
// An input is
//   1  bit 0: Jet 4; bits 1-3: the state of the commit pair; bit 4: the database is opened, too;
//      bit 5: the journal's bytes are damaged behind their checksums; bit 6: the journal is the
//      input's rest and nothing else
//   1  how many sectors in 256 hold their new content; 4: which
//   1  how many of the new pages the file has
// then changes of eight bytes each: kind (1), place (3), value (4).
#include "fuzz/Fuzz.h"
#include "jet/Error.h"
#include "jet/ShopWork.h"
#include "jet/page/Header.h"
#include "jet/share/Journal.h"
#include "jet/share/Recovery.h"

#include <algorithm>

using namespace jet;

namespace {

constexpr int kMostChanges = 48;
constexpr std::size_t kUser = 1;

struct Entry {
    std::uint32_t page;
    Bytes before; ///< empty for a page new at the end
    Bytes after;
};

/// A transaction of a shop's: the file before and after, and what its journal says.
struct Base {
    const Format& format;
    Bytes before;
    Bytes after;
    JournalHeader header;
    std::vector<Entry> entries;
};

std::span<const std::byte> pageOf(const Bytes& file, std::uint32_t page, const Format& format) {
    return std::span(file).subspan(std::size_t{page} * format.pageSize, format.pageSize);
}

CommitPairs pairsOf(const Bytes& file, const Format& format) {
    return CommitPairs(
        std::span(file).subspan(format.header.commitPairs.at).first<CommitPairs::kBytes>());
}

void setPair(Bytes& file, const Format& format, std::size_t user, std::uint16_t value) {
    store<std::uint16_t>(file.data() + format.header.commitPairs.at + 2 * user, value);
}

Base makeBase(Version version) {
    MemoryDisk disk(emptyShop(version));
    ShopWork work(5);
    {
        Database file(kPath, on(disk));
        for (int i = 1; i <= 4; ++i)
            work.step(file, i);
    }
    Base base{formatOf(version), disk.image().at(kPath), {}, {}, {}};
    const Format& format = base.format;
    {
        Database file(kPath, on(disk));
        DatabaseTransaction all(file);
        file.table("Cheques").insert(Row{Value(), std::int64_t{1}, Value(), Value(), Value(),
                                         std::string(3 * format.pageSize, 'o'), true});
        all.commit();
    }
    base.after = disk.image().at(kPath);
    JournalHeader& header = base.header;
    header.pairs = pairsOf(base.before, format);
    header.user = kUser;
    header.announced = pairsOf(base.after, format)[kUser];
    header.fileBefore = static_cast<std::uint32_t>(base.before.size() / format.pageSize);
    header.fileAfter = static_cast<std::uint32_t>(base.after.size() / format.pageSize);
    header.identity = Journal::identityOf(File(kPath, File::Mode::read, disk), format);
    for (std::uint32_t page = 1; page < header.fileAfter; ++page) {
        const auto after = pageOf(base.after, page, format);
        Entry entry{page, {}, Bytes(after.begin(), after.end())};
        if (page < header.fileBefore) {
            const auto before = pageOf(base.before, page, format);
            if (std::ranges::equal(before, after))
                continue;
            entry.before.assign(before.begin(), before.end());
        }
        base.entries.push_back(std::move(entry));
    }
    header.changes = static_cast<std::uint32_t>(base.entries.size());
    return base;
}

const Base& baseOf(Version version) {
    static const Base jet3 = makeBase(Version::jet3);
    static const Base jet4 = makeBase(Version::jet4);
    return version == Version::jet3 ? jet3 : jet4;
}

/// The file as the input has it, and its journal before it is written.
struct Case {
    Bytes file;
    JournalHeader header;
    std::vector<Entry> entries;
};

/// The file somewhere between before and after.
Case readCase(const Base& base, std::uint8_t choice, fuzz::Input& input) {
    const Format& format = base.format;
    const unsigned share = input.byte();
    std::minstd_rand which(input.number(4) + 1);
    Case found{base.before, base.header, base.entries};
    const std::uint32_t added = input.byte() % (base.header.fileAfter - base.header.fileBefore + 1);
    found.file.resize(std::size_t{base.header.fileBefore + added} * format.pageSize);
    for (const Entry& entry : base.entries)
        for (std::size_t at = 0; at < format.pageSize; at += Journal::kSector) {
            const std::size_t place = std::size_t{entry.page} * format.pageSize + at;
            if (place < found.file.size() && (share == 255 || which() % 256 < share))
                std::copy_n(entry.after.begin() + static_cast<std::ptrdiff_t>(at), Journal::kSector,
                            found.file.begin() + static_cast<std::ptrdiff_t>(place));
        }
    switch (choice >> 1 & 7) {
    case 0: // not yet begun
        break;
    case 1:
        setPair(found.file, format, kUser, base.header.announced);
        break;
    case 2: // another program, since
        setPair(found.file, format, kUser, 0x0777);
        break;
    case 3:
        setPair(found.file, format, kUser, CommitPairs::kDamaged);
        break;
    case 4: // two at once
        setPair(found.file, format, 0, CommitPairs::kWriting);
        [[fallthrough]];
    default:
        setPair(found.file, format, kUser, CommitPairs::kWriting);
    }
    return found;
}

void change(Case& subject, const Format& format, fuzz::Input& input) {
    const std::uint8_t kind = input.byte();
    const std::uint32_t place = input.number(3);
    const std::uint32_t value = input.number(4);
    JournalHeader& header = subject.header;
    Entry* const entry =
        subject.entries.empty() ? nullptr : &subject.entries[place % subject.entries.size()];
    switch (kind % 12) {
    case 0:
        header.user = value;
        break;
    case 1:
        header.announced = static_cast<std::uint16_t>(value);
        break;
    case 2:
        header.fileBefore += static_cast<std::uint32_t>(static_cast<std::int8_t>(value));
        break;
    case 3:
        header.fileAfter += static_cast<std::uint32_t>(static_cast<std::int8_t>(value));
        break;
    case 4:
        header.changes += static_cast<std::uint32_t>(static_cast<std::int8_t>(value));
        break;
    case 5:
        header.identity ^= value;
        break;
    case 6:
        header.pairs.set(place % CommitPairs::kUsers, static_cast<std::uint16_t>(value));
        break;
    case 7:
        if (entry)
            entry->page = value % 2 == 0 ? value / 2 : entry->page + 1;
        break;
    case 8:
        if (entry && !entry->before.empty())
            entry->before[value % format.pageSize] ^= std::byte{1};
        break;
    case 9:
        if (entry)
            entry->after[value % format.pageSize] ^= std::byte{1};
        break;
    case 10:
        if (entry) {
            if (value % 2 == 0)
                subject.entries.erase(subject.entries.begin() + (entry - subject.entries.data()));
            else
                std::swap(*entry, subject.entries[value / 2 % subject.entries.size()]);
            header.changes = static_cast<std::uint32_t>(subject.entries.size());
        }
        break;
    default: // what somebody else has written into the file
        subject.file[place % subject.file.size()] ^= static_cast<std::byte>(value | 1);
    }
}

/// The journal with checksums of its own.
Bytes journalOf(const Case& subject, const Format& format) {
    MemoryDisk disk({
        {kPath, subject.file}
    });
    const File database(kPath, File::Mode::read, disk);
    ChangedPages changed{subject.header.fileBefore, subject.header.fileAfter, {}, {}};
    for (const Entry& entry : subject.entries)
        changed.pages.push_back({static_cast<PageNo>(entry.page), entry.after});
    const Bytes none(format.pageSize);
    std::size_t asked = 0;
    changed.before = [&](PageNo page) -> std::span<const std::byte> {
        while (subject.entries[asked].page != number(page))
            ++asked;
        const Bytes& before = subject.entries[asked++].before;
        return before.empty() ? none : before;
    };
    Journal journal(database, format);
    journal.write(subject.header, changed);
    return disk.image().at(kJournal);
}

/// What recovery has to leave of the file, if the journal came as it was written: the rules of
/// Recovery.h, one after the other.
Bytes expected(const Case& subject, const Format& format) {
    const JournalHeader& header = subject.header;
    const Bytes& file = subject.file;
    MemoryDisk disk({
        {kPath, file}
    });
    if (header.user >= CommitPairs::kUsers || header.fileBefore == 0 ||
        header.fileBefore > header.fileAfter || header.changes != subject.entries.size() ||
        header.identity != Journal::identityOf(File(kPath, File::Mode::read, disk), format))
        return file;
    CommitPairs pairs = pairsOf(file, format);
    if (pairs[header.user] != CommitPairs::kWriting || header.announced == CommitPairs::kWriting)
        return file;
    pairs.set(header.user, header.pairs[header.user]);
    if (pairs != header.pairs)
        return file;
    const std::size_t oldSize = std::size_t{header.fileBefore} * format.pageSize;
    const std::size_t newSize = std::size_t{header.fileAfter} * format.pageSize;
    if (file.size() < oldSize || file.size() > newSize)
        return file;
    Bytes undone = file;
    std::vector<std::uint32_t> isNew;
    std::uint32_t last = 0;
    for (const Entry& entry : subject.entries) {
        if (entry.page <= last || entry.page >= header.fileAfter)
            return file;
        last = entry.page;
        const bool hasBefore = entry.page < header.fileBefore;
        if (!hasBefore)
            isNew.push_back(entry.page);
        const Bytes before = entry.before.empty() ? Bytes(format.pageSize) : entry.before;
        const std::size_t at = std::size_t{entry.page} * format.pageSize;
        for (std::size_t i = 0; i < format.pageSize && at < file.size(); i += Journal::kSector) {
            const auto there = std::span(file).subspan(at + i, Journal::kSector);
            if (std::ranges::equal(there, std::span(entry.after).subspan(i, Journal::kSector)))
                continue;
            if (hasBefore &&
                !std::ranges::equal(there, std::span(before).subspan(i, Journal::kSector)))
                return file;
        }
        if (hasBefore)
            std::ranges::copy(before, undone.begin() + static_cast<std::ptrdiff_t>(at));
    }
    if (isNew.size() != header.fileAfter - header.fileBefore)
        return file;
    undone.resize(oldSize);
    setPair(undone, format, header.user, header.announced);
    return undone;
}

/// The bytes of the file afterwards are those expected, and the journal is used up or put aside.
void requireLeft(const MemoryDisk& disk, const Bytes& file, const Bytes& journal,
                 const Recovery& recovery) {
    const DiskImage left = disk.image();
    fuzz::require(left.at(kPath) == file);
    if (recovery.outcome == Recovery::Outcome::none)
        return;
    fuzz::require(!left.contains(kJournal));
    if (recovery.outcome == Recovery::Outcome::setAside)
        fuzz::require(left.at(recovery.aside.string()) == journal && !recovery.reason.empty());
}

/// As the program would: it says why it can't use the file, or the file is as it has to be.
void openDatabase(MemoryDisk& disk, const Bytes& given, const Bytes& file, const Format& format) {
    try {
        Database database(kPath, on(disk));
        fuzz::require(disk.image().at(kPath) == file);
        if (!database.readOnlyReason()) {
            fuzz::require(!hasJournal(kPath, disk));
            fuzz::require(!pairsOf(file, format).find(CommitPairs::kWriting));
        }
        (void)contentOf(database);
    } catch (const Error& error) {
        fuzz::require(*error.what() != '\0');
        const Bytes left = disk.image().at(kPath);
        fuzz::require(left == given || left == file);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t choice = input.byte();
    const Base& base = baseOf((choice & 1) != 0 ? Version::jet4 : Version::jet3);
    const Format& format = base.format;
    Case subject = readCase(base, choice, input);
    const bool damaged = (choice & 0x20) != 0;
    const bool raw = (choice & 0x40) != 0;
    for (int i = 0; !raw && !damaged && i < kMostChanges && !input.empty(); ++i)
        change(subject, format, input);

    Bytes journal;
    Bytes whole;
    Bytes left = subject.file;
    if (raw) {
        const std::string_view rest = input.rest();
        journal.resize(rest.size());
        std::ranges::copy(std::as_bytes(std::span(rest)), journal.begin());
    } else {
        journal = journalOf(subject, format);
        whole = journal;
        while (damaged && !input.empty()) {
            const std::uint8_t kind = input.byte();
            const std::size_t at = input.number(3) % journal.size();
            const auto value = static_cast<std::byte>(input.byte());
            if (kind % 8 == 0)
                journal.resize(std::max<std::size_t>(at, 1));
            else
                journal[at] = value;
        }
        if (journal == whole)
            left = expected(subject, format);
    }

    MemoryDisk disk({
        {kPath,    subject.file},
        {kJournal, journal     }
    });
    if ((choice & 0x10) != 0) {
        openDatabase(disk, subject.file, left, format);
        return 0;
    }
    File file(kPath, File::Mode::readWrite, disk);
    try {
        const Recovery recovery = recover(file, format);
        requireLeft(disk, left, journal, recovery);
    } catch (const Error& error) { // another version's, and needed
        fuzz::require(error.code() == Errc::readOnly && journal != whole);
        fuzz::require(disk.image().at(kPath) == subject.file &&
                      disk.image().at(kJournal) == journal);
    }
    return 0;
}
