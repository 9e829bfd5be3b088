#include "jet/system/WindowsError.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <winternl.h>

namespace jet::windows {

namespace {

struct Known {
    DWORD error;
    int number;
};
constexpr Known kKnown[] = {
    {ERROR_FILE_NOT_FOUND,        ENOENT      },
    {ERROR_PATH_NOT_FOUND,        ENOENT      },
    {ERROR_INVALID_NAME,          ENOENT      },
    {ERROR_BAD_PATHNAME,          ENOENT      },
    {ERROR_BAD_NETPATH,           ENOENT      },
    {ERROR_BAD_NET_NAME,          ENOENT      },
    {ERROR_INVALID_DRIVE,         ENOENT      },
    {ERROR_DIRECTORY,             ENOTDIR     },
    {ERROR_FILE_EXISTS,           EEXIST      },
    {ERROR_ALREADY_EXISTS,        EEXIST      },
    {ERROR_DISK_FULL,             ENOSPC      },
    {ERROR_HANDLE_DISK_FULL,      ENOSPC      },
    {ERROR_NOT_ENOUGH_QUOTA,      ENOSPC      },
    {ERROR_FILE_TOO_LARGE,        EFBIG       },
    {ERROR_ACCESS_DENIED,         EACCES      },
    {ERROR_NETWORK_ACCESS_DENIED, EACCES      },
    {ERROR_CANNOT_MAKE,           EACCES      },
    {ERROR_PRIVILEGE_NOT_HELD,    EPERM       },
    {ERROR_WRITE_PROTECT,         EROFS       },
    {ERROR_SHARING_VIOLATION,     EBUSY       },
    {ERROR_LOCK_VIOLATION,        EBUSY       },
    {ERROR_NOT_SAME_DEVICE,       EXDEV       },
    {ERROR_CANT_RESOLVE_FILENAME, ELOOP       },
    {ERROR_NOT_SUPPORTED,         ENOTSUP     },
    {ERROR_INVALID_FUNCTION,      ENOTSUP     },
    {ERROR_CALL_NOT_IMPLEMENTED,  ENOTSUP     },
    {ERROR_TOO_MANY_LINKS,        EMLINK      },
    {ERROR_NOT_ENOUGH_MEMORY,     ENOMEM      },
    {ERROR_OUTOFMEMORY,           ENOMEM      },
    {ERROR_TOO_MANY_OPEN_FILES,   EMFILE      },
    {ERROR_FILENAME_EXCED_RANGE,  ENAMETOOLONG},
    {ERROR_INVALID_PARAMETER,     EINVAL      },
    {ERROR_DIR_NOT_EMPTY,         ENOTEMPTY   },
};

constexpr int kMostTries = 100;
constexpr DWORD kPause = 20; ///< milliseconds

extern "C" NTSYSAPI NTSTATUS NTAPI RtlGetLastNtStatus();

/// The name of a file that goes when the last program has closed it is refused like one without
/// permission; only this tells them apart.
bool isJustGoing(DWORD error) {
    constexpr auto kDeletePending = static_cast<NTSTATUS>(0xC0000056);
    return error == ERROR_ACCESS_DENIED && RtlGetLastNtStatus() == kDeletePending;
}

} // namespace

int numberOf(DWORD error) noexcept {
    const auto* found = std::ranges::find(kKnown, error, &Known::error);
    return found == std::end(kKnown) ? EIO : found->number;
}

int patiently(const std::function<bool()>& call) {
    for (int tries = 0;; ++tries) {
        if (call())
            return 0;
        const DWORD error = ::GetLastError();
        const bool passes =
            error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || isJustGoing(error);
        if (!passes || tries == kMostTries)
            return numberOf(error);
        ::Sleep(kPause);
    }
}

} // namespace jet::windows
