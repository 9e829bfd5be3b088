#include "jet/system/WindowsFile.h"

#include "jet/system/WindowsError.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <winternl.h>

// What ReadFile() and WriteFile() come to. Those, told where in the file, ask besides for a notice
// that nobody waits for, which under wine costs a hundred times what the reading does.
extern "C" {
NTSYSAPI NTSTATUS NTAPI NtReadFile(HANDLE file, HANDLE event, PIO_APC_ROUTINE call, void* of,
                                   IO_STATUS_BLOCK* done, void* into, ULONG count,
                                   LARGE_INTEGER* offset, ULONG* key);
NTSYSAPI NTSTATUS NTAPI NtWriteFile(HANDLE file, HANDLE event, PIO_APC_ROUTINE call, void* of,
                                    IO_STATUS_BLOCK* done, void* from, ULONG count,
                                    LARGE_INTEGER* offset, ULONG* key);
}

namespace jet::windows {

namespace {

/// Others may read, write and even rename or remove what we have open, as the locks say.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

OVERLAPPED at(std::uint64_t offset) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

int lastError() { return numberOf(::GetLastError()); }

/// How many bytes, or an error number, negative. The end of the file is none.
std::int64_t transfer(decltype(&NtReadFile) call, HANDLE file, std::uint64_t offset,
                      const std::byte* bytes, std::size_t size) {
    constexpr auto kEndOfFile = static_cast<NTSTATUS>(0xC0000011);
    constexpr std::size_t kMost = 1U << 30;
    IO_STATUS_BLOCK done{};
    LARGE_INTEGER place{};
    place.QuadPart = static_cast<LONGLONG>(offset);
    const NTSTATUS status = call(file, nullptr, nullptr, nullptr, &done,
                                 const_cast<std::byte*>(bytes), // the system writes from it
                                 static_cast<ULONG>(std::min(size, kMost)), &place, nullptr);
    if (status == kEndOfFile)
        return 0;
    if (status < 0)
        return -numberOf(::RtlNtStatusToDosError(status));
    return static_cast<std::int64_t>(done.Information);
}

/// That no other file of the disk has, while it is open.
std::optional<LONGLONG> numberInDisk(HANDLE file) {
    IO_STATUS_BLOCK done{};
    FILE_INTERNAL_INFORMATION info{};
    if (::NtQueryInformationFile(file, &done, &info, sizeof info, FileInternalInformation) < 0)
        return std::nullopt;
    return info.IndexNumber.QuadPart;
}

constexpr std::chrono::seconds kSameDisk{1};

} // namespace

// ---- handles and paths ------------------------------------------------------------------------

Owned::Owned(Owned&& other) noexcept
    : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}

Owned& Owned::operator=(Owned&& other) noexcept {
    if (this != &other) {
        close();
        handle_ = std::exchange(other.handle_, INVALID_HANDLE_VALUE);
    }
    return *this;
}

void Owned::close() noexcept {
    if (isOpen())
        ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE));
}

std::wstring forCalls(const std::filesystem::path& path) {
    constexpr std::size_t kShort = 240; // what the system adds to it must have room too
    const std::wstring& given = path.native();
    if (given.size() < kShort || given.starts_with(L"\\\\?\\") || given.starts_with(L"\\\\.\\"))
        return given;
    std::wstring whole(given.size() + MAX_PATH + 1, 0);
    DWORD length = 0;
    while ((length = ::GetFullPathNameW(given.c_str(), static_cast<DWORD>(whole.size()),
                                        whole.data(), nullptr)) >= whole.size())
        whole.resize(length + 1);
    whole.resize(length);
    if (whole.starts_with(L"\\\\"))
        return L"\\\\?\\UNC\\" + whole.substr(2);
    return L"\\\\?\\" + whole;
}

