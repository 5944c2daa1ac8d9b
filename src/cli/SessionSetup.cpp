// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SessionSetup.h"
#include "cli/Report.h"

#include "base/Text.h"
#include "platform/Console.h"
#include "platform/FileErrorText.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

struct NamedRole {
    std::string_view name;
    InstrumentRole role;
};
constexpr NamedRole RoleNames[] = {
    {"profiler", InstrumentRole::Profiler},
    {"reference", InstrumentRole::Reference},
    {"tracker", InstrumentRole::Tracker},
    {"sqm", InstrumentRole::SqmInstrument},
    {"dut", InstrumentRole::DeviceUnderTest},
    {"weather", InstrumentRole::WeatherStation},
    {"gps", InstrumentRole::Gps},
};

/// Says why an instrument was not added; true when it was.
bool NoteAdded(const AddedInstrument& added, const std::string& path) {
    if (added.instrument)
        return true;
    if (added.definition != DefinitionStatus::Success)
        ReportError(path + ": could not be loaded (" +
                    Format("0x%08x", static_cast<unsigned>(added.definition)) + "). " +
                    OneLine(added.parseLog) + " See qorview-cli check.");
    else
        ReportError(path + ": could not be attached (" +
                    Format("0x%08x", static_cast<unsigned>(added.comm)) + "). " +
                    OneLine(CommDetail(added.comm)));
    return false;
}

bool ApplyRole(CQorViewDoc& doc, const std::string& text) {
    std::optional<RoleAssignment> assignment = ParseRole(text);
    RoleHolder place;
    if (!assignment || !doc.FindInstrument(assignment->name, &place)) {
        ReportError("--role " + text + ": there is no instrument of that name.");
        return false;
    }
    doc.SetRole(assignment->role, place.resource, place.instrument);
    return true;
}

} // namespace

void CTerminalUser::ShowMessage(const std::string& text) {
    Messages.push_back(text);
    if (!Quiet)
        ReportWarning(OneLine(text));
}

bool CTerminalUser::AskYesNo(const std::string& text) {
    ReportWarning(OneLine(text) + " Nobody can be asked here: answered No.");
    return false;
}

void CTerminalUser::Beep(BeepKind) {
    if (IsTerminal(StandardStream::Error))
        WriteError("\a");
}

bool CTerminalUser::ConfirmLog(const std::string&) {
    return true;
}

void AddInstrumentOptions(CLI::App& command, InstrumentOptions& options) {
    command
        .add_option("-d,--definition", options.definitions,
                    "Definition file (.cal, .tdf) of an instrument")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command.add_option("-p,--package", options.packages, "Instrument package file (.sip)")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command
        .add_option("--wet", options.wet,
                    "The named instrument is immersed; without a name every instrument is")
        ->type_name("[=NAME]")
        ->allow_extra_args(false);
    command
        .add_option(
            "--role", options.roles,
            "Gives an instrument a role: profiler, reference, tracker, sqm, dut, weather, gps")
        ->type_name("NAME=ROLE")
        ->check(CheckRole)
        ->allow_extra_args(false);
}

std::optional<RoleAssignment> ParseRole(std::string_view text) {
    std::size_t equals = text.rfind('=');
    if (equals != std::string_view::npos)
        for (const NamedRole& entry : RoleNames)
            if (EqualsNoCase(entry.name, text.substr(equals + 1)))
                return RoleAssignment{std::string(text.substr(0, equals)), entry.role};
    return std::nullopt;
}

std::string CheckRole(const std::string& text) {
    return ParseRole(text) ? ""
                           : text + ": give NAME=ROLE with profiler, reference, tracker, sqm, dut, "
                                    "weather or gps";
}

void AddPackageOptions(CLI::App& command, PackageSettings& settings) {
    command
        .add_option_function<double>(
            "--default-salinity",
            [&settings](double salinity) {
                settings.UseDefSalinity = true;
                settings.DefaultSalinity = salinity;
            },
            "Salinity of a package until it measures one")
        ->type_name("PSU")
        ->check(CLI::Range(0.0, 50.0))
        ->group("Packages");
    command
        .add_option("--saturation-irradiance", settings.SaturationIrradiance,
                    "PAR at which photosynthesis saturates, for the light saturation of a package")
        ->type_name("UMOL/M^2/S")
        ->check(CLI::PositiveNumber)
        ->group("Packages");
    command
        .add_option("--attenuation-window", settings.AttenuationWindow,
                    "Depth over which a package's attenuation is fitted (5)")
        ->type_name("METRES")
        ->check(CLI::PositiveNumber)
        ->group("Packages");
}

bool AddDefinitions(CQorViewDoc& doc, int resource, const std::vector<std::string>& paths) {
    bool well = true;
    for (const std::string& path : paths)
        well = NoteAdded(doc.AddInstrument(path, resource), path) && well;
    return well;
}

bool AddPackage(CPackageList& packages, int resource, LoadedPackage loaded,
                const PackageSettings& settings) {
    const std::string path = loaded.path;
    if (!loaded.ok) {
        ReportError(path +
                    ": no instrument could be loaded from the package. See qorview-cli check.");
        return false;
    }
    std::vector<RefusedMember> refused;
    if (CPackage* package = packages.AddPackage(std::move(loaded), resource, &refused))
        package->Settings = settings;
    for (const RefusedMember& member : refused)
        NoteAdded(member.added, path + "(" + member.name + ")");
    return refused.empty();
}

bool ApplyWetAndRoles(CQorViewDoc& doc, const InstrumentOptions& options) {
    bool well = true;
    for (const std::string& name : options.wet) {
        bool all = name == EveryInstrument;
        if (doc.SetImmersed(all ? std::string() : name, true) > 0 || all)
            continue;
        ReportError("--wet=" + name + ": there is no instrument of that name.");
        well = false;
    }
    for (const std::string& assignment : options.roles)
        well = ApplyRole(doc, assignment) && well;
    return well;
}

std::string OneLine(std::string_view message) {
    std::string line;
    for (char c : message) {
        bool space = IsSpace(c);
        if (space && (line.empty() || line.back() == ' '))
            continue;
        line += space ? ' ' : c;
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

bool IsReadable(const std::string& path) {
    CFile file;
    FileCause cause = file.OpenForReading(path);
    if (cause == FileCause::None)
        return true;
    ReportError(path + ": cannot be read. " + std::string(GetFileErrorText(cause)));
    return false;
}

} // namespace qor
