// SPDX-License-Identifier: GPL-3.0-or-later
//
// A file or pipe whose bytes are read as they were before it was compressed: gzip and Zstandard are
// told by their first bytes, everything else is read as it is. Whoever plays or reads logs opens
// them through this. It unpacks as it goes, in bounded memory. One thread at a time.
#pragma once

#include "platform/File.h"
#include "platform/ZstdUnpacker.h"

#include <variant>
#include <vector>

namespace qor {

/// How a file is compressed.
enum class Packing : std::uint8_t { None, Gzip, Zstd };

/// By its first bytes; None for what cannot be read or can be read only once.
Packing PackingOf(const std::string& path);

class CInputFile {
  public:
    CInputFile() = default;
    /// One that is open for reading.
    CInputFile(CFile file); // NOLINT(google-explicit-constructor): it is the same file
    /// As CFile::OpenForReading; nothing is read yet.
    FileCause OpenForReading(const std::string& path);
    void Close() { *this = {}; }
    bool IsOpen() const { return File.IsOpen(); }
    const std::string& Path() const { return File.Path(); }

    /// As CFile::Read. A compressed file that ends too early is EndOfFile, one that is damaged or
    /// is followed by something else InvalidFile, each behind all that could be read. Zero bytes
    /// behind it are padding.
    FileCause Read(std::span<std::uint8_t> room, std::size_t& got);
    /// Goes on reading at that (unpacked) byte. A compressed file is unpacked up to there.
    FileCause SeekTo(std::uint64_t position);
    /// Bytes read of the file itself.
    std::uint64_t BytesTaken() const { return Taken; }
    /// False when a read would wait, as for a pipe into which nothing was written yet.
    bool HasInput() const { return Begin < Held.size() || !Waits || File.HasInput(); }

  private:
    FileCause Recognise();
    FileCause Fill(std::size_t& got);
    FileCause ReadUnpacked(std::span<std::uint8_t> room, std::size_t& got);
    FileCause BehindMember();
    FileCause SkipTo(std::uint64_t position);
    UnpackStep Unpack(std::span<std::uint8_t> room);
    void Restart();

    CFile File;
    bool Waits = false; ///< it is a pipe
    bool Known = false; ///< whether it is compressed
    std::variant<std::monostate, CGzipUnpacker, CZstdUnpacker> Unpacker;
    bool InMember = false;
    std::vector<std::uint8_t> Held; ///< read of the file
    std::size_t Begin = 0;          ///< of these, the first one that is not used
    std::uint64_t Taken = 0, Made = 0;
    FileCause Fault = FileCause::None; ///< for the next read
};

} // namespace qor
