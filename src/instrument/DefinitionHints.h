// SPDX-License-Identifier: GPL-3.0-or-later
//
// Likely mistakes in a definition that loads: what the reader accepts to the letter and its author
// hardly meant. Nothing acts on them; whoever checks a definition for somebody shows them.
#pragma once

#include "instrument/Instrument.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct DefinitionHint {
    std::int32_t line = 0; ///< from 1 on; 0: the definition as a whole
    std::string text;      ///< one sentence
};
using DefinitionHints = std::vector<DefinitionHint>;

/// The hints for an instrument whose load from this text succeeded or failed, in the order of its
/// lines; no more than a hundred.
DefinitionHints HintsOf(const CInstrument& instrument, std::string_view text);

} // namespace qor
