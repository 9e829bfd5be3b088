#include "jet/Backup.h"

#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/Error.h"
#include "jet/FileSteps.h"
#include "jet/copy/LiveCopy.h"
#include "jet/copy/Rotation.h"
#include "jet/disk/File.h"
#include "jet/page/Header.h"
#include "jet/share/FileAlone.h"
#include "jet/share/Recovery.h"
#include "jet/share/Sharing.h"
#include "jet/system/System.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace jet {

namespace {

/// The byte of a copy, far beyond its end, that is locked while it is being made.
constexpr std::uint64_t kAtWork = 0x7FFF0000;
constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60 * 1'000'000'000; ///< see Disk::Entry

/// Until it is closed nobody takes the file for one that was left behind.
void markAtWork(File& file) {
    try {
        static_cast<void>(file.tryLock(Disk::Lock::exclusive, kAtWork));
    } catch (const Error&) { // NOLINT(bugprone-empty-catch)
        // A disk without locks: there nobody can tell that it was left behind, either.
    }
}

void requireSound(const UnnamedFile& copy, const std::string& what,
                  const std::stop_token& stop = {}) {
    const Report report = check(copy.path(), copy.disk(), stop);
    const auto error =
        std::ranges::find(report.findings, Finding::Severity::error, &Finding::severity);
    if (error != report.findings.end())
        throw Error(Errc::corrupt, what + error->sentence + ".");
}

std::tm localNow() { return sys::localTime(std::time(nullptr)); }

std::string formatted(const char* format, const std::tm& time) {
    char text[64];
    return {text, std::strftime(text, sizeof text, format, &time)};
}

/// A name for the file that a copy replaces: the first free one of this second.
std::filesystem::path replacedName(const std::filesystem::path& database, Disk& disk) {
    const std::string stem =
        database.stem().string() + formatted("-substituido-%Y-%m-%d-%H%M%S", localNow());
    for (int i = 1;; ++i) {
        std::filesystem::path name = Disk::pathOf(stem + (i > 1 ? "-" + std::to_string(i) : ""));
        name += database.extension();
        name = database.parent_path() / name;
        if (!disk.exists(name))
            return name;
    }
}

/// The same file under a second name, for good; where the disk knows no such thing, a copy of it.
void keepAs(const std::filesystem::path& file, const std::filesystem::path& name, Disk& disk) {
    try {
        File::link(disk, file, name);
    } catch (const Error&) {
        UnnamedFile copy(name, disk);
        copyFile(file, copy, file);
        copy.takeName();
    }
}

/// What a station that died has left half done.
void undoCutOff(const std::filesystem::path& database, Disk& disk) {
    try {
        recover(database, disk);
    } catch (const Error&) { // NOLINT(bugprone-empty-catch)
        // The file is too damaged for that, or can't be written: see keepJournal().
    }
}

/// The journal that couldn't be used goes with the file it belongs to. Only once another has that
/// file's name: were it moved before, a power cut could leave the old file without it. Beside the
/// new one it does nothing meanwhile, no pair of which says "writing".
void keepJournal(const std::filesystem::path& database, const std::filesystem::path& kept,
                 Disk& disk) {
    try {
        if (hasJournal(database, disk))
            File::rename(disk, Journal::pathFor(database), Journal::pathFor(kept));
    } catch (const Error&) { // NOLINT(bugprone-empty-catch)
        // Then the next opening puts it aside.
    }
}

} // namespace

Backup::Backup(const std::filesystem::path& database, Today today, Disk& disk)
    : database_(disk.resolved(database)), folder_(database_.parent_path() / "backup"),
      today_(std::move(today)), disk_(disk) {}

std::chrono::year_month_day Backup::localToday() {
    using namespace std::chrono;
    const std::tm now = localNow();
    return year(now.tm_year + 1900) / (now.tm_mon + 1) / now.tm_mday;
}

// ---- the folder -------------------------------------------------------------------------------

std::filesystem::path Backup::copyOf(std::chrono::year_month_day day) const {
    char text[32];
    (void)std::snprintf(text, sizeof text, "-%04d-%02u-%02u", static_cast<int>(day.year()),
                        static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    std::filesystem::path name = database_.stem();
    name += text;
    name += database_.extension();
    return folder_ / name;
}

std::optional<std::chrono::year_month_day> Backup::dayOf(const std::string& name) const {
    const std::string stem = database_.stem().string();
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    if (!name.starts_with(stem) ||
        std::sscanf(name.c_str() + stem.size(), "-%4d-%2u-%2u", &year, &month, &day) != 3)
        return std::nullopt;
    const std::chrono::year_month_day found =
        std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day);
    return found.ok() && copyOf(found).filename() == Disk::pathOf(name) ? std::optional(found)
                                                                        : std::nullopt;
}

std::filesystem::path Backup::notePath() const {
    return folder_ / Disk::pathOf(database_.stem().string() + "-com-erros.txt");
}

