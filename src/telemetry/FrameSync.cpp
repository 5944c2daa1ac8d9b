// SPDX-License-Identifier: GPL-3.0-or-later
//
// The processing pass: a synchronisation step finds the instrument whose frame begins at the head
// of the byte queue, extraction cuts the frame, and so on until the bytes that are there tell no
// more. Runs under the frame lock, on a port's worker or on the thread that plays a file.
#include "telemetry/FrameSync.h"

#include "base/Text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qor {

namespace {

constexpr std::size_t DefaultFrameDepth = 200;
constexpr std::size_t FileBytesAPass = 16U << 20; // frames' bytes after which a pass takes a break

} // namespace

CFrameSync::CFrameSync(CMessageSink& sink, std::string resourceName, StreamSource source)
    : Sink(sink), ResourceName(std::move(resourceName)), Source(source),
      MaxDepth(DefaultFrameDepth) {}

void CFrameSync::Restart(std::string resourceName, StreamSource source) {
    ResourceName = std::move(resourceName);
    Source = source;
    ForgetBytes();
    Queued.Clear();
    NearTimes.Clear();
    Global.Restart();
}

void CFrameSync::Jump(std::uint64_t offset, bool boundary) {
    ResetSync();
    Attached.LoseLine();
    Queue.Clear(offset);
    Queued.Clear();
    NearTimes.Clear();
    Records.Reset();
    AtBoundary = boundary;
    Commit(0);
}

void CFrameSync::SetSearchBound(std::uint32_t bytes) {
    SearchBound = std::max<std::uint32_t>(bytes, 1);
}

void CFrameSync::SetMaxFrameDepth(std::int32_t frames) {
    MaxDepth = frames > 0 ? static_cast<std::size_t>(frames) : DefaultFrameDepth;
}

void CFrameSync::SetUntagged(const std::string& instrumentName, bool untagged) {
    std::erase(UntaggedNames, instrumentName);
    if (untagged)
        UntaggedNames.push_back(instrumentName);
    RefreshTagged();
}

void CFrameSync::RefreshTagged() {
    for (AttachedInstrument& instrument : Attached)
        instrument.tagged =
            std::ranges::find(UntaggedNames, instrument.info.instrumentName) == UntaggedNames.end();
}

CommResult CFrameSync::Attach(const AttachRequest& request) {
    CommResult result = Attached.Attach(request, Source == StreamSource::ReportingPort);
    RefreshTagged();
    return result;
}

CommResult CFrameSync::Detach(const std::string& instrumentName) {
    if (!Attached.Detach(instrumentName))
        return CommResult::InstrumentNotAttached;
    // Positions after it have moved: what was found is found again from the bytes.
    LoseFrame();
    return CommResult::Success;
}

CommResult CFrameSync::SetAcquisition(const std::string& instrumentName, bool enabled) {
    std::optional<std::size_t> position = Attached.Find(instrumentName);
    if (!position)
        return CommResult::InstrumentNotAttached;
    Attached.SetEnabled(*position, enabled);
    if (!enabled)
        LoseFrame();
    return CommResult::Success;
}

std::uint32_t CFrameSync::IdentityOf(const std::string& instrumentName) const {
    std::optional<std::size_t> position = Attached.Find(instrumentName);
    return position ? Attached[*position].info.identity : 0;
}

void CFrameSync::Append(ByteSpan bytes, const FrameTime& arrival) {
    if (!bytes.empty())
        std::memcpy(Queue.Prepare(bytes.size()).data(), bytes.data(), bytes.size());
    Commit(bytes.size());
    if (Source != StreamSource::File)
        Arrivals.Note(Queue.Offset(), Queue.EndOffset(), arrival);
}

void CFrameSync::Commit(std::size_t bytes) {
    Queue.Commit(bytes);
    Counted.bytesReceived += bytes;
    if (!Ended)
        return;
    Ended = false;
    for (AttachedInstrument& instrument : Attached)
        instrument.endless = false;
}

PassResult CFrameSync::GoIdle() {
    Settling = true;
    PassResult pass = RunPass();
    Settling = false;
    ResetSync();
    return pass;
}

PassResult CFrameSync::CutRest() {
    const StreamFigures before = Counted;
    EndOfStream();
    PassResult pass = RunPass();
    const std::uint64_t discarded = before.bytesDiscarded + Counted.bytesLost - before.bytesLost;
    Counted.bytesCutShort += Counted.bytesDiscarded - discarded;
    Counted.bytesDiscarded = discarded;
    return pass;
}

