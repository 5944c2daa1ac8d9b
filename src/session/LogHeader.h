// SPDX-License-Identifier: GPL-3.0-or-later
//
// The header block of a raw log: which records a session gives, in file order. The bytes of a
// record are the raw log format's, writing them is the raw log's.
#pragma once

#include "session/SessionState.h"

#include <string>
#include <vector>

namespace qor {

/// Replaces the station's position by the GPS instrument's latest one, "coordinate hemisphere"
/// each, when the options ask for it and the role is assigned. A coordinate that the instrument's
/// current frame does not give stays as it was. False when either does.
bool RefreshPosition(SessionState& session) REQUIRES(session.DocLock);

/// The header lines ("QORHDR value (TAG)" CR LF) in the order in which they are written.
std::vector<std::string> HeaderLines(const SessionState& session, const CalendarTime& local)
    REQUIRES(session.DocLock);

} // namespace qor
