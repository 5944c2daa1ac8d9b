// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames under a definition that a stranger wrote: the definition's text up to a line "--", then
// frames of any content. The compiled plan gives of every sensor what the functions for one sensor
// give, to the bit, whatever frame came before.
#include "Require.h"

#include "instrument/Calibration.h"
#include "instrument/ConversionPlan.h"
#include "instrument/DefinitionReader.h"

#include <algorithm>
#include <bit>

namespace {

using namespace qor;

void CompareSensor(const CSensor& sensor, ByteSpan frame, bool immersed,
                   const CConversionPlan& plan, FrameValues& values, bool& failed) {
    const auto i = static_cast<std::size_t>(sensor.Index);
    double number = 0.0;
    std::string text, planText;
    const bool isText = KindOfValue(sensor) == ValueKind::Text;
    const ConversionStatus status =
        isText ? ValueText(sensor, frame, text) : CalibratedValue(sensor, frame, immersed, number);
    failed = failed || status != ConversionStatus::Good;
    Require(values.statuses[i] == status);
    if (isText)
        Require(plan.Text(sensor, frame, values, planText) == status && planText == text);
    else if (status == ConversionStatus::Good)
        Require(std::bit_cast<std::uint64_t>(values.numbers[i]) ==
                std::bit_cast<std::uint64_t>(number));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::string_view Mark = "\n--\n";
    const std::string_view input = AsText({data, size});
    const std::size_t end = std::min(input.find(Mark), size);
    CInstrument instrument;
    CDefinitionReader reader(instrument, "conversion.cal");
    reader.Begin("conversion.cal");
    reader.Feed(input.substr(0, end));
    if (reader.Finish() != DefinitionStatus::Success)
        return 0;
    const CConversionPlan plan(instrument);
    FrameValues values;
    ByteSpan rest = AsBytes(input.substr(std::min(end + Mark.size(), size)));
    // Frames a little too short and too long as well as right.
    const auto length = static_cast<std::size_t>(std::clamp(instrument.FrameSize(), 1, 4096));
    for (std::size_t n = 0; n < 8 && (n == 0 || !rest.empty()); ++n) {
        const ByteSpan frame = rest.first(std::min(rest.size(), length + n % 3 - n % 2));
        rest = rest.subspan(frame.size());
        for (const bool immersed : {false, true}) {
            plan.Convert(frame, immersed, values);
            bool failed = false;
            for (const CSensor& sensor : instrument.Sensors())
                CompareSensor(sensor, frame, immersed, plan, values, failed);
            Require(values.anyFailed == failed);
        }
    }
    return 0;
}
