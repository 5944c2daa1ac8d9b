// SPDX-License-Identifier: GPL-3.0-or-later
//
// A frame becomes an instrument's current one. This is on the path of every frame: nothing is
// allocated and no text copied once the first frame is in.
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

void CLiveInstrument::Take(CFrameData& frame) {
    Plan.Convert(frame.Span(), Immersed, CurrentValues);

    // The texts of the attachment change only with the attachment.
    if (!HasFrame || Current.Info.identity != frame.Info.identity || frame.Info.identity == 0) {
        Current.Info = frame.Info;
    } else {
        Current.Info.frameCounter = frame.Info.frameCounter;
        Current.Info.time = frame.Info.time;
    }
    Current.Bytes.swap(frame.Bytes);
    Current.StreamOffset = frame.StreamOffset;
    Current.Error = frame.Error;
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
