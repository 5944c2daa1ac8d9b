// SPDX-License-Identifier: GPL-3.0-or-later
//
// The frame synchroniser as its resource sees it: settings, instruments, bytes in, the processing
// pass. Called under the frame lock.
#include "telemetry/FrameSync.h"

#include "telemetry/FrameSyncState.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t ReplayBytesAPass = 16U
                                         << 20; // frames' bytes after which a pass takes a break

} // namespace

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
    State->MaxDepth = static_cast<std::size_t>(frames > 0 ? frames : Impl::DefaultFrameDepth);
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

} // namespace qor
