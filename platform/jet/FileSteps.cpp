#include "jet/FileSteps.h"

#include "jet/Error.h"
#include "jet/File.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <random>
#include <string>
#include <unistd.h>

namespace jet {

namespace {

constexpr const char* kMark = ".parcial-";
constexpr std::size_t kHead = 4096;
constexpr std::size_t kChunk = std::size_t{1} << 20;

std::string machineLetters() {
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0)
        return "local";
    std::string letters(name.data());
    std::erase_if(letters, [](unsigned char c) { return std::isalnum(c) == 0; });
    return letters.substr(0, 32);
}

/// A name beside the target's that nothing has, nor will another program give: on another machine
/// there may be one of the same number.
std::filesystem::path unnamed(const std::filesystem::path& target, Disk& disk) {
    static std::atomic<unsigned> made{std::random_device{}()};
    while (true) {
        std::filesystem::path name = target.stem();
        name += kMark + machineLetters() + "-" + std::to_string(::getpid()) + "-" +
                std::to_string(made++);
        name += target.extension();
        name = target.parent_path() / name;
        if (!disk.exists(name))
            return name;
    }
}

} // namespace

UnnamedFile::UnnamedFile(const std::filesystem::path& target, Disk& disk)
    : target_(target), path_(unnamed(target, disk)), disk_(disk) {}

UnnamedFile::~UnnamedFile() {
    std::filesystem::path journal = path_;
    journal += "-journal";
    for (const auto& left :
         {path_, journal, std::filesystem::path(path_).replace_extension(".ldb")})
        if (disk_.exists(left))
            static_cast<void>(disk_.remove(left));
}

void UnnamedFile::takeName() { File::rename(disk_, path_, target_); }

bool UnnamedFile::hasName() const { return !disk_.exists(path_); }

bool UnnamedFile::isOne(const std::filesystem::path& path) {
    return path.filename().string().find(kMark) != std::string::npos;
}

void requireAbsent(const std::filesystem::path& path, Disk& disk) {
    if (disk.exists(path))
        throw Error(Errc::exists, "O arquivo \"" + path.string() +
                                      "\" já existe. Escolha outro nome para o arquivo novo.");
}

bool copyFile(const std::filesystem::path& from, const UnnamedFile& to,
              const std::filesystem::path& like) {
    Disk& disk = to.disk();
    const File source(from, File::Mode::read, disk);
    File target(to.path(), File::Mode::createNew, disk);
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
