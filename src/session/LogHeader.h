// SPDX-License-Identifier: GPL-3.0-or-later
//
// The header block of a raw log: which records a session gives, in file order. The bytes of a
// record are the raw log format's, writing them is the raw log's.
#pragma once

#include "base/MessageSink.h"
#include "session/SessionState.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

/// Whether the GPS instrument's latest frame gives a position that may stand in a header: complete,
/// no older than a minute, and of a fix that its receiver calls good.
bool HasPosition(const SessionState& session, const FrameTime& now) REQUIRES(session.DocLock);

/// The station as a log's header has it: as it was typed, with the position replaced by the GPS
/// instrument's latest one, "coordinate hemisphere" each, when the options ask for it and the role
/// is assigned. Where there is none that may stand there, the typed one stays and `kept` says why,
/// to be raised once a log has it. A zone that nobody gave is this computer's offset, "UTC+13:00".
StationInformation StationAt(const SessionState& session, const FrameTime& now,
                             std::optional<Event>& kept) REQUIRES(session.DocLock);

/// The header lines ("QORHDR value (TAG)" CR LF) in the order in which they are written.
std::vector<std::string> HeaderLines(const SessionState& session, const StationInformation& station,
                                     const CalendarTime& local) REQUIRES(session.DocLock);

} // namespace qor
