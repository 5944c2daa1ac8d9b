// SPDX-License-Identifier: GPL-3.0-or-later
//
// Assembling frames. Every number is converted back as soon as it is encoded: what does not convert
// is replaced, and what does is the integration time that later fields count with.
#include "simulation/FrameMaker.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/FrameChecks.h"
#include "simulation/DelimitedSum.h"
#include "simulation/PlausibleValue.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>

namespace qor {

namespace {

constexpr double SwingPeriod = 60.0; // seconds
constexpr double RelativeNoise = 0.003;
constexpr double RelativeRawNoise = 0.02; // enough to move every bit of the low byte
// A checksum in digits has one chance in two to be possible; so many rolls of the noise find one.
constexpr int BalanceAttempts = 400;

double Confined(const RawRange& range, double raw) {
    return std::clamp(range.whole ? std::round(raw) : raw, range.lowest, range.highest);
}

/// A raw value in the middle of what the field can hold, or a small number where that is too much.
double RawBaseOf(const CSensor& sensor, const RawRange& range) {
    const bool wide = sensor.VariableLength || !range.whole;
    const double base = wide ? std::min(100.0, 0.4 * range.highest) : 0.4 * range.highest;
    return std::floor(base * SpectralShape(sensor) / 4) * 4; // with OPTIC1's first gain
}

struct CivilTime {
    int day, month, year;
    double secondsOfDay;
};

CivilTime CivilTimeOf(double seconds) {
    using namespace std::chrono;
    const double whole = std::floor(std::clamp(seconds, -9e11, 9e11) / 86400.0);
    const year_month_day date{sys_days{days{static_cast<int>(whole)}}};
    return {static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(static_cast<unsigned>(date.month())),
            ((static_cast<int>(date.year()) % 100) + 100) % 100, seconds - whole * 86400.0};
}

double RawClock(const CivilTime& time, DataType data) {
    const double s = time.secondsOfDay, hours = std::floor(s / 3600.0);
    const double minutes = std::floor(s / 60.0) - hours * 60.0;
    double rest = s - hours * 3600.0 - minutes * 60.0;
    // Four bytes cannot hold hundredths of a second behind the hours.
    rest = data == DataType::BF ? std::floor(rest) : std::floor(rest * 100.0) / 100.0;
    return hours * 10000.0 + minutes * 100.0 + rest;
}

/// Degrees and decimal minutes of a drifting position.
double RawPosition(const CSensor& sensor, double swing) {
    const bool longitude = EqualsNoCase(std::string_view(sensor.Type).substr(0, 3), "LON");
    return std::round(((longitude ? 6335.4 : 4438.7) + 0.2 * swing) * 1e4) / 1e4;
}

double RawTime(const CSensor& sensor, double seconds, double swing) {
    const CivilTime time = CivilTimeOf(seconds);
    switch (sensor.Fit) {
    case FitType::DDMMYY:
        return time.day * 10000.0 + time.month * 100.0 + time.year;
    case FitType::HHMMSS:
        return RawClock(time, sensor.Data);
    case FitType::DDMM:
        return RawPosition(sensor, swing);
    default:
        return std::floor(seconds);
    }
}

/// Letters for a text field: a hemisphere, or the alphabet from "A" on.
std::string Letters(const CSensor& sensor, std::string_view forbidden) {
    const std::string type = ToLower(sensor.Type).substr(0, 3);
    std::string text(sensor.VariableLength ? 1 : sensor.FieldLength, 'A');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>('A' + i % 26);
    if (text.size() == 1)
        text[0] = type == "lat" ? 'N' : type == "lon" ? 'W' : 'A';
    for (char& letter : text)
        for (char c = 'A'; forbidden.find(letter) != std::string_view::npos && c <= 'Z'; ++c)
            letter = c;
    return text;
}

} // namespace

CFrameMaker::CFrameMaker(const CInstrument& instrument, std::uint64_t seed)
    : Instrument(instrument), Random(seed), ChecksumAt(ChecksumIndexOf(instrument)) {
    for (const CSensor& sensor : instrument.Sensors())
        Fields.push_back(FieldFor(sensor));
    const std::int32_t counter = FrameCounterIndex(instrument);
    if (counter >= 0)
        Fields[static_cast<std::size_t>(counter)].content = Content::Counter;
    Times.resize(Fields.size());
}

CFrameMaker::Field CFrameMaker::FieldFor(const CSensor& sensor) const {
    Field field;
    field.sensor = &sensor;
    field.range = RangeOf(sensor);
    const ValueKind kind = KindOfValue(sensor);
    if (sensor.Data == DataType::AS)
        field.content = Content::Text;
    else if (kind == ValueKind::Text)
        field.content = Content::Time;
    else if (kind == ValueKind::Number) {
        field.rawBase = RawBaseOf(sensor, field.range);
        if (const std::optional<PlausibleValue> value = PlausibleValueOf(sensor)) {
            const double shape = SpectralShape(sensor);
            field.plausible = true;
            field.elapsed = value->elapsed;
            field.base = value->base * shape;
            field.swing = value->swing * shape;
        }
    }
    if (sensor.VariableLength) {
        const auto next = static_cast<std::size_t>(sensor.VariableIndex) + 1;
        field.forbidden = Instrument.Terminator().substr(0, 1);
        if (next < Instrument.FieldDelimiter().size())
            field.forbidden += Instrument.FieldDelimiter()[next];
    }
    return field;
}

/// -1 to 1, evenly.
double CFrameMaker::Noise() {
    Random += 0x9e3779b97f4a7c15; // a Weyl sequence, its bits mixed below
    std::uint64_t bits = (Random ^ Random >> 30) * 0xbf58476d1ce4e5b9;
    bits = (bits ^ bits >> 27) * 0x94d049bb133111eb;
    return static_cast<double>((bits ^ bits >> 31) >> 11) * 0x1p-52 - 1.0;
}

IntegrationTimeValue CFrameMaker::TimeFor(const CSensor& sensor) const {
    const CSensor* const time = sensor.IntegrationTime;
    return time && time->Index >= 0 && time->Index < sensor.Index
               ? Times[static_cast<std::size_t>(time->Index)]
               : IntegrationTimeValue{};
}

double CFrameMaker::PlausibleOf(const Field& field) {
    if (field.elapsed)
        return Seconds - FirstSeconds;
    const double noise = field.swing == 0.0 ? 0.0 : RelativeNoise * Noise();
    return (field.base + field.swing * Swing) * (1.0 + noise);
}

/// The raw value of a number: the wanted one's, a plausible one's where the field can hold it, or
/// one that has no meaning but to convert.
double CFrameMaker::RawOfValue(const Field& field) {
    const CSensor& sensor = *field.sensor;
    const bool number = KindOfValue(sensor) == ValueKind::Number;
    const double wanted = Values && number ? Values(sensor) : std::nan("");
    if (!std::isnan(wanted)) {
        const double raw = RawForValue(sensor, field.range, wanted, TimeFor(sensor), Immersed);
        return Confined(field.range, std::isnan(raw) ? field.rawBase : raw);
    }
    if (field.plausible) {
        double raw =
            RawForValue(sensor, field.range, PlausibleOf(field), TimeFor(sensor), Immersed);
        if (sensor.Data == DataType::AF) { // no more digits than an instrument would send
            const double places = std::fabs(raw) < 1.0 ? 1e7 : 1e4;
            raw = std::round(raw * places) / places;
        }
        if (std::isfinite(raw) && field.range.Holds(raw))
            return Confined(field.range, raw);
    }
    const double raw = field.rawBase * (1.0 + 0.05 * Swing + RelativeRawNoise * Noise());
    return Confined(field.range, sensor.Fit == FitType::OPTIC1 ? std::floor(raw / 4) * 4 : raw);
}

double CFrameMaker::RawOf(const Field& field) {
    if (field.content == Content::Counter)
        return std::fmod(static_cast<double>(Counter & 255), field.range.highest + 1.0);
    if (field.content == Content::Time)
        return Confined(field.range, RawTime(*field.sensor, Seconds, Swing));
    return RawOfValue(field);
}

/// Writes the raw value into its place in a fixed frame, or into the pending delimited field.
ByteSpan CFrameMaker::Encode(const Field& field, double raw, std::span<std::uint8_t> place) {
    if (field.sensor->VariableLength) {
        Pending = TextOfRaw(*field.sensor, raw, field.forbidden);
        const bool sixDigits =
            field.sensor->Fit == FitType::HHMMSS || field.sensor->Fit == FitType::DDMMYY;
        const bool decimal =
            field.sensor->Data == DataType::AI || field.sensor->Data == DataType::AF;
        const std::size_t digits = std::min(Pending.find('.'), Pending.size());
        if (sixDigits && decimal && digits < 6 && field.forbidden.find('0') == std::string::npos)
            Pending.insert(0, 6 - digits, '0'); // one in the night is 010000
        return AsBytes(Pending);
    }
    EncodeRaw(*field.sensor, raw, place);
    return place;
}

/// Makes the content of one field. A number that does not convert gives way to others that may; an
/// integration time must be more than nothing, for irradiances are divided by it.
ByteSpan CFrameMaker::Fill(const Field& field, std::span<std::uint8_t> place) {
    const CSensor& sensor = *field.sensor;
    if (field.content == Content::Text) {
        Pending = Letters(sensor, field.forbidden);
        std::copy_n(Pending.begin(), std::min(Pending.size(), place.size()), place.begin());
        return sensor.VariableLength ? AsBytes(Pending) : ByteSpan(place);
    }
    const double raw = RawOf(field);
    ByteSpan bytes = Encode(field, raw, place);
    if (field.content != Content::Value || KindOfValue(sensor) != ValueKind::Number)
        return bytes;
    const bool divides = EqualsNoCase(sensor.Type, "INTTIME");
    IntegrationTimeValue& value = Times[static_cast<std::size_t>(sensor.Index)];
    const auto converts = [&] {
        value.status = NumberOfField(sensor, bytes, TimeFor(sensor), Immersed, value.seconds);
        return value.status == ConversionStatus::Good && (!divides || value.seconds > 0.0);
    };
    if (converts())
        return bytes;
    for (double other : {field.rawBase, 4.0, field.range.highest, field.range.lowest, 0.0}) {
        bytes = Encode(field, Confined(field.range, other), place);
        if (converts())
            return bytes;
    }
    return Encode(field, raw, place);
}

void CFrameMaker::FillFixed(std::vector<std::uint8_t>& frame) {
    const std::string& header = Instrument.SyncHeader();
    frame.assign(static_cast<std::size_t>(std::max(Instrument.FrameSize(), 0)), 0);
    std::copy_n(header.begin(), std::min(header.size(), frame.size()), frame.begin());
    for (const Field& field : Fields) {
        const std::size_t begin = field.sensor->ByteOffset, length = field.sensor->FieldLength;
        // A repaired field length may reach beyond the frame; such a field has no place in it.
        if (length > 0 && begin + length <= frame.size())
            Fill(field, std::span(frame).subspan(begin, length));
    }
}

void CFrameMaker::FillDelimited(std::vector<std::uint8_t>& frame) {
    const std::string& delimiters = Instrument.FieldDelimiter();
    const auto add = [&frame](ByteSpan bytes) {
        frame.insert(frame.end(), bytes.begin(), bytes.end());
    };
    add(AsBytes(Instrument.SyncHeader()));
    std::size_t delimited = 0;
    for (const Field& field : Fields) {
        if (!field.sensor->VariableLength || delimited >= delimiters.size())
            continue;
        frame.push_back(static_cast<std::uint8_t>(delimiters[delimited++]));
        add(Fill(field, {}));
    }
    add(AsBytes(Instrument.Terminator()));
}

/// Sets the checksum; false when no digits can, for these bytes.
bool CFrameMaker::Balance(std::vector<std::uint8_t>& frame) const {
    const CSensor* const sensor = ChecksumAt < 0 ? nullptr : Instrument.Sensor(ChecksumAt);
    if (sensor && sensor->VariableLength)
        return BalanceDelimited(Instrument, *sensor, frame);
    if (!sensor || std::size_t{sensor->ByteOffset} + sensor->FieldLength > frame.size() ||
        sensor->FieldLength == 0)
        return true;
    const std::span<std::uint8_t> field =
        std::span(frame).subspan(sensor->ByteOffset, sensor->FieldLength);
    std::uint8_t sum = 0;
    for (std::size_t i = 0; i < sensor->ByteOffset; ++i)
        sum = static_cast<std::uint8_t>(sum + frame[i]);
    field[0] = static_cast<std::uint8_t>(-sum);
    if (sensor->Data != DataType::AI)
        return true;
    // The first character balances; a digit behind it makes a number of what is passed over.
    std::fill(field.begin() + 1, field.end(), static_cast<std::uint8_t>(' '));
    RawValue raw;
    if (RawOfField(*sensor, field, raw) == ConversionStatus::Good)
        return true;
    if (field.size() > 1)
        field[1] = '0';
    return RawOfField(*sensor, field, raw) == ConversionStatus::Good;
}

std::vector<std::uint8_t> CFrameMaker::Next(double secondsOfTime) {
    std::vector<std::uint8_t> frame;
    if (Instrument.FrameSize() > LargestFrame)
        return frame;
    Seconds = std::isfinite(secondsOfTime) ? secondsOfTime : 0.0;
    if (!Started)
        FirstSeconds = Seconds;
    Started = true;
    Swing = std::sin((Seconds - FirstSeconds) * 2.0 * std::numbers::pi / SwingPeriod);
    for (int attempt = 0; attempt < BalanceAttempts; ++attempt) {
        frame.clear();
        if (Instrument.Type() == FrameType::Variable)
            FillDelimited(frame);
        else
            FillFixed(frame);
        if (Balance(frame))
            break;
    }
    ++Counter;
    return frame;
}

} // namespace qor
