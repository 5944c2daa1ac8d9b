// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/Comparison.h"

#include "base/Text.h"
#include "export/FrameText.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

bool ChooseOne(const CLiveInstrument& instrument, std::string_view type, OpticalSeries& series) {
    std::vector<OpticalSeries> all = SeriesOf(instrument.Definition());
    const int chosen = ChooseSeries(all, type);
    if (chosen >= 0)
        series = std::move(all[static_cast<std::size_t>(chosen)]);
    return chosen >= 0;
}

std::optional<double> AgeOf(const CLiveInstrument& reference, const FrameTime& now) {
    if (!reference.CurrentFrame() || !now.known || !reference.CurrentFrame()->Info.time.known)
        return std::nullopt;
    const FrameTime& then = reference.CurrentFrame()->Info.time;
    const std::int64_t milliseconds =
        (now.seconds - then.seconds) * 1000 + now.milliseconds - then.milliseconds;
    return static_cast<double>(milliseconds) / 1000.0;
}

} // namespace

bool HasSeries(const CLiveInstrument& instrument, std::string_view type) {
    return std::ranges::any_of(SeriesOf(instrument.Definition()), [&](const OpticalSeries& series) {
        return EqualsNoCase(series.type, type);
    });
}

std::vector<std::string> SeriesTypes(const ComparedPair& pair) {
    std::vector<std::string> types;
    for (const CLiveInstrument* instrument : {pair.dut, pair.reference})
        for (const OpticalSeries& series : SeriesOf(instrument->Definition()))
            if (std::ranges::find(types, series.type) == types.end())
                types.push_back(series.type);
    return types;
}

const CLiveInstrument* ChooseComparedSeries(ComparedPair& pair, std::string_view type) {
    if (!ChooseOne(*pair.dut, type, pair.dutSeries))
        return pair.dut;
    return ChooseOne(*pair.reference, type, pair.referenceSeries) ? nullptr : pair.reference;
}

ComparedFrame CompareCurrent(const ComparedPair& pair) {
    const FrameTime& time = pair.dut->CurrentFrame()->Info.time;
    return {time, pair.dut->FrameNumber(),
            CompareSpectra(SpectrumOf(*pair.dut, pair.dutSeries),
                           SpectrumOf(*pair.reference, pair.referenceSeries)),
            AgeOf(*pair.reference, time)};
}

void WriteComparisonJson(COutput& output, const ComparedFrame& compared) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("time"), WriteTimeValue(json, output, compared.time);
    json.Key("frame"), json.Integer(compared.frame);
    json.Key("points"), json.BeginArray();
    for (const ComparisonPoint& point : compared.points) {
        json.BeginArray();
        json.Number(point.wavelength);
        json.NumberOrNull(point.dut);
        json.NumberOrNull(point.reference);
        json.NumberOrNull(point.percent);
        json.EndArray();
    }
    json.EndArray();
    json.Key("reference_age"), json.NumberOrNull(compared.referenceAge);
    json.EndObject();
    json.EndLine();
}

void WriteComparisonHeader(COutput& output) {
    output.Text("time,frame,wavelength [nm],dut,reference,percent,reference_age [s]\r\n");
}

void WriteComparisonCsv(COutput& output, const ComparedFrame& compared) {
    for (const ComparisonPoint& point : compared.points) {
        WriteTime(output, compared.time);
        output.Char(',');
        output.Integer(compared.frame);
        for (std::optional<double> value :
             {std::optional(point.wavelength), std::optional(point.dut), point.reference,
              point.percent, compared.referenceAge}) {
            output.Char(',');
            if (value && std::isfinite(*value))
                output.Number(*value);
        }
        output.Text("\r\n");
    }
}

} // namespace qor
