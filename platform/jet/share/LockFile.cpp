#include "jet/share/LockFile.h"

#include "jet/Error.h"
#include "jet/Types.h"
#include "jet/Waiting.h"
#include "jet/disk/SideFile.h"
#include "jet/system/System.h"

#include <algorithm>
#include <array>

namespace jet {

namespace {

constexpr const char* kAccount = "Admin";

/// A name as it stands in a slot.
void putName(std::span<std::byte> field, const std::string& name) {
    const std::size_t used = std::min(name.size(), field.size() - 1);
    std::transform(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(used), field.begin(),
                   [](char c) { return static_cast<std::byte>(c); });
    field[used] = std::byte{0};
    std::fill(field.begin() + static_cast<std::ptrdiff_t>(used) + 1, field.end(), std::byte{' '});
}

std::string nameIn(std::span<const std::byte> field) {
    std::string name;
    for (const std::byte b : field) {
        if (b == std::byte{0})
            break;
        const auto c = std::to_integer<unsigned char>(b);
        name += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    }
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

/// A name, a zero behind it, blanks; or zeros, where nobody has written yet.
bool isName(std::span<const std::byte> field) {
    const auto end = std::ranges::find(field, std::byte{0});
    return end != field.end() &&
           std::all_of(field.begin(), end, [](std::byte b) { return b >= std::byte{0x20}; }) &&
           std::all_of(end, field.end(),
                       [](std::byte b) { return b == std::byte{0} || b == std::byte{' '}; });
}

std::string machineName() {
    const std::string name = sys::machineName();
    return name.empty() ? "LOCAL" : name;
}

} // namespace

LockFile::LockFile(const std::filesystem::path& database, Disk& disk)
    : database_(database), path_(std::filesystem::path(database_).replace_extension(".ldb")),
      disk_(disk) {}

LockFile::~LockFile() {
    try {
        leave();
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // A lock file left behind does no harm; its locks go with it.
    }
}

void LockFile::leave() {
    if (!file_)
        return;
    openGate();
    // Who is still at it after a second sees to the file itself when leaving.
    const bool alone = waitFor([&] { return tryLock(kEntering); }, std::chrono::seconds(1));
    giveUpUser();
    if (alone && isCurrent() &&
        file_->firstHeldAlone(kUsers + 1, kMostUsers) == kUsers + 1 + kMostUsers)
        static_cast<void>(disk_.remove(path_));
    file_.reset();
}

void LockFile::open(const File* database) {
    file_.reset();
    if (path_ == database_)
        throw Error(Errc::readOnly, "O banco de dados \"" + database_.string() +
                                        "\" tem o nome que esse arquivo teria. Dê-lhe um nome que "
                                        "termine em .mdb.");
    // Others may be making it and removing it at the same time.
    for (int round = 0; round < side::kMostRounds; ++round) {
        std::optional<File> file = openOrMake();
        if (!file)
            continue;
        file_ = std::move(file);
        try {
            requireLockFile();
        } catch (...) {
            file_.reset();
            throw;
        }
        if (database)
            side::share(*file_, *database, side::Holds::names);
        return;
    }
    throw Error(Errc::io,
                "O arquivo \"" + path_.string() + "\" não se deixa abrir: a pasta muda sem parar.");
}

std::optional<File> LockFile::openOrMake() {
    if (std::optional<File> file = side::find(path_, true, disk_))
        return file;
    try {
        return side::make(path_, disk_);
    } catch (const Error& error) {
        if (error.code() != Errc::exists)
            throw;
    }
    return std::nullopt;
}

/// Of a folder where large and small letters are the same the database may have this very name.
void LockFile::requireLockFile() const {
    const std::uint64_t size = file_->size();
    bool isOurs = !file_->isAt(database_) && size <= kMostUsers * kSlot && size % kSlot == 0;
    if (isOurs && size > 0) {
        Bytes slots(size);
        file_->read(0, slots);
        for (std::size_t at = 0; at < slots.size(); at += kName)
            isOurs = isOurs && isName(std::span(slots).subspan(at, kName));
    }
    if (!isOurs)
        throw Error(Errc::readOnly,
                    "O arquivo \"" + path_.string() +
                        "\" tem esse nome, mas o que há nele é outra coisa: não foi tocado. "
                        "Dê-lhe outro nome ou ponha-o em outra pasta.");
}

bool LockFile::takeUser() {
    for (unsigned user = 1; user <= kMostUsers; ++user) {
        if (!tryLock(kUsers + user))
            continue;
        if (!tryLock(kMarks + user)) {
            unlock(kUsers + user);
            continue;
        }
        std::array<std::byte, kSlot> slot{};
        putName(std::span(slot).first(kName), machineName());
        putName(std::span(slot).subspan(kName), kAccount);
        try {
            file_->write(std::uint64_t{user - 1} * kSlot, slot);
        } catch (const Error& error) {
            // On a full disk a station is known by its number: the lock is what counts.
            if (error.code() != Errc::full)
                throw;
            file_->truncate(file_->size() / kSlot * kSlot); // half a name is no lock file's
        }
        user_ = user;
        return true;
    }
    return false;
}

void LockFile::giveUpUser() noexcept {
    if (user_ == 0)
        return;
    unlock(kUsers + user_);
    unlock(kMarks + user_);
    user_ = 0;
}

bool LockFile::isUser(unsigned user) const { return isHeldAlone(kUsers + user); }
bool LockFile::isForeign(unsigned user) const {
    return !isHeldAlone(kMarks + user) && isUser(user);
}

std::vector<unsigned> LockFile::otherUsers() const {
    if (!gate_.empty())
        return outside_;
    std::vector<unsigned> users;
    for (std::uint64_t user = 1; user <= kMostUsers; ++user) {
        user = file_->firstHeldAlone(kUsers + user, kMostUsers + 1 - user) - kUsers;
        if (user <= kMostUsers)
            users.push_back(static_cast<unsigned>(user));
    }
    return users;
}

std::string LockFile::nameOf(unsigned user) const {
    try {
        std::array<std::byte, kSlot> slot{};
        file_->read(std::uint64_t{user - 1} * kSlot, slot);
        const std::string machine = nameIn(std::span(slot).first(kName));
        const std::string account = nameIn(std::span(slot).subspan(kName));
        if (!machine.empty())
            return account.empty() || account == kAccount ? machine
                                                          : machine + " (" + account + ")";
    } catch (const Error&) { // NOLINT(bugprone-empty-catch)
        // A user that has written no name.
    }
    return "usuário " + std::to_string(user);
}

bool LockFile::closeGate() {
    const auto take = [this](std::uint64_t first, std::uint64_t count) {
        const bool taken = count == 0 || file_->tryLock(Disk::Lock::exclusive, first, count);
        if (taken && count > 0)
            gate_.emplace_back(first, count);
        return taken;
    };
    const std::uint64_t own = kUsers + user_;
    std::uint64_t next = kUsers + 1;
    const std::uint64_t end = next + kMostUsers;
    // Who was alone the last time is so most of the time: then nobody is looked for.
    bool looks = !outside_.empty();
    outside_.clear();
    while (next < end) {
        const std::uint64_t stop = next <= own && own < end ? own : end;
        if (!looks && take(next, stop - next)) {
            next = stop + 1; // over our own
            continue;
        }
        looks = true;
        const std::uint64_t held = file_->firstHeldAlone(next, stop - next);
        if (!take(next, held - next)) {
            openGate();
            return false;
        }
        if (held < stop)
            outside_.push_back(static_cast<unsigned>(held - kUsers));
        next = held + 1; // over the other's byte, or our own
    }
    return true;
}

void LockFile::openGate() noexcept {
    for (const auto& [first, count] : gate_)
        file_->unlock(first, count);
    gate_.clear();
}

} // namespace jet
