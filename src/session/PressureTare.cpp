// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/PressureTare.h"

#include "base/Text.h"
#include "instrument/ConversionStatus.h"
#include "products/SensorUnits.h"
#include "session/PressureSource.h"
#include "session/SessionFields.h"

namespace qor {
namespace {

constexpr const char* NoProfiler = "No profiler has been specified; give an instrument that role.";

/// Of the profiler's pressure; none without such a sensor, or where its units are not known.
std::optional<UnitScale> ScaleOf(const SessionState& session) REQUIRES(session.DocLock) {
    const CQorViewIns* profiler = session.RoleInstrument(InstrumentRole::Profiler);
    const CSensor* pressure = profiler ? PressureSensorOf(*profiler) : nullptr;
    return pressure ? PressureScale(pressure->Units) : std::nullopt;
}

/// The profiler's pressure now, or why there is none.
std::string ReadPressure(const CQorViewDoc& doc, double& pressure) REQUIRES(doc.DocLock) {
    const CQorViewIns* profiler = doc.RoleInstrument(InstrumentRole::Profiler);
    if (!profiler)
        return NoProfiler;
    const std::string& name = profiler->Name();
    const CSensor* sensor = PressureSensorOf(*profiler);
    if (!sensor)
        return "The profiler " + name + " has no pressure sensor.";
    if (!profiler->Live.CurrentFrame())
        return "The profiler " + name + " has sent no frame yet.";
    const std::int64_t now = doc.Clock.MonotonicMilliseconds();
    if (profiler->Live.Stale(now))
        return Format("The latest frame of the profiler %s is %lld s old.", name.c_str(),
                      static_cast<long long>((now - profiler->Live.ArrivalMonotonic) / 1000));
    const ConversionStatus status = profiler->Live.Value(*sensor, pressure);
    if (status != ConversionStatus::Good)
        return "The pressure of the profiler " + name +
               " has no value: " + std::string(ConversionStatusText(status)) + '.';
    const double dbar = ScaleOf(doc).value_or(UnitScale()).Convert(pressure);
    if (!(dbar >= TareRange.least && dbar <= TareRange.greatest))
        return "The pressure of the profiler " + name + ", " + ShortestNumber(pressure) +
               ", cannot be one in air.";
    return {};
}

/// In the units of the profiler's sensor. It stays the same pressure when another takes the role.
void KeepTare(CQorViewDoc& doc, double tare) REQUIRES(doc.DocLock) {
    doc.PressureTare = tare;
    doc.TareScale = ScaleOf(doc);
    doc.ReportMessage("Pressure tare: " + ShortestNumber(tare) + ".\r\n");
    doc.NoteChange();
}

} // namespace

std::string TakePressureTare(CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    double pressure = 0;
    if (const std::string fault = ReadPressure(doc, pressure); !fault.empty())
        return "The pressure tare could not be taken. " + fault;
    KeepTare(doc, pressure);
    return {};
}

std::string SetPressureTare(CQorViewDoc& doc, double dbar) {
    if (!(dbar >= TareRange.least && dbar <= TareRange.greatest))
        return "A pressure tare of " + ShortestNumber(dbar) + " dbar cannot be one in air.";
    CRecursiveLock lock(doc.DocLock);
    if (!doc.RoleInstrument(InstrumentRole::Profiler))
        return NoProfiler;
    KeepTare(doc, ScaleOf(doc).value_or(UnitScale()).Invert(dbar));
    return {};
}

void ClearTare(CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    if (doc.PressureTare)
        doc.ReportMessage("Pressure tare: none.\r\n");
    doc.PressureTare.reset();
    doc.NoteChange();
}

void TakeSavedTare(SessionState& session, std::optional<double> dbar) {
    session.PressureTare = dbar;
    session.TareScale = UnitScale();
}

void TakeLoggedTare(SessionState& session, double tare) {
    session.PressureTare = tare;
    // A log without a tare has 0, in whatever units.
    session.TareScale = tare == 0.0 ? std::nullopt : ScaleOf(session);
}

double TareInDbar(const SessionState& session, double tare) {
    return session.TareScale.value_or(UnitScale()).Convert(tare);
}

double TareOfProfiler(const SessionState& session) {
    return session.PressureTare ? TareIn(session, ScaleOf(session)) : 0.0;
}

double TareIn(const SessionState& session, const std::optional<UnitScale>& wanted) {
    const double tare = session.PressureTare.value_or(0.0);
    const std::optional<UnitScale>& taken = session.TareScale;
    if (!session.PressureTare || !taken || !wanted || *taken == *wanted)
        return tare;
    return wanted->Invert(taken->Convert(tare));
}

} // namespace qor
