// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a crash or a power cut left of raw logs: a finished log is write-protected, so one that is
// not, and that nobody writes, was cut off; where the file system has no locks to tell, one that
// has rested for a minute. The next run in the folder finishes it. Called by the
// raw log before a run begins, without any lock: it reads and writes files.
#pragma once

#include "base/MessageSink.h"
#include "telemetry/AttachRequest.h"

#include <span>
#include <string>

namespace qor {

/// Finishes the raw logs of a folder, whatever their names, that were cut off: a begun record of
/// these instruments behind their last whole one or the header, or blocks that a power cut left
/// empty, move into a file beside ("NAME.rest"), and the log is write-protected, unless nothing but
/// its header is left. What else stands at its end stays: it may be of other instruments. Each log
/// that is finished is raised as LogRecovered; where protection does not hold, nothing is said of
/// whole ones.
void FinishCutLogs(const std::string& folder, std::span<const LoggedInstrument> instruments,
                   CMessageSink& messages);

/// Whether the file is a log that a crash left before its first frame: empty, or nothing but a
/// header, whole or torn; not protected, and written by nobody. It may be replaced.
bool IsAbandonedLog(const std::string& path);

} // namespace qor
