// SPDX-License-Identifier: GPL-3.0-or-later
//
// Adding a port to a session with what stands on it, in one go: as a form, a drop or a search for
// instruments asks for it. Called on the thread that commands the document, without its lock.
#pragma once

#include "session/QorViewDoc.h"
#include "session/Refusal.h"

#include <string>
#include <vector>

namespace qor {

struct PortWish {
    SerialResourceSettings settings;
    bool reconnect = false;         ///< tried again when it is lost
    std::vector<std::string> files; ///< definitions and packages, in the order of adding
};

struct AddedPort {
    ResourceId id = ResourceId::None;
    std::vector<Refusal> refusals; ///< of the port, or of what was to stand on it
};

/// Adds a port that is not connected yet. What cannot be used of the files is refused, the port
/// stays.
AddedPort AddPort(CQorViewDoc& doc, const PortWish& wish);

/// "PORT1 cannot be used. ...", "x.cal could not be loaded. ...".
std::string SentenceOf(const Refusal& refusal);

} // namespace qor
