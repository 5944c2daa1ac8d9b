// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a played-back raw log holds besides frames: header records and time-stamp sentences between
// them, a time tag behind most of them. A stream that does not begin with a header record is a
// plain capture and holds none of it. Called by CFrameSync on the thread that processes the file.
#pragma once

#include "telemetry/RawLogFormat.h"

namespace qor {

class CReplayFilter {
  public:
    /// Whether the stream is a raw log; false until it is known to be one.
    bool IsRawLog() const { return Kind == StreamKind::RawLog; }
    bool IsKnown() const { return Kind != StreamKind::Unknown; }
    /// False when neither a header record nor a time-stamp sentence begins with the byte, or the
    /// stream is a capture: the quick test for most places.
    bool MayStandHere(std::uint8_t first) const {
        return Kind == StreamKind::Unknown ||
               (Kind == StreamKind::RawLog &&
                (first == HeaderRecordStart[0] || first == TimeStampStart[0]));
    }
    /// The length of the header record or time-stamp sentence at a place where a frame could begin;
    /// 0 when there is none, empty when more bytes are needed to tell. There must be a byte. The
    /// first bytes of the stream tell a raw log from a capture.
    std::optional<std::size_t> Skippable(ByteSpan bytes, bool ended);
    /// Whether the last bytes of a raw log, which are no whole header record or sentence, may begin
    /// one.
    bool BeginsCut(ByteSpan bytes) const;
    /// The time that a tag says, when the bytes are one. Decided: that is all that counts, also for
    /// the instruments that the log's NMEA records name. Only the one in the GPS role is written
    /// without tags, and no text that follows it reads as a time.
    std::optional<FrameTime> Tag(ByteSpan bytes) { return Tags.Read(bytes); }
    /// A new stream.
    void Reset() { *this = {}; }

  private:
    enum class StreamKind { Unknown, RawLog, Capture };

    StreamKind KindOf(ByteSpan bytes, bool ended) const;

    StreamKind Kind = StreamKind::Unknown;
    CTimeTagReader Tags;
};

} // namespace qor
