// SPDX-License-Identifier: GPL-3.0-or-later
//
// What is asked of an instrument's current frame. See LiveInstrument.h.
#include "products/LiveInstrument.h"

#include "instrument/Calibration.h"

#include <algorithm>

namespace qor {

namespace {

/// Milliseconds without a frame after which the last one is old.
std::int64_t PatienceAt(double frameRate) {
    constexpr double Least = 3000.0, Most = 24 * 3600 * 1000.0;
    const double periods = 3000.0 / frameRate;
    // A rate that is none (0, negative, not a number) says nothing about when the next frame is
    // due.
    return static_cast<std::int64_t>(periods > Least && frameRate > 0 ? std::min(periods, Most)
                                                                      : Least);
}

} // namespace

CLiveInstrument::CLiveInstrument(const CInstrument& definition)
    : Instrument(definition), Plan(definition), ParChannels(ParList(definition)) {}

void CLiveInstrument::TakeAttachment(const CFrameInfo& info) {
    Current.Info = info;
    HasFrame = true;
}

ConversionStatus CLiveInstrument::Value(const CSensor& sensor, double& value) const {
    if (!HasFrame)
        return ConversionStatus::MissingArgument;
    auto index = static_cast<std::size_t>(sensor.Index);
    if (sensor.Instrument != &Instrument || index >= CurrentValues.statuses.size())
        return ConversionStatus::NotUsable;
    ConversionStatus status = CurrentValues.statuses[index];
    if (status != ConversionStatus::Good)
        return status;
    if (KindOfValue(sensor) != ValueKind::Number)
        return ConversionStatus::NotUsable;
    value = CurrentValues.numbers[index];
    return ConversionStatus::Good;
}

ConversionStatus CLiveInstrument::Par(double& par) const {
    if (!HasFrame)
        return ConversionStatus::MissingArgument;
    return ComputePar(ParChannels, Current.Span(), Immersed, par);
}

std::int64_t CLiveInstrument::Patience() const {
    return PatienceAt(FrameRate);
}

bool CLiveInstrument::Stale(std::int64_t now) const {
    return HasFrame && now - ArrivalMonotonic >= Patience();
}

} // namespace qor
