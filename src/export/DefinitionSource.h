// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "instrument/Instrument.h"

#include <optional>
#include <string>

namespace qor {

/// The bytes of the file that an instrument was loaded from, as they are now; those of a member
/// where it came out of a package. None when they cannot be read.
std::optional<std::string> DefinitionBytes(const CInstrument& definition);

} // namespace qor