// Decided: silence between lines makes the next byte the first of a line, whatever came before;
// instruments that pause between lines would never give a frame. Kept: a global string that has
// passed is not waited for again.
void CFrameSync::ResetSync() {
    LoseFrame();
    if (Queue.Empty())
        Attached.BeginLine();
    else
        Attached.LoseLine();
    for (AttachedInstrument& instrument : Attached)
        instrument.foundReported = false;
}

void CFrameSync::ForgetBytes() {
    ResetSync();
    Attached.LoseLine();
    Attached.SetRawLog(false);
    Counted.bytesCutShort += Queue.Size();
    Queue.Clear();
    Arrivals.Clear();
    Filter.Reset();
    Records.Reset();
    Global.ForgetBytes();
    AtBoundary = true;
    Commit(0);
}

void CFrameSync::LoseFrame() {
    Found.reset();
    ChainAfter.reset();
    LastCut = 0;
    FrameEnd.Restart();
}

void CFrameSync::Discard(std::size_t bytes) {
    if (Discarded != nullptr)
        Discarded->Take(Queue.Offset(), Queue.Bytes().first(bytes));
    AtBoundary = AtBoundary && bytes == 0;
    Queue.Consume(bytes);
    Counted.bytesDiscarded += bytes;
}

PassResult CFrameSync::RunPass(std::size_t frameLimit) {
    const bool limited = Source == StreamSource::File;
    Pass = {};
    BytesCut = 0;
    do {
        if (limited && (Queued.Size() >= frameLimit || BytesCut >= FileBytesAPass)) {
            Pass.moreReady = !Queue.Empty();
            break;
        }
    } while (Synchronise() && ExtractFrame());
    if (Ended && !Pass.moreReady)
        NearTimes.Release(Queued);
    if (limited)
        Pass.framesQueued = !Queued.Empty();
    return Pass;
}

/// True when a frame begins at the head of the queue.
bool CFrameSync::Synchronise() {
    while (!Found)
        if (Queue.Empty() || SynchronisationStep() == Step::Wait)
            return false;
    return true;
}

CFrameSync::Step CFrameSync::SynchronisationStep() {
    if (!Global.Passed())
        return SearchGlobalString();
    if (Source == StreamSource::File && AtBoundary && Filter.MayStandHere(Queue.Bytes()[0]))
        if (std::optional<Step> step = SkipRecord())
            return *step;
    if (!Attached.AnyEnabled()) {
        Discard(Queue.Size());
        Attached.LoseLine();
        return Step::Wait;
    }
    if (ChainAfter)
        return MatchChain();
    return Attached.Headerless().empty() || Attached.IsAlone() ? SearchHeader() : SearchRecord();
}

CFrameSync::Step CFrameSync::SearchGlobalString() {
    bool passed = Global.Search(Queue.Bytes(), SearchBound, Ended);
    Discard(Global.DropSurplus());
    if (!passed)
        return Step::Wait;
    Sink.Report(Format("Telemetry synchronized on %s.\r\n", ResourceName.c_str()));
    Pass.globalSyncFound = true;
    return Step::Again;
}

/// Takes out what a raw log holds between frames; empty when a frame may begin at the head.
std::optional<CFrameSync::Step> CFrameSync::SkipRecord() {
    std::optional<std::size_t> length = Filter.Skippable(Queue.Bytes(), Ended);
    Attached.SetRawLog(Filter.IsRawLog());
    if (!length)
        return Step::Wait;
    if (*length == 0 && Filter.BeginsCut(Queue.Bytes()))
        NoteCutShort(0, "a header record or time stamp");
    if (TakesNearTimes && *length != 0)
        if (const auto time = ParseTimeStamp(AsText(Queue.Bytes().first(*length))))
            NearTimes.Time(*time, Queue.Offset(), *length, Queued);
    if (Discarded != nullptr && *length != 0)
        Discarded->CountRecord({Queue.Offset(), *length},
                               Queue.Bytes()[0] == static_cast<std::uint8_t>(HeaderRecordStart[0]));
    Queue.Consume(*length);
    return *length != 0 ? std::optional(Step::Again) : std::nullopt;
}

