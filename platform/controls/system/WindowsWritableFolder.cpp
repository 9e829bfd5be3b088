#include "controls/system/WritableFolder.h"

#include <QDir>

#include <windows.h>

// A folder's attributes don't tell; its list of rights does, when it is opened for making files.
bool mayWriteIn(const QString& folder) {
    const std::wstring name = QDir::toNativeSeparators(folder).toStdWString();
    const HANDLE opened = ::CreateFileW(
        name.c_str(), FILE_ADD_FILE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return false;
    ::CloseHandle(opened);
    return true;
}
