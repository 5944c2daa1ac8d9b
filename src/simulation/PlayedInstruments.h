// SPDX-License-Identifier: GPL-3.0-or-later
//
// Definitions loaded to be played. What cannot be played comes back as a value; the face says it.
#pragma once

#include "instrument/Instrument.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qor {

using PlayedInstruments = std::vector<std::unique_ptr<CInstrument>>;

/// A definition that cannot be played, and why: a sentence, or the parse log behind one.
struct PlayRefusal {
    std::string path;
    std::string reason;
};

/// Adds the definitions of these files; stops at the first that does not load.
std::optional<PlayRefusal> LoadDefinitions(std::span<const std::string> paths,
                                           PlayedInstruments& instruments);
/// The first of which no frame can be made, whatever it was loaded from.
std::optional<PlayRefusal> FindUnplayable(const PlayedInstruments& instruments);

} // namespace qor
