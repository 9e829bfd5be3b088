#include "jet/disk/File.h"

#include "jet/Error.h"
#include "jet/system/System.h"

#include <cerrno>
#include <utility>

namespace jet {

namespace {

/// Beyond the end of any database, and no byte that anybody locks for another reason.
constexpr std::uint64_t kLook = 0x7FFFFFF0;

/// What the disk says, for the operator.
std::string reasonOf(int error) {
    // clang-format off
    static constexpr std::pair<int, const char*> kReasons[] = {
        {ENOENT,       "o arquivo não existe"},
        {ENOTDIR,      "o arquivo não existe"},
        {EEXIST,       "o arquivo já existe"},
        {EACCES,       "sem permissão"},
        {EPERM,        "sem permissão"},
        {EROFS,        "sem permissão"},
        {EISDIR,       "não é um arquivo comum"},
        {ELOOP,        "é um atalho para outro lugar"},
        {ENAMETOOLONG, "o nome é longo demais"},
        {EIO,          "o disco não responde como devia"},
        {EMFILE,       "há arquivos demais abertos"},
        {ENFILE,       "há arquivos demais abertos"},
        {ENOMEM,       "falta memória"},
        {ENOLCK,       "a pasta não sabe dizer quem usa o arquivo"},
        {EBUSY,        "está em uso"},
        {ETXTBSY,      "está em uso"},
        {EXDEV,        "está em outro disco"},
        {ENOTEMPTY,    "não está vazia"},
    };
    // clang-format on
    if (sys::isNoRoom(error) || error == EFBIG)
        return "o disco está cheio; libere espaço nele e tente de novo";
    for (const auto& [number, reason] : kReasons)
        if (number == error)
            return reason;
    return "erro " + std::to_string(error) + " do sistema";
}

bool isMissing(int error) { return error == ENOENT || error == ENOTDIR; }

[[noreturn]] void fail(const char* action, const std::filesystem::path& path, std::int64_t result) {
    const int error = static_cast<int>(-result);
    const Errc code = isMissing(error)                                      ? Errc::notFound
                      : error == EEXIST                                     ? Errc::exists
                      : error == EBUSY                                      ? Errc::locked
                      : sys::isNoRoom(error) || error == EFBIG              ? Errc::full
                      : error == EACCES || error == EPERM || error == EROFS ? Errc::readOnly
                                                                            : Errc::io;
    throw Error(code, "Não foi possível " + std::string(action) + " o arquivo \"" + path.string() +
                          "\": " + reasonOf(error) + ".");
}

[[noreturn]] void failFolder(const std::filesystem::path& folder, const char* done, int result) {
    throw Error(result == -EACCES || result == -EPERM || result == -EROFS ? Errc::readOnly
                : sys::isNoRoom(-result)                                  ? Errc::full
                                                                          : Errc::io,
                "A pasta \"" + folder.string() + "\" não pode ser " + done + ": " +
                    reasonOf(-result) + ".");
}

/// The result, unless it is an error.
template <class Result>
Result checked(const char* action, const std::filesystem::path& path, Result result) {
    if (result < 0)
        fail(action, path, result);
    return result;
}

} // namespace

File::File(std::filesystem::path path, Mode mode, Disk& disk, int& error)
    : path_(std::move(path)), disk_(&disk) {
    if (!Disk::isBeside(mode))
        path_ = disk.resolved(path_);
    handle_ = disk.open(path_, mode, error);
}

File::File(std::filesystem::path path, Mode mode, Disk& disk) : disk_(&disk) {
    int error = 0;
    *this = File(std::move(path), mode, disk, error);
    if (!handle_)
        fail(Disk::makes(mode) ? "criar" : "abrir", path_, -error);
}

std::optional<File> File::ifThere(std::filesystem::path path, Mode mode, Disk& disk) {
    int error = 0;
    File file(std::move(path), mode, disk, error);
    if (file.handle_)
        return file;
    if (isMissing(error))
        return std::nullopt;
    fail("abrir", file.path_, -error);
}

std::uint64_t File::size() const {
    return static_cast<std::uint64_t>(checked("ler", path_, handle_->size()));
}

std::int64_t File::changedAt() const { return checked("ler", path_, handle_->changedAt()); }

void File::read(std::uint64_t offset, std::span<std::byte> into) const {
    while (!into.empty()) {
        const auto got = checked("ler", path_, handle_->read(offset, into));
        if (got == 0)
            throw Error(Errc::io, "O arquivo \"" + path_.string() +
                                      "\" terminou antes do esperado: ele ficou menor.");
        into = into.subspan(static_cast<std::size_t>(got));
        offset += static_cast<std::uint64_t>(got);
    }
}

void File::write(std::uint64_t offset, std::span<const std::byte> from) {
    while (!from.empty()) {
        const auto put = checked("gravar", path_, handle_->write(offset, from));
        from = from.subspan(static_cast<std::size_t>(put));
        offset += static_cast<std::uint64_t>(put);
    }
}

void File::truncate(std::uint64_t size) { checked("gravar", path_, handle_->truncate(size)); }

void File::sync() { checked("gravar", path_, handle_->sync()); }

bool File::tryLock(Disk::Lock kind, std::uint64_t offset, std::uint64_t count) {
    return checked("reservar", path_, handle_->lock(kind, offset, count)) == 1;
}

void File::unlock(std::uint64_t offset, std::uint64_t count) noexcept {
    // What can't be given back goes when the file is closed.
    static_cast<void>(handle_->lock(Disk::Lock::none, offset, count));
}

std::uint64_t File::firstMet(Disk::Lock kind, std::uint64_t offset, std::uint64_t count) const {
    return static_cast<std::uint64_t>(
        checked("reservar", path_, handle_->firstHeld(kind, offset, count)));
}

File::Claim::Claim(File& file) : handle_(*file.handle_) {
    const int result = handle_.claimWriting();
    if (result == -EBUSY)
        throw Error(Errc::locked, "O arquivo \"" + file.path_.string() +
                                      "\" também está aberto em outro programa, que pode gravar "
                                      "nele. Nada foi gravado; feche-o lá e tente de novo.");
    checked("gravar", file.path_, result);
}

Disk::Attributes File::attributes() const {
    Disk::Attributes found;
    checked("ler", path_, handle_->attributes(found));
    return found;
}

void File::lookAgain() {
    if (!handle_->remembers())
        return;
    // Shared: nobody else is in the way of that, and it needs no permission to write.
    if (tryLock(Disk::Lock::shared, kLook))
        unlock(kLook);
}

bool File::takeRights(const Disk::Rights& rights) noexcept {
    Disk::Attributes mine;
    if (handle_->attributes(mine) < 0)
        return false;
    const auto& [owner, group, mode] = mine.rights;
    if (mine.rights == rights)
        return true;
    bool sameOwner = owner == rights.owner;
    bool sameGroup = group == rights.group;
    if (!sameOwner || !sameGroup) {
        if (handle_->setOwner(sameOwner ? Disk::kSameOwner : rights.owner, rights.group) == 0)
            sameOwner = sameGroup = true;
        else if (!sameGroup)
            sameGroup = handle_->setOwner(Disk::kSameOwner, rights.group) == 0;
    }
    return handle_->setMode(Disk::Rights::allowed(rights.mode, sameGroup)) == 0 && sameOwner &&
           sameGroup;
}

void File::rename(Disk& disk, const std::filesystem::path& from, const std::filesystem::path& to) {
    checked("renomear", from, disk.rename(from, to));
    syncFolderOf(disk, from);
}

void File::link(Disk& disk, const std::filesystem::path& file, const std::filesystem::path& name) {
    checked("dar outro nome para", file, disk.link(file, name));
    syncFolderOf(disk, name);
}

void File::remove(Disk& disk, const std::filesystem::path& path) {
    checked("apagar", path, disk.remove(path));
    syncFolderOf(disk, path);
}

std::vector<Disk::Entry> File::list(Disk& disk, const std::filesystem::path& folder) {
    std::vector<Disk::Entry> entries;
    const int result = disk.list(folder, entries);
    if (result < 0 && result != -ENOENT)
        failFolder(folder, "lida", result);
    return entries;
}

void File::makeFolder(Disk& disk, const std::filesystem::path& folder) {
    const int result = disk.makeFolder(folder);
    if (result < 0)
        failFolder(folder, "criada", result);
    // Where the disk doesn't want that, the folder is there all the same.
    if (result > 0)
        static_cast<void>(disk.copyRights(folder.parent_path(), folder));
}

void File::syncFolderOf(Disk& disk, const std::filesystem::path& path) {
    checked("gravar", path, disk.syncFolderOf(path));
}

} // namespace jet
