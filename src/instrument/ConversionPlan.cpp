// SPDX-License-Identifier: GPL-3.0-or-later
//
// Compiling a definition and converting frames by it. A run is converted as a whole; when anything
// in it fails (a short frame, a text without a number, a value that is not finite) the run is
// converted again sensor by sensor, which yields each sensor's own status.
#include "instrument/ConversionPlan.h"

#include "instrument/AsciiNumber.h"
#include "instrument/Calibration.h"
#include "instrument/ConversionKernels.h"
#include "instrument/FieldValue.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr std::size_t None = std::numeric_limits<std::size_t>::max();

/// What a run asks of each frame.
enum class Work : std::uint8_t {
    Nothing, ///< the statuses are the same for every frame that is long enough
    Each,    ///< statuses alone, sensor by sensor
    Numbers, ///< numbers by the loops
};

/// Neighbours in the sensor list and in the frame that are converted alike.
struct Run {
    std::size_t first = 0, count = 0; ///< sensors
    std::size_t begin = 0, end = 0;   ///< bytes of the frame, or fields of a delimited one
    std::size_t pool = 0;             ///< where the coefficients begin
    std::size_t time = None;          ///< OPTIC3: sensor index of the integration time
    std::size_t slot = 0;             ///< OPTIC3: which remembered integration time
    std::size_t width = 0;            ///< bytes of a field
    DataType data = DataType::BU;
    FitType fit = FitType::NONE;
    Work work = Work::Nothing;
    bool variable = false;
};

/// OPTIC1: offset, immersion and factor for each gain; NaN where there is no coefficient line.
struct GainCoefficients {
    double offset[4], immersion[4], factor[4];
};

std::uint64_t NextPlanNumber() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

/// The fit has the coefficients it needs, so that the loops may read them.
bool HasCoefficients(const CSensor& sensor) {
    const auto has = [&sensor](std::size_t least) {
        return !sensor.Coefficients.empty() && sensor.Coefficients[0].size() >= least;
    };
    switch (sensor.Fit) {
    case FitType::OPTIC1:
        return std::all_of(sensor.Coefficients.begin(), sensor.Coefficients.end(),
                           [](const auto& c) { return c.size() >= 3; });
    case FitType::OPTIC2:
        return has(3);
    case FitType::OPTIC3:
        return has(4) && sensor.IntegrationTime && sensor.IntegrationTime->Index >= 0 &&
               sensor.IntegrationTime->Index < sensor.Index &&
               KindOfValue(*sensor.IntegrationTime) == ValueKind::Number;
    case FitType::POLYF:
    case FitType::POLYU:
        return has(1);
    default:
        return true;
    }
}

bool HasUsableWidth(const CSensor& sensor) {
    switch (sensor.Data) {
    case DataType::BU:
    case DataType::BS:
        return sensor.FieldLength <= 4;
    case DataType::BF:
        return sensor.FieldLength == 4;
    case DataType::BD:
        return sensor.FieldLength == 8;
    default:
        return true;
    }
}

bool IsBinary(DataType data) {
    return data <= DataType::BD;
}

/// No byte of such a field can make its extraction fail.
bool AlwaysExtractable(const CSensor& sensor) {
    return sensor.Data == DataType::AS ||
           ((sensor.Data == DataType::BU || sensor.Data == DataType::BS) && HasUsableWidth(sensor));
}

Work WorkFor(const CSensor& sensor) {
    const ValueKind kind = KindOfValue(sensor);
    if (kind == ValueKind::Number) {
        const bool optic1OfOther = sensor.Fit == FitType::OPTIC1 && sensor.Data != DataType::BU &&
                                   sensor.Data != DataType::BS && sensor.Data != DataType::AI;
        const bool binaryText = sensor.VariableLength && IsBinary(sensor.Data);
        const bool plain = HasCoefficients(sensor) && HasUsableWidth(sensor) && !optic1OfOther;
        return plain && !binaryText ? Work::Numbers : Work::Each;
    }
    const bool isText = kind == ValueKind::Text && sensor.Data == DataType::AS;
    return AlwaysExtractable(sensor) && (isText || kind == ValueKind::None) ? Work::Nothing
                                                                            : Work::Each;
}

/// The status of such a sensor in every frame that holds its field.
ConversionStatus UsualStatus(const CSensor& sensor) {
    if (WorkFor(sensor) == Work::Nothing && KindOfValue(sensor) == ValueKind::None)
        return ConversionStatus::NotUsable;
    return ConversionStatus::Good;
}

