// SPDX-License-Identifier: GPL-3.0-or-later
//
// The pressure that an instrument's depth comes from. Looked up anew when the session's instruments
// change; under the document's lock.
#pragma once

#include "products/SensorUnits.h"
#include "session/SessionState.h"

#include <optional>

namespace qor {

struct PressureSource {
    const SessionState::FrameOwner* carrier = nullptr; ///< whose frames bring it
    int sensor = -1;
    UnitScale scale; ///< to dbar
};

/// The pressure of an instrument by itself, or null.
const CSensor* PressureSensorOf(const CQorViewIns& instrument);

/// That of the instrument's package, else of the profiler's package or of the profiler, else its
/// own. None without any, or where its units are not known.
std::optional<PressureSource> PressureSourceOf(const SessionState& session,
                                               const SessionState::FrameOwner& owner)
    REQUIRES(session.DocLock);

/// Its depth in dbar, less the tare, by the carrier's current frame; none where that has no number.
std::optional<double> DepthBy(const SessionState& session, const PressureSource& source)
    REQUIRES(session.DocLock);

} // namespace qor
