// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a definition's SPECIAL line adds to a request; SpecialType.cpp knows its types.
#include "telemetry/AttachRequest.h"

#include "instrument/Instrument.h"
#include "instrument/SpecialType.h"
#include "telemetry/FrameData.h"
#include "telemetry/RawLogFormat.h"

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

namespace {

bool NeedsTag(const AttachRequest& request) {
    const FrameRule rule = RuleOf(request);
    return rule == FrameRule::Packets || rule == FrameRule::Lines;
}

std::optional<ReplayConflict> ConflictOf(const LoggedInstrument& one) {
    if (NeedsTag(one.request))
        return one.tagged ? std::nullopt : std::optional(ReplayConflict::NoTag);
    for (const std::string_view record : {HeaderRecordStart, TimeStampStart})
        if (one.request.syncHeader.starts_with(record.substr(0, record.size() - 1)))
            return ReplayConflict::LogRecord;
    return {};
}

std::optional<ReplayConflict> ConflictBetween(const AttachRequest& first,
                                              const AttachRequest& second) {
    if (first.syncHeader == second.syncHeader)
        return ReplayConflict::SameHeader;
    const FrameRule rule = RuleOf(first);
    if (rule == RuleOf(second) &&
        ((rule == FrameRule::Lines && first.terminator == second.terminator) ||
         (rule == FrameRule::Packets && first.syncBytes == second.syncBytes)))
        return ReplayConflict::SameFrames;
    const bool haveHeaders = !NeedsTag(first) && !NeedsTag(second) && !first.syncHeader.empty() &&
                             !second.syncHeader.empty();
    if (haveHeaders && (first.syncHeader.starts_with(second.syncHeader) ||
                        second.syncHeader.starts_with(first.syncHeader)))
        return ReplayConflict::SharedStart;
    return {};
}

} // namespace

std::vector<ReplayVerdict> CheckReplay(std::span<const LoggedInstrument> instruments) {
    std::vector<ReplayVerdict> verdicts;
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (const auto conflict = ConflictOf(instruments[i]))
            verdicts.push_back({*conflict, i, i});
        for (std::size_t j = 0; j < i; ++j)
            if (const auto conflict =
                    ConflictBetween(instruments[j].request, instruments[i].request))
                verdicts.push_back({*conflict, j, i});
    }
    return verdicts;
}

} // namespace qor
