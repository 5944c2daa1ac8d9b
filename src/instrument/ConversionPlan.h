// SPDX-License-Identifier: GPL-3.0-or-later
//
// A definition compiled once into runs of equal (data type, width, fit), each a plain loop over
// coefficient arrays that the compiler vectorises. ConversionPlan.cpp compiles, FrameConversion.cpp
// converts. Const after construction; shared between threads, each with FrameValues of its own.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionKernels.h"
#include "instrument/ConversionStatus.h"
#include "instrument/FieldValue.h"
#include "instrument/Instrument.h"
#include "instrument/VariableFields.h"

#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qor {

/// The values of one frame, parallel to the instrument's sensors. Reused from frame to frame.
struct FrameValues {
    std::vector<double> numbers; ///< valid where the status is Good and the value is a number
    std::vector<ConversionStatus> statuses; ///< Good also for a text that can be formed
    bool anyFailed =
        false; ///< some status is not Good (a sensor whose fit gives no value included)

    /// What the plan that filled these values keeps from frame to frame; nobody else's business.
    struct Memory {
        std::uint64_t plan = 0;               ///< which plan
        bool failed = false;                  ///< the statuses are to be restored
        std::vector<double> integrationTimes; ///< for each timed run, of its scales
        std::vector<double> scales;           ///< c3 / t
        std::vector<std::size_t> cuts;        ///< of a delimited frame, see CFieldCutter
        std::size_t fieldCount = 0;
    };
    Memory memory;

    /// A sensor's value counts as none until the next frame is converted.
    void Reject(std::size_t sensor) {
        statuses[sensor] = ConversionStatus::Rejected;
        anyFailed = memory.failed = true;
    }
};

/// Neighbours in the sensor list and in the frame that are converted alike.
struct ConversionRun {
    static constexpr std::size_t NoTime = std::numeric_limits<std::size_t>::max();

    std::size_t first = 0, count = 0; ///< sensors
    std::size_t begin = 0, end = 0;   ///< bytes of the frame, or fields of a delimited one
    std::size_t pool = 0;             ///< where the coefficients of gains or factors begin
    std::size_t time = NoTime;        ///< sensor index of the integration time
    std::size_t slot = 0;             ///< which remembered integration time
    std::size_t width = 0;            ///< bytes of a field
    DataType data = DataType::BU;
    FitType fit = FitType::NONE;
    FitLoop loop = FitLoop::None; ///< None: sensor by sensor, but for a status
    bool statusOnly = false;      ///< of a time or position in a text field
    bool variable = false;
};

/// A number in a text field, or a time or position of which only the status is asked.
struct TextNumber {
    FieldRange field;    ///< in a fixed frame
    std::size_t cut = 0; ///< which field of a delimited one
    bool variable = false;
    bool isInteger = false; ///< AI, else AF
    bool statusOnly = false;
    double limit = 0.0; ///< the magnitude of the raw value from which on there is no value
    FieldPolynomial fit;
    std::size_t sensor = 0;
};

/// OPTIC1: offset, immersion and factor for each gain; NaN where there is no coefficient line.
struct GainCoefficients {
    double offset[4], immersion[4], factor[4];
};

class CConversionPlan {
  public:
    /// Compiles the definition, which must outlive the plan.
    explicit CConversionPlan(const CInstrument& instrument);
    CConversionPlan(const CConversionPlan&) = delete; // polynomials point to the sensors
    CConversionPlan& operator=(const CConversionPlan&) = delete;

    /// Converts every sensor of the frame, equal to CalibratedValue (numbers) and ValueText's
    /// status (texts) bit for bit.
    void Convert(ByteSpan frame, bool immersed, FrameValues& values) const;

    /// ValueText of a sensor of the instrument in the frame that was last converted into `values`,
    /// without cutting a delimited frame once more.
    ConversionStatus Text(const CSensor& sensor, ByteSpan frame, const FrameValues& values,
                          std::string& text) const;

  private:
    void AddSensor(const CSensor& sensor);
    void AddGains(const CSensor& sensor);
    void AddFactors(const CSensor& sensor, FitLoop loop);
    void AddSingles(const ConversionRun& run);
    void AddTexts(const ConversionRun& run);

    // In FrameConversion.cpp.
    void Prepare(FrameValues& values) const;
    bool LoadTexts(const ConversionRun& run, ByteSpan frame, double* numbers,
                   const FrameValues& values) const;
    bool Load(const ConversionRun& run, ByteSpan frame, double* numbers,
              const FrameValues& values) const;
    bool Coefficients(const ConversionRun& run, bool immersed, FrameValues& values,
                      OpticCoefficients& c) const;
    bool ApplyGains(const ConversionRun& run, bool immersed, double* numbers) const;
    bool ApplyPolynomials(const ConversionRun& run, double* numbers) const;
    bool ConvertRun(const ConversionRun& run, ByteSpan frame, bool immersed,
                    FrameValues& values) const;
    bool ConvertText(const TextNumber& text, ByteSpan frame, FrameValues& values) const;
    void ConvertWhole(ByteSpan frame, bool immersed, FrameValues& values) const;
    ConversionStatus Field(const CSensor& sensor, ByteSpan frame, const FrameValues& values,
                           ByteSpan& field) const;
    void ConvertSensor(std::size_t i, ByteSpan frame, bool immersed, FrameValues& values) const;

    std::uint64_t Identity; ///< process-wide
    std::vector<const CSensor*> Sensors;
    std::vector<FieldPolynomial> Polynomials; ///< of each sensor
    std::vector<ConversionStatus> Usual;      ///< statuses of a frame without faults
    bool UsualFails = false;
    std::size_t FrameBytes = 0, FrameFields = 0; ///< what a frame holds that has every field
    std::optional<CFieldCutter> Cutter;          ///< of a delimited frame

    // Fields that need no other sensor come before the runs.
    std::vector<SingleField> Singles;
    std::vector<TextNumber> Texts;
    std::vector<ConversionRun> Runs;

    // Coefficients of the runs of factors, one array a role.
    std::vector<double> Offsets, Factors, Immersions, Numerators;
    std::vector<GainCoefficients> Gains; ///< of the runs of gains
    std::size_t Times = 0;               ///< runs that divide by an integration time
};

} // namespace qor
