// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where the next frame begins in a raw log that also holds frames without sync header. Called by
// CFrameSync under the frame lock.
#pragma once

#include "telemetry/AttachedInstruments.h"
#include "telemetry/RawLogFormat.h"

namespace qor {

/// How a search ended, and where: `position` bytes are done with.
struct RecordResult {
    enum class Outcome {
        None,     ///< the bytes are nobody's
        Boundary, ///< the same, but a frame may begin behind them
        Pending,  ///< only bytes that have not come yet can tell
        Found,    ///< the instrument's frame begins behind them
    };
    Outcome outcome = Outcome::None;
    std::size_t position = 0;
    std::size_t instrument = 0;
};

class CRecordSearch {
  public:
    /// The bytes begin at this offset of the stream, `boundary`: where a frame may begin, behind a
    /// frame and its tag. `ended`: no more bytes will come. No byte is looked at for a tag twice.
    RecordResult Search(const CAttachedInstruments& attached, ByteSpan bytes, std::uint64_t offset,
                        bool boundary, bool ended);
    /// A new stream.
    void Reset() { *this = {}; }

  private:
    std::optional<RecordResult> AtBoundary(const CAttachedInstruments& attached, ByteSpan bytes,
                                           bool ended);
    std::optional<std::size_t> NextTag(ByteSpan bytes, std::uint64_t offset);

    CTimeTagReader Tags;
    std::uint64_t Searched = 0; ///< the stream offset before which no tag is to be found
};

} // namespace qor
