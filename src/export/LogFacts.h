// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a raw log holds and what is wrong with it, as text for people and as JSON. Who plays the log
// has the facts noted.
#pragma once

#include "export/Output.h"
#include "platform/Clock.h"
#include "session/SessionSnapshot.h"
#include "session/UnnamedFrames.h"
#include "telemetry/RawLogReader.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qor {

/// Something that a whole log does not have.
struct LogFault {
    std::string_view kind;
    std::optional<std::uint64_t> offset, length; ///< of the bytes; none: it is no place
    std::string text;                            ///< a sentence without the log's name
};

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
    CDiscardedBytes discarded;
    std::vector<UnnamedFrames> unnamed;

    /// A frame was played.
    void Note(const CFrameData& frame);
    /// The log was played to its end: takes the counts of its instruments, and what is discarded.
    void Count(const SessionSnapshot& snapshot);
    /// Adds what the counts say is wrong.
    void AddFaults(const CRawLogReader& log, std::vector<LogFault>& faults) const;

  private:
    struct LastFrame {
        FrameTime time;
        std::string bytes;
    };
    struct Backwards {
        std::uint64_t times = 0, offset = 0;
        FrameTime from, to; ///< the first time
    };
    std::map<std::string, LastFrame> last; ///< by instrument
    std::map<std::string, Backwards> backwards;
};

/// What is wrong with a log that was read to its end. `play` is null when it was not played:
/// nothing is known of its frames then.
std::vector<LogFault> FaultsOf(const CRawLogReader& log, const PlayFacts* play);

/// "about 92 % of the 1300000 bytes discarded look like ...", of the likely instruments of a log.
std::vector<std::string> UnnamedSentences(const PlayFacts& play);

/// `play` is null for a log that was not played.
void WriteLogJson(COutput& output, const std::string& path, const CRawLogReader& log,
                  const PlayFacts* play);
void WriteLogText(COutput& output, const std::string& path, const CRawLogReader& log,
                  const PlayFacts* play);

} // namespace qor