Owned lookAt(const std::filesystem::path& path) noexcept {
    return Owned(::CreateFileW(forCalls(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                               OPEN_EXISTING,
                               FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

std::int64_t changeOf(const FILETIME& time) noexcept {
    constexpr std::uint64_t kTick = 100;                        // nanoseconds
    constexpr std::uint64_t kToEpoch = 116'444'736'000'000'000; // ticks from 1601 to 1970
    const std::uint64_t ticks = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return static_cast<std::int64_t>((ticks - kToEpoch) * kTick);
}

// ---- bytes ------------------------------------------------------------------------------------

std::int64_t FileHandle::size() {
    LARGE_INTEGER size{};
    return ::GetFileSizeEx(file_.get(), &size) != 0 ? size.QuadPart : -lastError();
}

std::int64_t FileHandle::read(std::uint64_t offset, std::span<std::byte> into) {
    return transfer(&NtReadFile, file_.get(), offset, into.data(), into.size());
}

int FileHandle::openWriter(DWORD share) {
    return patiently([&] {
        writer_ = Owned(::CreateFileW(forCalls(path_).c_str(), GENERIC_READ | GENERIC_WRITE, share,
                                      nullptr, OPEN_EXISTING, flags_, nullptr));
        return writer_.isOpen();
    });
}

HANDLE FileHandle::writer(int& error) {
    error = 0;
    if (!writes_) {
        error = EBADF;
        return nullptr;
    }
    if (!keepsClosed_)
        return file_.get();
    if (!writer_.isOpen())
        error = openWriter(kShareAll);
    return error == 0 ? writer_.get() : nullptr;
}

std::int64_t FileHandle::write(std::uint64_t offset, std::span<const std::byte> from) {
    int error = 0;
    HANDLE const handle = writer(error);
    if (handle == nullptr)
        return -error;
    return transfer(&NtWriteFile, handle, offset, from.data(), from.size());
}

int FileHandle::truncate(std::uint64_t size) {
    int error = 0;
    HANDLE const handle = writer(error);
    if (handle == nullptr)
        return -error;
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    return ::SetFileInformationByHandle(handle, FileEndOfFileInfo, &end, sizeof end) != 0
               ? 0
               : -lastError();
}

int FileHandle::sync() {
    int error = 0;
    HANDLE const handle = writer(error);
    if (handle == nullptr)
        return error == EBADF ? 0 : -error; // what is only read has nothing to be written
    const int result = ::FlushFileBuffers(handle) != 0 ? 0 : -lastError();
    if (!claimed_)
        writer_.close();
    return result;
}

int FileHandle::claimWriting() {
    if (!keepsClosed_ || !writes_)
        return 0;
    writer_.close();
    // Whoever has the file open for writing is in the way of this, and nobody can open it so
    // meanwhile.
    const int error = openWriter(FILE_SHARE_READ | FILE_SHARE_DELETE);
    claimed_ = error == 0;
    return -error;
}

void FileHandle::endWriting() noexcept {
    claimed_ = false;
    writer_.close();
}

// ---- locks ------------------------------------------------------------------------------------

bool FileHandle::take(Disk::Lock kind, std::uint64_t from, std::uint64_t end) const {
    OVERLAPPED place = at(from);
    const std::uint64_t count = end - from;
    const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY |
                        (kind == Disk::Lock::exclusive ? DWORD{LOCKFILE_EXCLUSIVE_LOCK} : 0);
    return ::LockFileEx(file_.get(), flags, 0, static_cast<DWORD>(count),
                        static_cast<DWORD>(count >> 32), &place) != 0;
}

void FileHandle::giveBack(std::uint64_t from, std::uint64_t end) const {
    OVERLAPPED place = at(from);
    const std::uint64_t count = end - from;
    ::UnlockFileEx(file_.get(), 0, static_cast<DWORD>(count), static_cast<DWORD>(count >> 32),
                   &place);
}

int FileHandle::lock(Disk::Lock kind, std::uint64_t offset, std::uint64_t count) {
    const std::uint64_t end = offset + count;
    const auto mine = std::ranges::find_if(
        held_, [&](const Held& held) { return held.from < end && offset < held.end; });
    if (mine == held_.end()) {
        if (kind == Disk::Lock::none)
            return 1;
        if (!take(kind, offset, end)) {
            const DWORD error = ::GetLastError();
            return error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING ? 0
                                                                              : -numberOf(error);
        }
        held_.push_back({kind, offset, end});
        return 1;
    }
    // The system gives back only what was taken in one go.
    if (mine->from != offset || mine->end != end)
        return -EINVAL;
    if (mine->kind == kind)
        return 1;
    const Disk::Lock before = mine->kind;
    giveBack(offset, end);
    held_.erase(mine);
    if (kind == Disk::Lock::none || lock(kind, offset, count) == 1)
        return 1;
    return lock(before, offset, count) == 1 ? 0 : -EIO;
}

bool FileHandle::isOthers(Disk::Lock meeting, std::uint64_t from, std::uint64_t end) const {
    // Another who asks this has what he asks for, for a moment; shared, that is in nobody's way who
    // asks the same.
    constexpr int kMostLooks = 3;
    for (int looks = 0; looks < kMostLooks; ++looks)
        if (take(meeting, from, end)) {
            giveBack(from, end);
            return false;
        }
    return true;
}

bool FileHandle::isShared(const Held& held) const {
    constexpr int kMostTries = 200;
    giveBack(held.from, held.end);
    const bool shared = isOthers(Disk::Lock::exclusive, held.from, held.end);
    for (int tries = 0; !take(held.kind, held.from, held.end) && tries < kMostTries; ++tries)
        ::Sleep(1); // another is asking just this
    return shared;
}

std::int64_t FileHandle::firstHeld(Disk::Lock meeting, std::uint64_t offset, std::uint64_t count) {
    const std::uint64_t last = offset + count;
    for (std::uint64_t at = offset; at < last;) {
        const auto mine = std::ranges::find_if(
            held_, [&](const Held& held) { return held.from <= at && at < held.end; });
        if (mine != held_.end()) {
            if (meeting == Disk::Lock::exclusive && mine->kind == Disk::Lock::shared &&
                isShared(*mine))
                return static_cast<std::int64_t>(at);
            at = mine->end;
            continue;
        }
        std::uint64_t end = last; // of what isn't ours
        for (const Held& held : held_)
            if (held.from > at)
                end = std::min(end, held.from);
        if (!isOthers(meeting, at, end)) {
            at = end;
            continue;
        }
        // The half in which the first one lies, again and again.
        while (end - at > 1) {
            const std::uint64_t middle = at + (end - at) / 2;
            if (isOthers(meeting, at, middle))
                end = middle;
            else
                at = middle;
        }
        if (isOthers(meeting, at, end)) // it may have gone meanwhile
            return static_cast<std::int64_t>(at);
        at = end;
    }
    return static_cast<std::int64_t>(last);
}

// ---- what is known of it ----------------------------------------------------------------------

// Each asks for no more than it needs: which disk a file is on takes a hundred times as long to say
// as all the rest.
std::int64_t FileHandle::changedAt() {
    FILETIME time{};
    return ::GetFileTime(file_.get(), nullptr, nullptr, &time) != 0 ? changeOf(time) : -lastError();
}

bool FileHandle::isAt(const std::filesystem::path& path) {
    const Owned there = lookAt(path);
    if (!there.isOpen())
        return false;
    const auto mine = numberInDisk(file_.get());
    if (!mine || mine != numberInDisk(there.get()))
        return false;
    // The disk behind a name doesn't come and go in a moment.
    const auto now = std::chrono::steady_clock::now();
    if (path == path_ && now - sameDiskAt_ < kSameDisk)
        return true;
    BY_HANDLE_FILE_INFORMATION ours{};
    BY_HANDLE_FILE_INFORMATION its{};
    if (::GetFileInformationByHandle(file_.get(), &ours) == 0 ||
        ::GetFileInformationByHandle(there.get(), &its) == 0 ||
        ours.dwVolumeSerialNumber != its.dwVolumeSerialNumber)
        return false;
    if (path == path_)
        sameDiskAt_ = now;
    return true;
}

int FileHandle::attributes(Disk::Attributes& into) {
    FILE_BASIC_INFO basic{};
    FILE_STANDARD_INFO standard{};
    if (::GetFileInformationByHandleEx(file_.get(), FileBasicInfo, &basic, sizeof basic) == 0 ||
        ::GetFileInformationByHandleEx(file_.get(), FileStandardInfo, &standard, sizeof standard) ==
            0)
        return -lastError();
    const bool readOnly = (basic.FileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    into = {
        {0, 0, readOnly ? 0444U : 0666U},
        standard.NumberOfLinks
    };
    return 0;
}

// Whose a file is and who may use it follows here from the folder it lies in.
int FileHandle::setOwner(std::uint32_t, std::uint32_t) { return 0; }

int FileHandle::setMode(std::uint32_t mode) {
    const std::wstring name = forCalls(path_);
    const DWORD now = ::GetFileAttributesW(name.c_str());
    if (now == INVALID_FILE_ATTRIBUTES)
        return -lastError();
    constexpr std::uint32_t kOwnerWrites = 0200;
    const DWORD wanted = (mode & kOwnerWrites) != 0 ? now & ~DWORD{FILE_ATTRIBUTE_READONLY}
                                                    : now | FILE_ATTRIBUTE_READONLY;
    return wanted == now || ::SetFileAttributesW(name.c_str(), wanted) != 0 ? 0 : -lastError();
}

} // namespace jet::windows
