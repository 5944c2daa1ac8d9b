// SPDX-License-Identifier: GPL-3.0-or-later
//
// check --frame: one definition tried on the bytes of a file, a port or standard input.
#pragma once

#include "cli/Commands.h"
#include "instrument/Instrument.h"

#include <string>

namespace qor {

/// The definition has been loaded from that path. Gives the exit status.
int TryFrames(const std::string& source, const CInstrument& instrument,
              const std::string& definition, bool json, CommandContext& context);

} // namespace qor
