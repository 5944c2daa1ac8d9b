// SPDX-License-Identifier: GPL-3.0-or-later
//
// Compiling a definition: what can be said of each sensor beforehand, so that as little as possible
// is left to do with a frame. FrameConversion.cpp does it.
#include "instrument/ConversionPlan.h"

#include "instrument/Calibration.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace qor {

namespace {

/// What a sensor asks of each frame.
enum class Work : std::uint8_t {
    Nothing, ///< the status is the same for every frame that is long enough
    Each,    ///< to be converted by itself
    Time,    ///< the status of a time or position in a text field
    Number,  ///< a number by the loops
};

std::uint64_t NextIdentity() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

/// Every coefficient that the fit needs is there, so that the loops may read them.
bool HasCoefficients(const CSensor& sensor) {
    const FitRow& row = RowOf(sensor.Fit);
    const auto& sets = sensor.Coefficients;
    return sets.size() >= row.fewestGains &&
           std::all_of(sets.begin(), sets.end(),
                       [&row](const auto& c) { return c.size() >= row.fewestCoefficients; });
}

/// The integration time is a number that is there when the sensor's turn comes.
bool HasTime(const CSensor& sensor) {
    const CSensor* const time = sensor.IntegrationTime;
    return time && time->Index >= 0 && time->Index < sensor.Index &&
           KindOfValue(*time) == ValueKind::Number;
}

bool HasUsableWidth(const CSensor& sensor) {
    const DataTypeRow& row = RowOf(sensor.Data);
    return sensor.FieldLength >= row.shortest && sensor.FieldLength <= row.longest;
}

/// No byte of such a field can make its extraction fail.
bool AlwaysExtractable(const CSensor& sensor) {
    return sensor.Data == DataType::AS || (IsBinaryInteger(sensor.Data) && HasUsableWidth(sensor));
}

/// The loops give what the function of the sensor's fit gives.
bool HasLoop(const CSensor& sensor) {
    const FitRow& row = RowOf(sensor.Fit);
    return row.loop != FitLoop::None && row.allowed.Has(sensor.Data) && HasCoefficients(sensor) &&
           HasUsableWidth(sensor) && (row.loop != FitLoop::TimedFactors || HasTime(sensor)) &&
           (!sensor.VariableLength || RowOf(sensor.Data).characters);
}

Work WorkFor(const CSensor& sensor) {
    if (sensor.VariableLength && sensor.VariableIndex < 0)
        return Work::Each; // lies behind every field that can be found
    switch (KindOfValue(sensor)) {
    case ValueKind::Number:
        return HasLoop(sensor) ? Work::Number : Work::Each;
    case ValueKind::Text:
        if (sensor.Data == DataType::AF || sensor.Data == DataType::AI)
            return Work::Time;
        return sensor.Data == DataType::AS ? Work::Nothing : Work::Each;
    case ValueKind::None:
        break;
    }
    return AlwaysExtractable(sensor) ? Work::Nothing : Work::Each;
}

/// The status of such a sensor in every frame that holds its field.
ConversionStatus UsualStatus(const CSensor& sensor) {
    if (WorkFor(sensor) == Work::Nothing && KindOfValue(sensor) == ValueKind::None)
        return ConversionStatus::NotUsable;
    return ConversionStatus::Good;
}

bool IsPolynomial(FitLoop loop) {
    return loop == FitLoop::Factored || loop == FitLoop::Unfactored;
}

FieldPolynomial PolynomialOf(const CSensor& sensor) {
    const FitLoop loop = RowOf(sensor.Fit).loop;
    if (IsPolynomial(loop) && HasCoefficients(sensor))
        return {sensor.Coefficients[0], loop == FitLoop::Factored};
    return {};
}

ConversionRun RunOf(const CSensor& sensor, std::size_t index) {
    ConversionRun run;
    run.first = index;
    run.count = 1;
    run.variable = sensor.VariableLength;
    run.begin = run.variable ? static_cast<std::size_t>(std::max(sensor.VariableIndex, 0))
                             : sensor.ByteOffset;
    run.end = run.begin + (run.variable ? 1 : sensor.FieldLength);
    const Work work = WorkFor(sensor);
    run.width = sensor.FieldLength;
    run.data = sensor.Data;
    run.fit = sensor.Fit;
    run.statusOnly = work == Work::Time;
    if (work == Work::Number)
        run.loop = RowOf(sensor.Fit).loop;
    if (run.loop == FitLoop::TimedFactors)
        run.time = static_cast<std::size_t>(sensor.IntegrationTime->Index);
    return run;
}

/// The sensor behind the run continues it. Its integration time is the run's, which lies before it.
bool Continues(const ConversionRun& run, const ConversionRun& next) {
    return run.first + run.count == next.first && run.variable == next.variable &&
           run.end == next.begin && run.loop == next.loop && run.data == next.data &&
           run.fit == next.fit && run.width == next.width && run.time == next.time;
}

/// Binary integers better converted field by field: polynomials differ from field to field, and a
/// few counts are not worth the call of a vectorised loop.
bool IsOfSingles(const ConversionRun& run) {
    constexpr std::size_t Few = 8;
    return IsBinaryInteger(run.data) && !run.variable && run.width > 0 &&
           run.begin + run.width >= sizeof(std::uint32_t) &&
           (IsPolynomial(run.loop) || (run.loop == FitLoop::Count && run.count < Few));
}

bool IsOfTexts(const ConversionRun& run) {
    return (run.data == DataType::AF || run.data == DataType::AI) &&
           (IsPolynomial(run.loop) || run.loop == FitLoop::Count || run.statusOnly);
}

} // namespace