Run RunOf(const CSensor& sensor, std::size_t index) {
    Run run;
    run.first = index;
    run.count = 1;
    run.variable = sensor.VariableLength;
    if (run.variable) {
        run.begin = static_cast<std::size_t>(std::max(sensor.VariableIndex, 0));
        // A field without an index lies behind every field that can be found.
        run.end = sensor.VariableIndex < 0 ? None : run.begin + 1;
    } else {
        run.begin = sensor.ByteOffset;
        run.end = run.begin + sensor.FieldLength;
    }
    if (sensor.Fit == FitType::OPTIC3 && sensor.IntegrationTime)
        run.time = static_cast<std::size_t>(sensor.IntegrationTime->Index);
    run.width = sensor.FieldLength;
    run.data = sensor.Data;
    run.fit = sensor.Fit;
    run.work = WorkFor(sensor);
    return run;
}

/// The sensor behind the run continues it. Its integration time is the run's, which lies before it.
bool Continues(const Run& run, const Run& next) {
    return run.variable == next.variable && run.end == next.begin && run.work == next.work &&
           run.data == next.data && run.fit == next.fit && run.width == next.width &&
           run.time == next.time && run.end != None && next.end != None;
}

} // namespace

struct CConversionPlan::Impl {
    std::uint64_t number = NextPlanNumber();
    std::vector<const CSensor*> sensors;
    std::vector<Run> runs;
    std::vector<ConversionStatus> usual; ///< statuses of a frame without faults
    bool usualFails = false;
    // Coefficients of the OPTIC2 and OPTIC3 runs, one array a role.
    std::vector<double> offsets, factors, immersions, numerators;
    std::vector<GainCoefficients> gains;              ///< of the OPTIC1 runs
    std::vector<std::span<const double>> polynomials; ///< of the POLYF and POLYU runs
    std::size_t times = 0;                            ///< OPTIC3 runs
    std::string delimiters, terminator;

    void AddCoefficients(const CSensor& sensor);
    void Prepare(FrameValues& values) const;
    bool IsWithin(const Run& run, ByteSpan frame, const FrameValues& values) const;
    bool LoadTexts(const Run& run, ByteSpan frame, double* numbers,
                   const FrameValues& values) const;
    bool Load(const Run& run, ByteSpan frame, double* numbers, const FrameValues& values) const;
    bool Coefficients(const Run& run, bool immersed, FrameValues& values,
                      OpticCoefficients& c) const;
    bool ApplyGains(const Run& run, bool immersed, double* numbers) const;
    bool ApplyPolynomials(const Run& run, double* numbers) const;
    bool ConvertRun(const Run& run, ByteSpan frame, bool immersed, FrameValues& values) const;
    ConversionStatus Field(const CSensor& sensor, ByteSpan frame, const FrameValues& values,
                           ByteSpan& field) const;
    void ConvertEach(const Run& run, ByteSpan frame, bool immersed, FrameValues& values) const;
};

void CConversionPlan::Impl::AddCoefficients(const CSensor& sensor) {
    if (sensor.Fit == FitType::OPTIC1) {
        constexpr double Missing = std::numeric_limits<double>::quiet_NaN();
        GainCoefficients all;
        for (std::size_t g = 0; g < 4; ++g) {
            const bool there = g < sensor.Coefficients.size();
            all.offset[g] = there ? sensor.Coefficients[g][0] : Missing;
            all.factor[g] = there ? sensor.Coefficients[g][1] : Missing;
            all.immersion[g] = there ? sensor.Coefficients[g][2] : Missing;
        }
        gains.push_back(all);
    } else if (sensor.Fit == FitType::POLYF || sensor.Fit == FitType::POLYU) {
        polynomials.push_back(sensor.Coefficients[0]);
    } else if (IsOptic(sensor.Fit)) {
        const std::vector<double>& c = sensor.Coefficients[0];
        offsets.push_back(c[0]);
        factors.push_back(c[1]);
        immersions.push_back(c[2]);
        numerators.push_back(sensor.Fit == FitType::OPTIC3 ? c[3] : 1.0);
    }
}

CConversionPlan::CConversionPlan(const CInstrument& instrument)
    : Compiled(std::make_unique<Impl>()) {
    Impl& plan = *Compiled;
    if (instrument.Type() == FrameType::Variable) {
        plan.delimiters = instrument.FieldDelimiter();
        plan.terminator = instrument.Terminator();
    }
    for (const CSensor& sensor : instrument.Sensors()) {
        Run next = RunOf(sensor, plan.sensors.size());
        plan.sensors.push_back(&sensor);
        plan.usual.push_back(UsualStatus(sensor));
        plan.usualFails = plan.usualFails || plan.usual.back() != ConversionStatus::Good;
        if (!plan.runs.empty() && Continues(plan.runs.back(), next)) {
            ++plan.runs.back().count;
            plan.runs.back().end = next.end;
        } else {
            next.pool = IsOptic(next.fit) ? plan.offsets.size() : plan.polynomials.size();
            if (next.fit == FitType::OPTIC1)
                next.pool = plan.gains.size();
            if (next.fit == FitType::OPTIC3 && next.work == Work::Numbers)
                next.slot = plan.times++;
            plan.runs.push_back(next);
        }
        if (next.work == Work::Numbers)
            plan.AddCoefficients(sensor);
    }
}

