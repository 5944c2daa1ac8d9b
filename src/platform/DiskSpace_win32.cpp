// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DiskSpace.h"

#include "platform/Win32Support.h"

#include <windows.h>

namespace qor {

std::optional<std::uint64_t> FreeDiskSpace(const std::string& folder) {
    ULARGE_INTEGER available{};
    if (!GetDiskFreeSpaceExW(WidePath(folder.empty() ? "." : folder).c_str(), &available, nullptr,
                             nullptr))
        return std::nullopt;
    return available.QuadPart;
}

} // namespace qor
