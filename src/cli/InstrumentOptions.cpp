// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/InstrumentOptions.h"

#include "base/Text.h"
#include "cli/NumberOptions.h"
#include "cli/Report.h"
#include "session/FileKind.h"
#include "session/SessionFields.h"

#include <CLI/CLI.hpp>

namespace qor {

std::string CheckInstrumentFile(const std::string& path) {
    return MayBeInstrumentFile(path) ? std::string() : OneLine(NotInstrumentFile(path));
}

void AddNameOptions(CLI::App& command, InstrumentSelection& selection) {
    command
        .add_option_function<std::vector<std::string>>(
            "--wet",
            [&selection](const std::vector<std::string>& names) {
                for (const std::string& name : names)
                    if (name == EveryInstrument)
                        selection.allWet = true;
                    else
                        selection.wet.push_back(name);
            },
            "The named instrument is immersed; without a name every instrument is")
        ->type_name("[=NAME]")
        ->allow_extra_args(false);
    command
        .add_option_function<std::vector<std::string>>(
            "--role",
            [&selection](const std::vector<std::string>& texts) {
                for (const std::string& text : texts)
                    selection.roles.push_back(*ParseRole(text));
            },
            "Gives an instrument a role: " + PlainRoleNames())
        ->type_name("NAME=ROLE")
        ->check([](const std::string& text) {
            return ParseRole(text) ? std::string()
                                   : text + ": give NAME=ROLE with " + PlainRoleNames();
        })
        ->allow_extra_args(false);
}

void AddInstrumentOptions(CLI::App& command, InstrumentSelection& selection) {
    command
        .add_option("-d,--definition", selection.definitions,
                    "Definition file (.cal, .tdf) of an instrument")
        ->type_name("FILE")
        ->check(CheckInstrumentFile)
        ->allow_extra_args(false);
    command.add_option("-p,--package", selection.packages, "Instrument package file (.sip)")
        ->type_name("FILE")
        ->check(CheckInstrumentFile)
        ->allow_extra_args(false);
    AddNameOptions(command, selection);
}

/// In files 0 stands for none; an option that says none is left out.
constexpr double LeastIrradiance = 0.001;

void AddPackageOptions(CLI::App& command, PackageOptions& options) {
    command
        .add_option("--default-salinity", options.defaultSalinity,
                    "Salinity of a package until it measures one")
        ->type_name("PSU")
        ->transform(DecimalIn(SalinityRange.least, SalinityRange.greatest))
        ->group("Packages");
    command
        .add_option("--saturation-irradiance", options.saturationIrradiance,
                    "PAR at which photosynthesis saturates, for the light saturation of a package")
        ->type_name("UMOL/M^2/S")
        ->transform(DecimalIn(LeastIrradiance, IrradianceRange.greatest))
        ->group("Packages");
    command
        .add_option("--attenuation-window", options.attenuationWindow,
                    "Depth over which a package's attenuation is fitted (5)")
        ->type_name("METRES")
        ->transform(DecimalIn(WindowRange.least, WindowRange.greatest))
        ->group("Packages");
}

void AddDerivedOption(CLI::App& command, InstrumentSelection& selection, bool* wanted,
                      const std::string& help) {
    command
        .add_option_function<std::string>(
            "--derived",
            [&selection, wanted](const std::string& which) {
                selection.derived = which == "all" ? DerivedChoice::All : DerivedChoice::Usual;
                if (wanted)
                    *wanted = true;
            },
            help + "; with =all the further ones of a package (sea water by TEOS-10, reflectance, "
                   "light, oxygen)")
        ->type_name("[=all]")
        ->check(CLI::IsMember({UsualDerived, "all"}).description(""));
}

void AddStrictOption(CLI::App& command, bool& strict) {
    command.add_flag("--strict", strict,
                     "A definition with repaired or dropped lines is a fault, not a warning");
}

bool ReportSetup(const CSessionSetup& setup, bool strict, bool needsFrames) {
    const auto say = [](const std::vector<Refusal>& all, bool fault) {
        for (const Refusal& one : all)
            (fault ? ReportError
                   : ReportWarning)(one.subject + ": " + one.reason +
                                    (one.hasParseLog ? " See qorview-cli check." : ""));
        return all.empty() || !fault;
    };
    bool well = say(setup.Refusals(), true);
    well = say(setup.Warnings(), strict) && well;
    say(setup.Unreplayable(), false);
    return say(setup.Silent(), strict || needsFrames) && well;
}

} // namespace qor