CConversionPlan::~CConversionPlan() = default;

/// Makes the values ready for the next frame: statuses of a frame without faults.
void CConversionPlan::Impl::Prepare(FrameValues& values) const {
    FrameValues::Memory& memory = values.memory;
    const bool fits = values.numbers.size() == sensors.size() &&
                      values.statuses.size() == sensors.size() && memory.plan == number;
    if (fits && !memory.failed)
        return;
    values.statuses = usual;
    memory.failed = false;
    if (fits)
        return;
    memory.plan = number;
    values.numbers.assign(sensors.size(), 0.0);
    // No valid integration time is a NaN: the first frame computes the scales.
    memory.integrationTimes.assign(times, std::numeric_limits<double>::quiet_NaN());
    memory.scales.assign(offsets.size(), 0.0);
    memory.fields.assign(delimiters.size(), {});
}

bool CConversionPlan::Impl::IsWithin(const Run& run, ByteSpan frame,
                                     const FrameValues& values) const {
    return run.end <= (run.variable ? values.memory.fieldCount : frame.size());
}

/// Raw values of text fields; false at the first that holds no number.
bool CConversionPlan::Impl::LoadTexts(const Run& run, ByteSpan frame, double* numbers,
                                      const FrameValues& values) const {
    const FieldRange* const cut = values.memory.fields.data() + (run.variable ? run.begin : 0);
    for (std::size_t i = 0; i < run.count; ++i) {
        const ByteSpan field = run.variable ? frame.subspan(cut[i].begin, cut[i].end - cut[i].begin)
                                            : frame.subspan(run.begin + i * run.width, run.width);
        RawValue raw;
        ConversionStatus status = ConversionStatus::Good;
        if (run.data == DataType::AF)
            status = ReadAsciiFloat(field, raw.number);
        else
            status = RawOfField(*sensors[run.first + i], field, raw);
        if (status != ConversionStatus::Good)
            return false;
        numbers[i] = raw.number;
    }
    return true;
}

/// Raw values into the numbers, as doubles; false when one cannot be extracted.
bool CConversionPlan::Impl::Load(const Run& run, ByteSpan frame, double* numbers,
                                 const FrameValues& values) const {
    const std::uint8_t* const bytes = frame.data() + run.begin;
    switch (run.data) {
    case DataType::BU:
    case DataType::BS:
        // One field alone is the rule among ancillary sensors.
        if (run.count == 1)
            *numbers = LoadInteger(bytes, run.width, run.data == DataType::BS);
        else
            LoadIntegers(bytes, run.width, run.data == DataType::BS, run.count, numbers);
        return true;
    case DataType::BF:
    case DataType::BD:
        return LoadFloats(bytes, run.width, run.count, numbers);
    default:
        return LoadTexts(run, frame, numbers, values);
    }
}

/// The arrays of an OPTIC2 or OPTIC3 run for this frame; false without an integration time.
/// Multiplying by 1.0 is exact, so without immersion its factor is left out.
bool CConversionPlan::Impl::Coefficients(const Run& run, bool immersed, FrameValues& values,
                                         OpticCoefficients& c) const {
    c.offset = offsets.data() + run.pool;
    if (run.fit == FitType::OPTIC3) {
        if (values.statuses[run.time] != ConversionStatus::Good)
            return false;
        FrameValues::Memory& memory = values.memory;
        const double time = values.numbers[run.time];
        double* const scales = memory.scales.data() + run.pool;
        double& known = memory.integrationTimes[run.slot];
        if (std::bit_cast<std::uint64_t>(known) != std::bit_cast<std::uint64_t>(time)) {
            DivideAll(numerators.data() + run.pool, time, run.count, scales);
            known = time;
        }
        c.factors[c.factorCount++] = scales;
    }
    if (immersed)
        c.factors[c.factorCount++] = immersions.data() + run.pool;
    c.factors[c.factorCount++] = factors.data() + run.pool;
    return true;
}

