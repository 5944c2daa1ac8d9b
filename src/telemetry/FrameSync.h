// SPDX-License-Identifier: GPL-3.0-or-later
//
// From a byte stream to frames: the byte queue, the synchronisation that finds where a frame
// begins, the extraction that cuts it. No lock, no port, no thread: CTelemComm calls it under its
// frame lock; tests and fuzzers call it directly. The frames are a function of the byte stream
// alone, however it was chunked: wherever bytes that have not come could change a decision, the
// pass waits for them.
#pragma once

#include "base/MessageSink.h"
#include "telemetry/ArrivalTimes.h"
#include "telemetry/AttachedInstruments.h"
#include "telemetry/ByteQueue.h"
#include "telemetry/DiscardedBytes.h"
#include "telemetry/FrameEnd.h"
#include "telemetry/FrameQueue.h"
#include "telemetry/GlobalSync.h"
#include "telemetry/NearTimes.h"
#include "telemetry/RecordSearch.h"
#include "telemetry/ReplayFilter.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qor {

/// Where the bytes of a stream come from.
enum class StreamSource {
    Port,
    ReportingPort, ///< with a command queue: only there the no-sync flag of an instrument counts
    File, ///< the queue depth never drops a frame, and when it begins with a header record, header
          ///< records, time-stamp sentences and time tags are taken out (see ReplayFilter)
};

/// What one processing pass did.
struct PassResult {
    bool framesQueued = false;
    bool globalSyncFound = false; ///< "Telemetry synchronized" was reported in this pass
    bool moreReady = false;       ///< stopped at the frame limit with bytes left to process
};

/// What became of the bytes since the construction, but for those discarded, which are counted
/// since their reset.
struct StreamFigures {
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesDiscarded = 0;
    std::uint64_t framesCut = 0;     ///< lost ones included
    std::uint64_t framesLost = 0;    ///< dropped because the queue was full
    std::uint64_t bytesLost = 0;     ///< of these; they count as discarded too
    std::uint64_t bytesCutShort = 0; ///< of frames that the end of a connection cut
};

class CFrameSync {
  public:
    /// Messages name the resource.
    CFrameSync(CMessageSink& sink, std::string resourceName, StreamSource source);

    /// Another stream: bytes and frames of the one before go, instruments stay.
    void Restart(std::string resourceName, StreamSource source);
    /// The same stream from another byte on: bytes and queued frames go, what the stream is stays.
    /// `boundary`: a raw log's record may stand there.
    void Jump(std::uint64_t offset, bool boundary);
    /// Whether it is known by now if the stream is a raw log.
    bool KnowsStream() const { return Filter.IsKnown(); }
    void SetSearchBound(std::uint32_t bytes);
    void SetGlobalSync(const std::string& text) { Global.SetText(text); }
    /// 0 or less: the default of 200.
    void SetMaxFrameDepth(std::int32_t frames);
    /// Bounds the memory of the queued frames too; 0: does not.
    void SetMaxFrameBytes(std::uint64_t bytes) { MaxBytes = bytes; }
    /// An instrument (by name) whose frames carry no time tag in the raw log: the one in the GPS
    /// role. What follows its frames is not looked at as a tag.
    void SetUntagged(const std::string& instrumentName, bool untagged);

    /// Frames of a raw log without a time of their own take the nearest one (see CNearTimes).
    void SetNearTimes() { TakesNearTimes = true; }

    /// The codes of Attach: SecondWithoutSync, WithoutSyncRefused, BsiWithoutPairs,
    /// InstrumentAlreadyAttached. The caller logs; acquisition starts disabled.
    CommResult Attach(const AttachRequest& request);
    CommResult Detach(const std::string& instrumentName);
    /// Enables or disables; disabling searches afresh. InstrumentNotAttached when unknown.
    CommResult SetAcquisition(const std::string& instrumentName, bool enabled);
    /// The identity that the instrument's frames carry; 0 when not attached.
    std::uint32_t IdentityOf(const std::string& instrumentName) const;

