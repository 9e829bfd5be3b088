#include "jet/FileSteps.h"

#include "jet/Error.h"
#include "jet/disk/File.h"
#include "jet/system/System.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdlib>
#include <random>
#include <string>

namespace jet {

namespace {

constexpr const char* kMark = ".parcial-";
constexpr std::size_t kHead = 4096;
constexpr std::size_t kChunk = std::size_t{1} << 20;

std::string machineLetters() {
    std::string letters = sys::machineName();
    std::erase_if(letters, [](unsigned char c) { return std::isalnum(c) == 0; });
    return letters.substr(0, 32);
}

/// A name beside the target's that nothing has, nor will another program give: on another machine
/// there may be one of the same number.
std::filesystem::path unnamed(const std::filesystem::path& target, Disk& disk) {
    static std::atomic<unsigned> made{std::random_device{}()};
    while (true) {
        std::filesystem::path name = target.stem();
        name += kMark + machineLetters() + "-" + std::to_string(sys::processNumber()) + "-" +
                std::to_string(made++);
        name += target.extension();
        name = target.parent_path() / name;
        if (!disk.exists(name))
            return name;
    }
}

std::filesystem::path journalOf(std::filesystem::path database) {
    database += "-journal";
    return database;
}

std::filesystem::path lockFileOf(std::filesystem::path database) {
    return database.replace_extension(".ldb");
}

/// Whether a name that unnamed() has given, from its mark on, is that of a program of this machine
/// that runs no more.
bool isOfTheDead(const std::string& given) {
    const std::string mine = kMark + machineLetters() + "-";
    if (!given.starts_with(mine))
        return false;
    char* end = nullptr;
    const long process = std::strtol(given.c_str() + mine.size(), &end, 10);
    return process > 0 && *end == '-' && !sys::mayRun(static_cast<std::uint64_t>(process));
}

} // namespace

UnnamedFile::UnnamedFile(const std::filesystem::path& target, Disk& disk)
    : target_(target), path_(unnamed(target, disk)), disk_(disk), unfinished_(path_),
      journal_(journalOf(path_)), lockFile_(lockFileOf(path_)) {
    for (const LeftPart& part : partsOf(target, disk))
        if (part.dead)
            static_cast<void>(disk.remove(part.path));
}

UnnamedFile::~UnnamedFile() {
    for (const auto& left : {path_, journalOf(path_), lockFileOf(path_)})
        if (disk_.exists(left))
            static_cast<void>(disk_.remove(left));
}

void UnnamedFile::takeName() { File::rename(disk_, path_, target_); }

bool UnnamedFile::hasName() const { return !disk_.exists(path_); }

bool UnnamedFile::isOne(const std::filesystem::path& path) {
    return path.filename().string().find(kMark) != std::string::npos;
}

std::vector<LeftPart> partsOf(const std::filesystem::path& target, Disk& disk) {
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    const std::string stem = target.stem().string();
    std::vector<Disk::Entry> entries;
    std::vector<LeftPart> parts;
    if (disk.list(folder, entries) < 0)
        return parts;
    for (const Disk::Entry& entry : entries)
        if (entry.isFile && entry.name.starts_with(stem + kMark))
            parts.push_back({folder / entry.path(), isOfTheDead(entry.name.substr(stem.size()))});
    std::ranges::sort(parts, {}, &LeftPart::path);
    return parts;
}

void requireAbsent(const std::filesystem::path& path, Disk& disk) {
    if (disk.exists(path))
        throw Error(Errc::exists, "O arquivo \"" + path.string() +
                                      "\" já existe. Escolha outro nome para o arquivo novo.");
}

bool copyFile(const std::filesystem::path& from, const UnnamedFile& to,
              const std::filesystem::path& like) {
    return copyFile(from, to.path(), like, to.disk());
}

bool copyFile(const std::filesystem::path& from, const std::filesystem::path& to,
              const std::filesystem::path& like, Disk& disk) {
    const File source(from, File::Mode::read, disk);
    File target(to, File::Mode::createNew, disk);
    const bool allRights =
        target.takeRights(File(like, File::Mode::read, disk).attributes().rights);
    Bytes chunk;
    const std::uint64_t size = source.size();
    for (std::uint64_t at = 0; at < size; at += chunk.size()) {
        chunk.resize(std::min<std::uint64_t>(kChunk, size - at));
        source.read(at, chunk);
        target.write(at, chunk);
    }
    target.sync();
    return allRights;
}

FileState::FileState(const std::filesystem::path& path, Disk& disk) {
    const File file(path, File::Mode::read, disk);
    size_ = file.size();
    head_.resize(std::min<std::uint64_t>(size_, kHead));
    file.read(0, head_);
    changedAt_ = file.changedAt();
}

bool unchangedWhile(const std::filesystem::path& path, const std::function<void()>& read,
                    Disk& disk) {
    const FileState before(path, disk);
    read();
    return before == FileState(path, disk);
}

} // namespace jet
