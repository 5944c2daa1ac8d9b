// SPDX-License-Identifier: GPL-3.0-or-later
//
// Names are looked up when something was watched, attached or given the profiler's role; a frame
// then finds what it concerns by its attachment's number.
#include "session/History.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "products/OceanMath.h"
#include "session/PressureSource.h"
#include "session/PressureTare.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qor {

namespace {

constexpr double NoValue = std::numeric_limits<double>::quiet_NaN();

double NumberOf(const CLiveInstrument& instrument, std::size_t sensor) {
    const FrameValues& values = instrument.Values();
    return sensor < values.statuses.size() && values.statuses[sensor] == ConversionStatus::Good
               ? values.numbers[sensor]
               : NoValue;
}

/// The first sensor of the name that gives numbers, or -1.
int SensorNamed(const CInstrument& definition, const std::string& name) {
    for (const CSensor& sensor : definition.Sensors())
        if (KindOfValue(sensor) == ValueKind::Number && SensorName(sensor) == name)
            return sensor.Index;
    return -1;
}

/// The place of a row of that label; the number of rows when there is none.
std::size_t RowLabelled(const std::vector<DerivedRow>& rows, const std::string& label) {
    const auto found = std::ranges::find(rows, label, &DerivedRow::label);
    return static_cast<std::size_t>(found - rows.begin());
}

void Append(WatchedCurve& curve, double time, double value, double depth, bool broken) {
    if (broken)
        curve.points.MarkGap();
    curve.points.Append(time, value, depth);
    ++curve.taken;
    curve.current = value;
}

} // namespace

WatchId CHistory::Watch(const HistoryItem& item) {
    CRecursiveLock lock(Session.DocLock);
    HistoryItem wanted = item;
    // A package's row is one curve, whichever of its instruments it is asked of.
    const SessionState::FrameOwner* owner = Session.OwnerNamed(item.instrument);
    if (item.derived && owner && owner->package && !owner->package->Instruments.empty())
        wanted.instrument = owner->package->Instruments.front();
    const auto found = std::ranges::find(Curves, wanted, [](const auto& one) { return one->item; });
    if (found != Curves.end()) {
        ++(*found)->uses;
        return (*found)->id;
    }
    if (Curves.size() >= MostCurves)
        return WatchId::None;
    Wake();
    Curves.push_back(std::make_unique<Kept>());
    Curves.back()->id = NextId();
    Curves.back()->item = std::move(wanted);
    Bound = false;
    return Curves.back()->id;
}

WatchId CHistory::WatchSpectra(const std::string& instrument, const OpticalSeries& series) {
    CRecursiveLock lock(Session.DocLock);
    const auto found = std::ranges::find_if(Rings, [&](const Ring& ring) {
        return ring.instrument == instrument && ring.series.type == series.type &&
               ring.series.units == series.units;
    });
    if (found != Rings.end()) {
        ++found->uses;
        return found->id;
    }
    if (Rings.size() >= MostSpectra)
        return WatchId::None;
    Wake();
    Rings.emplace_back();
    Rings.back().id = NextId();
    Rings.back().instrument = instrument;
    Rings.back().series = series;
    Bound = false;
    return Rings.back().id;
}

void CHistory::Unwatch(WatchId watch) {
    CRecursiveLock lock(Session.DocLock);
    const std::size_t before = Curves.size() + Rings.size();
    std::erase_if(Curves,
                  [watch](const auto& one) { return one->id == watch && --one->uses == 0; });
    std::erase_if(Rings, [watch](Ring& one) { return one.id == watch && --one.uses == 0; });
    if (Curves.size() + Rings.size() == before)
        return;
    Bound = false;
    if (!IsIdle())
        return;
    Feed.reset();
    Sources.clear();
    Depths.clear();
    Clocks.clear();
}

void CHistory::Wake() {
    if (Feed)
        return;
    Feed.emplace(Session, [this](CQorViewIns& instrument, const FrameCheckResult&) {
        LockIsHeld();
        if (const SessionState::FrameOwner* owner = Session.OwnerOf(instrument.Id))
            Take(*owner);
    });
}