/// Those with a copy's name, ascending.
std::vector<Disk::Entry> Backup::entries() const {
    std::vector<Disk::Entry> found = File::list(disk_, folder_);
    std::erase_if(found, [&](const Disk::Entry& entry) { return !dayOf(entry.name); });
    std::ranges::sort(found, {}, &Disk::Entry::name); // the names sort as the days do
    return found;
}

std::vector<std::filesystem::path> Backup::copies() const {
    std::vector<std::filesystem::path> found;
    for (const Disk::Entry& entry : entries())
        found.push_back(folder_ / entry.path());
    return found;
}

// ---- what copies are worth --------------------------------------------------------------------

bool Backup::isSound(const Disk::Entry& entry, const std::stop_token& stop) {
    if (!entry.isFile)
        return false;
    const auto known = checked_.find(entry.name);
    if (known != checked_.end() && known->second.entry == entry)
        return known->second.sound;
    const bool sound = check(folder_ / entry.path(), disk_, stop).sound();
    checked_[entry.name] = {entry, sound};
    return sound;
}

void Backup::remember(const std::filesystem::path& copy, bool sound) {
    for (const Disk::Entry& entry : entries())
        if (folder_ / entry.path() == copy)
            checked_[entry.name] = {entry, sound};
}

/// Whether a file of today's name is today's copy. It is looked at closely once.
bool Backup::isTodays(const std::filesystem::path& copy, const std::stop_token& stop) {
    for (const Disk::Entry& entry : entries()) {
        if (folder_ / entry.path() != copy)
            continue;
        const auto known = checked_.find(entry.name);
        const bool again = known != checked_.end() && known->second.entry == entry;
        return isSound(entry, stop) && (again || !isOld(copy));
    }
    return false;
}

/// Whether a copy has a name from a day when the clock was wrong: one of a day before holds more,
/// which the database holds still (an older copy may have been brought back meanwhile).
bool Backup::isOld(const std::filesystem::path& copy) const {
    const auto mine = extentOf(copy, disk_, true);
    std::optional<Extent> most;
    for (const std::filesystem::path& other : copies()) {
        if (other >= copy)
            break;
        const auto its = extentOf(other, disk_, true);
        if (its && mine < its && (!most || its < most))
            most = its;
    }
    return most && most <= extentOf(database_, disk_, false);
}

std::optional<std::filesystem::path> Backup::newestSound(const std::stop_token& stop) {
    std::vector<Disk::Entry> found = entries();
    const std::filesystem::path today = copyOf(today_());
    const auto toCome = std::ranges::find_if(
        found, [&](const Disk::Entry& entry) { return folder_ / entry.path() > today; });
    std::rotate(found.begin(), toCome, found.end()); // (ranges::rotate: not with clang 14)
    for (auto entry = found.rbegin(); entry != found.rend(); ++entry)
        if (isSound(*entry, stop))
            return folder_ / entry->path();
    return std::nullopt;
}

// ---- what is known of errors ------------------------------------------------------------------

std::optional<std::string> Backup::damage() const {
    constexpr std::size_t kLongest = 4096;
    if (!disk_.exists(notePath()))
        return std::nullopt;
    std::string text;
    try {
        const File note(notePath(), File::Mode::read, disk_);
        text.resize(std::min<std::uint64_t>(note.size(), kLongest));
        note.read(0, std::as_writable_bytes(std::span(text)));
    } catch (const Error& error) {
        if (error.code() == Errc::notFound)
            return std::nullopt;
        return "O banco de dados tem erros.";
    }
    text.erase(text.find_last_not_of(" \r\n") + 1);
    return text;
}

void Backup::noteDamage(const std::string& sentence) noexcept {
    try {
        if (damage() == sentence)
            return;
        File::makeFolder(disk_, folder_);
        UnnamedFile note(notePath(), disk_);
        File file(note.path(), File::Mode::createNew, disk_);
        static_cast<void>(disk_.copyRights(database_, note.path()));
        const std::string line = sentence + '\n';
        file.write(0, std::as_bytes(std::span(line)));
        file.sync();
        note.takeName();
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // Then those who come later meet it for themselves.
    }
}

/// Whether a program died writing in the database, or met a damaged page, and said so in it.
bool Backup::isSuspect() const {
    File database(database_, File::Mode::read, disk_);
    return Sharing(database, formatOf(readHeader(database).version), false, [](const auto&) {})
        .isSuspect();
}

// ---- making one -------------------------------------------------------------------------------

std::optional<std::filesystem::path> Backup::makeIfDue(const std::stop_token& stop) {
    const std::filesystem::path copy = copyOf(today_());
    const bool due = !isTodays(copy, stop);
    try {
        if (!due && !damage() && !isSuspect())
            return std::nullopt;
        make(copy, due, stop);
    } catch (const Error& error) {
        if (error.code() == Errc::corrupt || error.code() == Errc::unsupported)
            noteDamage(error.what());
        throw;
    }
    if (disk_.exists(notePath()))
        File::remove(disk_, notePath());
    if (!due)
        return std::nullopt;
    rotate();
    return copy;
}

