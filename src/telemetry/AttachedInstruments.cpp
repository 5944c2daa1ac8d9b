// SPDX-License-Identifier: GPL-3.0-or-later
//
// Attaching and detaching, on the application thread under the frame lock. The header search is
// compiled anew only when the enabled instruments change.
#include "telemetry/AttachedInstruments.h"

#include <algorithm>
#include <atomic>

namespace qor {

namespace {

// One sequence for the process: a frame's identity never names two attachments.
std::uint32_t NextIdentity() {
    static std::atomic<std::uint32_t> last{0};
    return ++last;
}

constexpr std::string_view BsiType = "BSI";
constexpr std::string_view Hs2Type = "HOBILABS_HS2_D";

/// Decided: a frame that declares no size is as long as its sync header, so that cutting it always
/// consumes bytes.
std::size_t DeclaredLength(const AttachRequest& request) {
    if (request.frameSize > 0)
        return static_cast<std::size_t>(request.frameSize);
    return std::max<std::size_t>(request.syncHeader.size(), 1);
}

CFrameInfo InfoFrom(const AttachRequest& request, std::size_t frameLength) {
    CFrameInfo info;
    info.instrumentName = request.instrumentName;
    info.syncHeader = request.syncHeader;
    info.terminator = request.terminator;
    info.typeName = request.typeName;
    info.noSync = request.noSync;
    info.syncByteCount =
        static_cast<std::uint8_t>(std::min(request.syncBytes.size(), info.syncBytes.size()));
    std::copy_n(request.syncBytes.begin(), info.syncByteCount, info.syncBytes.begin());
    info.frameSize = static_cast<std::int32_t>(frameLength);
    info.identity = NextIdentity();
    return info;
}

} // namespace

CommResult CAttachedInstruments::Attach(const AttachRequest& request, bool live) {
    if (NoSyncMode)
        return CommResult::SecondWithoutSync;
    if (request.noSync && live) {
        CommResult result = AdmitWithoutSync(request);
        if (result != CommResult::Success)
            return result;
    }
    for (const AttachedInstrument& attached : List)
        if (attached.info.syncHeader == request.syncHeader)
            return CommResult::InstrumentAlreadyAttached;
    AttachedInstrument attached;
    // Decided: a BSI frame's size is that of its packets, whatever the definition's fields add up
    // to.
    attached.frameLength =
        WithoutHeader.Packets() ? WithoutHeader.PacketsLength() : DeclaredLength(request);
    attached.info = InfoFrom(request, attached.frameLength);
    // These two have their own ways to end a frame, and none of them is a terminator.
    if (NoSyncMode && !WithoutHeader.Lines())
        attached.info.terminator.clear();
    List.push_back(std::move(attached));
    CompileSearch();
    return CommResult::Success;
}

/// Nobody else is attached when it succeeds, so nothing can refuse the instrument after that.
CommResult CAttachedInstruments::AdmitWithoutSync(const AttachRequest& request) {
    if (!List.empty())
        return CommResult::WithoutSyncRefused;
    if (request.typeName == BsiType) {
        if (request.syncBytes.empty() || request.syncBytes.size() % 2 != 0)
            return CommResult::BsiWithoutPairs;
        WithoutHeader.UsePackets(request.syncBytes);
    } else if (request.typeName != Hs2Type && !request.terminator.empty()) {
        WithoutHeader.UseLines(request.terminator);
    }
    NoSyncMode = true;
    return CommResult::Success;
}

std::optional<std::size_t> CAttachedInstruments::Detach(std::string_view instrumentName) {
    std::optional<std::size_t> position = Find(instrumentName);
    if (!position)
        return {};
    List.erase(List.begin() + static_cast<std::ptrdiff_t>(*position));
    NoSyncMode = NoSyncMode && !List.empty();
    if (!NoSyncMode)
        WithoutHeader.UseNothing();
    CompileSearch();
    return position;
}

std::optional<std::size_t> CAttachedInstruments::Find(std::string_view instrumentName) const {
    for (std::size_t i = 0; i < List.size(); ++i)
        if (List[i].info.instrumentName == instrumentName)
            return i;
    return {};
}

void CAttachedInstruments::SetEnabled(std::size_t position, bool enabled) {
    if (List[position].enabled == enabled)
        return;
    List[position].enabled = enabled;
    CompileSearch();
}

void CAttachedInstruments::CompileSearch() {
    Positions.clear();
    CandidatesUpTo.clear();
    std::vector<std::string> headers;
    for (std::size_t i = 0; i < List.size(); ++i) {
        if (List[i].enabled) {
            headers.push_back(List[i].info.syncHeader);
            Positions.push_back(i);
        }
        CandidatesUpTo.push_back(Positions.size());
    }
    Search.Compile(std::move(headers));
    for (std::size_t i = 0; i < List.size(); ++i) {
        List[i].standsAlone = false;
        List[i].follower = i;
    }
    for (std::size_t i = 0; i < Positions.size() && !WithoutHeader.Active(); ++i)
        List[Positions[i]].standsAlone = Search.StandsAlone(i);
}

} // namespace qor
