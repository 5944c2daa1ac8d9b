// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a log says of where the values in a file that is made of it come from: its header, and what
// its times are ahead of UTC. Read once, when the log begins; the caller's thread.
#pragma once

#include "export/FrameSink.h"
#include "telemetry/RawLogFormat.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

struct LogSource {
    std::string log;                  ///< its path
    std::vector<HeaderRecord> header; ///< empty for a capture or a pipe
    std::optional<int> utcOffset;     ///< minutes that its times are ahead of UTC
    std::string call;                 ///< what the program was called with
};
/// Reads the log's header. Its zone says the offset where the call does not.
LogSource SourceOf(const ExportedLog& log, const ExportSettings& settings);

} // namespace qor
