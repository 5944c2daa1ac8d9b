// SPDX-License-Identifier: GPL-3.0-or-later
//
// Lost and corrupted frames. An error is reported and counted and never keeps a frame from being
// logged.
#include "instrument/FrameChecks.h"

#include "base/Text.h"
#include "instrument/RawValue.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr double DefaultFrameRate = 6.0;

/// How definition files name a role sensor.
struct Role {
    const char* type; ///< with this type the id is `id`, or empty where `emptyIdToo`
    const char* id;
    bool emptyIdToo;
    const char* joinedType; ///< with this type the id is empty
};
constexpr Role CounterRole = {"FRAME", "COUNTER", true, "FRAMECOUNTER"};
constexpr Role ChecksumRole = {"CHECK", "SUM", false, "CHECKSUM"};

bool HasRoleForm(const CSensor& sensor) {
    const bool oneByte = sensor.Data == DataType::BU && sensor.FieldLength == 1;
    return (oneByte || sensor.Data == DataType::AI) && sensor.Fit == FitType::COUNT;
}

bool HasRoleName(const CSensor& sensor, const Role& role) {
    if (EqualsNoCase(sensor.Type, role.joinedType))
        return sensor.Id.empty();
    return EqualsNoCase(sensor.Type, role.type) &&
           (EqualsNoCase(sensor.Id, role.id) || (role.emptyIdToo && sensor.Id.empty()));
}

/// The first sensor of either naming: of two it is the one earlier in the list.
std::int32_t FindRole(const CInstrument& instrument, const Role& role) {
    const auto& sensors = instrument.Sensors();
    const auto found = std::find_if(sensors.begin(), sensors.end(), [&](const CSensor& s) {
        return HasRoleForm(s) && HasRoleName(s, role);
    });
    return found == sensors.end() ? -1 : static_cast<std::int32_t>(found - sensors.begin());
}

bool IsValidRate(const CSensor& sensor, double& rate) {
    const std::optional<double> number = WholeNumber(sensor.Id);
    if (!EqualsNoCase(sensor.Units, "Hz") || sensor.FieldLength != 0 ||
        sensor.Fit != FitType::NONE || !number || !std::isfinite(*number) || *number < 0.0)
        return false;
    rate = *number;
    return true;
}

} // namespace

std::int32_t FrameCounterIndex(const CInstrument& instrument) {
    return FindRole(instrument, CounterRole);
}

std::int32_t ChecksumIndexOf(const CInstrument& instrument) {
    return FindRole(instrument, ChecksumRole);
}

bool IsNamedFrameCounter(const CSensor& sensor) {
    return HasRoleName(sensor, CounterRole);
}

bool IsNamedChecksum(const CSensor& sensor) {
    return HasRoleName(sensor, ChecksumRole);
}

bool HasDelimitedChecksum(const CInstrument& instrument) {
    const CSensor* const sensor = instrument.Sensor(ChecksumIndexOf(instrument));
    return sensor && sensor->VariableLength;
}

void CFrameChecks::SetUp(const CInstrument& instrument, const std::string& instrumentName,
                         const std::string& resourceName, CMessageSink& sink) {
    Instrument = &instrument;
    Sink = &sink;
    InstrumentName = instrumentName;
    ResourceName = resourceName;
    CounterIndex = CounterEnabled ? FrameCounterIndex(instrument) : -1;
    ChecksumIndex = ChecksumEnabled ? ChecksumIndexOf(instrument) : -1;
    Counter = instrument.Sensor(CounterIndex);
    Checksum = instrument.Sensor(ChecksumIndex);
    // Decided: the first frame only sets the counter.
    Resynchronise = true;
    ExpectedCounter = 0;
    if (Enabled && CounterEnabled && CounterIndex < 0)
        Sink->Report(Format("No valid FRAME COUNTER sensor found in the %s for %s.\r\n"
                            "No frame counter error checking will occur for the instrument.\r\n",
                            instrument.FileKind().c_str(), instrument.FilePath().c_str()));
    if (Enabled && ChecksumEnabled && ChecksumIndex < 0)
        Sink->Report(Format("No valid CHECK SUM sensor found in the %s for %s.\r\n"
                            "No check sum error checking will occur for the instrument.\r\n",
                            instrument.FileKind().c_str(), instrument.FilePath().c_str()));
}

