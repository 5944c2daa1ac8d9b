// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/Comparison.h"

#include "export/FrameText.h"

#include <cmath>

namespace qor {

namespace {

std::optional<std::string> ChooseOne(const CLiveInstrument& instrument, std::string_view type,
                                     OpticalSeries& series) {
    std::vector<OpticalSeries> all = SeriesOf(instrument.Definition());
    const int chosen = ChooseSeries(all, type);
    if (chosen < 0)
        return instrument.Name() + ": it has no optical series" +
               (type.empty() ? "" : " of type " + std::string(type)) +
               "; choose one with --sensor TYPE.";
    series = std::move(all[static_cast<std::size_t>(chosen)]);
    return std::nullopt;
}

} // namespace

std::optional<std::string> ChooseComparedSeries(ComparedPair& pair, std::string_view type) {
    std::optional<std::string> fault = ChooseOne(*pair.dut, type, pair.dutSeries);
    return fault ? fault : ChooseOne(*pair.reference, type, pair.referenceSeries);
}

ComparedFrame CompareCurrent(const ComparedPair& pair) {
    return {pair.dut->CurrentFrame()->Info.time, pair.dut->FrameNumber(),
            CompareSpectra(SpectrumOf(*pair.dut, pair.dutSeries),
                           SpectrumOf(*pair.reference, pair.referenceSeries))};
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
    json.EndObject();
    json.EndLine();
}

void WriteComparisonHeader(COutput& output) {
    output.Text("time,frame,wavelength [nm],dut,reference,percent\r\n");
}

void WriteComparisonCsv(COutput& output, const ComparedFrame& compared) {
    for (const ComparisonPoint& point : compared.points) {
        WriteTime(output, compared.time);
        output.Char(',');
        output.Integer(compared.frame);
        for (std::optional<double> value :
             {std::optional(point.wavelength), std::optional(point.dut), point.reference,
              point.percent}) {
            output.Char(',');
            if (value && std::isfinite(*value))
                output.Number(*value);
        }
        output.Text("\r\n");
    }
}

} // namespace qor
