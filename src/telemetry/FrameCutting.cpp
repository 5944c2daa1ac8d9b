// SPDX-License-Identifier: GPL-3.0-or-later
//
// Extraction: where the found frame ends, its time, its place in the frame queue. Runs under the
// frame lock, on a port's worker or on the thread that plays a file.
#include "base/Text.h"
#include "telemetry/FrameSyncState.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t LongestTextFrame = 1U << 20; // a terminator comes within these bytes
// Decided: a definition may claim two gigabytes, but the queue shall not grow to hold them.
constexpr std::size_t LongestFixedFrame = 4U << 20;

} // namespace

/// Cuts the found frame, or gives it up; false when it waits for more bytes.
bool CFrameSync::Impl::Extract() {
    AttachedInstrument& instrument = Attached[*Found];
    std::size_t length = 0;
    Ending ending = FindEnd(instrument, length);
    if (ending == Ending::Waiting)
        return false;
    if (ending != Ending::Complete) {
        GiveUp(instrument, ending);
        return true;
    }
    FrameTime time;
    std::size_t tagSize = 0;
    if (!TakeTime(instrument, length, time, tagSize))
        return false;
    Cut(instrument, length, time);
    Queue.Consume(length + tagSize);
    AtBoundary = true;
    LastCut = *Found;
    ChainAfter = Found;
    Found.reset();
    return true;
}

/// The time of the frame at the head and the bytes of its tag; false when the tag has not come yet.
bool CFrameSync::Impl::TakeTime(const AttachedInstrument& instrument, std::size_t length,
                                FrameTime& time, std::size_t& tagSize) {
    if (!Replay) {
        time = Arrivals.At(Queue.Offset() + length);
        return true;
    }
    if (!Filter.IsRawLog() || !instrument.tagged)
        return true;
    if (Queue.Size() - length < TimeTagSize)
        return Ended;
    if (std::optional<FrameTime> tag = Filter.Tag(Queue.Bytes().subspan(length, TimeTagSize))) {
        time = *tag;
        tagSize = TimeTagSize;
    }
    return true;
}

CFrameSync::Impl::Ending CFrameSync::Impl::FindEnd(AttachedInstrument& instrument,
                                                   std::size_t& length) {
    if (!instrument.info.terminator.empty())
        return FindTerminator(instrument, length);
    length = instrument.frameLength;
    if (length > LongestFixedFrame)
        return Ending::TooLong;
    if (Queue.Size() >= length)
        return Ending::Complete;
    return Ended ? Ending::Unfinished : Ending::Waiting;
}

CFrameSync::Impl::Ending CFrameSync::Impl::FindTerminator(AttachedInstrument& instrument,
                                                          std::size_t& length) {
    if (instrument.endless)
        return Ending::Unfinished;
    ByteSpan frame = Queue.Bytes().first(std::min(Queue.Size(), LongestTextFrame));
    if (!FrameEnd.Find(frame, instrument.info.terminator)) {
        if (FrameEnd.Scanned() == LongestTextFrame)
            return Ending::Endless;
        return Ended ? Ending::Unfinished : Ending::Waiting;
    }
    length = FrameEnd.Scanned();
    // A port waits until the declared size has come; a file need not, the frame is the same.
    std::size_t wanted = std::min(instrument.frameLength, LongestTextFrame);
    if (Replay || Ended || Attached.Special().Lines() || Queue.Size() >= wanted)
        return Ending::Complete;
    return Ending::Waiting;
}

// Decided: once the ended stream has shown no terminator for an instrument, later frames of it are
// not looked through again, which would take a time that grows with the square of what is left.
void CFrameSync::Impl::GiveUp(AttachedInstrument& instrument, Ending ending) {
    std::size_t header = std::max<std::size_t>(instrument.info.syncHeader.size(), 1);
    if (ending == Ending::Endless) {
        Sink.Raise({EventKind::BytesLost, ResourceName,
                    Format("No frame terminator of %s within %zu bytes on %s.\r\n",
                           instrument.info.instrumentName.c_str(), LongestTextFrame,
                           ResourceName.c_str())});
        header = LongestTextFrame;
    } else if (ending == Ending::TooLong) {
        if (!instrument.tooLong)
            Sink.Raise({EventKind::BytesLost, ResourceName,
                        Format("Frames of %s are longer than %zu bytes and are not cut on %s.\r\n",
                               instrument.info.instrumentName.c_str(), LongestFixedFrame,
                               ResourceName.c_str())});
        instrument.tooLong = true;
    } else if (!instrument.info.terminator.empty()) {
        instrument.endless = true;
    }
    if (Attached.Special().Lines() && Ended)
        header = Queue.Size();
    Discard(std::min(header, Queue.Size()));
    Attached.Special().LoseLine();
    LoseFrame();
}

void CFrameSync::Impl::Cut(AttachedInstrument& instrument, std::size_t length,
                           const FrameTime& time) {
    CFrameInfo& info = instrument.info;
    ++info.frameCounter;
    info.time = time;
    if (!Replay && Frames.Size() > MaxDepth) {
        Sink.Raise({EventKind::FramesLost, ResourceName,
                    Format("%s frame buffer exceeded maximum depth.\r\n", ResourceName.c_str())});
        Discarded += Frames.Front().Bytes.size();
        Frames.DropFront();
    }
    if (!instrument.foundReported && !Waiting) {
        Sink.Report(Format("%s found on %s.\r\n", info.syncHeader.c_str(), ResourceName.c_str()));
        instrument.foundReported = true;
    }
    Frames.PushSlot().Assign(info, Queue.Bytes().first(length), Queue.Offset());
    Pass.framesQueued = true;
    ++Pass.framesCut;
    BytesCut += length;
}

} // namespace qor
