// SPDX-License-Identifier: GPL-3.0-or-later
//
// The options that name definitions, packages, roles and immersion, as every command that works
// with instruments has them, and how what cannot be used of them is said.
#pragma once

#include "session/SessionSetup.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qor {

/// What main makes of a --wet without a name.
inline constexpr const char* EveryInstrument = "*";
/// And of a --derived without a choice.
inline constexpr const char* UsualDerived = "usual";

/// What is wrong with a file that can be neither a definition nor a package, or nothing.
std::string CheckInstrumentFile(const std::string& path);
/// Adds -d, -p, --wet and --role to a command.
void AddInstrumentOptions(CLI::App& command, InstrumentSelection& selection);
/// Adds --wet and --role alone.
void AddNameOptions(CLI::App& command, InstrumentSelection& selection);
/// Adds --strict.
void AddStrictOption(CLI::App& command, bool& strict);
/// Adds --derived[=all]: whether derived products are wanted (`wanted`, where a command has them
/// only then), and whether the further ones are.
void AddDerivedOption(CLI::App& command, InstrumentSelection& selection, bool* wanted,
                      const std::string& help);
/// Adds the settings of packages that derived products need.
void AddPackageOptions(CLI::App& command, PackageOptions& options);

/// Says what is wrong with the instruments of a call, each as an error or, where they are used all
/// the same, as a warning (`strict`: an error). False when there is an error.
bool ReportSetup(const CSessionSetup& setup, bool strict, bool needsFrames);

} // namespace qor
