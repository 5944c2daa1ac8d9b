// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the frame synchroniser of a resource remembers, and the steps of its pass: SyncPass.cpp
// finds where frames begin, FrameCutting.cpp where they end. Private to CFrameSync, under the same
// frame lock. All of it is a function of the bytes so far: wherever bytes that have not come could
// change a decision, the pass waits for them.
#pragma once

#include "telemetry/ArrivalTimes.h"
#include "telemetry/AttachedInstruments.h"
#include "telemetry/ByteQueue.h"
#include "telemetry/FrameSync.h"
#include "telemetry/ReplayFilter.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

struct CFrameSync::Impl {
    static constexpr std::int32_t DefaultFrameDepth = 200;

    enum class Step { Again, Wait };
    enum class Ending { Complete, Waiting, Unfinished, Endless, TooLong };

    Impl(CMessageSink& sink, std::string resourceName, bool live)
        : Sink(sink), ResourceName(std::move(resourceName)), Live(live) {}

    void LoseFrame();
    void Discard(std::size_t bytes);
    void RefreshTagged();

    bool Synchronise();
    Step Advance();
    Step FindGlobalString();
    std::optional<Step> SkipBetweenFrames();
    Step FollowChain();
    Step SearchHeader();
    bool GuessFollower();
    void SetFound(std::size_t position);

    bool Extract();
    bool TakeTime(const AttachedInstrument& instrument, std::size_t length, FrameTime& time,
                  std::size_t& tagSize);
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
    std::size_t GlobalSearched = 0; ///< bytes at the head in which it does not begin
    bool Synchronised = true;       ///< the global string has passed, or there is none

    bool AtBoundary = true;                ///< a raw log's records and sentences may stand here
    std::optional<std::size_t> ChainAfter; ///< whose frame was cut just before the head
    std::size_t LastCut = 0;               ///< whose frame was cut last
    std::optional<std::size_t> Found;      ///< the instrument whose frame begins at the head
    CTerminatorScan FrameEnd;

    PassResult Pass;
    bool Waiting = false;
    std::size_t BytesCut = 0; ///< in this pass
};

} // namespace qor
