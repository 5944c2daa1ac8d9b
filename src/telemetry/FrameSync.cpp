// SPDX-License-Identifier: GPL-3.0-or-later
//
// The synchronisation pass. All that a pass remembers between calls is a function of the bytes so
// far: wherever bytes that have not come could change a decision, it waits for them. Runs under
// the frame lock, on a port's worker or on the thread that plays a file.
#include "telemetry/FrameSync.h"

#include "base/Text.h"
#include "telemetry/ArrivalTimes.h"
#include "telemetry/AttachedInstruments.h"
#include "telemetry/ByteQueue.h"
#include "telemetry/ReplayFilter.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t LongestTextFrame = 1U << 20; // a terminator comes within these bytes
constexpr std::size_t GlobalSyncMemory = 1U << 20; // bytes kept before a global string to come
constexpr std::size_t ReplayBytesAPass = 16U
                                         << 20; // frames' bytes after which a pass takes a break
constexpr std::int32_t DefaultFrameDepth = 200;

} // namespace

struct CFrameSync::Impl {
    enum class Step { Again, Wait };
    enum class Ending { Complete, Waiting, Unfinished, Endless };

    Impl(CMessageSink& sink, std::string resourceName, bool live)
        : Sink(sink), ResourceName(std::move(resourceName)), Live(live) {}

    bool RawLog() const { return Replay && Filter.IsRawLog(); }

    void LoseFrame();
    void Discard(std::size_t bytes);
    void RefreshTagged();

    bool Synchronise();
    Step Advance();
    Step FindGlobalString();
    std::optional<Step> SkipBetweenFrames();
    Step FollowChain();
    Step SearchHeader();
    void SetFound(std::uint32_t candidate);

    bool Extract();
    Ending FindEnd(AttachedInstrument& instrument, std::size_t& length);
    Ending FindTerminator(AttachedInstrument& instrument, std::size_t& length);
    void GiveUp(AttachedInstrument& instrument, Ending ending);
    void Cut(AttachedInstrument& instrument, std::size_t length, const FrameTime& time);

    CMessageSink& Sink;
    std::string ResourceName;
    const bool Live;
    bool Replay = false;
    std::size_t SearchBound = 1024;
    std::size_t MaxDepth = DefaultFrameDepth;

    CByteQueue Queue;
    CArrivalTimes Arrivals;
    CReplayFilter Filter;
    CAttachedInstruments Attached;
    std::vector<std::string> UntaggedNames;
    CFrameQueue Frames;
    std::uint64_t Discarded = 0;
    bool Ended = false;

    std::string GlobalString;
    CHeaderSearch GlobalSearch;
    std::size_t GlobalSearched =
        0;                    ///< bytes at the head that hold no beginning of the global string
    bool Synchronised = true; ///< the global string has passed, or there is none

    bool AtBoundary = true; ///< a raw log's records and sentences may stand here
    std::optional<std::size_t>
        ChainAfter;                   ///< the instrument whose frame was cut just before the head
    std::optional<std::size_t> Found; ///< the instrument whose frame begins at the head
    CTerminatorScan FrameEnd;

    PassResult Pass;
    bool Waiting = false;
    std::size_t BytesCut = 0; ///< in this pass
};

CFrameSync::CFrameSync(CMessageSink& sink, std::string resourceName, bool live)
    : State(std::make_unique<Impl>(sink, std::move(resourceName), live)) {}

CFrameSync::~CFrameSync() = default;

void CFrameSync::Restart(std::string resourceName) {
    State->ResourceName = std::move(resourceName);
    Clear();
    State->Synchronised = State->GlobalString.empty();
}

void CFrameSync::SetSearchBound(std::uint32_t bytes) {
    State->SearchBound = std::max<std::uint32_t>(bytes, 1);
}

void CFrameSync::SetGlobalSync(const std::string& text) {
    if (text == State->GlobalString)
        return;
    State->GlobalString = text;
    State->GlobalSearch.Compile({text});
    State->GlobalSearched = 0;
    State->Synchronised = text.empty();
}

void CFrameSync::SetMaxFrameDepth(std::int32_t frames) {
    State->MaxDepth = static_cast<std::size_t>(frames > 0 ? frames : DefaultFrameDepth);
}

void CFrameSync::SetReplay(bool replay) {
    State->Replay = replay;
}

void CFrameSync::SetUntagged(const std::string& instrumentName, bool untagged) {
    std::erase(State->UntaggedNames, instrumentName);
    if (untagged)
        State->UntaggedNames.push_back(instrumentName);
    State->RefreshTagged();
}

CommResult CFrameSync::Attach(const AttachRequest& request) {
    CommResult result = State->Attached.Attach(request, State->Live);
    State->RefreshTagged();
    return result;
}

