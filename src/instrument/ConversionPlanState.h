// SPDX-License-Identifier: GPL-3.0-or-later
//
// A compiled definition: what each part of the plan needs to know of its sensors.
// ConversionPlan.cpp makes it, FrameConversion.cpp converts frames by it. Private to
// CConversionPlan; const once it is made.
#pragma once

#include "instrument/ConversionKernels.h"
#include "instrument/ConversionPlan.h"
#include "instrument/FieldValue.h"
#include "instrument/VariableFields.h"

#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace qor {

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

struct CConversionPlan::Impl {
    explicit Impl(const CInstrument& instrument);

    std::uint64_t identity; ///< process-wide
    std::vector<const CSensor*> sensors;
    std::vector<FieldPolynomial> polynomials; ///< of each sensor
    std::vector<ConversionStatus> usual;      ///< statuses of a frame without faults
    bool usualFails = false;
    std::size_t bytes = 0, fields = 0;  ///< what a frame holds that has every field
    std::optional<CFieldCutter> cutter; ///< of a delimited frame

    // Fields that need no other sensor come before the runs.
    std::vector<SingleField> singles;
    std::vector<TextNumber> texts;
    std::vector<ConversionRun> runs;

    // Coefficients of the OPTIC2 and OPTIC3 runs, one array a role.
    std::vector<double> offsets, factors, immersions, numerators;
    std::vector<GainCoefficients> gains; ///< of the OPTIC1 runs
    std::size_t times = 0;               ///< OPTIC3 runs

    // Compiling.
    void AddSensor(const CSensor& sensor);
    void AddGains(const CSensor& sensor);
    void AddFactors(const CSensor& sensor, FitLoop loop);
    void AddSingles(const ConversionRun& run);
    void AddTexts(const ConversionRun& run);

    // Converting.
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
};

} // namespace qor
