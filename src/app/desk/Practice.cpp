// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/Practice.h"

#include "app/Application.h"
#include "base/SilentSink.h"
#include "instrument/FrameChecks.h"
#include "session/FileKind.h"
#include "session/Package.h"

#include <algorithm>

namespace qor {

namespace {

constexpr double CastDepth = 60.0;
constexpr SimulatedFaults DamagedLine{.drop = 0.02, .corrupt = 0.02, .noise = 12};

void Play(CPracticeLine& line, std::unique_ptr<CInstrument> instrument, bool immersed) {
    CSilentSink nobody; // to be told of rates that a definition leaves open
    const double rate = NominalFrameRate(*instrument, nobody);
    line.Add(std::move(instrument), {rate, immersed, CastDepth});
}

} // namespace

std::string CPractice::Begin(const SessionRecord& session) {
    for (const ResourceRecord& resource : session.resources)
        if (std::string fault = resource.IsFile() ? std::string() : AddPort(resource);
            !fault.empty())
            return fault;
    return {};
}

std::string CPractice::AddPort(const ResourceRecord& port) {
    CPracticeLine& line = Bench.AddLine(port.port, Lines.size() + 1);
    Lines.push_back(&line);
    for (const PackageRecord& package : port.packages)
        if (std::string fault = AddPackage(line, package); !fault.empty())
            return fault;
    for (const InstrumentRecord& instrument : port.instruments)
        if (std::string fault =
                AddDefinition(line, instrument.definition, instrument.immersed.value_or(false));
            !fault.empty())
            return fault;
    return {};
}

std::string CPractice::AddDefinition(CPracticeLine& line, const std::string& path, bool immersed) {
    auto instrument = std::make_unique<CInstrument>();
    if (instrument->Load(path) != DefinitionStatus::Success)
        return path + ": the practice's definition could not be loaded; install the program again.";
    Play(line, std::move(instrument), immersed);
    return {};
}

std::string CPractice::AddPackage(CPracticeLine& line, const PackageRecord& package) {
    LoadedPackage loaded = ReadPackage(package.file);
    if (!loaded.ok)
        return package.file +
               ": the practice's package could not be loaded; install the program again.";
    for (PackageMember& member : loaded.members) {
        const auto said =
            std::ranges::find(package.instruments, member.name, &InstrumentRecord::definition);
        const bool immersed = said != package.instruments.end() && said->immersed.value_or(false);
        Play(line, std::move(member.instrument), immersed);
    }
    return {};
}

void CPractice::SetDamaged(bool on) {
    Damaged = on;
    for (CPracticeLine* line : Lines)
        line->SetFaults(on ? DamagedLine : SimulatedFaults{});
}

void CPractice::SetLost(bool on) {
    Lost = on;
    if (Lines.empty())
        return;
    on ? Lines.front()->Unplug() : Lines.front()->PlugIn();
}

std::string PracticeSessionPath() {
    return InstalledFile(QStringLiteral("examples/practice/practice.qor")).toStdString();
}

} // namespace qor
