// SPDX-License-Identifier: GPL-3.0-or-later
//
// The directory of a zip archive stands at its end, described by an end record (and a second one
// where the numbers take 64 bits) that may be followed by a comment, which may hold anything.
#include "session/ZipDirectory.h"

#include <algorithm>
#include <optional>

namespace qor {

namespace {

constexpr std::size_t LocatorBytes = 20;
constexpr std::size_t EndRecord64Bytes = 56;
constexpr std::size_t RecordBytes = 46; ///< without name, extra field and comment
/// The end record lies in this much of the file's end: its comment has at most 65535 bytes.
constexpr std::size_t SearchedBytes = 65535 + ZipEndRecordBytes;

/// The little-endian number in the bytes; 0 beyond the end.
std::uint64_t GetLittleEndian(ByteSpan bytes, std::uint64_t position, std::size_t width) {
    if (position > bytes.size() || bytes.size() - position < width)
        return 0;
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;)
        value = value << 8 | bytes[static_cast<std::size_t>(position) + i];
    return value;
}

bool HasSignature(ByteSpan bytes, std::uint64_t position, char third, char fourth) {
    const std::uint8_t signature[] = {'P', 'K', static_cast<std::uint8_t>(third),
                                      static_cast<std::uint8_t>(fourth)};
    return position <= bytes.size() && bytes.size() - position >= sizeof signature &&
           std::equal(std::begin(signature), std::end(signature),
                      bytes.begin() + static_cast<std::ptrdiff_t>(position));
}

bool IsRecord(ByteSpan bytes, std::uint64_t position) {
    return HasSignature(bytes, position, 1, 2);
}

struct Directory {
    std::uint64_t members = 0;
    std::uint64_t size = 0;
    std::uint64_t offset = 0;
};

/// The directory that an end record at this place describes; empty when there is none there.
std::optional<Directory> DirectoryOf(ByteSpan bytes, std::size_t end) {
    Directory directory{GetLittleEndian(bytes, end + 10, 2), GetLittleEndian(bytes, end + 12, 4),
                        GetLittleEndian(bytes, end + 16, 4)};
    if (end >= LocatorBytes && HasSignature(bytes, end - LocatorBytes, 6, 7)) {
        const std::uint64_t record = GetLittleEndian(bytes, end - LocatorBytes + 8, 8);
        if (!HasSignature(bytes, record, 6, 6) || bytes.size() - record < EndRecord64Bytes)
            return {};
        directory = {GetLittleEndian(bytes, record + 32, 8), GetLittleEndian(bytes, record + 40, 8),
                     GetLittleEndian(bytes, record + 48, 8)};
    }
    if (directory.size > end || directory.offset > end - directory.size)
        return {};
    const bool empty = directory.size == 0 && directory.members == 0;
    return empty || IsRecord(bytes, directory.offset) ? std::optional(directory) : std::nullopt;
}

/// Decided: the last end record that describes entries holds. One in a comment or in an archive
/// stored inside that describes nothing is passed over.
std::optional<Directory> FindDirectory(ByteSpan bytes) {
    const std::size_t first = bytes.size() - std::min(bytes.size(), SearchedBytes);
    std::optional<Directory> empty;
    for (std::size_t at = bytes.size(); at-- > first;) {
        if (bytes.size() - at < ZipEndRecordBytes || !HasSignature(bytes, at, 5, 6))
            continue;
        const std::optional<Directory> directory = DirectoryOf(bytes, at);
        if (directory && directory->size > 0)
            return directory;
        if (!empty)
            empty = directory;
    }
    return empty;
}

std::size_t NextRecord(ByteSpan bytes, std::size_t from) {
    while (from < bytes.size() && !IsRecord(bytes, from))
        ++from;
    return std::min(from, bytes.size());
}

/// The record at a place of the directory. One whose lengths lie ends where the next one begins.
ZipRecord RecordAt(ByteSpan directory, std::size_t at, bool last) {
    const auto nameBytes = static_cast<std::size_t>(GetLittleEndian(directory, at + 28, 2));
    const auto otherBytes = static_cast<std::size_t>(GetLittleEndian(directory, at + 30, 2) +
                                                     GetLittleEndian(directory, at + 32, 2));
    ZipRecord record{at, RecordBytes + nameBytes + otherBytes, {}, true};
    if (record.length > directory.size() - at ||
        (!last && !IsRecord(directory, at + record.length))) {
        record.length = NextRecord(directory, at + RecordBytes) - at;
        record.whole = false;
    }
    record.name = AsText(
        directory.subspan(at + RecordBytes, std::min(nameBytes, record.length - RecordBytes)));
    return record;
}

} // namespace

ArchiveStatus ReadZipDirectory(ByteSpan bytes, const ArchiveLimits& limits,
                               std::vector<ZipRecord>& records) {
    records.clear();
    const std::optional<Directory> found = FindDirectory(bytes);
    if (!found)
        return ArchiveStatus::CannotOpen;
    if (found->members > limits.members || found->size > limits.directoryBytes)
        return ArchiveStatus::TooLarge;

    const auto offset = static_cast<std::size_t>(found->offset);
    const ByteSpan directory = bytes.subspan(offset, static_cast<std::size_t>(found->size));
    std::vector<ZipRecord> list;
    for (std::size_t at = 0; directory.size() - at >= RecordBytes && IsRecord(directory, at);) {
        if (list.size() == limits.members)
            return ArchiveStatus::TooLarge;
        list.push_back(RecordAt(directory, at, list.size() + 1 >= found->members));
        at += list.back().length;
        list.back().position += offset;
    }
    if (list.size() < found->members)
        return ArchiveStatus::CannotOpen;
    records = std::move(list);
    return ArchiveStatus::Good;
}

} // namespace qor
