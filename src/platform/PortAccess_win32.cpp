// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ports on Windows: whether one can be had is known only by opening it, for which the caller is
// warned. The system does not say which program holds a port.
#include "platform/PortAccess.h"

#include "platform/Win32Support.h"

#include <algorithm>
#include <windows.h>

namespace qor {

namespace {

constexpr std::size_t MostNames = 1U << 20; // bytes

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

std::vector<std::string> PortNames() {
    std::vector<char> bytes(64 * 1024); // the names of all devices, each with its end
    DWORD size = 0;
    while ((size = QueryDosDeviceA(nullptr, bytes.data(), static_cast<DWORD>(bytes.size()))) == 0 &&
           GetLastError() == ERROR_INSUFFICIENT_BUFFER && bytes.size() < MostNames)
        bytes.resize(bytes.size() * 2);
    std::vector<std::string> names;
    for (std::size_t at = 0; at < size && bytes[at] != 0; at += names.back().size() + 1)
        names.emplace_back(&bytes[at]);
    std::erase_if(names, [](const std::string& name) {
        return !name.starts_with("COM") || name.size() < 4 ||
               name.find_first_not_of("0123456789", 3) != std::string::npos;
    });
    std::ranges::sort(names);
    return names;
}

std::string StablePortName(const std::string& name) {
    return name;
}

} // namespace qor
