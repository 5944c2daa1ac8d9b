// SPDX-License-Identifier: GPL-3.0-or-later
//
// Whether a raw log is whole: every byte accounted for, and each fault with its place. Who plays
// the log notes its frames under the document's lock and asks for the verdict at its end. It builds
// on the facts of a log, and prints itself as text and as JSON; it reads no file.
#pragma once

#include "export/LogFacts.h"
#include "session/LogManifest.h"
#include "session/QorViewIns.h"

namespace qor {

/// Frames of one instrument that its frame counter misses.
class CMissingFrames {
  public:
    /// How many are missing between the frame before and this one. A frame that is damaged, or
    /// whose counter cannot be read, is there but says nothing.
    std::uint64_t Take(std::optional<std::int64_t> counter);
    /// The counter before the last one taken.
    std::int64_t Before() const { return From; }

  private:
    std::optional<std::int64_t> Last;
    std::int64_t From = 0;
    std::int64_t Silent = 0; ///< frames since it that say nothing
};

struct LogVerdict {
    struct Instrument {
        std::string name;
        std::uint64_t frames = 0;
        std::optional<std::uint64_t> missing, checksumErrors; ///< none: cannot be checked
    };
    std::uint64_t size = 0; ///< of the log, unpacked
    NamedBytes bytes;
    std::uint64_t discarded = 0; ///< with `bytes` the whole size
    std::vector<Instrument> instruments;
    std::vector<LogFault> faults; ///< by their place

    bool Whole() const;
};

class CLogCheck {
  public:
    /// Of each instrument so many places of a kind are named, the rest is counted.
    static constexpr std::size_t MostPlaces = 1000;

    CLogCheck() = default;
    CLogCheck(const CLogCheck&) = delete;
    CLogCheck& operator=(const CLogCheck&) = delete;

    /// Steps of the clock that are known of the log; before Finish.
    void Know(std::vector<ClockStep> steps) { KnownSteps = std::move(steps); }
    /// To be filled while the log is played.
    CDiscardedBytes& Discarded() { return Facts.discarded; }
    /// A frame was played: the instrument's current one.
    void Note(const CQorViewIns& instrument, const FrameCheckResult& checks);
    /// The log was played to its end, and had so many bytes. `log` has read its header. Once.
    LogVerdict Finish(const CRawLogReader& log, std::uint64_t size,
                      const SessionSnapshot& snapshot);
    /// What was noted, for hints; after Finish.
    const PlayFacts& Played() const { return Facts; }

  private:
    struct Checked {
        CMissingFrames counter;
        std::uint64_t missing = 0;
        std::uint64_t gaps = 0, damaged = 0; ///< places
    };

    void NoteCounter(Checked& one, const CQorViewIns& instrument, const FrameCheckResult& checks);
    void AddInstrument(const PlayFacts::Instrument& instrument);
    std::string Cause(const TagStep& step) const;
    void AddSteps(const std::string& name, const TagSteps& steps, std::string_view kind);
    void AddBytes(const CRawLogReader& log);
    void AddRest(std::string_view kind, std::uint64_t count, std::size_t named,
                 const std::string& what);

    PlayFacts Facts;
    std::map<std::string, Checked> Instruments;
    std::unordered_map<InstrumentId, Checked*> CheckedOf; ///< the same by handle
    LogVerdict Verdict;
    std::vector<ClockStep> KnownSteps;
};

/// "RAW: whole" or "RAW: 2 faults" and a line a fault.
void WriteVerdictText(COutput& output, const std::string& path, const LogVerdict& verdict);
/// One line.
void WriteVerdictJson(COutput& output, const std::string& path, const LogVerdict& verdict);

} // namespace qor