const WatchedCurve* CHistory::Curve(WatchId watch) const {
    CRecursiveLock lock(Session.DocLock);
    const auto found = std::ranges::find(Curves, watch, [](const auto& one) { return one->id; });
    return found == Curves.end() ? nullptr : found->get();
}

const CSpectrumRing* CHistory::Spectra(WatchId watch) {
    CRecursiveLock lock(Session.DocLock);
    if (!IsIdle() && !IsBound())
        Bind(); // what was attached anew begins empty
    const auto found = std::ranges::find(Rings, watch, &Ring::id);
    return found == Rings.end() ? nullptr : found->spectra.get();
}

const CCastDetector* CHistory::CastsOf(const std::string& instrument) {
    CRecursiveLock lock(Session.DocLock);
    const Depth* depth = DepthOfName(instrument);
    return depth ? &depth->casts : nullptr;
}

std::optional<double> CHistory::DepthOf(const std::string& instrument) {
    CRecursiveLock lock(Session.DocLock);
    const Depth* depth = DepthOfName(instrument);
    const Source* carrier = depth ? Find(depth->instrument) : nullptr;
    if (!carrier || !depth->IsKnown(carrier->time))
        return std::nullopt;
    const SessionState::FrameOwner* owner = Session.OwnerOf(depth->instrument);
    return owner && !owner->instrument->Live.Stale(Session.Clock.MonotonicMilliseconds())
               ? std::optional(depth->dbar)
               : std::nullopt;
}

CHistory::Depth* CHistory::SomeDepth() {
    if (const CQorViewIns* profiler = Session.RoleInstrument(InstrumentRole::Profiler))
        if (Depth* depth = DepthOfName(profiler->Name()))
            return depth;
    for (const auto& resource : Session.Resources)
        for (const auto& instrument : resource->Instruments)
            if (Depth* depth = DepthOfName(instrument->Name()))
                return depth;
    return nullptr;
}

bool CHistory::BeginCast(const std::string& instrument) {
    CRecursiveLock lock(Session.DocLock);
    Depth* depth = instrument.empty() ? SomeDepth() : DepthOfName(instrument);
    if (!depth || depth->time == CHistoryClock::Never)
        return false;
    depth->casts.Begin(depth->time);
    return true;
}

bool CHistory::EndCast(const std::string& instrument) {
    CRecursiveLock lock(Session.DocLock);
    Depth* depth = DepthOfName(instrument);
    if (!depth || !depth->casts.UnderWay())
        return false;
    depth->casts.End(depth->time);
    return true;
}

CHistory::Source* CHistory::Find(InstrumentId instrument) {
    const std::uint32_t place = static_cast<std::uint32_t>(instrument) - FirstIdentity;
    return place < Sources.size() ? Sources[place].get() : nullptr;
}

void CHistory::Bind() {
    // How far each attachment was is kept, so a new one begins behind a gap; what its frames
    // concern is found anew.
    std::vector<std::unique_ptr<Source>> before = std::move(Sources);
    const std::uint32_t firstBefore = FirstIdentity;
    Sources.clear();
    FirstIdentity = ~0u;
    std::uint32_t last = 0;
    for (const auto& resource : Session.Resources)
        for (const auto& instrument : resource->Instruments) {
            const auto identity = static_cast<std::uint32_t>(instrument->Id);
            FirstIdentity = std::min(FirstIdentity, identity);
            last = std::max(last, identity);
        }
    if (last >= FirstIdentity)
        Sources.resize(std::size_t{last} - FirstIdentity + 1);
    for (std::size_t i = 0; i < before.size(); ++i) {
        const std::size_t place = firstBefore + i - FirstIdentity;
        if (!before[i] || place >= Sources.size() || !Session.OwnerOf(before[i]->instrument))
            continue;
        Sources[place] = std::move(before[i]);
        Sources[place]->carried = Sources[place]->depth = nullptr;
        Sources[place]->sensors.clear();
        Sources[place]->rows.clear();
        Sources[place]->rings.clear();
    }
    std::erase_if(Clocks, [this](const auto& one)
                              REQUIRES(Session.DocLock) { return !Session.Find(one.first); });
    Bound = true;
    BoundVersion = Session.OwnersVersion;
    BoundProfiler = Profiler();
    for (const auto& curve : Curves)
        BindCurve(*curve);
    for (Ring& ring : Rings)
        BindRing(ring);
    for (std::size_t i = 0; i < Sources.size(); ++i)
        if (Sources[i])
            Sources[i]->depth = DepthFor(*Session.OwnerOf(Sources[i]->instrument));
    for (std::unique_ptr<Source>& source : Sources)
        if (source && !source->Concerns())
            source.reset();
}

