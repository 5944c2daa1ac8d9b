// SPDX-License-Identifier: GPL-3.0-or-later
//
// What became of a definition that was tried on bytes, for people and as a line of JSON.
#pragma once

#include "export/Output.h"
#include "session/FrameTrial.h"

#include <string_view>

namespace qor {

/// `source`: the file or port as it was named.
void WriteTrialText(COutput& output, std::string_view source, const CInstrument& instrument,
                    const FrameTrialResult& result);
void WriteTrialJson(COutput& output, std::string_view source, std::string_view definition,
                    const FrameTrialResult& result);

} // namespace qor