bool CConversionPlan::Impl::ApplyGains(const Run& run, bool immersed, double* numbers) const {
    bool finite = true;
    for (std::size_t i = 0; i < run.count; ++i) {
        const GainCoefficients& c = gains[run.pool + i];
        const auto raw = static_cast<std::int64_t>(numbers[i]);
        const auto gain = static_cast<std::size_t>(raw & 3);
        const auto counts = static_cast<double>(raw & ~std::int64_t{3});
        numbers[i] =
            (counts - c.offset[gain]) * (immersed ? c.immersion[gain] : 1.0) * c.factor[gain];
        finite = finite && std::isfinite(numbers[i]);
    }
    return finite;
}

bool CConversionPlan::Impl::ApplyPolynomials(const Run& run, double* numbers) const {
    bool finite = true;
    for (std::size_t i = 0; i < run.count; ++i) {
        const std::span<const double> c = polynomials[run.pool + i];
        numbers[i] = run.fit == FitType::POLYF ? FactoredPolynomial(c, numbers[i])
                                               : UnfactoredPolynomial(c, numbers[i]);
        finite = finite && std::isfinite(numbers[i]);
    }
    return finite;
}

/// Converts a run whose fields all lie in the frame; false when some sensor of it fails.
bool CConversionPlan::Impl::ConvertRun(const Run& run, ByteSpan frame, bool immersed,
                                       FrameValues& values) const {
    double* const numbers = values.numbers.data() + run.first;
    OpticCoefficients c;
    if ((run.fit == FitType::OPTIC2 || run.fit == FitType::OPTIC3) &&
        !Coefficients(run, immersed, values, c))
        return false;
    if (run.data == DataType::BU && run.width == 2 && c.factorCount > 0)
        return ConvertOptic16(frame.data() + run.begin, run.count, c, numbers);
    if (!Load(run, frame, numbers, values))
        return false;
    switch (run.fit) {
    case FitType::OPTIC1:
        return ApplyGains(run, immersed, numbers);
    case FitType::OPTIC2:
    case FitType::OPTIC3:
        return ConvertOptic(run.count, c, numbers);
    case FitType::POLYF:
    case FitType::POLYU:
        return ApplyPolynomials(run, numbers);
    default:
        return true;
    }
}

/// FieldOf, by the cuts that are there already.
ConversionStatus CConversionPlan::Impl::Field(const CSensor& sensor, ByteSpan frame,
                                              const FrameValues& values, ByteSpan& field) const {
    if (!frame.data() || !sensor.VariableLength)
        return FieldOf(sensor, frame, field);
    const auto k = static_cast<std::size_t>(sensor.VariableIndex);
    if (sensor.VariableIndex < 0 || k >= values.memory.fieldCount)
        return ConversionStatus::FieldNotFound;
    const FieldRange cut = values.memory.fields[k];
    field = frame.subspan(cut.begin, cut.end - cut.begin);
    return ConversionStatus::Good;
}

void CConversionPlan::Impl::ConvertEach(const Run& run, ByteSpan frame, bool immersed,
                                        FrameValues& values) const {
    for (std::size_t i = run.first; i < run.first + run.count; ++i) {
        const CSensor& sensor = *sensors[i];
        ByteSpan field;
        ConversionStatus status = Field(sensor, frame, values, field);
        if (status == ConversionStatus::Good && KindOfValue(sensor) == ValueKind::Text)
            status = TextOfField(sensor, field, nullptr);
        else if (status == ConversionStatus::Good) {
            IntegrationTimeValue time;
            if (run.time < i)
                time = {values.statuses[run.time], values.numbers[run.time]};
            status = NumberOfField(sensor, field, time, immersed, values.numbers[i]);
        }
        values.statuses[i] = status;
        values.memory.failed = values.memory.failed || status != ConversionStatus::Good;
    }
}

void CConversionPlan::Convert(ByteSpan frame, bool immersed, FrameValues& values) const {
    const Impl& plan = *Compiled;
    plan.Prepare(values);
    if (!plan.delimiters.empty())
        values.memory.fieldCount =
            CutFields(frame, plan.delimiters, plan.terminator, values.memory.fields.data());
    for (const Run& run : plan.runs) {
        const bool whole = frame.data() && plan.IsWithin(run, frame, values);
        if (whole && run.work == Work::Nothing)
            continue;
        if (!whole || run.work == Work::Each || !plan.ConvertRun(run, frame, immersed, values))
            plan.ConvertEach(run, frame, immersed, values);
    }
    values.anyFailed = plan.usualFails || values.memory.failed;
}

ConversionStatus CConversionPlan::Text(const CSensor& sensor, ByteSpan frame,
                                       const FrameValues& values, std::string& text) const {
    ByteSpan field;
    const ConversionStatus status = Compiled->Field(sensor, frame, values, field);
    return status == ConversionStatus::Good ? TextOfField(sensor, field, &text) : status;
}

} // namespace qor
