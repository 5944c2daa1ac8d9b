// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a raw log holds, as text for people and as JSON. Who plays the log has the facts noted.
#pragma once

#include "export/Output.h"
#include "platform/Clock.h"
#include "session/SessionSnapshot.h"
#include "telemetry/RawLogReader.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

/// What playing a log with definitions counts.
struct PlayFacts {
    struct Instrument {
        std::string name;
        std::uint64_t frames = 0;
        std::optional<std::uint64_t> dropped, checksumErrors; ///< none: cannot be checked
    };
    std::vector<Instrument> instruments;
    FrameTime firstTag, lastTag;
    std::uint64_t bytesDiscarded = 0;

    /// A frame was played.
    void NoteTime(const FrameTime& time);
    /// The log was played to its end: takes the counts of its instruments.
    void Count(const SessionSnapshot& snapshot);
    bool HasChecksumErrors() const;
};

/// `play` is null for a log that was not played.
void WriteLogJson(COutput& output, const std::string& path, const CRawLogReader& log,
                  const PlayFacts* play);
void WriteLogText(COutput& output, const std::string& path, const CRawLogReader& log,
                  const PlayFacts* play);

} // namespace qor
