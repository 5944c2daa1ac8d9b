// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a definition's SPECIAL line adds to a request; SpecialType.cpp knows its types.
#include "telemetry/AttachRequest.h"

#include "instrument/Instrument.h"
#include "instrument/SpecialType.h"
#include "telemetry/FrameData.h"

namespace qor {

static_assert(MaxSyncBytes == std::tuple_size_v<decltype(CFrameInfo::syncBytes)>);

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

} // namespace qor
