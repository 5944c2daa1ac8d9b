// SPDX-License-Identifier: GPL-3.0-or-later
//
// The open raw log as a sequence of whole records: records of one batch are assembled in one buffer
// and handed to the operating system in one write; what a failed write left of a record is cut off
// again. Guarded by the document's lock (its owner is the raw log). Knows no frames and no names.
#pragma once

#include "platform/File.h"

#include <vector>

namespace qor {

class CLogWriter {
  public:
    /// Creates (or empties) the file for writing with exclusive sharing.
    FileCause Create(const std::string& path);
    bool IsOpen() const { return File.IsOpen(); }
    const std::string& Path() const { return File.Path(); }
    void Close();

    /// Adds one record, in two parts, to the batch. Nothing reaches the file before Flush.
    void Add(ByteSpan bytes, ByteSpan tag = {});
    std::size_t Waiting() const { return Ends.size(); }
    /// Writes the batch. `written` is the number of whole records that stand in the file; fewer
    /// than were waiting only with a cause, and then the rest is gone and the file ends with a
    /// whole record.
    FileCause Flush(std::size_t& written);

    /// Bytes up to the last whole record.
    std::uint64_t Size() const { return FileSize; }
    std::size_t BatchBytes() const { return Batch.size(); }
    /// Whether the cutting after a failed write failed too: then a broken record ends the file.
    FileCause CutCause() const { return CutBack; }
    /// The file itself, for the thread that synchronises it.
    const CFile& OpenFile() const { return File; }

  private:
    std::size_t CutToWholeRecords();

    CFile File;
    std::vector<std::uint8_t> Batch;
    std::vector<std::size_t> Ends; ///< of each waiting record in the batch
    std::uint64_t FileSize = 0;
    FileCause CutBack = FileCause::None;
};

} // namespace qor
