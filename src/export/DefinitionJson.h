// SPDX-License-Identifier: GPL-3.0-or-later
//
// Loaded definitions and packages as JSON objects.
#pragma once

#include "export/Json.h"
#include "session/Package.h"

#include <functional>

namespace qor {

/// One object for one definition file; `file` is the path as given or the package member's name.
/// `progress` hears of each sensor written.
void WriteDefinition(CJsonWriter& json, std::string_view file, const CInstrument& instrument,
                     DefinitionStatus status,
                     const std::function<void(const CSensor&)>& progress = {});

/// One line for one package.
void WritePackageJson(COutput& output, const LoadedPackage& package);

} // namespace qor