/// The instruments attached after the one whose frame was cut come first at the frame's end.
CFrameSync::Step CFrameSync::MatchChain() {
    if (GuessFollower())
        return Step::Again;
    std::size_t first = Attached.FirstCandidateAfter(*ChainAfter);
    SearchResult result = Attached.Headers().MatchFrom(first, Queue.Bytes(), Ended);
    if (result.outcome == SearchResult::Outcome::Pending)
        return Step::Wait;
    ChainAfter.reset();
    if (result.outcome == SearchResult::Outcome::Found)
        SetFound(Attached.PositionOf(result.candidate));
    return Step::Again;
}

/// Instruments that share a stream mostly take turns: one comparison with the header that came here
/// last time. Where it stands alone, the chain and the search would find nothing else.
bool CFrameSync::GuessFollower() {
    std::size_t position = Attached[LastCut].follower;
    const AttachedInstrument& guess = Attached[position];
    const std::string& header = guess.info.syncHeader;
    if (!guess.standsAlone || Queue.Size() < header.size() ||
        std::memcmp(Queue.Bytes().data(), header.data(), header.size()) != 0)
        return false;
    SetFound(position);
    return true;
}

CFrameSync::Step CFrameSync::SearchHeader() {
    const bool alone = !Attached.Headerless().empty();
    SearchResult result = alone ? Attached[0].special.Search(Queue.Bytes(), SearchBound, Ended)
                                : Attached.Headers().Search(Queue.Bytes(), SearchBound, Ended);
    Discard(result.position);
    if (result.outcome == SearchResult::Outcome::Pending)
        return Step::Wait;
    if (result.outcome == SearchResult::Outcome::Found)
        SetFound(alone ? 0 : Attached.PositionOf(result.candidate));
    return Step::Again;
}

/// The same in a raw log that holds frames without sync header too.
CFrameSync::Step CFrameSync::SearchRecord() {
    RecordResult result =
        Records.Search(Attached, Queue.Bytes(), Queue.Offset(), AtBoundary, Ended);
    Discard(result.position);
    if (result.outcome == RecordResult::Outcome::Found)
        SetFound(result.instrument);
    AtBoundary = AtBoundary || result.outcome == RecordResult::Outcome::Boundary;
    return result.outcome == RecordResult::Outcome::Pending ? Step::Wait : Step::Again;
}

void CFrameSync::SetFound(std::size_t position) {
    Found = position;
    ChainAfter.reset();
    Attached[LastCut].follower = position;
    FrameEnd.Restart();
}

/// Cuts the found frame, or gives it up; false when it waits for more bytes.
bool CFrameSync::ExtractFrame() {
    AttachedInstrument& instrument = Attached[*Found];
    // A port waits until the declared size has come; a file need not, the frame is the same.
    const bool declared = Source != StreamSource::File && !Settling && instrument.HasHeader();
    std::size_t length = 0;
    Ending ending = FrameEnd.Find(instrument, Queue.Bytes(), declared, Ended, length);
    if (ending == Ending::Waiting)
        return false;
    if (ending != Ending::Complete) {
        GiveUpFrame(instrument, ending);
        return true;
    }
    if (Discarded != nullptr)
        Discarded->FrameCut();
    FrameTime time;
    std::size_t tagSize = 0;
    if (!TimeFrame(instrument, length, time, tagSize))
        return false;
    QueueFrame(instrument, length, time);
    if (Discarded != nullptr)
        Discarded->Count(length, tagSize);
    Queue.Consume(length + tagSize);
    AtBoundary = true;
    LastCut = *Found;
    ChainAfter = Found;
    Found.reset();
    return true;
}

/// The time of the frame at the head and the bytes of its tag; false when the tag has not come yet.
bool CFrameSync::TimeFrame(AttachedInstrument& instrument, std::size_t length, FrameTime& time,
                           std::size_t& tagSize) {
    if (Source != StreamSource::File) {
        time = Arrivals.At(Queue.Offset() + length);
        return true;
    }
    TagIsCut = false;
    if (!Filter.IsRawLog() || !instrument.tagged)
        return true;
    if (const std::size_t left = Queue.Size() - length; left < TimeTagSize) {
        TagIsCut = Ended && (left > 0 || instrument.hadTag);
        if (Ended && instrument.hadTag)
            NoteCutShort(length, "the time tag of a frame of " + instrument.info.instrumentName);
        return Ended;
    }
    if (std::optional<FrameTime> tag = Filter.Tag(Queue.Bytes().subspan(length, TimeTagSize))) {
        time = *tag;
        tagSize = TimeTagSize;
        instrument.hadTag = true;
    }
    return true;
}

