// SPDX-License-Identifier: GPL-3.0-or-later
//
// The open raw log as a sequence of whole records: a batch of records goes to the operating system
// in one write; what a failed write left of a record is cut off again. Used by one thread at a
// time: the one that begins the log, then the stage's writer. Knows no frames and no names.
#pragma once

#include "base/Sha256.h"
#include "platform/File.h"

#include <vector>

namespace qor {

/// Records on their way to the file: their bytes, where each ends, and whose it is.
struct LogRecords {
    struct Mark {
        std::size_t end;     ///< in the bytes
        std::uint32_t owner; ///< 0: no frame (a header record, a time stamp)
    };
    std::vector<std::uint8_t> bytes;
    std::vector<Mark> marks;

    bool Empty() const { return marks.empty(); }
    /// Adds one record, in two parts.
    void Add(std::uint32_t owner, ByteSpan record, ByteSpan tag = {});
    /// Adds those of another list and leaves it empty. False, and nothing has changed, when there
    /// is no memory for them.
    bool Take(LogRecords& other);
    /// Takes so many records off the beginning.
    void DropFirst(std::size_t count);
    void Clear();
};

class CLogWriter {
  public:
    /// Creates the file for writing with exclusive sharing; one that is there only when it
    /// `replaces` it.
    FileCause Create(const std::string& path, bool replaces);
    /// Before it is created: whether what is written is hashed.
    void SetHashing(bool on) { Hashing = on; }
    /// Of what stands in the file up to the last whole record; empty when that is not known.
    std::string Sha256() const;
    bool IsOpen() const { return File.IsOpen(); }
    const std::string& Path() const { return File.Path(); }
    void Close() { File.Close(); }

    /// Writes the records. `written` is the number of whole records that stand in the file; fewer
    /// than were given only with a cause, and then the file ends with a whole record.
    FileCause Write(const LogRecords& records, std::size_t& written);

    /// Bytes up to the last whole record.
    std::uint64_t Size() const { return FileSize; }
    /// Whether the cutting after a failed write failed too: then a broken record ends the file.
    FileCause CutCause() const { return CutBack; }
    /// The file itself, for the thread that synchronises it.
    const CFile& OpenFile() const { return File; }

  private:
    std::size_t CutToWholeRecords(const LogRecords& records);

    CFile File;
    std::uint64_t FileSize = 0;
    bool Hashing = false;
    CSha256 Hash;
    FileCause CutBack = FileCause::None;
};

} // namespace qor
