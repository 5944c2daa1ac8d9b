// SPDX-License-Identifier: GPL-3.0-or-later
//
// Loaded definitions and packages as text for people, with this platform's line ends.
#pragma once

#include "export/Output.h"
#include "session/Package.h"

#include <string_view>

namespace qor {

void WriteParseLog(COutput& output, std::string_view log);
/// The package's properties, its messages, then each instrument's parse log.
void WritePackageText(COutput& output, const LoadedPackage& package);

} // namespace qor
