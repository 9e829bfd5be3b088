#include "jet/Disk.h"
#include "jet/system/WindowsError.h"
#include "jet/system/WindowsFile.h"

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <winternl.h>

namespace jet {

namespace {

using windows::forCalls;
using windows::numberOf;
using windows::Owned;
using windows::patiently;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// A name that stands for another place, be that a file's, a folder's or another disk's.
bool isLink(HANDLE handle) {
    FILE_ATTRIBUTE_TAG_INFO info{};
    return ::GetFileInformationByHandleEx(handle, FileAttributeTagInfo, &info, sizeof info) != 0 &&
           (info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           IsReparseTagNameSurrogate(info.ReparseTag);
}

/// 0 for a file of the disk that is none of those.
int whatElse(HANDLE handle, bool beside) {
    if (::GetFileType(handle) != FILE_TYPE_DISK)
        return EISDIR;
    return beside && isLink(handle) ? ELOOP : 0;
}

bool isFolder(const std::filesystem::path& path) {
    const DWORD attributes = ::GetFileAttributesW(forCalls(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Whether a file is on another machine: what is written there goes through at once. Asked of the
/// open file, which knows; of a drive's letter it takes long to find out.
bool isOnShare(HANDLE file) {
    constexpr ULONG kRemote = 0x10; // FILE_REMOTE_DEVICE, which stands in a header for drivers
    IO_STATUS_BLOCK done{};
    FILE_FS_DEVICE_INFORMATION device{};
    return ::NtQueryVolumeInformationFile(file, &done, &device, sizeof device,
                                          FileFsDeviceInformation) >= 0 &&
           (device.Characteristics & kRemote) != 0;
}

/// Why the file can't be written, or 0. One that another is just writing in could be.
int refusalToWrite(const std::wstring& name) {
    return patiently([&] {
        const Owned file(::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll,
                                       nullptr, OPEN_EXISTING, 0, nullptr));
        return file.isOpen() || ::GetLastError() == ERROR_SHARING_VIOLATION;
    });
}

/// Of something that is there: the one name that leads to it from the disk's root, or the server.
std::optional<std::filesystem::path> finalName(const std::filesystem::path& path) {
    const Owned handle(::CreateFileW(forCalls(path).c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!handle.isOpen() || ::GetFileType(handle.get()) != FILE_TYPE_DISK)
        return std::nullopt;
    std::wstring name(MAX_PATH, 0);
    DWORD length = 0;
    while ((length = ::GetFinalPathNameByHandleW(
                handle.get(), name.data(), static_cast<DWORD>(name.size()), 0)) >= name.size())
        name.resize(length + 1);
    name.resize(length);
    if (name.empty())
        return std::nullopt;
    constexpr std::wstring_view kShare = L"\\\\?\\UNC\\";
    constexpr std::wstring_view kLong = L"\\\\?\\";
    if (name.starts_with(kShare))
        return L"\\\\" + name.substr(kShare.size());
    return name.starts_with(kLong) ? name.substr(kLong.size()) : name;
}

/// Of a file, without its folder: the system says no more than that there is none of a longer name.
constexpr std::size_t kLongestName = 255;

class WindowsDisk final : public Disk {
public:
    std::unique_ptr<Handle> open(const std::filesystem::path& path, Mode mode,
                                 int& error) override {
        // One that works in a database has its handle for writing only while it writes.
        const bool keepsClosed = mode == Mode::readWrite;
        const DWORD access = GENERIC_READ | (writes(mode) ? DWORD{GENERIC_WRITE} : 0);
        DWORD flags = isBeside(mode) ? FILE_FLAG_OPEN_REPARSE_POINT : 0;
        const std::wstring name = forCalls(path);
        Owned file;
        const auto tryOpen = [&](DWORD wanted, DWORD how) {
            return patiently([&] {
                file = Owned(
                    ::CreateFileW(name.c_str(), wanted, kShareAll, nullptr, how, flags, nullptr));
                return file.isOpen();
            });
        };
        error = keepsClosed ? refusalToWrite(name) : 0;
        if (error == 0)
            error = tryOpen(keepsClosed ? DWORD{GENERIC_READ} : access,
                            makes(mode) ? CREATE_NEW : OPEN_EXISTING);
        if (error == 0 && writes(mode) && isOnShare(file.get())) {
            flags |= FILE_FLAG_WRITE_THROUGH;
            if (!keepsClosed)
                error = tryOpen(access, OPEN_EXISTING);
        }
        if (error == 0)
            error = whatElse(file.get(), isBeside(mode));
        else if (error == EACCES && isFolder(path))
            error = makes(mode) ? EEXIST : EISDIR;
        else if (error == ENOENT && path.filename().native().size() > kLongestName)
            error = ENAMETOOLONG;
        if (error != 0)
            return nullptr;
        return std::make_unique<windows::FileHandle>(path, std::move(file), writes(mode),
                                                     keepsClosed, flags);
    }
    std::filesystem::path resolved(const std::filesystem::path& path) override {
        std::filesystem::path there = path;
        std::filesystem::path rest;
        while (!there.empty()) {
            if (const auto found = finalName(there))
                return rest.empty() ? *found : *found / rest;
            if (!there.has_filename() || !there.has_parent_path())
                break;
            rest = rest.empty() ? there.filename() : there.filename() / rest;
            there = there.parent_path();
        }
        std::error_code none;
        const std::filesystem::path whole = std::filesystem::absolute(path, none);
        if (none || whole.empty())
            return path;
        const auto folder = finalName(whole.parent_path());
        return folder ? *folder / whole.filename() : whole;
    }
    bool exists(const std::filesystem::path& path) override {
        return ::GetFileAttributesW(forCalls(path).c_str()) != INVALID_FILE_ATTRIBUTES ||
               windows::lookAt(path).isOpen();
    }
    int rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
        const std::wstring old = forCalls(from);
        const std::wstring name = forCalls(to);
        return -patiently([&] {
            return ::MoveFileExW(old.c_str(), name.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
        });
    }
    int link(const std::filesystem::path& file, const std::filesystem::path& name) override {
        return -patiently([&] {
            return ::CreateHardLinkW(forCalls(name).c_str(), forCalls(file).c_str(), nullptr) != 0;
        });
    }
    int remove(const std::filesystem::path& path) override {
        const std::wstring name = forCalls(path);
        const int error = patiently([&] { return ::DeleteFileW(name.c_str()) != 0; });
        if (error != EACCES || isFolder(path))
            return -error;
        // What may only be read may still be removed by who may write in its folder.
        const DWORD attributes = ::GetFileAttributesW(name.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0 ||
            ::SetFileAttributesW(name.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY}) == 0)
            return -error;
        return -patiently([&] { return ::DeleteFileW(name.c_str()) != 0; });
    }
    int list(const std::filesystem::path& folder, std::vector<Entry>& entries) override {
        WIN32_FIND_DATAW found{};
        HANDLE const search = ::FindFirstFileExW(forCalls(folder / "*").c_str(), FindExInfoBasic,
                                                 &found, FindExSearchNameMatch, nullptr, 0);
        if (search == INVALID_HANDLE_VALUE)
            return -numberOf(::GetLastError());
        const struct Closer {
            HANDLE handle;
            ~Closer() { ::FindClose(handle); }
        } closer{search};
        do {
            const std::wstring name = found.cFileName;
            if (name == L"." || name == L"..")
                continue;
            const DWORD attributes = found.dwFileAttributes;
            const bool link = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                              IsReparseTagNameSurrogate(found.dwReserved0);
            entries.push_back(
                {std::filesystem::path(name).string(),
                 !link && (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) == 0,
                 std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow,
                 windows::changeOf(found.ftLastWriteTime)});
        } while (::FindNextFileW(search, &found) != 0);
        const DWORD end = ::GetLastError();
        return end == ERROR_NO_MORE_FILES ? 0 : -numberOf(end);
    }
    int makeFolder(const std::filesystem::path& folder) override {
        if (::CreateDirectoryW(forCalls(folder).c_str(), nullptr) != 0)
            return 1;
        const int error = numberOf(::GetLastError());
        return error == EEXIST && isFolder(folder) ? 0 : -error;
    }
    int copyRights(const std::filesystem::path& from, const std::filesystem::path& to) override {
        // Beyond what the folder gives there is only whether a file may be written.
        const std::wstring name = forCalls(to);
        const DWORD like = ::GetFileAttributesW(forCalls(from).c_str());
        const DWORD mine =
            like == INVALID_FILE_ATTRIBUTES ? like : ::GetFileAttributesW(name.c_str());
        if (mine == INVALID_FILE_ATTRIBUTES)
            return -numberOf(::GetLastError());
        constexpr DWORD kReadOnly = FILE_ATTRIBUTE_READONLY;
        const DWORD wanted = (mine & ~kReadOnly) | (like & kReadOnly);
        // Of a folder it says something else.
        if (wanted == mine || (mine & FILE_ATTRIBUTE_DIRECTORY) != 0)
            return 0;
        return ::SetFileAttributesW(name.c_str(), wanted) != 0 ? 0 : -numberOf(::GetLastError());
    }
    int syncFolderOf(const std::filesystem::path& path) override {
        // The disk's own journal keeps names; those that are given are written through.
        const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
        return isFolder(folder) ? 0 : -ENOENT;
    }
};

} // namespace

Disk& Disk::system() {
    static WindowsDisk disk;
    return disk;
}

} // namespace jet