CHistory::Source* CHistory::SourceOf(const SessionState::FrameOwner& owner) {
    const CQorViewIns& instrument = *owner.instrument;
    std::unique_ptr<Source>& source =
        Sources[static_cast<std::uint32_t>(instrument.Id) - FirstIdentity];
    if (!source)
        source = std::make_unique<Source>();
    source->instrument = instrument.Id;
    source->seconds = static_cast<double>(instrument.Live.Patience()) / 1000.0;
    source->clock = &Clocks[owner.resource->Id];
    return source.get();
}

void CHistory::BindCurve(Kept& curve) {
    const SessionState::FrameOwner* owner = Session.OwnerNamed(curve.item.instrument);
    if (!owner)
        return;
    if (curve.item.derived) {
        BindRow(curve, *owner);
        return;
    }
    const int sensor = SensorNamed(owner->instrument->Definition(), curve.item.label);
    if (sensor < 0)
        return;
    SourceOf(*owner)->sensors.push_back({static_cast<std::size_t>(sensor), &curve});
}

/// A package's row hears of the frames of every instrument behind it.
void CHistory::BindRow(Kept& curve, const SessionState::FrameOwner& owner) {
    const std::vector<DerivedRow>& rows =
        owner.package ? owner.package->Products.Rows() : owner.instrument->Products.Rows();
    const std::size_t row = RowLabelled(rows, curve.item.label);
    if (row >= rows.size())
        return;
    std::vector<Source*> carriers;
    if (!owner.package)
        carriers.push_back(SourceOf(owner));
    else
        for (const int place : owner.package->Products.CarriersOf(row)) {
            const InstrumentId id = owner.package->Attached[static_cast<std::size_t>(place)];
            if (const SessionState::FrameOwner* one = Session.OwnerOf(id))
                carriers.push_back(SourceOf(*one));
        }
    std::ranges::sort(carriers);
    carriers.erase(std::unique(carriers.begin(), carriers.end()), carriers.end());
    for (Source* source : carriers) {
        source->rows.push_back({row, &curve, {}});
        for (const Source* other : carriers)
            if (other != source)
                source->rows.back().others.push_back(other);
    }
}

void CHistory::BindRing(Ring& ring) {
    const SessionState::FrameOwner* owner = Session.OwnerNamed(ring.instrument);
    const InstrumentId now = owner ? owner->instrument->Id : InstrumentId::None;
    if (ring.from != now)
        ring.spectra.reset();
    ring.from = now;
    if (!owner)
        return;
    for (const OpticalSeries& series : SeriesOf(owner->instrument->Definition()))
        if (!ring.spectra && series.type == ring.series.type && series.units == ring.series.units)
            ring.spectra = std::make_unique<CSpectrumRing>(series, SpectraKept);
    if (ring.spectra)
        SourceOf(*owner)->rings.push_back(ring.spectra.get());
}

