// SPDX-License-Identifier: GPL-3.0-or-later
//
// Reading hostile zip archives with libzip. The library refuses an archive as a whole for one
// malformed entry, and reads a whole directory for every end record that it comes across; so it
// gets to see each entry as the only one of an archive, and judges it alone.
#include "session/ZipArchive.h"

#include "platform/File.h"

#include <algorithm>
#include <memory>
#include <zip.h>

namespace qor {

namespace {

constexpr std::size_t TransferBytes = 65536;

void PutLittleEndian(std::span<std::uint8_t> place, std::uint64_t value) {
    for (std::uint8_t& byte : place) {
        byte = static_cast<std::uint8_t>(value);
        value >>= 8;
    }
}

struct CloseMember {
    void operator()(zip_file_t* member) const { zip_fclose(member); }
};

} // namespace

/// The zip library over an archive of one entry: the archive's bytes, the entry's record, an end
/// record.
class CZipArchive::CEntry {
  public:
    CEntry(std::vector<std::uint8_t>& bytes, const ZipRecord& record);
    ~CEntry() { zip_discard(Library); }
    CEntry(const CEntry&) = delete;
    CEntry& operator=(const CEntry&) = delete;

    /// Size and packed size as declared; false when the entry cannot be read.
    bool Look(std::uint64_t& size, std::uint64_t& packedSize) const;
    zip_file_t* Open() const { return Library ? zip_fopen_index(Library, 0, 0) : nullptr; }

  private:
    /// Zeros fill what the library searches for end records: nothing of the archive's own is there.
    static constexpr std::size_t BeforeEnd = 64;
    static constexpr std::size_t BehindEnd = 65535;
    std::vector<std::uint8_t> Record;
    std::vector<std::uint8_t> Tail;
    zip_t* Library = nullptr;
};

CZipArchive::CEntry::CEntry(std::vector<std::uint8_t>& bytes, const ZipRecord& record)
    : Record(bytes.begin() + static_cast<std::ptrdiff_t>(record.position),
             bytes.begin() + static_cast<std::ptrdiff_t>(record.position + record.length)),
      Tail(BeforeEnd + ZipEndRecordBytes + BehindEnd) {
    // What the name is encoded in is not the library's business: it refuses wrong claims.
    constexpr std::size_t FlagsHigh = 9;
    constexpr std::uint8_t NameIsUtf8 = 0x08;
    Record[FlagsHigh] &= static_cast<std::uint8_t>(~NameIsUtf8);

    const std::span<std::uint8_t> end = std::span(Tail).subspan(BeforeEnd, ZipEndRecordBytes);
    PutLittleEndian(end.subspan(0, 4), 0x06054b50);
    PutLittleEndian(end.subspan(8, 2), 1);
    PutLittleEndian(end.subspan(10, 2), 1);
    PutLittleEndian(end.subspan(12, 4), Record.size());
    PutLittleEndian(end.subspan(16, 4), bytes.size());

    const zip_buffer_fragment_t parts[] = {
        {bytes.data(), bytes.size()}, {Record.data(), Record.size()}, {Tail.data(), Tail.size()}};
    zip_source_t* source = zip_source_buffer_fragment_create(parts, std::size(parts), 0, nullptr);
    if (!source)
        return;
    Library = zip_open_from_source(source, ZIP_RDONLY, nullptr);
    if (!Library)
        zip_source_free(source);
}

bool CZipArchive::CEntry::Look(std::uint64_t& size, std::uint64_t& packedSize) const {
    constexpr zip_uint64_t Needed =
        ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    zip_stat_t status;
    zip_stat_init(&status);
    if (!Library || zip_stat_index(Library, 0, 0, &status) != 0 ||
        (status.valid & Needed) != Needed)
        return false;
    size = status.size;
    packedSize = status.comp_size;
    return status.encryption_method == ZIP_EM_NONE &&
           (status.comp_method == ZIP_CM_STORE || status.comp_method == ZIP_CM_DEFLATE);
}

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
    const ArchiveStatus status = ReadZipDirectory(Bytes, limits, Records);
    // Members that share their data would make a small file cost many times its size in work, so
    // there is a bound to what they add up to; a false claim of one leaves room for the others.
    std::uint64_t packedLeft = limits.fileBytes;
    for (const ZipRecord& record : Records) {
        ArchiveMember member{record.name};
        std::uint64_t packed = 0;
        member.readable =
            record.whole && CEntry(Bytes, record).Look(member.size, packed) && packed <= packedLeft;
        packedLeft -= member.readable ? packed : 0;
        List.push_back(std::move(member));
    }
    return status;
}

bool CZipArchive::Extract(std::size_t index, const Taker& take) {
    if (index >= List.size() || !List[index].readable)
        return false;
    const CEntry entry(Bytes, Records[index]);
    const std::unique_ptr<zip_file_t, CloseMember> member(entry.Open());
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