void CConversionPlan::AddSensor(const CSensor& sensor) {
    ConversionRun next = RunOf(sensor, Sensors.size());
    Sensors.push_back(&sensor);
    Polynomials.push_back(PolynomialOf(sensor));
    Usual.push_back(UsualStatus(sensor));
    UsualFails = UsualFails || Usual.back() != ConversionStatus::Good;
    std::size_t& needed = next.variable ? FrameFields : FrameBytes;
    needed = std::max(needed, next.end);
    if (WorkFor(sensor) == Work::Nothing)
        return;
    if (!Runs.empty() && Continues(Runs.back(), next)) {
        ++Runs.back().count;
        Runs.back().end = next.end;
    } else {
        next.pool = next.loop == FitLoop::Gains ? Gains.size() : Offsets.size();
        if (next.loop == FitLoop::TimedFactors)
            next.slot = Times++;
        Runs.push_back(next);
    }
    if (next.loop == FitLoop::Gains)
        AddGains(sensor);
    else if (next.loop == FitLoop::Factors || next.loop == FitLoop::TimedFactors)
        AddFactors(sensor, next.loop);
}

void CConversionPlan::AddGains(const CSensor& sensor) {
    constexpr double Missing = std::numeric_limits<double>::quiet_NaN();
    GainCoefficients all;
    for (std::size_t g = 0; g < 4; ++g) {
        const bool there = g < sensor.Coefficients.size();
        all.offset[g] = there ? sensor.Coefficients[g][0] : Missing;
        all.factor[g] = there ? sensor.Coefficients[g][1] : Missing;
        all.immersion[g] = there ? sensor.Coefficients[g][2] : Missing;
    }
    Gains.push_back(all);
}

void CConversionPlan::AddFactors(const CSensor& sensor, FitLoop loop) {
    const std::vector<double>& c = sensor.Coefficients[0];
    Offsets.push_back(c[0]);
    Factors.push_back(c[1]);
    Immersions.push_back(c[2]);
    Numerators.push_back(loop == FitLoop::TimedFactors ? c[3] : 1.0);
}

void CConversionPlan::AddSingles(const ConversionRun& run) {
    for (std::size_t i = 0; i < run.count; ++i) {
        SingleField single;
        single.at = run.begin + (i + 1) * run.width - sizeof(std::uint32_t);
        single.mask = ~std::uint32_t{0} >> (32 - 8 * run.width);
        single.signBit = run.data == DataType::BS ? single.mask ^ single.mask >> 1 : 0;
        single.sensor = run.first + i;
        single.fit = Polynomials[single.sensor];
        Singles.push_back(single);
    }
}

void CConversionPlan::AddTexts(const ConversionRun& run) {
    for (std::size_t i = 0; i < run.count; ++i) {
        TextNumber text;
        text.variable = run.variable;
        text.cut = run.begin + i;
        text.field = {run.begin + i * run.width, run.begin + (i + 1) * run.width};
        text.isInteger = run.data == DataType::AI;
        text.statusOnly = run.statusOnly;
        text.limit = text.statusOnly ? TimeTextLimit(run.fit, run.data)
                                     : std::numeric_limits<double>::infinity();
        text.sensor = run.first + i;
        text.fit = Polynomials[text.sensor];
        Texts.push_back(text);
    }
}

CConversionPlan::CConversionPlan(const CInstrument& instrument) : Identity(NextIdentity()) {
    if (instrument.Type() == FrameType::Variable)
        Cutter.emplace(instrument.FieldDelimiter(), instrument.Terminator());
    for (const CSensor& sensor : instrument.Sensors())
        AddSensor(sensor);
    for (const ConversionRun& run : Runs) {
        if (IsOfSingles(run))
            AddSingles(run);
        else if (IsOfTexts(run))
            AddTexts(run);
    }
    std::erase_if(Runs, [](const auto& run) { return IsOfSingles(run) || IsOfTexts(run); });
}

} // namespace qor
