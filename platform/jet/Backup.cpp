#include "jet/Backup.h"

#include "jet/Check.h"
#include "jet/Error.h"
#include "jet/File.h"
#include "jet/FileAlone.h"
#include "jet/FileSteps.h"
#include "jet/Header.h"
#include "jet/Sharing.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace jet {

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 20;
constexpr int kTries = 5;

/// The bytes of one file into a new one, synced.
void copyFile(const std::filesystem::path& from, const UnnamedFile& to,
              const std::stop_token& stop) {
    Disk& disk = to.disk();
    if (disk.exists(to.path())) // what an earlier try has left
        File::remove(disk, to.path());
    const File source(from, File::Mode::read, disk);
    File target(to.path(), File::Mode::createNew, disk);
    std::vector<std::byte> chunk;
    const std::uint64_t size = source.size();
    for (std::uint64_t at = 0; at < size; at += chunk.size()) {
        if (stop.stop_requested())
            throw Error(Errc::cancelled, "A cópia foi interrompida.");
        chunk.resize(std::min<std::uint64_t>(kChunk, size - at));
        source.read(at, chunk);
        target.write(at, chunk);
    }
    target.sync();
}

/// The same of a database that others are at work in: stations like ours wait until it is done;
/// what a foreign program writes meanwhile is noticed.
void copyUndisturbed(const std::filesystem::path& from, const UnnamedFile& to,
                     const std::stop_token& stop) {
    File database(from, File::Mode::read);
    Sharing stations(database, formatOf(readHeader(database).version), [] {});
    stations.enter(false);
    for (int i = 0; i < kTries; ++i) {
        stations.beginReading();
        bool undisturbed = false;
        try {
            undisturbed = unchangedWhile(from, [&] { copyFile(from, to, stop); });
        } catch (...) {
            stations.endReading();
            throw;
        }
        stations.endReading();
        if (undisturbed)
            return;
    }
    throw Error(Errc::locked, "O banco de dados está sendo alterado sem pausa.");
}

void requireSound(const UnnamedFile& copy, const std::string& what,
                  const std::stop_token& stop = {}) {
    const Report report = check(copy.path(), copy.disk(), stop);
    const auto error =
        std::ranges::find(report.findings, Finding::Severity::error, &Finding::severity);
    if (error != report.findings.end())
        throw Error(Errc::corrupt, what + error->sentence + ".");
}

std::tm localNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return local;
}

std::string formatted(const char* format, const std::tm& time) {
    char text[64];
    return {text, std::strftime(text, sizeof text, format, &time)};
}

/// A name for the file that a copy replaces: the first free one of this second.
std::filesystem::path replacedName(const std::filesystem::path& database, Disk& disk) {
    const std::string stem =
        database.stem().string() + formatted("-substituido-%Y-%m-%d-%H%M%S", localNow());
    for (int i = 1;; ++i) {
        std::filesystem::path name = stem + (i > 1 ? "-" + std::to_string(i) : "");
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
        copyFile(file, copy, {});
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

Backup::Backup(std::filesystem::path database, Today today)
    : database_(std::move(database)), folder_(database_.parent_path() / "backup"),
      today_(std::move(today)) {}

std::chrono::year_month_day Backup::localToday() {
    using namespace std::chrono;
    const std::tm now = localNow();
    return year(now.tm_year + 1900) / (now.tm_mon + 1) / now.tm_mday;
}

std::filesystem::path Backup::copyOf(std::chrono::year_month_day day) const {
    char text[32];
    (void)std::snprintf(text, sizeof text, "-%04d-%02u-%02u", static_cast<int>(day.year()),
                        static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    std::filesystem::path name = database_.stem();
    name += text;
    name += database_.extension();
    return folder_ / name;
}

std::optional<std::chrono::year_month_day> Backup::dayOf(const std::filesystem::path& copy) const {
    const std::string stem = database_.stem().string();
    const std::string name = copy.stem().string();
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    if (!name.starts_with(stem) ||
        std::sscanf(name.c_str() + stem.size(), "-%4d-%2u-%2u", &year, &month, &day) != 3)
        return std::nullopt;
    const std::chrono::year_month_day found =
        std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day);
    return found.ok() && copyOf(found).filename() == copy.filename() ? std::optional(found)
                                                                     : std::nullopt;
}

std::vector<std::filesystem::path> Backup::copies() const {
    std::vector<std::filesystem::path> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder_, error), end; !error && entry != end;
         entry.increment(error))
        if (dayOf(entry->path()))
            found.push_back(entry->path());
    if (error && error != std::errc::no_such_file_or_directory)
        throw Error(Errc::io, "A pasta \"" + folder_.string() +
                                  "\" não pode ser lida: " + error.message() + ".");
    std::ranges::sort(found); // the names sort as the days do
    return found;
}

std::optional<std::filesystem::path> Backup::makeIfDue(const std::stop_token& stop) const {
    const std::filesystem::path copy = copyOf(today_());
    if (std::error_code error; std::filesystem::exists(copy, error))
        return std::nullopt;
    make(copy, stop);
    removeOld(copy);
    return copy;
}

void Backup::make(const std::filesystem::path& copy, const std::stop_token& stop) const {
    std::error_code error;
    std::filesystem::create_directory(folder_, error);
    if (error)
        throw Error(Errc::readOnly, "A pasta \"" + folder_.string() +
                                        "\" não pode ser criada: " + error.message() + ".");
    UnnamedFile unnamed(copy);
    copyUndisturbed(database_, unnamed, stop);
    requireSound(unnamed, "O banco de dados tem erros e não foi copiado: ", stop);
    unnamed.takeName();
}

void Backup::removeOld(const std::filesystem::path& newest) const {
    std::error_code ignored;
    std::vector<std::filesystem::path> there = copies();
    std::erase(there, newest);
    while (there.size() >= kKept) {
        std::filesystem::remove(there.front(), ignored);
        there.erase(there.begin());
    }
    // What is left of a program that was ended while it made a copy, days ago.
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24);
    for (std::filesystem::directory_iterator entry(folder_, ignored), end; entry != end;
         entry.increment(ignored))
        if (UnnamedFile::isOne(entry->path()) && entry->last_write_time(ignored) < old)
            std::filesystem::remove(entry->path(), ignored);
}

std::optional<std::filesystem::path> restore(const std::filesystem::path& copy,
                                             const std::filesystem::path& name, Disk& disk) {
    const std::filesystem::path database = disk.resolved(name); // a link to it stays one
    const FileAlone alone(database, disk);
    UnnamedFile unnamed(database, disk);
    copyFile(copy, unnamed, {});
    requireSound(unnamed, "A cópia tem erros e não foi restaurada: ");
    if (!disk.exists(database)) {
        unnamed.takeName();
        return std::nullopt;
    }
    static_cast<void>(disk.copyRights(database, unnamed.path()));
    undoCutOff(database, disk);
    const std::filesystem::path kept = replacedName(database, disk);
    try {
        keepAs(database, kept, disk);
        unnamed.takeName();
    } catch (...) {
        // With the copy in place it is the only one left of what was there.
        if (!unnamed.hasName() && disk.exists(kept))
            static_cast<void>(disk.remove(kept));
        throw;
    }
    keepJournal(database, kept, disk);
    return kept;
}

} // namespace jet
