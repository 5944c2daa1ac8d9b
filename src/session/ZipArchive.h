// SPDX-License-Identifier: GPL-3.0-or-later
//
// Reading zip archives that nobody vouches for. The archive is held in memory, its directory is
// bounded before the zip library sees it, and members are handed out in small pieces, never more
// than they declare. It writes nothing and judges no names: that is its caller's business.
#pragma once

#include "base/Bytes.h"
#include "session/ZipDirectory.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qor {

struct ArchiveMember {
    std::string name;       ///< bytes as stored
    std::uint64_t size = 0; ///< as declared
    bool readable = false;  ///< a sound entry, not encrypted, stored or deflated
};

class CZipArchive {
  public:
    CZipArchive() = default;
    CZipArchive(const CZipArchive&) = delete;
    CZipArchive& operator=(const CZipArchive&) = delete;

    ArchiveStatus Open(const std::string& path, const ArchiveLimits& limits);
    /// The same over bytes that are already in memory.
    ArchiveStatus OpenBytes(std::vector<std::uint8_t> bytes, const ArchiveLimits& limits);

    /// In archive order.
    const std::vector<ArchiveMember>& Members() const { return List; }

    /// Takes a piece of a member; false stops the extraction.
    using Taker = std::function<bool(ByteSpan)>;

    /// Hands a readable member to `take` in pieces. False when the data are damaged, do not match
    /// the checksum, are more or less than declared, or were not taken.
    bool Extract(std::size_t index, const Taker& take);

  private:
    class CEntry;
    ArchiveStatus OpenHeld(const ArchiveLimits& limits);

    std::vector<std::uint8_t> Bytes;
    std::vector<ZipRecord> Records;
    std::vector<ArchiveMember> List;
};

} // namespace qor
