// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frame counter and checksum of received frames, and the nominal frame rate. One object an
// instrument of the session; the caller's lock guards it.
#pragma once

#include "base/Bytes.h"
#include "base/MessageSink.h"
#include "instrument/Instrument.h"

#include <cstdint>
#include <string>

namespace qor {

/// What the checks found in one frame, and which of them there are for its instrument.
struct FrameCheckResult {
    bool checksCounter = false; ///< else nothing is known of missing frames
    bool checksSum = false;     ///< else nothing is known of damage
    bool dropped = false;       ///< the counter says that frames are missing before this one
    bool checksumError = false;
    bool valueError = false; ///< the counter or the checksum could not be read
    bool beep = false;       ///< the operator asked to hear of this

    bool Failed() const { return dropped || checksumError || valueError; }
};

class CFrameChecks {
  public:
    bool Enabled = true;
    bool CounterEnabled = true;
    bool ChecksumEnabled = true;
    bool BeepOnError = false;
    std::int32_t CounterIndex = -1; ///< sensor index, -1 = none
    std::int32_t ChecksumIndex = -1;
    std::int32_t ExpectedCounter = 0;
    bool Resynchronise = true;   ///< set after every error: the next frame only sets the counter
    std::int32_t ErrorCount = 0; ///< a frame with two errors counts twice
    std::uint64_t DroppedCount = 0, ChecksumErrorCount = 0, ValueErrorCount = 0; ///< by kind

    /// Recognises the role sensors, reports a missing one, and starts checking afresh; the counts
    /// stay. `names` are the instrument's and the resource's for the texts. Instrument and sink are
    /// borrowed until the next call.
    void SetUp(const CInstrument& instrument, const std::string& instrumentName,
               const std::string& resourceName, CMessageSink& sink);

    /// What comes next need not follow what came before (another connection, another file): the
    /// next frame only sets the counter. The counts stay.
    void BeginConnection() { Resynchronise = true; }

    /// Settings and counts of the same instrument's checks elsewhere; checking begins afresh.
    void TakeOver(const CFrameChecks& before);

    void ResetCounts() {
        ErrorCount = 0;
        DroppedCount = ChecksumErrorCount = ValueErrorCount = 0;
    }

    /// Whether frames are checked for missing ones, and for damage.
    bool ChecksCounter() const { return Enabled && CounterEnabled && CounterIndex >= 0; }
    bool ChecksSum() const { return Enabled && ChecksumEnabled && ChecksumIndex >= 0; }

    /// Checks one frame of the instrument that SetUp was given; reports and counts what is wrong.
    FrameCheckResult Check(ByteSpan frame);

  private:
    bool Read(const CSensor* sensor, ByteSpan frame, std::int64_t& value, FrameCheckResult& result);
    void CheckCounter(std::int64_t received, FrameCheckResult& result);
    void CheckSum(ByteSpan frame, FrameCheckResult& result);
    void CountError(std::uint64_t& count);
    void Tell(const char* what, std::string_view detail);

    const CInstrument* Instrument = nullptr;
    const CSensor* Counter = nullptr; ///< the sensors of the indexes
    const CSensor* Checksum = nullptr;
    CMessageSink* Sink = nullptr;
    std::string InstrumentName, ResourceName;
};

/// The instrument's frame counter and checksum sensor by type and id, or -1.
std::int32_t FrameCounterIndex(const CInstrument& instrument);
std::int32_t ChecksumIndexOf(const CInstrument& instrument);

/// The sensor has a role's type and id, whatever its data type, length and fit.
bool IsNamedFrameCounter(const CSensor& sensor);
bool IsNamedChecksum(const CSensor& sensor);

/// The instrument's checksum is a field of a delimited frame: the check does not look at that
/// field, and frames that are sent whole hardly ever pass.
bool HasDelimitedChecksum(const CInstrument& instrument);

/// The instrument's nominal frame rate in Hz from its RATE sensor; 6.0 without one. An invalid RATE
/// sensor is reported and gives 6.0.
double NominalFrameRate(const CInstrument& instrument, CMessageSink& sink);

} // namespace qor