CommResult CFrameSync::Detach(const std::string& instrumentName) {
    if (!State->Attached.Detach(instrumentName))
        return CommResult::InstrumentNotAttached;
    // Positions after it have moved: what was found is found again from the bytes.
    State->LoseFrame();
    return CommResult::Success;
}

bool CFrameSync::IsAttached(const std::string& instrumentName) const {
    return State->Attached.Find(instrumentName).has_value();
}

CommResult CFrameSync::SetAcquisition(const std::string& instrumentName, bool enabled) {
    std::optional<std::size_t> position = State->Attached.Find(instrumentName);
    if (!position)
        return CommResult::InstrumentNotAttached;
    State->Attached.SetEnabled(*position, enabled);
    if (!enabled)
        State->LoseFrame();
    return CommResult::Success;
}

std::uint32_t CFrameSync::IdentityOf(const std::string& instrumentName) const {
    std::optional<std::size_t> position = State->Attached.Find(instrumentName);
    return position ? State->Attached[*position].info.identity : 0;
}

void CFrameSync::Append(ByteSpan bytes) {
    State->Queue.Append(bytes);
    Commit(0);
}

std::span<std::uint8_t> CFrameSync::Prepare(std::size_t bytes) {
    return State->Queue.Prepare(bytes);
}

void CFrameSync::Commit(std::size_t bytes) {
    State->Queue.Commit(bytes);
    if (!State->Ended)
        return;
    State->Ended = false;
    for (AttachedInstrument& instrument : State->Attached)
        instrument.endless = false;
}

void CFrameSync::EndOfStream() {
    State->Ended = true;
}

CFrameQueue& CFrameSync::Frames() {
    return State->Frames;
}

std::uint64_t CFrameSync::BytesDiscarded() const {
    return State->Discarded;
}

void CFrameSync::ResetBytesDiscarded() {
    State->Discarded = 0;
}

// Decided: silence at the end of a line does not make the next line a partial one; instruments that
// pause between lines would never give a frame. Kept: a global string that has passed is not waited
// for again.
void CFrameSync::ResetSync() {
    State->LoseFrame();
    if (!State->Queue.Empty())
        State->Attached.Special().LoseLine();
    for (AttachedInstrument& instrument : State->Attached)
        instrument.foundReported = false;
}

void CFrameSync::Clear() {
    ResetSync();
    State->Attached.Special().LoseLine();
    State->Queue.Clear();
    State->Frames.Clear();
    State->Arrivals.Clear();
    State->Filter.Reset();
    State->RefreshTagged();
    State->GlobalSearched = 0;
    State->AtBoundary = true;
    Commit(0);
}

PassResult CFrameSync::Process(const FrameTime& now, bool waiting, std::size_t frameLimit) {
    Impl& state = *State;
    state.Pass = {};
    state.Waiting = waiting;
    state.BytesCut = 0;
    if (!state.Replay)
        state.Arrivals.Note(state.Queue.Offset(), state.Queue.EndOffset(), now);
    do {
        if (state.Replay &&
            (state.Frames.Size() >= frameLimit || state.BytesCut >= ReplayBytesAPass)) {
            state.Pass.moreReady = !state.Queue.Empty();
            break;
        }
    } while (state.Synchronise() && state.Extract());
    return state.Pass;
}

void CFrameSync::Impl::LoseFrame() {
    Found.reset();
    ChainAfter.reset();
    FrameEnd.Restart();
}

void CFrameSync::Impl::Discard(std::size_t bytes) {
    Queue.Consume(bytes);
    Discarded += bytes;
}

void CFrameSync::Impl::RefreshTagged() {
    for (AttachedInstrument& instrument : Attached) {
        const CFrameInfo& info = instrument.info;
        bool named = std::find(UntaggedNames.begin(), UntaggedNames.end(), info.instrumentName) !=
                     UntaggedNames.end();
        instrument.tagged = !named && !Filter.NamesUntagged(info.syncHeader);
    }
}

/// True when a frame begins at the head of the queue.
bool CFrameSync::Impl::Synchronise() {
    while (!Found) {
        if (Queue.Empty() || Advance() == Step::Wait)
            return false;
    }
    return true;
}

CFrameSync::Impl::Step CFrameSync::Impl::Advance() {
    if (!Synchronised)
        return FindGlobalString();
    if (Replay && AtBoundary)
        if (std::optional<Step> step = SkipBetweenFrames())
            return *step;
    if (!Attached.AnyEnabled()) {
        Discard(Queue.Size());
        Attached.Special().LoseLine();
        return Step::Wait;
    }
    return ChainAfter ? FollowChain() : SearchHeader();
}

