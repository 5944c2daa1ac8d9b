// SPDX-License-Identifier: GPL-3.0-or-later
//
// A resource and its instruments. See QorViewRes.h.
#include "session/QorViewRes.h"

#include <algorithm>

namespace qor {

CQorViewRes::CQorViewRes(ResourceId id, CTelemComm& comm, const SerialResourceSettings& settings)
    : Id(id), Comm(comm), Serial(settings), File(false) {}

CQorViewRes::CQorViewRes(ResourceId id, CTelemComm& comm, const FileResourceSettings& settings)
    : Id(id), Comm(comm), Playback(settings), File(true) {}

void CQorViewRes::BeginConnection() {
    ++Breaks;
    for (const auto& instrument : Instruments)
        instrument->Checks.BeginConnection();
}

CQorViewIns* CQorViewRes::Instrument(std::string_view name) const {
    const auto found =
        std::ranges::find(Instruments, name, [](const auto& one) { return one->Name(); });
    return found == Instruments.end() ? nullptr : found->get();
}

FrameTime CQorViewRes::Moment(FrameTime time) const {
    if (!ZoneMinutes || !time.known)
        return time;
    time.seconds -= std::int64_t{*ZoneMinutes} * 60;
    time.utcOffsetMinutes = static_cast<std::int16_t>(*ZoneMinutes);
    return time;
}

} // namespace qor
