// SPDX-License-Identifier: GPL-3.0-or-later
//
// The optical reality check of recorded frames: the spectrum of a device under test beside the
// latest one of its reference, as lines of JSON or rows of CSV. The instruments are read under the
// document's lock where there is one.
#pragma once

#include "export/Json.h"
#include "products/Spectrum.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// Two instruments and the series of theirs that are compared.
struct ComparedPair {
    const CLiveInstrument* dut = nullptr;
    const CLiveInstrument* reference = nullptr;
    OpticalSeries dutSeries, referenceSeries;
};

/// Whether some series of the instrument is of the type.
bool HasSeries(const CLiveInstrument& instrument, std::string_view type);
/// The types of the series of both instruments, each once.
std::vector<std::string> SeriesTypes(const ComparedPair& pair);
/// Chooses the series of a type: the first ones for an empty type, an instrument's only one
/// whatever the type. Gives the instrument that has none to choose; null when both have.
const CLiveInstrument* ChooseComparedSeries(ComparedPair& pair, std::string_view type);

/// The comparison at the DUT's current frame.
struct ComparedFrame {
    FrameTime time;
    std::uint32_t frame = 0; ///< of the DUT
    std::vector<ComparisonPoint> points;
    std::optional<double> referenceAge; ///< s from the reference's frame to the DUT's
};
ComparedFrame CompareCurrent(const ComparedPair& pair);

void WriteComparisonJson(COutput& output, const ComparedFrame& compared);
void WriteComparisonHeader(COutput& output);
void WriteComparisonCsv(COutput& output, const ComparedFrame& compared);

} // namespace qor
