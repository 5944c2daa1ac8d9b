// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a raw log holds and what is wrong with it, as text for people and as JSON. Who plays the log
// has the facts noted.
#pragma once

#include "export/Json.h"
#include "export/TagSteps.h"
#include "session/SessionSnapshot.h"
#include "session/UnnamedFrames.h"
#include "telemetry/RawLogReader.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
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
    PlayFacts() = default;
    PlayFacts(const PlayFacts&) = delete;
    PlayFacts& operator=(const PlayFacts&) = delete;

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

    /// How many bytes at the end of a log of that size are torn.
    std::uint64_t TornTail(std::uint64_t size) const;
    /// The time tags of an instrument; null when it gave no frame.
    const CTagSteps* StepsOf(const std::string& instrument) const;
    /// "its end is torn: ...".
    std::string TornSentence() const;

  private:
    struct Seen {
        std::string last; ///< frame
        CTagSteps steps;
    };
    std::map<std::string, Seen> seen;                ///< by instrument
    std::unordered_map<std::uint32_t, Seen*> seenOf; ///< the same by the frames' identity
};

/// "2005-05-03T14:23:05.250".
std::string TimeText(const FrameTime& time);

/// The array of a log's faults, under its key.
void WriteFaults(CJsonWriter& json, const std::vector<LogFault>& faults);

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
