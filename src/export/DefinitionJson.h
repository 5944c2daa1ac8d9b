// SPDX-License-Identifier: GPL-3.0-or-later
//
// Loaded definitions and packages as JSON objects.
#pragma once

#include "export/Json.h"
#include "instrument/DefinitionHints.h"
#include "session/Package.h"

#include <functional>
#include <vector>

namespace qor {

/// One object for one definition file; `file` is the path as given or the package member's name.
/// `progress` hears of each sensor written.
void WriteDefinition(CJsonWriter& json, std::string_view file, const CInstrument& instrument,
                     DefinitionStatus status, const DefinitionHints& hints = {},
                     const std::function<void(const CSensor&)>& progress = {});

/// One line for one package; with the hints of each member, in their order.
void WritePackageJson(COutput& output, const LoadedPackage& package,
                      const std::vector<DefinitionHints>& hints);

} // namespace qor
