// SPDX-License-Identifier: GPL-3.0-or-later
//
// Synchronisation: where the next frame begins. Runs under the frame lock, on a port's worker or on
// the thread that plays a file.
#include "base/Text.h"
#include "telemetry/FrameSyncState.h"

#include <algorithm>
#include <cstring>

namespace qor {

namespace {

constexpr std::size_t GlobalSyncMemory = 1U << 20; // bytes kept before a global string to come

} // namespace

void CFrameSync::Impl::LoseFrame() {
    Found.reset();
    ChainAfter.reset();
    LastCut = 0;
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
        instrument.tagged = !named;
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
    AtBoundary = AtBoundary && Replay && Filter.MayStandHere(Queue.Bytes()[0]);
    if (AtBoundary)
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
    if (Filter.IsRawLog())
        length = Filter.Skippable(Queue.Bytes(), Ended);
    if (!length)
        return Step::Wait;
    Queue.Consume(*length);
    AtBoundary = *length != 0;
    return AtBoundary ? std::optional(Step::Again) : std::nullopt;
}

/// The instruments attached after the one whose frame was cut come first at the frame's end.
CFrameSync::Impl::Step CFrameSync::Impl::FollowChain() {
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
bool CFrameSync::Impl::GuessFollower() {
    std::size_t position = Attached[LastCut].follower;
    const AttachedInstrument& guess = Attached[position];
    const std::string& header = guess.info.syncHeader;
    if (!guess.standsAlone || Queue.Size() < header.size() ||
        std::memcmp(Queue.Bytes().data(), header.data(), header.size()) != 0)
        return false;
    SetFound(position);
    return true;
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
        SetFound(Attached.PositionOf(result.candidate));
    return Step::Again;
}

void CFrameSync::Impl::SetFound(std::size_t position) {
    Found = position;
    ChainAfter.reset();
    Attached[LastCut].follower = position;
    FrameEnd.Restart();
}

} // namespace qor
