// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ports on Windows: whether one can be had is known only by opening it, for which the caller is
// warned. The system does not say which program holds a port.
#include "platform/PortAccess.h"

#include "platform/Win32Support.h"

#include <windows.h>

namespace qor {

namespace {

PortState StateOf(const std::string& name) {
    const std::wstring path = WidePortName(name);
    if (path.empty())
        return PortState::Missing;
    const HANDLE port = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        // A port that another program has open is refused as one that may not be opened.
        if (error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION)
            return PortState::InUse;
        return PortState::Missing;
    }
    DWORD mask = 0;
    const bool isSerial = GetFileType(port) == FILE_TYPE_CHAR && GetCommMask(port, &mask);
    CloseHandle(port);
    return isSerial ? PortState::Free : PortState::NoPort;
}

} // namespace

std::vector<PortAccess> LookAtPorts(std::span<const std::string> names) {
    std::vector<PortAccess> all;
    for (const std::string& name : names)
        all.push_back({.state = StateOf(name)});
    return all;
}

std::string StablePortName(const std::string& name) {
    return name;
}

} // namespace qor