void CFrameChecks::TakeOver(const CFrameChecks& before) {
    const std::string resource = std::move(ResourceName);
    *this = before;
    ResourceName = resource;
    BeginConnection();
}

void CFrameChecks::CountError(std::uint64_t& count) {
    Resynchronise = true;
    ++count;
    if (ErrorCount < std::numeric_limits<std::int32_t>::max())
        ++ErrorCount;
}

/// Reports "what for the instrument on the resource" and, where there is one, the detail.
void CFrameChecks::Tell(const char* what, std::string_view detail) {
    std::string text = what;
    text += " for " + InstrumentName + " on " + ResourceName;
    if (!detail.empty())
        text += ": " + std::string(detail);
    Sink->Report(text + ".\r\n");
}

/// The raw value of a role sensor; false after a reported error, which ends the frame's checks.
bool CFrameChecks::Read(const CSensor* sensor, ByteSpan frame, std::int64_t& value,
                        FrameCheckResult& result) {
    RawValue raw;
    const ConversionStatus status =
        sensor ? RawOf(*sensor, frame, raw) : ConversionStatus::NotUsable;
    value = raw.integer;
    if (status == ConversionStatus::Good)
        return true;
    Tell("Sensor value error", ConversionStatusText(status));
    result.valueError = true;
    // Decided: an unreadable counter or checksum resynchronises like any other error.
    CountError(ValueErrorCount);
    return false;
}

void CFrameChecks::CheckCounter(std::int64_t received, FrameCheckResult& result) {
    std::int64_t expected = ExpectedCounter;
    if (Resynchronise) {
        expected = received;
        Resynchronise = false;
    } else if (received != expected) {
        Tell("Dropped frame detected", {});
        result.dropped = true;
        result.beep = result.beep || BeepOnError;
        CountError(DroppedCount);
    }
    // Kept: only 255 wraps; an ASCII counter beyond it goes on counting. It never passes the
    // largest integer, which no field can hold.
    constexpr std::int64_t Largest = std::numeric_limits<std::int32_t>::max();
    expected = expected == 255 ? 0 : std::min(expected + 1, Largest);
    ExpectedCounter = static_cast<std::int32_t>(expected);
}

/// Sums the frame up to and including the byte where the checksum field begins, whatever the
/// field's type: the byte that balances the sum.
/// Kept: in a delimited frame that is the place by the declared lengths, where each variable field
/// counts nothing, so the sum ends within one of the first fields.
void CFrameChecks::CheckSum(ByteSpan frame, FrameCheckResult& result) {
    const std::size_t offset = Checksum->ByteOffset;
    const std::size_t count = std::min(frame.size(), offset + 1);
    std::uint8_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum = static_cast<std::uint8_t>(sum + frame[i]);
    if (sum == 0)
        return;
    Tell("Check sum error detected", {});
    result.checksumError = true;
    result.beep = result.beep || BeepOnError;
    CountError(ChecksumErrorCount);
}

FrameCheckResult CFrameChecks::Check(ByteSpan frame) {
    FrameCheckResult result;
    if (!Enabled || !Instrument || !frame.data())
        return result;
    result.checksCounter = ChecksCounter();
    result.checksSum = ChecksSum();
    std::int64_t value = 0;
    if (CounterIndex != -1) {
        if (!Read(Counter, frame, value, result))
            return result;
        CheckCounter(value, result);
    }
    if (ChecksumIndex != -1 && Read(Checksum, frame, value, result))
        CheckSum(frame, result);
    return result;
}

double NominalFrameRate(const CInstrument& instrument, CMessageSink& sink) {
    const CSensor* const sensor = instrument.NextSensor("RATE");
    double rate = DefaultFrameRate;
    // Kept: this text has no line end.
    if (sensor && !IsValidRate(*sensor, rate))
        sink.Report(Format("Invalid RATE sensor found in the %s for %s. "
                           "A default frame rate of 6 Hz will be assumed.",
                           instrument.FileKind().c_str(), instrument.FilePath().c_str()));
    return rate;
}

} // namespace qor