    /// Appends bytes that have arrived by the given moment.
    void Append(ByteSpan bytes, const FrameTime& arrival = {});
    /// Room for up to `bytes` at the queue's end, to read a file into; Commit says how many came.
    std::span<std::uint8_t> Prepare(std::size_t bytes) { return Queue.Prepare(bytes); }
    void Commit(std::size_t bytes);
    /// The stream is over: what waits for more bytes is settled without them, by the next pass.
    /// Bytes that come all the same take it back.
    void EndOfStream() { Ended = true; }

    /// The processing pass: synchronises and cuts until no more can be cut, or `frameLimit` frames
    /// are queued (of a file). Frames are stamped with their arrival, those of a file with their
    /// time tag.
    PassResult RunPass(std::size_t frameLimit = SIZE_MAX);

    CFrameQueue& Frames() { return Queued; }
    const StreamFigures& Figures() const { return Counted; }
    void ResetBytesDiscarded() { Counted.bytesDiscarded = 0; }
    /// Tells `kept` of every byte that is discarded from now on; null: nobody. It lives longer.
    void KeepDiscarded(CDiscardedBytes* kept) { Discarded = kept; }
    /// An idle period: a frame whose terminator has come waits for its declared size no longer.
    /// Then back to searching, found-reported flags cleared; bytes and queued frames stay. A global
    /// string that has passed is not waited for again.
    PassResult GoIdle();
    /// The port is about to be closed: what lies complete in the byte queue is cut, as at the end
    /// of a file. The rest is no junk, only cut short, and does not count as discarded.
    PassResult CutRest();
    /// The connection is over: as ResetSync, and every byte goes; queued frames stay.
    void ForgetBytes();

  private:
    enum class Step { Again, Wait };

    void ResetSync();
    void LoseFrame();
    void Discard(std::size_t bytes);
    void RefreshTagged();

    bool Synchronise();
    Step SynchronisationStep();
    Step SearchGlobalString();
    std::optional<Step> SkipRecord();
    Step MatchChain();
    bool GuessFollower();
    Step SearchHeader();
    Step SearchRecord();
    void SetFound(std::size_t position);

    bool ExtractFrame();
    bool TimeFrame(AttachedInstrument& instrument, std::size_t length, FrameTime& time,
                   std::size_t& tagSize);
    void NoteCutShort(std::size_t from, const std::string& what);
    void QueueFrame(AttachedInstrument& instrument, std::size_t length, const FrameTime& time);
    void PushFrame(const CFrameInfo& info, std::size_t length);
    void MakeRoom(std::size_t bytes);
    void LoseOldest();
    void GiveUpFrame(AttachedInstrument& instrument, Ending ending);

    CMessageSink& Sink;
    std::string ResourceName;
    StreamSource Source;
    std::size_t SearchBound = 1024;
    std::size_t MaxDepth;
    std::uint64_t MaxBytes = 0;
    bool Losing = false; ///< frames were lost for MaxBytes since the queue was last empty

    CByteQueue Queue;
    CArrivalTimes Arrivals;
    CReplayFilter Filter;
    CRecordSearch Records;
    CGlobalSync Global;
    CAttachedInstruments Attached;
    std::vector<std::string> UntaggedNames;
    CFrameQueue Queued;
    StreamFigures Counted;
    CNearTimes NearTimes;
    bool TakesNearTimes = false;
    bool TagIsCut = false; ///< of the frame just timed, by the end of the file
    CDiscardedBytes* Discarded = nullptr;
    bool Ended = false;
    bool Settling = false; ///< an idle period's pass

    bool AtBoundary = true;                ///< a raw log's records and sentences may stand here
    std::optional<std::size_t> ChainAfter; ///< whose frame was cut just before the head
    std::size_t LastCut = 0;               ///< whose frame was cut last
    std::optional<std::size_t> Found;      ///< the instrument whose frame begins at the head
    CFrameEnd FrameEnd;

    PassResult Pass;
    std::size_t BytesCut = 0; ///< in this pass
};

} // namespace qor
