// SPDX-License-Identifier: GPL-3.0-or-later
//
// A running log told in lines of text, one a resource while it goes and one an instrument at its
// end, for faces without windows. Pure: made from a moment's figures; any thread, no lock.
#pragma once

#include "session/PortCaptures.h"
#include "session/SessionSnapshot.h"

#include <optional>
#include <string>

namespace qor {

/// A resource's state and figures; shortened, and at last cut, where there is no room for the
/// aligned ones.
std::string StatusLine(const ResourceStatus& resource, double framesPerSecond, std::size_t room);

/// Where the log's bytes go: its file, size and how long the disk lasts; what waits while the disk
/// takes nothing, or there is no file; what was received and not stored. Empty without a log.
std::string LogLine(const LogStatus& log, std::optional<double> secondsLeft, std::size_t room);

/// What all files of the run hold, and what they lack; with its end.
std::string LogSummary(const LogStatus& log, std::size_t files, std::optional<double> secondsLeft);

/// Where a port's bytes are, and how many are not. With its end.
std::string CaptureLine(const CaptureStatus& capture);

/// What each instrument brought, and under the instruments of a port what it did not bring. Each
/// line with its end.
std::string SummaryLines(const SessionSnapshot& snapshot);

/// Says of each instrument from which no frame came, and whose frames were looked for, so and what
/// to look at: a line without an end each.
std::vector<std::string> SilentLines(const SessionSnapshot& snapshot);

/// Says that a port's bytes belong to no frame, when that is more than the rest of a frame which
/// had begun before the connection; else empty.
std::string DiscardedLine(const ResourceStatus& resource);

} // namespace qor
