#include "jet/FileSteps.h"

#include "jet/Error.h"
#include "jet/File.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace jet {

namespace {

constexpr const char* kMark = ".parcial-";
constexpr std::size_t kHead = 4096;

[[noreturn]] void fail(const std::filesystem::path& path, int error) {
    throw Error(error == ENOSPC || error == EDQUOT                    ? Errc::full
                : error == EACCES || error == EPERM || error == EROFS ? Errc::readOnly
                                                                      : Errc::io,
                "O arquivo \"" + path.string() + "\" não pôde receber o seu nome: " +
                    std::generic_category().message(error) + ".");
}

std::filesystem::path unnamed(const std::filesystem::path& target) {
    std::filesystem::path name = target.stem();
    name += kMark + std::to_string(::getpid());
    name += target.extension();
    return target.parent_path() / name;
}

} // namespace

UnnamedFile::UnnamedFile(const std::filesystem::path& target)
    : target_(target), path_(unnamed(target)) {}

UnnamedFile::~UnnamedFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    std::filesystem::remove(std::filesystem::path(path_).replace_extension(".ldb"), ignored);
}

void UnnamedFile::takeName() { renameForGood(path_, target_); }

bool UnnamedFile::isOne(const std::filesystem::path& path) {
    return path.filename().string().find(kMark) != std::string::npos;
}

void requireAbsent(const std::filesystem::path& path) {
    std::error_code ignored;
    if (std::filesystem::symlink_status(path, ignored).type() !=
        std::filesystem::file_type::not_found)
        throw Error(Errc::exists, "O arquivo \"" + path.string() +
                                      "\" já existe. Escolha outro nome para o arquivo novo.");
}

void renameForGood(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0)
        fail(to, errno);
    const std::filesystem::path folder = to.has_parent_path() ? to.parent_path() : ".";
    const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        fail(to, errno);
    const int failed = ::fsync(handle) != 0 && errno != EINVAL ? errno : 0;
    ::close(handle);
    if (failed != 0)
        fail(to, failed);
}

FileState::FileState(const std::filesystem::path& path) {
    const File file(path, File::Mode::read);
    size_ = file.size();
    head_.resize(std::min<std::uint64_t>(size_, kHead));
    file.read(0, std::as_writable_bytes(std::span(head_)));
    std::error_code error;
    written_ = std::filesystem::last_write_time(path, error);
    if (error)
        fail(path, error.value());
}

bool unchangedWhile(const std::filesystem::path& path, const std::function<void()>& read) {
    const FileState before(path);
    read();
    return before == FileState(path);
}

} // namespace jet
