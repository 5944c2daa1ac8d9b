// SPDX-License-Identifier: GPL-3.0-or-later
//
// Well-formed frames from a definition: the other direction of the conversions. The simulator, the
// tests and the benchmarks make their telemetry here. One thread a maker.
#pragma once

#include "instrument/Instrument.h"
#include "simulation/FieldEncoder.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qor {

class CFrameMaker {
  public:
    /// Bytes of the longest frame that is made.
    static constexpr std::int32_t LargestFrame = 16 << 20;

    /// Same definition and seed, same frames. The instrument must outlive the maker.
    explicit CFrameMaker(const CInstrument& instrument, std::uint64_t seed = 1);

    /// Wanted calibrated value of a sensor; return NaN for "choose a plausible one".
    using ValueSource = std::function<double(const CSensor&)>;
    void SetValues(ValueSource source) { Values = std::move(source); }

    /// The wanted values are those of an immersed instrument.
    void SetImmersed(bool immersed) { Immersed = immersed; }

    /// The next frame: sync header, counter one up from the last (the first is 0), fields whose
    /// calibrated values are as near to the wanted ones as the data type allows and convert without
    /// error, delimiters, terminator, checksum. `secondsOfTime` (UTC since 1970, with fraction)
    /// fills time and date fields and drives the plausible values. Bytes that no sensor describes
    /// are 0. Fixed frames above 16 MiB are not made: the frame is empty.
    ///
    /// The checksum balances. In a delimited frame the sum ends within one of the first fields, and
    /// characters behind a number there balance it, where there is room for them.
    std::vector<std::uint8_t> Next(double secondsOfTime);

    /// Leaves out frames: the counter moves on as if they had been sent.
    void Skip(std::uint64_t frames) { Counter += static_cast<std::uint32_t>(frames); }

  private:
    /// How a field gets its content.
    enum class Content : std::uint8_t { Counter, Text, Time, Value };
    struct Field {
        const CSensor* sensor = nullptr;
        RawRange range;
        Content content = Content::Value;
        bool plausible = false; ///< base, swing and elapsed tell the calibrated value
        bool elapsed = false;
        double base = 0.0, swing = 0.0;
        double rawBase = 0.0;  ///< where the calibrated value is of no help
        std::string forbidden; ///< characters that would end a delimited field
    };

    Field FieldFor(const CSensor& sensor) const;
    double Noise();
    IntegrationTimeValue TimeFor(const CSensor& sensor) const;
    double PlausibleOf(const Field& field);
    double RawOfValue(const Field& field);
    double RawOf(const Field& field);
    ByteSpan Encode(const Field& field, double raw, std::span<std::uint8_t> place);
    ByteSpan Fill(const Field& field, std::span<std::uint8_t> place);
    void FillFixed(std::vector<std::uint8_t>& frame);
    void FillDelimited(std::vector<std::uint8_t>& frame);
    bool Balance(std::vector<std::uint8_t>& frame) const;

    const CInstrument& Instrument;
    ValueSource Values;
    std::uint64_t Random;
    std::uint32_t Counter = 0;
    std::int32_t ChecksumAt = -1; ///< sensor index
    bool Immersed = false;
    bool Started = false;
    double FirstSeconds = 0.0, Seconds = 0.0; ///< UTC of the first frame and of the one being made
    double Swing = 0.0;                       ///< -1 to 1, of the frame being made
    std::vector<Field> Fields;                ///< parallel to the sensors
    std::vector<IntegrationTimeValue> Times;  ///< the sensors' values in the frame being made
    std::string Pending;                      ///< the delimited field being made
};

} // namespace qor
