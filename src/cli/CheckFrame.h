// SPDX-License-Identifier: GPL-3.0-or-later
//
// check --frame: a definition, or each one of a package, tried on the bytes of a file, a port or
// standard input.
#pragma once

#include "cli/Commands.h"
#include "instrument/Instrument.h"

#include <string>
#include <vector>

namespace qor {

/// What is tried: an instrument that has been loaded from that path (of a package: and member).
struct TriedDefinition {
    const CInstrument* instrument = nullptr;
    std::string name;
};

/// Tries all of them on the same bytes. Gives the exit status: ExitWell when some instrument has
/// frames, and none that has some failed its checks.
int TryFrames(const std::string& source, const std::vector<TriedDefinition>& definitions, bool json,
              CommandContext& context);

} // namespace qor
