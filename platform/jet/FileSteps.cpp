#include "jet/FileSteps.h"

#include "jet/Error.h"
#include "jet/File.h"

#include <algorithm>
#include <string>
#include <unistd.h>

namespace jet {

namespace {

constexpr const char* kMark = ".parcial-";
constexpr std::size_t kHead = 4096;

/// A name beside the target's that nothing has. A program of the same number that was interrupted,
/// or one on another machine, may have left the first ones.
std::filesystem::path unnamed(const std::filesystem::path& target, Disk& disk) {
    for (int i = 1;; ++i) {
        std::filesystem::path name = target.stem();
        name += kMark + std::to_string(::getpid()) + (i > 1 ? "-" + std::to_string(i) : "");
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
