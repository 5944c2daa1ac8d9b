// SPDX-License-Identifier: GPL-3.0-or-later
//
// A loaded definition as a JSON object: what `check --json` prints.
#pragma once

#include "export/Json.h"
#include "instrument/Instrument.h"

namespace qor {

/// One object for one definition file; `file` is the path as given or the package member's name.
/// `progress` hears of each sensor written.
void WriteDefinition(CJsonWriter& json, std::string_view file, const CInstrument& instrument,
                     DefinitionStatus status,
                     const std::function<void(const CSensor&)>& progress = {});

} // namespace qor
