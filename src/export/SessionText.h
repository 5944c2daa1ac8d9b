// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session that was checked, for people and as a JSON line: its resources with their instruments
// and roles, and what was said of it. Takes the document's lock.
#pragma once

#include "export/Output.h"
#include "session/CheckedSession.h"

namespace qor {

void WriteSessionJson(COutput& output, const CCheckedSession& session);
void WriteSessionText(COutput& output, const CCheckedSession& session);

} // namespace qor
