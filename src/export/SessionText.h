// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session that was opened, for people and as a JSON line: its resources with their instruments
// and roles, and what was said of it. Takes the document's lock.
#pragma once

#include "export/Output.h"
#include "session/QorViewDoc.h"

#include <string>
#include <vector>

namespace qor {

struct SessionReport {
    std::string path;
    bool opened = false; ///< else the document holds nothing of it
    bool ok = false;
    std::vector<std::string> messages; ///< a line each
    const CQorViewDoc& doc;
};

void WriteSessionJson(COutput& output, const SessionReport& report);
void WriteSessionText(COutput& output, const SessionReport& report);

} // namespace qor
