// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DiskSpace.h"

#include <sys/statvfs.h>

namespace qor {

std::optional<std::uint64_t> FreeDiskSpace(const std::string& folder) {
    struct statvfs disk {};
    if (statvfs(folder.empty() ? "." : folder.c_str(), &disk) != 0 || disk.f_blocks == 0)
        return std::nullopt;
    return std::uint64_t{disk.f_bavail} * disk.f_frsize;
}

} // namespace qor