// Kept: the bytes before the global string stay and are searched for headers once it has passed.
// Decided: of those, the last 1 MB, so that a string that never comes costs no more memory.
CFrameSync::Impl::Step CFrameSync::Impl::FindGlobalString() {
    SearchResult result =
        GlobalSearch.Search(Queue.Bytes().subspan(GlobalSearched), SearchBound, Ended);
    GlobalSearched += result.position;
    if (GlobalSearched > GlobalSyncMemory) {
        Discard(GlobalSearched - GlobalSyncMemory);
        GlobalSearched = GlobalSyncMemory;
    }
    if (result.outcome == SearchResult::Outcome::Found) {
        Sink.Report(Format("Telemetry synchronized on %s.\r\n", ResourceName.c_str()));
        Synchronised = true;
        Pass.globalSyncFound = true;
        GlobalSearched = 0;
        return Step::Again;
    }
    return result.outcome == SearchResult::Outcome::Pending || GlobalSearched == Queue.Size()
               ? Step::Wait
               : Step::Again;
}

/// Takes out what a raw log holds between frames; empty when a frame may begin at the head.
std::optional<CFrameSync::Impl::Step> CFrameSync::Impl::SkipBetweenFrames() {
    if (!Filter.Determine(Queue.Bytes(), Ended))
        return Step::Wait;
    std::optional<std::size_t> length = 0;
    if (Filter.IsRawLog()) {
        std::size_t named = Filter.NamedCount();
        length = Filter.Skippable(Queue.Bytes(), Ended);
        if (Filter.NamedCount() != named)
            RefreshTagged();
    }
    if (!length)
        return Step::Wait;
    Queue.Consume(*length);
    AtBoundary = *length != 0;
    return AtBoundary ? std::optional(Step::Again) : std::nullopt;
}

/// The instruments attached after the one whose frame was cut come first at the frame's end.
CFrameSync::Impl::Step CFrameSync::Impl::FollowChain() {
    SearchResult result = Attached.Headers().MatchFrom(Attached.FirstCandidateAfter(*ChainAfter),
                                                       Queue.Bytes(), Ended);
    if (result.outcome == SearchResult::Outcome::Pending)
        return Step::Wait;
    ChainAfter.reset();
    if (result.outcome == SearchResult::Outcome::Found)
        SetFound(result.candidate);
    return Step::Again;
}

CFrameSync::Impl::Step CFrameSync::Impl::SearchHeader() {
    CSpecialSync& special = Attached.Special();
    SearchResult result = special.Active()
                              ? special.Search(Queue.Bytes(), SearchBound, Ended)
                              : Attached.Headers().Search(Queue.Bytes(), SearchBound, Ended);
    Discard(result.position);
    if (result.outcome == SearchResult::Outcome::Pending)
        return Step::Wait;
    if (result.outcome == SearchResult::Outcome::Found)
        SetFound(result.candidate);
    return Step::Again;
}

void CFrameSync::Impl::SetFound(std::uint32_t candidate) {
    Found = Attached.PositionOf(candidate);
    FrameEnd.Restart();
}

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
    std::optional<FrameTime> tag;
    if (RawLog() && instrument.tagged) {
        std::size_t behind = Queue.Size() - length;
        if (behind < TimeTagSize && !Ended)
            return false;
        if (behind >= TimeTagSize)
            tag = Filter.Tag(Queue.Bytes().subspan(length, TimeTagSize));
    }
    if (Replay)
        Cut(instrument, length, tag.value_or(FrameTime{}));
    else
        Cut(instrument, length, Arrivals.At(Queue.Offset() + length));
    Queue.Consume(length + (tag ? TimeTagSize : 0));
    AtBoundary = true;
    ChainAfter.reset();
    if (Attached.FirstCandidateAfter(*Found) < Attached.Headers().Count())
        ChainAfter = Found;
    Found.reset();
    return true;
}

CFrameSync::Impl::Ending CFrameSync::Impl::FindEnd(AttachedInstrument& instrument,
                                                   std::size_t& length) {
    if (!instrument.info.terminator.empty())
        return FindTerminator(instrument, length);
    length = instrument.frameLength;
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
        Sink.Report(Format("No frame terminator of %s within %zu bytes on %s.\r\n",
                           instrument.info.instrumentName.c_str(), LongestTextFrame,
                           ResourceName.c_str()));
        header = LongestTextFrame;
    } else if (!instrument.info.terminator.empty()) {
        instrument.endless = true;
    }
    if (Attached.Special().Lines() && Ended)
        header = Queue.Size();
    Discard(std::min(header, Queue.Size()));
    Attached.Special().LoseLine();
    AtBoundary = false;
    LoseFrame();
}

void CFrameSync::Impl::Cut(AttachedInstrument& instrument, std::size_t length,
                           const FrameTime& time) {
    CFrameInfo& info = instrument.info;
    ++info.frameCounter;
    info.time = time;
    if (!Replay && Frames.Size() > MaxDepth) {
        Sink.Report(Format("%s frame buffer exceeded maximum depth.\r\n", ResourceName.c_str()));
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
