// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/SpectralTraces.h"

#include "base/Text.h"
#include "views/ShownInstrument.h"

#include <algorithm>

namespace qor {

namespace {

bool IsOptical(const CQorViewIns& instrument) {
    return !SeriesOf(instrument.Definition()).empty();
}

using Instruments = std::vector<const CQorViewIns*>;

Instruments InstrumentsOf(const CQorViewDoc& doc, const std::string& name) REQUIRES(doc.DocLock) {
    Instruments found;
    if (const CQorViewIns* one = FindShown(doc, name, IsOptical)) {
        found.push_back(one);
    } else if (const CPackage* package = doc.Find(doc.Packages.Named(name))) {
        for (const InstrumentId id : package->Attached)
            if (const CQorViewIns* member = doc.Find(id))
                found.push_back(member);
    }
    return found;
}

std::vector<InstrumentId> IdsOf(const Instruments& instruments) {
    std::vector<InstrumentId> ids;
    for (const CQorViewIns* instrument : instruments)
        ids.push_back(instrument->Id);
    return ids;
}

std::vector<SpectralTrace> TracesOf(const Instruments& instruments, SpectrumReading reading) {
    std::vector<SpectralTrace> traces;
    for (const CQorViewIns* instrument : instruments)
        for (const OpticalSeries& series : SeriesOf(instrument->Definition()))
            traces.push_back({instrument->Id,
                              instrument->Name(),
                              {series.type, series.units},
                              CSpectrumRing(series, CSpectralTraces::Kept, reading)});
    return traces;
}

} // namespace

std::string SpectralGroup::Text() const {
    return Utf8Of(type) + " [" + Utf8Of(units) + "]";
}

bool CSpectralTraces::Find(const CQorViewDoc& doc, const std::string& name,
                           const std::vector<std::string>& more, SpectrumReading reading) {
    const Instruments own = InstrumentsOf(doc, name);
    Instruments others;
    for (const std::string& other : more)
        if (const CQorViewIns* found = doc.Find(doc.FindInstrument(other)))
            others.push_back(found);
    const bool anew = reading != Reading;
    Reading = reading;
    const bool ownAnew = anew || IdsOf(own) != OwnFrom;
    const bool othersAnew = anew || IdsOf(others) != OthersFrom;
    if (ownAnew) {
        Own = TracesOf(own, reading);
        OwnFrom = IdsOf(own);
    }
    if (othersAnew) {
        Others = TracesOf(others, reading);
        OthersFrom = IdsOf(others);
    }
    // What an instrument has sent already is there at once.
    for (auto& [traces, isNew] : {std::pair{&Own, ownAnew}, std::pair{&Others, othersAnew}})
        for (SpectralTrace& trace : *traces)
            if (const CQorViewIns* instrument = isNew ? doc.Find(trace.instrument) : nullptr;
                instrument && instrument->Live.CurrentFrame())
                trace.ring.Add(instrument->Live);
    return ownAnew;
}

void CSpectralTraces::Take(const CQorViewIns& instrument) {
    for (std::vector<SpectralTrace>* traces : {&Own, &Others})
        for (SpectralTrace& trace : *traces)
            if (trace.instrument == instrument.Id) {
                trace.ring.Add(instrument.Live);
                ++Taken;
            }
}

void CSpectralTraces::Clear() {
    Own.clear();
    Others.clear();
    OwnFrom.clear();
    OthersFrom.clear();
}

std::vector<SpectralGroup> CSpectralTraces::Groups() const {
    std::vector<SpectralGroup> groups;
    for (const SpectralTrace& trace : Own)
        if (std::ranges::find(groups, trace.group) == groups.end())
            groups.push_back(trace.group);
    return groups;
}

const SpectralTrace* CSpectralTraces::Overlay(const std::string& instrument,
                                              const SpectralGroup& group) const {
    const SpectralTrace *only = nullptr, *sameUnits = nullptr;
    int count = 0;
    for (const SpectralTrace& trace : Others) {
        if (trace.name != instrument)
            continue;
        if (EqualsNoCase(trace.group.type, group.type))
            return &trace;
        ++count;
        only = &trace;
        if (!sameUnits && trace.group.units == group.units)
            sameUnits = &trace;
    }
    return count == 1 ? only : sameUnits;
}

std::vector<std::string> OpticalInstruments(const CQorViewDoc& doc) {
    std::vector<std::string> names;
    for (const auto& resource : doc.Resources)
        for (const auto& instrument : resource->Instruments)
            if (IsOptical(*instrument))
                names.push_back(instrument->Name());
    return names;
}

} // namespace qor
