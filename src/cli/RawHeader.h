// SPDX-License-Identifier: GPL-3.0-or-later
//
// The header block of a raw log file.
#pragma once

#include "platform/File.h"
#include "telemetry/RawLogFormat.h"

#include <string>
#include <vector>

namespace qor {

/// Reads the header records at the beginning of an open file and leaves it at the first byte behind
/// them. None for a file that is no raw log.
FileCause ReadHeaderRecords(CFile& file, std::vector<HeaderRecord>& records);

/// The pressure tare that a log's header states, in the pressure's units; 0 when it states none.
double PressureTareOf(const std::string& path);

} // namespace qor
