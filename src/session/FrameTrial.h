// SPDX-License-Identifier: GPL-3.0-or-later
//
// A definition tried on real bytes: search, extraction, checks and conversion are those of every
// frame; what is kept is how many frames there were, the first one field by field, and where there
// was none why. Takes the bytes as they come and knows no port, no file and no document. One thread
// at a time, no lock.
#pragma once

#include "base/SilentSink.h"
#include "instrument/ConversionPlan.h"
#include "instrument/FrameChecks.h"
#include "session/NearestMiss.h"
#include "telemetry/FrameSync.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

/// A field of a frame. A sensor without a field (a rate, a remark) is none.
struct TriedField {
    const CSensor* sensor = nullptr;
    bool located = false; ///< the frame holds the field
    std::size_t offset = 0;
    std::string bytes;
    std::optional<double> raw;       ///< the number before the fit
    std::optional<double> number;    ///< the value, when it is a number
    std::optional<std::string> text; ///< the value, when it is a text
    ConversionStatus status = {};    ///< why there is no value
};

struct TriedFrame {
    std::uint64_t offset = 0; ///< of the first byte among the bytes taken
    std::vector<std::uint8_t> bytes;
    std::vector<TriedField> fields; ///< in the order of the definition
};

struct FrameTrialResult {
    std::uint64_t bytes = 0;
    std::uint64_t discarded = 0; ///< of these, in no frame
    std::uint64_t frames = 0;
    std::size_t shortest = 0, longest = 0;       ///< frame
    std::optional<std::uint64_t> dropped;        ///< empty: not checked
    std::optional<std::uint64_t> checksumErrors; ///< the same
    std::uint64_t unreadable = 0;                ///< frames whose counter or sum is no number
    std::uint64_t unconverted = 0; ///< frames with a field that should have a value and has none
    std::optional<TriedFrame> first;
    std::string doubt; ///< what the places of frames and headers say against the definition
    std::optional<NearestMiss> nearest; ///< when there is no frame

    /// Frames were found, and none failed its checks.
    bool Passed() const {
        return frames > 0 && dropped.value_or(0) + checksumErrors.value_or(0) + unreadable == 0;
    }
};

class CFrameTrial {
  public:
    /// The definition lives longer.
    explicit CFrameTrial(const CInstrument& instrument);

    /// What came next. The first bytes tell a raw log, whose records and tags are skipped.
    void Take(ByteSpan bytes);
    std::uint64_t Frames() const { return Result.frames; }
    /// No more bytes come: what was found. `lineErrors` came with them.
    FrameTrialResult Finish(std::uint64_t lineErrors = 0);

  private:
    void Start();
    void Process();
    void TakeFrame(const CFrameData& frame);
    TriedFrame Describe(const CFrameData& frame) const;
    std::string Doubt() const;

    const CInstrument& Instrument;
    CSilentSink Nobody; ///< the result says it all
    CFrameSync Sync;
    CFrameChecks Checks;
    CConversionPlan Plan;
    FrameValues Values;
    std::vector<std::size_t> Valued;  ///< sensors that should have a value
    std::vector<std::uint8_t> Sample; ///< the first bytes, for what has no frame
    bool Started = false;
    FrameTrialResult Result;
};

} // namespace qor