CHistory::Depth* CHistory::DepthFor(const SessionState::FrameOwner& owner) {
    const std::optional<PressureSource> pressure = PressureSourceOf(Session, owner);
    if (!pressure)
        return nullptr;
    const SessionState::FrameOwner& carrier = *pressure->carrier;
    Depth& depth = Depths[carrier.instrument->Name()];
    if (depth.instrument != carrier.instrument->Id)
        depth.time = CHistoryClock::Never;
    depth.instrument = carrier.instrument->Id;
    depth.sensor = pressure->sensor;
    depth.scale = pressure->scale;
    Source* source = SourceOf(carrier);
    depth.seconds = source->seconds;
    depth.clock = source->clock;
    source->carried = &depth;
    return &depth;
}

CHistory::Depth* CHistory::DepthOfName(const std::string& instrument) {
    if (IsIdle())
        return nullptr;
    if (!IsBound())
        Bind();
    const SessionState::FrameOwner* owner = Session.OwnerNamed(instrument);
    return owner ? DepthFor(*owner) : nullptr;
}

std::optional<double> CHistory::TimeOf(const SessionState::FrameOwner& owner, Source& source) {
    FrameTime time = owner.resource->Moment(owner.instrument->Live.CurrentFrame()->Info.time);
    if (!time.known)
        time = Session.Clock.Now();
    Clock& clock = *source.clock;
    if (clock.resourceBreaks != owner.resource->Breaks) {
        clock.resourceBreaks = owner.resource->Breaks;
        clock.Break();
    }
    return clock.Take(static_cast<double>(time.seconds) + 0.001 * time.milliseconds, source.time);
}

void CHistory::Take(const SessionState::FrameOwner& owner) {
    if (!IsBound())
        Bind();
    Source* source = Find(owner.instrument->Id);
    if (!source)
        return;
    const CLiveInstrument& instrument = owner.instrument->Live;
    const std::optional<double> time = TimeOf(owner, *source);
    const std::uint32_t breaks = source->clock->BreakCount();
    if (!time) {
        source->breaks = breaks - 1; // its next frame comes behind a gap
        return;
    }
    const bool broken = source->breaks != breaks || *time - source->time >= source->seconds;
    source->time = *time;
    source->breaks = breaks;
    if (source->carried)
        TakeDepth(*source->carried, instrument, *time);
    const bool known = source->depth && source->depth->IsKnown(*time);
    const double depth = known ? source->depth->dbar : NoValue;
    TakeSensors(*source, instrument, *time, depth, broken);
    if (!source->rows.empty())
        TakeRows(*source, owner, *time, depth, broken);
    for (CSpectrumRing* ring : source->rings)
        ring->Add(instrument);
}

void CHistory::TakeDepth(Depth& depth, const CLiveInstrument& instrument, double time) {
    const double pressure = NumberOf(instrument, static_cast<std::size_t>(depth.sensor));
    if (!std::isfinite(pressure))
        return;
    depth.dbar = depth.scale->Difference(qor::DepthOf(pressure, TareIn(Session, depth.scale)));
    depth.time = time;
    depth.breaks = depth.clock->BreakCount();
    depth.casts.Take(time, depth.dbar);
}

void CHistory::TakeSensors(Source& source, const CLiveInstrument& instrument, double time,
                           double depth, bool broken) {
    for (const SensorWatch& watch : source.sensors)
        Append(*watch.curve, time, NumberOf(instrument, watch.sensor), depth, broken);
}

void CHistory::TakeRows(Source& source, const SessionState::FrameOwner& owner, double time,
                        double depth, bool broken) {
    std::optional<CPackageRows::Inputs> inputs;
    if (owner.package)
        inputs.emplace(Session.InputsOf(*owner.package));
    for (const RowWatch& watch : source.rows) {
        const bool old = std::ranges::any_of(watch.others, [time](const Source* other) {
            return time - other->time >= other->seconds;
        });
        std::optional<double> value;
        if (!old)
            value = inputs ? owner.package->Products.ReadRow(*inputs, watch.row)
                           : owner.instrument->Products.ReadRow(owner.instrument->Live, watch.row);
        Append(*watch.curve, time, value.value_or(NoValue), depth, broken);
    }
}

} // namespace qor
