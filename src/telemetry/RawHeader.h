// SPDX-License-Identifier: GPL-3.0-or-later
//
// The header block of a raw log file.
#pragma once

#include "platform/File.h"
#include "telemetry/RawLogFormat.h"

#include <string>
#include <vector>

namespace qor {

struct HeaderBlock {
    std::vector<HeaderRecord> records; ///< none for a file that is no raw log
    std::uint64_t size = 0;            ///< in bytes, malformed records included
    std::vector<std::uint8_t> rest;    ///< what was read behind the block
};

/// Reads the header block at the beginning of an open file or pipe.
FileCause ReadHeaderBlock(CFile& file, HeaderBlock& block);

/// The pressure tare that a log's header states, in the pressure's units; 0 when it states none.
double PressureTareOf(const std::string& path);

} // namespace qor