/// What begins so far behind the head has no end.
void CFrameSync::NoteCutShort(std::size_t from, const std::string& what) {
    if (Discarded != nullptr)
        Discarded->CutShort(Queue.Offset() + from, what);
}

void CFrameSync::QueueFrame(AttachedInstrument& instrument, std::size_t length,
                            const FrameTime& time) {
    CFrameInfo& info = instrument.info;
    ++info.frameCounter;
    info.time = time;
    if (Source != StreamSource::File)
        MakeRoom(length);
    if (!instrument.foundReported) {
        Sink.Report(Format("%s found on %s.\r\n", info.syncHeader.c_str(), ResourceName.c_str()));
        instrument.foundReported = true;
    }
    instrument.endlessTold = false;
    PushFrame(info, length);
    Pass.framesQueued = true;
    ++Counted.framesCut;
    BytesCut += length;
}

/// The frame at the head, behind those that waited for its time; without one it waits itself.
void CFrameSync::PushFrame(const CFrameInfo& info, std::size_t length) {
    const ByteSpan bytes = Queue.Bytes().first(length);
    if (TakesNearTimes && Filter.IsRawLog()) {
        if (!info.time.known && !TagIsCut)
            return NearTimes.Take(info, bytes, Queue.Offset(), Queued);
        if (info.time.known)
            NearTimes.Time(info.time, Queue.Offset() + length, TimeTagSize, Queued);
        else // it had one
            NearTimes.Release(Queued);
    }
    Queued.Push(info, bytes, Queue.Offset());
}

void CFrameSync::MakeRoom(std::size_t bytes) {
    // Kept: one frame more than the depth is queued, and each one that is lost for it is told.
    if (Queued.Size() > MaxDepth) {
        Sink.Raise({EventKind::FramesLost, ResourceName,
                    Format("%s frame buffer exceeded maximum depth.\r\n", ResourceName.c_str())});
        LoseOldest();
    }
    Losing = Losing && !Queued.Empty();
    if (MaxBytes == 0)
        return;
    while (!Queued.Empty() && Queued.Memory() + bytes + sizeof(CFrameData) > MaxBytes) {
        if (!std::exchange(Losing, true))
            Sink.Raise({EventKind::FramesLost, ResourceName,
                        Format("%s frame buffer is full: the oldest frames are lost.\r\n",
                               ResourceName.c_str())});
        LoseOldest();
    }
}

void CFrameSync::LoseOldest() {
    const std::size_t bytes = Queued.Front().Bytes.size();
    ++Counted.framesLost;
    Counted.bytesLost += bytes;
    Counted.bytesDiscarded += bytes;
    Queued.DropFront();
}

/// The search goes on behind the header of a frame that has no end.
void CFrameSync::GiveUpFrame(AttachedInstrument& instrument, Ending ending) {
    std::size_t header = std::max<std::size_t>(instrument.info.syncHeader.size(), 1);
    if (ending == Ending::Unfinished)
        NoteCutShort(0, "a frame of " + instrument.info.instrumentName);
    if (ending == Ending::Endless) {
        if (!std::exchange(instrument.endlessTold, true))
            Sink.Raise({EventKind::BytesLost, ResourceName,
                        Format("No frame terminator of %s within %zu bytes on %s.\r\n",
                               instrument.info.instrumentName.c_str(), CFrameEnd::LongestTextFrame,
                               ResourceName.c_str())});
        header = CFrameEnd::LongestTextFrame;
    } else if (ending == Ending::TooLong) {
        if (!std::exchange(instrument.tooLong, true))
            Sink.Raise({EventKind::BytesLost, ResourceName,
                        Format("Frames of %s are longer than %zu bytes and are not cut on %s.\r\n",
                               instrument.info.instrumentName.c_str(), CFrameEnd::LongestFixedFrame,
                               ResourceName.c_str())});
    } else if (instrument.byTerminator) {
        instrument.endless = true;
    }
    if (Attached.IsAlone() && instrument.rule == FrameRule::Lines && Ended)
        header = Queue.Size();
    Discard(std::min(header, Queue.Size()));
    Attached.LoseLine();
    LoseFrame();
}

} // namespace qor
