// SPDX-License-Identifier: GPL-3.0-or-later
//
// What somebody who is about to use a definition is to be told of it. A pure question to a loaded
// instrument; the document and the faces ask it.
#pragma once

#include "instrument/DefinitionHints.h"
#include "instrument/Instrument.h"

#include <string>
#include <string_view>

namespace qor {

struct DefinitionVerdict {
    std::int32_t diagnostics = 0; ///< lines that were repaired or dropped
    std::string firstDiagnostic;  ///< the first of them as one line, without line end
    /// Why the definition can never give a frame, as one sentence; empty when it can.
    std::string noFrames;
};

/// Also of an instrument whose load failed, where the file's encoding may be the reason.
DefinitionVerdict VerdictOf(const CInstrument& instrument);

/// All that is likely a mistake in a definition that was loaded from this text: its hints behind
/// what keeps frames from coming, which concerns the whole and stands at line 0.
DefinitionHints MistakesIn(const CInstrument& instrument, std::string_view text);
/// Whether a definition is as its author meant it, as far as that can be told.
bool IsClean(const CInstrument& instrument, const DefinitionHints& mistakes);

} // namespace qor
