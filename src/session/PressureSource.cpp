// SPDX-License-Identifier: GPL-3.0-or-later
//
// The look-up of pressures. See PressureSource.h.
#include "session/PressureSource.h"

#include "products/OceanMath.h"
#include "products/PackageSensors.h"
#include "session/PressureTare.h"

#include <cmath>

namespace qor {

namespace {

std::optional<PressureSource> PressureAmong(const SessionState& session,
                                            PackageInstruments instruments)
    REQUIRES(session.DocLock) {
    const SensorPlace place = FindPressure(instruments);
    const CSensor* sensor = SensorAt(instruments, place);
    const std::optional<UnitScale> scale = sensor ? PressureScale(sensor->Units) : std::nullopt;
    if (!scale)
        return std::nullopt;
    return PressureSource{session.OwnerNamed(InstrumentAt(instruments, place.instrument)->Name()),
                          place.sensor, *scale};
}

} // namespace

const CSensor* PressureSensorOf(const CQorViewIns& instrument) {
    const CLiveInstrument* const alone[] = {&instrument.Live};
    return SensorAt(alone, FindPressure(alone));
}

std::optional<PressureSource> PressureSourceOf(const SessionState& session,
                                               const SessionState::FrameOwner& owner) {
    const CQorViewIns* profiler = session.RoleInstrument(InstrumentRole::Profiler);
    const SessionState::FrameOwner* leader = profiler ? session.OwnerOf(profiler->Id) : nullptr;
    for (const SessionState::FrameOwner* one : {&owner, leader})
        if (one && one->package)
            if (auto source = PressureAmong(session, one->package->Live))
                return source;
    if (leader && !leader->package) {
        const CLiveInstrument* alone[] = {&leader->instrument->Live};
        if (auto source = PressureAmong(session, alone))
            return source;
    }
    // Decided: without a package and a profiler an instrument's own pressure gives its depth.
    const CLiveInstrument* own[] = {&owner.instrument->Live};
    return PressureAmong(session, own);
}

std::optional<double> DepthBy(const SessionState& session, const PressureSource& source) {
    const CLiveInstrument& carrier = source.carrier->instrument->Live;
    const auto sensor = static_cast<std::size_t>(source.sensor);
    if (!carrier.CurrentFrame() || carrier.Values().statuses[sensor] != ConversionStatus::Good ||
        !std::isfinite(carrier.Values().numbers[sensor]))
        return std::nullopt;
    return source.scale.Difference(
        DepthOf(carrier.Values().numbers[sensor], TareIn(session, source.scale)));
}

} // namespace qor
