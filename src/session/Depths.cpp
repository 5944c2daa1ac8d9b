// SPDX-License-Identifier: GPL-3.0-or-later
//
// Depths of frames. See Depths.h.
#include "session/Depths.h"

#include <cmath>

namespace qor {

CDepths::CDepths(const SessionState& session, bool wanted) : Session(session), IsWanted(wanted) {
    CRecursiveLock lock(session.DocLock);
    for (const auto& resource : session.Resources)
        for (const auto& instrument : resource->Instruments) {
            const SessionState::FrameOwner* owner = session.OwnerOf(instrument->Id);
            const std::optional<PressureSource> source =
                wanted && owner ? PressureSourceOf(session, *owner) : std::nullopt;
            if (source)
                Sources.emplace(instrument.get(), *source);
        }
}

const PressureSource* CDepths::SourceOf(const CQorViewIns& instrument) const {
    const auto found = Sources.find(&instrument);
    return found == Sources.end() ? nullptr : &found->second;
}

void CDepths::Distrust(const CQorViewIns& instrument, bool damaged) {
    if (damaged)
        Damaged.insert(&instrument);
    else
        Damaged.erase(&instrument);
}

std::optional<double> CDepths::Of(const CQorViewIns& instrument) const {
    CRecursiveLock lock(Session.DocLock);
    const PressureSource* source = SourceOf(instrument);
    if (!source)
        return std::nullopt;
    const CQorViewIns& carrier = *source->carrier->instrument;
    if (Damaged.contains(&carrier))
        return std::nullopt;
    if (&carrier != &instrument && carrier.Live.CurrentFrame()) {
        const FrameTime& now = instrument.Live.CurrentFrame()->Info.time;
        const FrameTime& then = carrier.Live.CurrentFrame()->Info.time;
        const double patience = static_cast<double>(carrier.Live.Patience()) / 1000.0;
        if (now.known && then.known && std::fabs(SecondsOf(now) - SecondsOf(then)) > patience)
            return std::nullopt;
    }
    return DepthBy(Session, *source);
}

} // namespace qor
