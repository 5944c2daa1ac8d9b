// SPDX-License-Identifier: GPL-3.0-or-later
//
// Converting a frame by its instrument's plan. What fails (a text without a number, a value that is
// not finite) is converted again sensor by sensor, which yields each sensor's own status. So is a
// frame that is too short for some sensor.
#include "instrument/ConversionPlan.h"

#include "instrument/AsciiNumber.h"
#include "instrument/Calibration.h"

#include <bit>
#include <cmath>
#include <limits>

namespace qor {

namespace {

/// An AI field as a number.
ConversionStatus ReadAsciiWhole(ByteSpan frame, FieldRange field, double& number) {
    std::int32_t integer = 0;
    const ConversionStatus status =
        ReadAsciiInteger(frame.subspan(field.begin, field.end - field.begin), integer);
    number = integer;
    return status;
}

} // namespace

/// Makes the values ready for the next frame: statuses of a frame without faults.
void CConversionPlan::Prepare(FrameValues& values) const {
    FrameValues::Memory& memory = values.memory;
    const bool fits = values.numbers.size() == Sensors.size() &&
                      values.statuses.size() == Sensors.size() && memory.plan == Identity;
    if (fits && !memory.failed)
        return;
    values.statuses = Usual;
    memory.failed = false;
    if (fits)
        return;
    memory.plan = Identity;
    values.numbers.assign(Sensors.size(), 0.0);
    // No valid integration time is a NaN: the first frame computes the scales.
    memory.integrationTimes.assign(Times, std::numeric_limits<double>::quiet_NaN());
    memory.scales.assign(Offsets.size(), 0.0);
    memory.cuts.assign(Cutter ? Cutter->Fields() + 1 : 0, 0);
    memory.fieldCount = 0;
}

/// Raw values of text fields; false at the first that holds no number.
bool CConversionPlan::LoadTexts(const ConversionRun& run, ByteSpan frame, double* numbers,
                                const FrameValues& values) const {
    for (std::size_t i = 0; i < run.count; ++i) {
        const CSensor& sensor = *Sensors[run.first + i];
        ByteSpan field;
        RawValue raw;
        if (Field(sensor, frame, values, field) != ConversionStatus::Good ||
            RawOfField(sensor, field, raw) != ConversionStatus::Good)
            return false;
        numbers[i] = raw.number;
    }
    return true;
}

/// Raw values into the numbers, as doubles; false when one cannot be extracted.
bool CConversionPlan::Load(const ConversionRun& run, ByteSpan frame, double* numbers,
                           const FrameValues& values) const {
    const std::uint8_t* const at = frame.data() + run.begin;
    switch (run.data) {
    case DataType::BU:
    case DataType::BS:
        LoadIntegers(at, run.width, run.data == DataType::BS, run.count, numbers);
        return true;
    case DataType::BF:
    case DataType::BD:
        return LoadFloats(at, run.width, run.count, numbers);
    case DataType::HU:
    case DataType::HS:
    case DataType::AI:
    case DataType::AF:
    case DataType::AS:
        break;
    }
    return LoadTexts(run, frame, numbers, values);
}

/// The arrays of a run of factors for this frame; false without an integration time.
/// Multiplying by 1.0 is exact, so without immersion its factor is left out.
bool CConversionPlan::Coefficients(const ConversionRun& run, bool immersed, FrameValues& values,
                                   OpticCoefficients& c) const {
    c.offset = Offsets.data() + run.pool;
    if (run.loop == FitLoop::TimedFactors) {
        if (values.statuses[run.time] != ConversionStatus::Good)
            return false;
        FrameValues::Memory& memory = values.memory;
        const double time = values.numbers[run.time];
        double* const scales = memory.scales.data() + run.pool;
        double& known = memory.integrationTimes[run.slot];
        if (std::bit_cast<std::uint64_t>(known) != std::bit_cast<std::uint64_t>(time)) {
            DivideAll(Numerators.data() + run.pool, time, run.count, scales);
            known = time;
        }
        c.factors[c.factorCount++] = scales;
    }
    if (immersed)
        c.factors[c.factorCount++] = Immersions.data() + run.pool;
    c.factors[c.factorCount++] = Factors.data() + run.pool;
    return true;
}

bool CConversionPlan::ApplyGains(const ConversionRun& run, bool immersed, double* numbers) const {
    bool finite = true;
    for (std::size_t i = 0; i < run.count; ++i) {
        const GainCoefficients& c = Gains[run.pool + i];
        const auto raw = static_cast<std::int64_t>(numbers[i]);
        const auto gain = static_cast<std::size_t>(raw & 3);
        const auto counts = static_cast<double>(raw & ~std::int64_t{3});
        numbers[i] =
            (counts - c.offset[gain]) * (immersed ? c.immersion[gain] : 1.0) * c.factor[gain];
        finite = finite && std::isfinite(numbers[i]);
    }
    return finite;
}

bool CConversionPlan::ApplyPolynomials(const ConversionRun& run, double* numbers) const {
    bool finite = true;
    for (std::size_t i = 0; i < run.count; ++i) {
        numbers[i] = Polynomials[run.first + i](numbers[i]);
        finite = finite && std::isfinite(numbers[i]);
    }
    return finite;
}

/// Converts a run whose fields all lie in the frame; false when some sensor of it fails, or when
/// its sensors are to be converted one by one.
bool CConversionPlan::ConvertRun(const ConversionRun& run, ByteSpan frame, bool immersed,
                                 FrameValues& values) const {
    if (run.loop == FitLoop::None)
        return false;
    double* const numbers = values.numbers.data() + run.first;
    OpticCoefficients c;
    if ((run.loop == FitLoop::Factors || run.loop == FitLoop::TimedFactors) &&
        !Coefficients(run, immersed, values, c))
        return false;
    if (run.data == DataType::BU && run.width == 2 && c.factorCount > 0)
        return ConvertOptic16(frame.data() + run.begin, run.count, c, numbers);
    if (!Load(run, frame, numbers, values))
        return false;
    switch (run.loop) {
    case FitLoop::None: // has ended above
    case FitLoop::Count:
        return true;
    case FitLoop::Gains:
        return ApplyGains(run, immersed, numbers);
    case FitLoop::Factors:
    case FitLoop::TimedFactors:
        return ConvertOptic(run.count, c, numbers);
    case FitLoop::Factored:
    case FitLoop::Unfactored:
        return ApplyPolynomials(run, numbers);
    }
    return false;
}

/// Converts a text field that lies in the frame; false when it has no value.
bool CConversionPlan::ConvertText(const TextNumber& text, ByteSpan frame,
                                  FrameValues& values) const {
    FieldRange field = text.field;
    if (text.variable)
        field = CFieldCutter::Field(values.memory.cuts.data(), text.cut);
    // No time or position text asks for less.
    if (text.statusOnly && !text.isInteger && IsShortAsciiFloat(frame, field))
        return true;
    double number = 0.0;
    const ConversionStatus status = text.isInteger ? ReadAsciiWhole(frame, field, number)
                                                   : ReadAsciiFloat(frame, field, number);
    if (status != ConversionStatus::Good || std::fabs(number) >= text.limit)
        return false;
    number = text.fit(number);
    values.numbers[text.sensor] = number;
    return std::isfinite(number);
}

/// FieldOf, by the cuts that are there already.
ConversionStatus CConversionPlan::Field(const CSensor& sensor, ByteSpan frame,
                                        const FrameValues& values, ByteSpan& field) const {
    if (!frame.data() || !sensor.VariableLength)
        return FieldOf(sensor, frame, field);
    const auto k = static_cast<std::size_t>(sensor.VariableIndex);
    if (sensor.VariableIndex < 0 || k >= values.memory.fieldCount)
        return ConversionStatus::FieldNotFound;
    const FieldRange range = CFieldCutter::Field(values.memory.cuts.data(), k);
    field = frame.subspan(range.begin, range.end - range.begin);
    return ConversionStatus::Good;
}

void CConversionPlan::ConvertSensor(std::size_t i, ByteSpan frame, bool immersed,
                                    FrameValues& values) const {
    const CSensor& sensor = *Sensors[i];
    ByteSpan field;
    ConversionStatus status = Field(sensor, frame, values, field);
    if (status == ConversionStatus::Good && KindOfValue(sensor) == ValueKind::Text)
        status = TextOfField(sensor, field, nullptr);
    else if (status == ConversionStatus::Good) {
        IntegrationTimeValue time;
        if (const CSensor* source = sensor.IntegrationTime; sensor.Fit == FitType::OPTIC3 &&
                                                            source && source->Index >= 0 &&
                                                            source->Index < sensor.Index) {
            const auto index = static_cast<std::size_t>(source->Index);
            time = {values.statuses[index], values.numbers[index]};
        }
        status = NumberOfField(sensor, field, time, immersed, values.numbers[i]);
    }
    values.statuses[i] = status;
    values.memory.failed = values.memory.failed || status != ConversionStatus::Good;
}

/// Converts a frame that holds every field.
void CConversionPlan::ConvertWhole(ByteSpan frame, bool immersed, FrameValues& values) const {
    if (!ConvertSingles(frame.data(), Singles, values.numbers.data()))
        for (const SingleField& single : Singles)
            ConvertSensor(single.sensor, frame, immersed, values);
    for (const TextNumber& text : Texts)
        if (!ConvertText(text, frame, values))
            ConvertSensor(text.sensor, frame, immersed, values);
    for (const ConversionRun& run : Runs)
        if (!ConvertRun(run, frame, immersed, values))
            for (std::size_t i = run.first; i < run.first + run.count; ++i)
                ConvertSensor(i, frame, immersed, values);
}

void CConversionPlan::Convert(ByteSpan frame, bool immersed, FrameValues& values) const {
    Prepare(values);
    if (Cutter)
        values.memory.fieldCount = Cutter->Cut(frame, values.memory.cuts.data());
    if (frame.data() && frame.size() >= FrameBytes && values.memory.fieldCount >= FrameFields)
        ConvertWhole(frame, immersed, values);
    else
        for (std::size_t i = 0; i < Sensors.size(); ++i)
            ConvertSensor(i, frame, immersed, values);
    values.anyFailed = UsualFails || values.memory.failed;
}

ConversionStatus CConversionPlan::Text(const CSensor& sensor, ByteSpan frame,
                                       const FrameValues& values, std::string& text) const {
    ByteSpan field;
    const ConversionStatus status = Field(sensor, frame, values, field);
    return status == ConversionStatus::Good ? TextOfField(sensor, field, &text) : status;
}

} // namespace qor
