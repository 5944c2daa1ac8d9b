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

/// Decided: a frame that declares no size is as long as its sync header, so that cutting it always
/// consumes bytes.
std::size_t DeclaredLength(const AttachRequest& request) {
    if (request.frameSize > 0)
        return static_cast<std::size_t>(request.frameSize);
    return std::max<std::size_t>(request.syncHeader.size(), 1);
}

CFrameInfo InfoFrom(const AttachRequest& request) {
    CFrameInfo info;
    info.instrumentName = request.instrumentName;
    info.syncHeader = request.syncHeader;
    info.terminator = request.terminator;
    info.typeName = request.typeName;
    info.noSync = request.noSync;
    info.syncByteCount =
        static_cast<std::uint8_t>(std::min(request.syncBytes.size(), info.syncBytes.size()));
    std::copy_n(request.syncBytes.begin(), info.syncByteCount, info.syncBytes.begin());
    info.identity = NextIdentity();
    return info;
}

/// Packets are told by whole pairs; a definition without them has none.
bool HasPairs(const AttachRequest& request) {
    return !request.syncBytes.empty() && request.syncBytes.size() % 2 == 0;
}

/// May an instrument without sync header have the port for itself?
CommResult Admit(const AttachRequest& request, bool company) {
    if (company)
        return CommResult::WithoutSyncRefused;
    return RuleOf(request) != FrameRule::Packets || HasPairs(request) ? CommResult::Success
                                                                      : CommResult::BsiWithoutPairs;
}

} // namespace

CommResult CAttachedInstruments::Attach(const AttachRequest& request, bool live) {
    if (NoSyncMode)
        return CommResult::SecondWithoutSync;
    const bool alone = live && request.noSync;
    if (alone)
        if (CommResult result = Admit(request, !List.empty()); result != CommResult::Success)
            return result;
    for (const AttachedInstrument& attached : List)
        if (attached.info.syncHeader == request.syncHeader)
            return CommResult::InstrumentAlreadyAttached;

    AttachedInstrument& attached = List.emplace_back();
    attached.info = InfoFrom(request);
    attached.declaredLength = DeclaredLength(request);
    attached.ownRule = RuleOf(request);
    if (attached.ownRule == FrameRule::Lines)
        attached.special.UseLines(request.terminator);
    else if (attached.ownRule == FrameRule::Packets && HasPairs(request))
        attached.special.UsePackets(request.syncBytes);
    else if (attached.ownRule == FrameRule::Packets)
        attached.ownRule = FrameRule::Header;
    NoSyncMode = alone;
    CountRule(attached, alone || RawLog ? attached.ownRule : FrameRule::Header);
    // These have ways of their own to end a frame, and none of them is a terminator.
    if (alone && !attached.byTerminator)
        attached.info.terminator.clear();
    CompileSearch();
    return CommResult::Success;
}

/// Decided: a BSI frame's size is that of its packets, whatever the definition's fields add up to.
void CAttachedInstruments::CountRule(AttachedInstrument& instrument, FrameRule rule) {
    instrument.rule = rule;
    instrument.frameLength =
        rule == FrameRule::Packets ? instrument.special.PacketsLength() : instrument.declaredLength;
    instrument.info.frameSize = static_cast<std::int32_t>(instrument.frameLength);
    instrument.byTerminator = !instrument.info.terminator.empty() &&
                              (rule == FrameRule::Header || rule == FrameRule::Lines);
}

void CAttachedInstruments::SetRawLog(bool rawLog) {
    if (RawLog == rawLog)
        return;
    RawLog = rawLog;
    bool changed = false;
    for (AttachedInstrument& instrument : List) {
        const FrameRule rule = rawLog ? instrument.ownRule : FrameRule::Header;
        changed = changed || rule != instrument.rule;
        CountRule(instrument, rule);
    }
    if (changed)
        CompileSearch();
}

bool CAttachedInstruments::Detach(std::string_view instrumentName) {
    std::optional<std::size_t> position = Find(instrumentName);
    if (!position)
        return false;
    List.erase(List.begin() + static_cast<std::ptrdiff_t>(*position));
    NoSyncMode = NoSyncMode && !List.empty();
    CompileSearch();
    return true;
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

std::size_t CAttachedInstruments::LongestPackets() const {
    std::size_t longest = 0;
    for (std::size_t position : WithoutHeader)
        longest = std::max(longest, List[position].special.PacketsLength());
    return longest;
}

void CAttachedInstruments::LoseLine() {
    if (NoSyncMode)
        List.front().special.LoseLine();
}

void CAttachedInstruments::BeginLine() {
    if (NoSyncMode)
        List.front().special.BeginLine();
}

void CAttachedInstruments::CompileSearch() {
    Positions.clear();
    CandidatesUpTo.clear();
    WithoutHeader.clear();
    std::vector<std::string> headers;
    for (std::size_t i = 0; i < List.size(); ++i) {
        if (List[i].enabled && List[i].HasHeader()) {
            headers.push_back(List[i].info.syncHeader);
            Positions.push_back(i);
        } else if (List[i].enabled) {
            WithoutHeader.push_back(i);
        }
        CandidatesUpTo.push_back(Positions.size());
    }
    Search.Compile(std::move(headers));
    for (std::size_t i = 0; i < List.size(); ++i) {
        List[i].standsAlone = false;
        List[i].follower = i;
    }
    for (std::size_t i = 0; i < Positions.size(); ++i)
        List[Positions[i]].standsAlone = Search.StandsAlone(i);
}

} // namespace qor
