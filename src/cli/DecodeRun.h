// SPDX-License-Identifier: GPL-3.0-or-later
//
// What decode does once its call is understood: the logs are played into the sink of the format,
// all into one result or each into its own. The options themselves are DecodeCommand's.
#pragma once

#include "cli/PlayedFile.h"
#include "export/ExportFormat.h"
#include "export/TimeWindow.h"

#include <span>
#include <string>
#include <vector>

namespace qor {

/// What a --qc without a file is called with.
inline constexpr const char* NoLimitsFile = "-";

struct DecodeOptions : PlaybackOptions {
    const ExportFormat* format = nullptr; ///< null: that of the output's name
    ExportSettings settings;
    bool rawCounts = false;
    bool hex = false;
    bool goodOnly = false;
    bool metadata = false; ///< tables are described beside them
    bool utc = false;      ///< by each log's own zone
    std::string from, to;
    std::string limits; ///< the file of --qc, NoLimitsFile for none; empty: values are not checked
    TimeWindow window;  ///< of these
    std::size_t jobs = 0; ///< logs that are decoded at once, each by itself; 0: all into one
};

/// The logs to decode, with their zones where these count; empty (reported) when one is missing.
std::vector<ExportedLog> LogsOf(const DecodeOptions& options);

/// Decodes logs into one result; the exit status.
int DecodeTogether(std::span<const ExportedLog> logs, const DecodeOptions& options,
                   CommandContext& context);

/// Decodes each log into results of its own in the folder, several at once; the exit status.
int DecodeApart(const std::vector<ExportedLog>& logs, const DecodeOptions& options,
                CommandContext& context);

} // namespace qor
