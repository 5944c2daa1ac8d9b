// SPDX-License-Identifier: GPL-3.0-or-later
//
// Reading hostile zip archives with libzip. The library looks for the end-of-directory record at
// every place near the end of the file where its signature stands and reads a whole directory for
// each, so the records are looked at here first: only few, small directories reach the library.
#include "session/ZipArchive.h"

#include "platform/File.h"

#include <algorithm>
#include <array>
#include <optional>
#include <zip.h>

namespace qor {

namespace {

constexpr std::size_t TransferBytes = 65536;
constexpr std::size_t EndRecordBytes = 22;
constexpr std::size_t LocatorBytes = 20;
constexpr std::size_t EndRecord64Bytes = 56;
/// The end record lies in this much of the file's end: its comment has at most 65535 bytes.
constexpr std::size_t SearchedBytes = 65535 + EndRecordBytes + LocatorBytes;
/// A zip archive stored inside brings an end record of its own; more than a few are an attack.
constexpr int MostEndRecords = 4;

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

struct Directory {
    std::uint64_t members = 0;
    std::uint64_t size = 0;
    std::uint64_t offset = 0;
};

/// The directory that an end record at this place describes; empty when it cannot be one.
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
    return directory;
}

/// Looks at every end record that the library would follow.
ArchiveStatus CheckDirectories(ByteSpan bytes, const ArchiveLimits& limits) {
    const std::size_t first = bytes.size() - std::min(bytes.size(), SearchedBytes);
    int found = 0;
    for (std::size_t at = first; at + EndRecordBytes <= bytes.size(); ++at) {
        if (!HasSignature(bytes, at, 5, 6))
            continue;
        if (++found > MostEndRecords)
            return ArchiveStatus::CannotOpen;
        const auto directory = DirectoryOf(bytes, at);
        if (directory &&
            (directory->members > limits.members || directory->size > limits.directoryBytes))
            return ArchiveStatus::TooLarge;
    }
    return found > 0 ? ArchiveStatus::Good : ArchiveStatus::CannotOpen;
}

ArchiveMember MemberAt(zip_t* archive, zip_uint64_t index) {
    constexpr zip_uint64_t Needed =
        ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    ArchiveMember member;
    if (const char* name = zip_get_name(archive, index, ZIP_FL_ENC_RAW))
        member.name = name;
    zip_stat_t status;
    zip_stat_init(&status);
    if (zip_stat_index(archive, index, 0, &status) != 0 || (status.valid & Needed) != Needed)
        return member;
    member.size = status.size;
    member.packedSize = status.comp_size;
    member.readable = status.encryption_method == ZIP_EM_NONE &&
                      (status.comp_method == ZIP_CM_STORE || status.comp_method == ZIP_CM_DEFLATE);
    return member;
}

struct CloseMember {
    void operator()(zip_file_t* member) const { zip_fclose(member); }
};

} // namespace

struct CZipArchive::Library {
    ~Library() { zip_discard(Archive); }
    zip_t* Archive = nullptr;
};

CZipArchive::CZipArchive() = default;
CZipArchive::~CZipArchive() = default;

ArchiveStatus CZipArchive::Open(const std::string& path, const ArchiveLimits& limits) {
    CFile file;
    std::uint64_t size = 0;
    if (file.OpenForReading(path) != FileCause::None || file.Size(size) != FileCause::None)
        return ArchiveStatus::CannotOpen;
    if (size > limits.fileBytes)
        return ArchiveStatus::TooLarge;
    Bytes.resize(static_cast<std::size_t>(size));
    std::size_t filled = 0;
    std::size_t got = 1;
    while (filled < Bytes.size() && got > 0) {
        if (file.Read(std::span(Bytes).subspan(filled), got) != FileCause::None)
            return ArchiveStatus::CannotOpen;
        filled += got;
    }
    Bytes.resize(filled);
    return OpenHeld(limits);
}

ArchiveStatus CZipArchive::OpenBytes(std::vector<std::uint8_t> bytes, const ArchiveLimits& limits) {
    Bytes = std::move(bytes);
    return Bytes.size() > limits.fileBytes ? ArchiveStatus::TooLarge : OpenHeld(limits);
}

ArchiveStatus CZipArchive::OpenHeld(const ArchiveLimits& limits) {
    List.clear();
    Zip.reset();
    if (const ArchiveStatus status = CheckDirectories(Bytes, limits); status != ArchiveStatus::Good)
        return status;
    zip_source_t* source = zip_source_buffer_create(Bytes.data(), Bytes.size(), 0, nullptr);
    if (!source)
        return ArchiveStatus::CannotOpen;
    auto library = std::make_unique<Library>();
    library->Archive = zip_open_from_source(source, ZIP_RDONLY, nullptr);
    if (!library->Archive) {
        zip_source_free(source);
        return ArchiveStatus::CannotOpen;
    }
    const zip_int64_t count = zip_get_num_entries(library->Archive, 0);
    if (count < 0 || static_cast<std::uint64_t>(count) > limits.members)
        return ArchiveStatus::TooLarge;

    // Members that share their data would make a small file cost many times its size in work.
    std::uint64_t packed = 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        List.push_back(MemberAt(library->Archive, static_cast<zip_uint64_t>(i)));
        if (List.back().packedSize > Bytes.size() - packed)
            return ArchiveStatus::CannotOpen;
        packed += List.back().packedSize;
    }
    Zip = std::move(library);
    return ArchiveStatus::Good;
}

bool CZipArchive::Extract(std::size_t index, const Taker& take) {
    if (!Zip || index >= List.size() || !List[index].readable)
        return false;
    const std::unique_ptr<zip_file_t, CloseMember> member(zip_fopen_index(Zip->Archive, index, 0));
    if (!member)
        return false;
    std::vector<std::uint8_t> buffer(TransferBytes);
    std::uint64_t left = List[index].size;
    for (;;) {
        // The library checks the sum when it comes to the end, so the end has to be read as well.
        const zip_int64_t got = zip_fread(member.get(), buffer.data(), buffer.size());
        if (got <= 0)
            return got == 0 && left == 0;
        const auto count = static_cast<std::uint64_t>(got);
        if (count > left || !take(ByteSpan(buffer).first(static_cast<std::size_t>(count))))
            return false;
        left -= count;
    }
}

} // namespace qor
