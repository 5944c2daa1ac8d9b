// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a raw log says without any definition: its header block, when it was begun, its pressure
// tare, its time stamps and the times of its tags. The one reader of these; playing a log is
// CFilePlayer's. Prints nothing, keeps no lock; used by one thread at a time.
#pragma once

#include "platform/InputFile.h"
#include "telemetry/RawLogFormat.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

struct RawLogHeader {
    std::vector<HeaderRecord> records; ///< the well-formed ones, in the file's order
    std::uint64_t size = 0;            ///< of the block in bytes, malformed records included

    std::uint64_t malformed = 0; ///< records of it that say nothing
    bool torn = false;           ///< the file ends within a record

    /// A file without header is a plain capture.
    bool IsRawLog() const { return !records.empty(); }
    /// The value of the first record with this tag; null when there is none.
    const std::string* ValueOf(std::string_view tag) const;
    /// When the log was begun, in seconds of its local time; empty when no record says so.
    std::optional<std::int64_t> BeginTime() const;
    /// In the pressure's units; empty when no record holds a number.
    std::optional<double> PressureTare() const;
    /// What its local times are ahead of UTC; empty when no record says so.
    std::optional<int> ZoneMinutes() const;
};

/// Times are local times of the log, with offset 0; not known when there is none.
struct RawLogTimes {
    std::uint64_t timeStamps = 0; ///< well-formed time-stamp sentences
    FrameTime firstTimeStamp, lastTimeStamp;
    /// Decided: where frames end only a definition knows; a tag is here what reads as a time within
    /// a year of the log's begin, and a log that does not say when it was begun has none.
    FrameTime firstTag, lastTag;
};

class CRawLogReader {
  public:
    /// Opens the file or pipe and reads its header block.
    FileCause Open(const std::string& path);
    /// Reads a piece on, so that a caller may stop between pieces; nothing at the end.
    FileCause ReadOn();
    bool AtEnd() const { return Ended; }

    const RawLogHeader& Header() const { return Block; }
    /// Of what has been read so far.
    const RawLogTimes& Times() const { return Seen; }
    std::uint64_t BytesRead() const { return Read; }
    /// Whether the file ends within its header block; known at the end of the file.
    bool HeaderIsTorn() const { return Block.torn || (Ended && Read == Block.size && EndsEarly()); }

  private:
    FileCause ReadHeaderBlock();
    bool EndsEarly() const;
    void FindTimeTags();
    void CountTimeStamps();

    CInputFile File;
    RawLogHeader Block;
    RawLogTimes Seen;
    std::optional<std::int64_t> Begin;
    std::vector<std::uint8_t> Piece; ///< the bytes behind the block that are not done with
    std::uint64_t Read = 0;
    bool Ended = false;
};

/// The header of a log; empty where it cannot be read, and for a pipe: what is read of one here
/// would be missing when it is played.
RawLogHeader HeaderOf(const std::string& path);

} // namespace qor
