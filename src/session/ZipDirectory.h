// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where the entries of a zip archive are listed: finds the directory and cuts it into records, so
// that a malformed entry costs nobody but itself. What a record says of its member is left to the
// zip library. No state; the bytes are hostile, the work is linear in their number.
#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qor {

enum class [[nodiscard]] ArchiveStatus : std::uint8_t{
    Good,
    CannotOpen, ///< no such file, not an archive, or its directory is damaged or cut
    TooLarge,   ///< the file, its directory or the number of its members is beyond the limits
};

struct ArchiveLimits {
    std::uint64_t fileBytes = 0;
    std::uint64_t directoryBytes = 0;
    std::size_t members = 0;
};

inline constexpr std::size_t ZipEndRecordBytes = 22;

/// An entry of the directory.
struct ZipRecord {
    std::size_t position = 0; ///< in the archive's bytes
    std::size_t length = 0;
    std::string name;   ///< bytes as stored
    bool whole = false; ///< its lengths agree with where the next record stands
};

/// The directory's records in their order; none unless the status is Good.
ArchiveStatus ReadZipDirectory(ByteSpan bytes, const ArchiveLimits& limits,
                               std::vector<ZipRecord>& records);

} // namespace qor
