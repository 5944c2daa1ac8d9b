// SPDX-License-Identifier: GPL-3.0-or-later
//
// Text, paths and error causes of Windows for the files beside this one. Called on any thread.
#include "platform/Win32Support.h"

#include "base/Text.h"

#include <algorithm>
#include <climits>

#include <windows.h>

namespace qor {

namespace {

/// Beyond this many characters a folder or file needs the long form.
constexpr std::size_t LongestPlainPath = 247;

// ERROR_NO_SUCH_DEVICE, ERROR_DEVICE_HARDWARE_ERROR, ERROR_DISK_QUOTA_EXCEEDED: some headers lack
// them.
constexpr DWORD NoSuchDevice = 433;
constexpr DWORD DeviceHardwareError = 483;
constexpr DWORD QuotaExceeded = 1295;

struct CauseOfError {
    DWORD error;
    FileCause cause;
};

constexpr CauseOfError Causes[] = {
    {ERROR_SUCCESS, FileCause::None},
    {ERROR_FILE_NOT_FOUND, FileCause::FileNotFound},
    {ERROR_PATH_NOT_FOUND, FileCause::BadPath},
    {ERROR_INVALID_DRIVE, FileCause::BadPath},
    {ERROR_INVALID_NAME, FileCause::BadPath},
    {ERROR_BAD_PATHNAME, FileCause::BadPath},
    {ERROR_BAD_NETPATH, FileCause::BadPath},
    {ERROR_BAD_NET_NAME, FileCause::BadPath},
    {ERROR_DIRECTORY, FileCause::BadPath},
    {ERROR_FILENAME_EXCED_RANGE, FileCause::BadPath},
    {ERROR_TOO_MANY_OPEN_FILES, FileCause::TooManyOpenFiles},
    {ERROR_ACCESS_DENIED, FileCause::AccessDenied},
    {ERROR_INVALID_ACCESS, FileCause::AccessDenied},
    {ERROR_NETWORK_ACCESS_DENIED, FileCause::AccessDenied},
    {ERROR_WRITE_PROTECT, FileCause::AccessDenied},
    {ERROR_FILE_EXISTS, FileCause::AccessDenied},
    {ERROR_ALREADY_EXISTS, FileCause::AccessDenied},
    {ERROR_DELETE_PENDING, FileCause::AccessDenied},
    {ERROR_FILE_READ_ONLY, FileCause::AccessDenied},
    {ERROR_INVALID_HANDLE, FileCause::InvalidFile},
    {ERROR_CURRENT_DIRECTORY, FileCause::RemoveCurrentDirectory},
    {ERROR_CANNOT_MAKE, FileCause::DirectoryFull},
    {ERROR_SEEK, FileCause::BadSeek},
    {ERROR_NEGATIVE_SEEK, FileCause::BadSeek},
    {ERROR_SEEK_ON_DEVICE, FileCause::BadSeek},
    {ERROR_BAD_UNIT, FileCause::HardwareIo},
    {ERROR_NOT_READY, FileCause::HardwareIo},
    {ERROR_CRC, FileCause::HardwareIo},
    {ERROR_NOT_DOS_DISK, FileCause::HardwareIo},
    {ERROR_SECTOR_NOT_FOUND, FileCause::HardwareIo},
    {ERROR_WRITE_FAULT, FileCause::HardwareIo},
    {ERROR_READ_FAULT, FileCause::HardwareIo},
    {ERROR_GEN_FAILURE, FileCause::HardwareIo},
    {ERROR_IO_DEVICE, FileCause::HardwareIo},
    {ERROR_DEVICE_NOT_CONNECTED, FileCause::HardwareIo},
    {ERROR_DEVICE_REMOVED, FileCause::HardwareIo},
    {ERROR_DISK_OPERATION_FAILED, FileCause::HardwareIo},
    {DeviceHardwareError, FileCause::HardwareIo},
    // A disk that was pulled out, or changed.
    {ERROR_FILE_INVALID, FileCause::HardwareIo},
    {NoSuchDevice, FileCause::HardwareIo},
    {ERROR_UNRECOGNIZED_VOLUME, FileCause::HardwareIo},
    {ERROR_NO_MEDIA_IN_DRIVE, FileCause::HardwareIo},
    {ERROR_WRONG_DISK, FileCause::HardwareIo},
    // A network drive that has gone away.
    {ERROR_REM_NOT_LIST, FileCause::HardwareIo},
    {ERROR_DEV_NOT_EXIST, FileCause::HardwareIo},
    {ERROR_BAD_NET_RESP, FileCause::HardwareIo},
    {ERROR_UNEXP_NET_ERR, FileCause::HardwareIo},
    {ERROR_NETNAME_DELETED, FileCause::HardwareIo},
    {ERROR_SEM_TIMEOUT, FileCause::HardwareIo},
    {ERROR_CONNECTION_ABORTED, FileCause::HardwareIo},
    {ERROR_NETWORK_UNREACHABLE, FileCause::HardwareIo},
    {ERROR_HOST_UNREACHABLE, FileCause::HardwareIo},
    {ERROR_SHARING_VIOLATION, FileCause::SharingViolation},
    {ERROR_SHARING_BUFFER_EXCEEDED, FileCause::SharingViolation},
    {ERROR_LOCK_VIOLATION, FileCause::LockViolation},
    {ERROR_LOCKED, FileCause::LockViolation},
    {ERROR_DISK_FULL, FileCause::DiskFull},
    {ERROR_HANDLE_DISK_FULL, FileCause::DiskFull},
    {QuotaExceeded, FileCause::DiskFull},
    {ERROR_FILE_TOO_LARGE, FileCause::DiskFull},
    {ERROR_HANDLE_EOF, FileCause::EndOfFile},
};

} // namespace

std::wstring WideText(std::string_view text) {
    if (text.empty() || text.size() > INT_MAX)
        return {};
    int size = static_cast<int>(text.size());
    UINT codePage = CP_UTF8;
    DWORD strict = MB_ERR_INVALID_CHARS;
    int needed = MultiByteToWideChar(codePage, strict, text.data(), size, nullptr, 0);
    if (needed <= 0) {
        codePage = CP_ACP;
        strict = 0;
        needed = MultiByteToWideChar(codePage, strict, text.data(), size, nullptr, 0);
    }
    std::wstring wide(static_cast<std::size_t>(std::max(needed, 0)), L'\0');
    MultiByteToWideChar(codePage, strict, text.data(), size, wide.data(), needed);
    return wide;
}

std::string NarrowText(std::wstring_view text) {
    if (text.empty() || text.size() > INT_MAX / 4)
        return {};
    int size = static_cast<int>(text.size());
    int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(needed, 0)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

std::wstring WidePath(std::string_view path) {
    if (path.find('\0') != std::string_view::npos)
        return {};
    std::wstring wide = WideText(path);
    if (wide.size() <= LongestPlainPath || wide.starts_with(L"\\\\?\\"))
        return wide;
    DWORD needed = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    full.resize(GetFullPathNameW(wide.c_str(), needed, full.data(), nullptr));
    if (full.empty())
        return wide;
    if (full.starts_with(L"\\\\"))
        return L"\\\\?\\UNC" + full.substr(1);
    return L"\\\\?\\" + full;
}

std::wstring WidePortName(std::string_view name) {
    constexpr std::string_view Digits = "0123456789";
    bool isPort = name.size() > 3 && EqualsNoCase(name.substr(0, 3), "COM") &&
                  name.find_first_not_of(Digits, 3) == std::string_view::npos;
    return isPort ? L"\\\\.\\" + WideText(name) : WidePath(name);
}

std::string ProgramPath() {
    constexpr DWORD LongestPath = 32768; // characters: the system's own limit
    std::wstring path(LongestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), LongestPath));
    return NarrowText(path);
}

FileCause FileCauseOf(unsigned long error) {
    for (const CauseOfError& row : Causes)
        if (row.error == error)
            return row.cause;
    return FileCause::Generic;
}

} // namespace qor