/// `keep`: the copy gets its name; otherwise it was made to be checked.
void Backup::make(const std::filesystem::path& copy, bool keep, const std::stop_token& stop) {
    File::makeFolder(disk_, folder_);
    UnnamedFile unnamed(copy, disk_);
    File file(unnamed.path(), File::Mode::createNew, disk_);
    markAtWork(file);
    static_cast<void>(
        disk_.copyRights(database_, unnamed.path())); // before there is anything in it
    LiveCopy::into(file, database_, stop);
    requireSound(unnamed, "O banco de dados tem erros e não foi copiado: ", stop);
    if (!keep)
        return;
    unnamed.takeName();
    remember(copy, true);
}

void Backup::rotate() const {
    std::vector<DatedCopy> dated;
    std::int64_t now = 0;
    const std::filesystem::path today = copyOf(today_());
    for (const Disk::Entry& entry : entries()) {
        // What doesn't open is no copy, and none of ours to remove.
        const auto extent =
            entry.isFile ? extentOf(folder_ / entry.path(), disk_, true) : std::nullopt;
        if (extent)
            dated.push_back({folder_ / entry.path(), *dayOf(entry.name), *extent});
        if (folder_ / entry.path() == today)
            now = entry.changedAt;
    }
    for (const std::filesystem::path& copy : superfluous(std::move(dated), today_()))
        static_cast<void>(disk_.remove(copy));
    removeDeadParts(now);
}

/// What is left of a program that was ended while it made a copy: nobody has it open, nor has had
/// it for a day by the clock of the disk, on which it is `now`.
void Backup::removeDeadParts(std::int64_t now) const {
    for (const Disk::Entry& entry : File::list(disk_, folder_)) {
        const std::filesystem::path part = folder_ / entry.path();
        if (!entry.isFile || !UnnamedFile::isOne(part) || entry.changedAt > now - kDay)
            continue;
        try {
            const bool atWork = File(part, File::Mode::read, disk_).isHeldAlone(kAtWork);
            if (!atWork)
                static_cast<void>(disk_.remove(part));
        } catch (const Error&) { // NOLINT(bugprone-empty-catch)
            // Whose it is can't be told: it stays.
        }
    }
}

// ---- putting one back -------------------------------------------------------------------------

namespace {

/// The copy in the database's place; the name that this has then.
std::filesystem::path replace(const std::filesystem::path& database, UnnamedFile& copy,
                              Disk& disk) {
    std::filesystem::path kept = replacedName(database, disk);
    try {
        keepAs(database, kept, disk);
        copy.takeName();
    } catch (...) {
        // With the copy in place it is the only one left of what was there.
        if (!copy.hasName() && disk.exists(kept))
            static_cast<void>(disk.remove(kept));
        throw;
    }
    keepJournal(database, kept, disk);
    return kept;
}

/// A file that can't have the rights of the database doesn't take its place.
[[noreturn]] void wouldShutOut(const std::string& what, const std::filesystem::path& database,
                               const std::string& again) {
    throw Error(Errc::readOnly,
                what +
                    ", porque o arquivo teria outro dono, outro grupo ou outras permissões do que "
                    "o banco de dados \"" +
                    database.string() + "\", e outras contas ficariam sem acesso a ele. " + again +
                    " com a conta que é dona do banco de dados, ou como administrador.");
}

} // namespace

std::optional<std::filesystem::path> restore(const std::filesystem::path& copy,
                                             const std::filesystem::path& name, Disk& disk) {
    const std::filesystem::path database = disk.resolved(name); // a link to it stays one
    const FileAlone alone(database, disk);
    UnnamedFile unnamed(database, disk);
    const bool replaces = disk.exists(database);
    if (!copyFile(copy, unnamed, replaces ? database : copy) && replaces)
        wouldShutOut("A cópia não foi restaurada", database, "Restaure-a");
    requireSound(unnamed, "A cópia tem erros e não foi restaurada: ");
    if (!replaces) {
        unnamed.takeName();
        return std::nullopt;
    }
    undoCutOff(database, disk);
    return replace(database, unnamed, disk);
}

std::filesystem::path changeAside(const std::filesystem::path& name,
                                  const std::function<void(Database&)>& change, Disk& disk) {
    const std::filesystem::path database = disk.resolved(name);
    const FileAlone alone(database, disk);
    File(database, File::Mode::readWrite, disk).sync(); // who may not write mustn't replace it
    undoCutOff(database, disk);
    UnnamedFile unnamed(database, disk);
    if (!copyFile(database, unnamed, database))
        wouldShutOut("O banco de dados não foi alterado", database, "Repita");
    {
        Database::Options options;
        options.disk = &disk;
        Database copy(unnamed.path(), options);
        change(copy);
        copy.flush();
    }
    requireSound(unnamed, "O banco de dados tem erros e não foi alterado: ");
    return replace(database, unnamed, disk);
}

} // namespace jet
