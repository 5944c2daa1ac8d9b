// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a definition's SPECIAL line adds to a request; SpecialType.cpp knows its types.
#include "telemetry/AttachRequest.h"

#include "instrument/Instrument.h"
#include "instrument/SpecialType.h"
#include "telemetry/FrameData.h"

namespace qor {

namespace {

constexpr std::string_view PairType = "BSI";
constexpr std::string_view SizedType = "HOBILABS_HS2_D";

static_assert(MaxSyncBytes == std::tuple_size_v<decltype(CFrameInfo::syncBytes)>);

} // namespace

AttachRequest MakeAttachRequest(const CInstrument& instrument) {
    AttachRequest request;
    request.instrumentName = instrument.Name();
    request.syncHeader = instrument.SyncHeader();
    request.frameSize = instrument.FrameSize();
    request.terminator = instrument.Terminator();
    const std::optional<SpecialType> special = SpecialTypeOf(instrument);
    if (!special)
        return request;
    request.typeName = special->name;
    request.noSync = true;
    switch (special->search) {
    case SpecialSearch::Packets:
        request.syncBytes = SyncPairsOf(*special->line);
        break;
    case SpecialSearch::Lines:
        request.terminator = "\r\n";
        break;
    case SpecialSearch::Header:
        break;
    }
    return request;
}

FrameRule RuleOf(const AttachRequest& request) {
    if (!request.noSync)
        return FrameRule::Header;
    if (request.typeName == PairType)
        return FrameRule::Packets;
    if (request.typeName == SizedType)
        return FrameRule::HeaderAndSize;
    return request.terminator.empty() ? FrameRule::Header : FrameRule::Lines;
}

ReplayVerdict CheckReplay(std::span<const LoggedInstrument> instruments) {
    auto needsTag = [](const LoggedInstrument& instrument) {
        FrameRule rule = RuleOf(instrument.request);
        return rule == FrameRule::Packets || rule == FrameRule::Lines;
    };
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        const AttachRequest& second = instruments[i].request;
        if (needsTag(instruments[i]) && !instruments[i].tagged)
            return {ReplayConflict::NoTag, i, i};
        for (std::size_t j = 0; j < i; ++j) {
            const AttachRequest& first = instruments[j].request;
            if (first.syncHeader == second.syncHeader)
                return {ReplayConflict::SameHeader, j, i};
            if (needsTag(instruments[i]) && RuleOf(first) == RuleOf(second) &&
                first.terminator == second.terminator && first.syncBytes == second.syncBytes)
                return {ReplayConflict::SameFrames, j, i};
        }
    }
    return {};
}

} // namespace qor
