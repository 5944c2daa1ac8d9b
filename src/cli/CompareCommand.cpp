// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli compare: the optical reality check over a raw log, for every frame of the device
// under test against the latest frame of the reference before it.
#include "cli/Commands.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "export/FrameText.h"

#include "base/Text.h"
#include "products/Spectrum.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

struct CompareOptions : PlaybackOptions {
    std::string dut, reference;
    std::string sensor;
    bool csv = false;
};

/// The two instruments of a comparison and the series that are compared.
struct ComparedPair {
    CQorViewIns* dut = nullptr;
    CQorViewIns* reference = nullptr;
    OpticalSeries dutSeries, referenceSeries;
};

CQorViewIns* FindNamed(CPlayedFile& playback, const char* option, const std::string& name) {
    for (CQorViewIns* instrument : playback.Instruments())
        if (instrument->Name() == name)
            return instrument;
    ReportError(std::string(option) + " " + name + ": there is no instrument of that name.");
    return nullptr;
}

bool FindSeries(const CQorViewIns& instrument, const std::string& type, OpticalSeries& series) {
    std::vector<OpticalSeries> all = SeriesOf(instrument.Definition());
    int chosen = ChooseSeries(all, type);
    if (chosen >= 0) {
        series = all[static_cast<std::size_t>(chosen)];
        return true;
    }
    ReportError(instrument.Name() + ": it has no optical series" +
                (type.empty() ? "" : " of type " + type) + "; choose one with --sensor TYPE.");
    return false;
}

bool FindPair(CPlayedFile& playback, const CompareOptions& options, ComparedPair& pair) {
    pair.dut = FindNamed(playback, "--dut", options.dut);
    pair.reference = FindNamed(playback, "--reference", options.reference);
    return pair.dut && pair.reference && FindSeries(*pair.dut, options.sensor, pair.dutSeries) &&
           FindSeries(*pair.reference, options.sensor, pair.referenceSeries);
}

void WriteJsonLine(COutput& output, const CQorViewIns& dut,
                   const std::vector<ComparisonPoint>& points) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("time"), WriteTimeValue(json, output, dut.Live.CurrentFrame()->Info.time);
    json.Key("frame"), json.Integer(dut.Live.FrameNumber());
    json.Key("points"), json.BeginArray();
    for (const ComparisonPoint& point : points) {
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

void WriteCsvRows(COutput& output, const CQorViewIns& dut,
                  const std::vector<ComparisonPoint>& points) {
    for (const ComparisonPoint& point : points) {
        WriteTime(output, dut.Live.CurrentFrame()->Info.time);
        output.Char(',');
        output.Integer(dut.Live.FrameNumber());
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

int RunCompare(const CompareOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files) || !NamesInstrument(options.instruments))
        return ExitBadCall;
    COutput output(ReportError);
    if (options.csv)
        output.Text("time,frame,wavelength [nm],dut,reference,percent\r\n");
    bool well = true;
    for (const std::string& path : options.files) {
        CPlayedFile playback(options.chunk);
        ComparedPair pair;
        well = playback.Open(path, options.instruments, options.strict) && well;
        if (playback.IsBadCall())
            return ExitBadCall;
        if (!playback.IsOpen() || !FindPair(playback, options, pair)) {
            well = false;
            continue;
        }
        well = playback.Play(
                   context,
                   [&](CQorViewIns& instrument, const FrameCheckResult&) {
                       if (&instrument != pair.dut)
                           return;
                       std::vector<ComparisonPoint> points =
                           CompareSpectra(SpectrumOf(pair.dut->Live, pair.dutSeries),
                                          SpectrumOf(pair.reference->Live, pair.referenceSeries));
                       (options.csv ? WriteCsvRows : WriteJsonLine)(output, *pair.dut, points);
                   },
                   [&] { return output.Good(); }) &&
               well;
        if (context.stop.Requested() || !output.Good())
            break;
    }
    well = (output.Flush() || !output.Failed()) && well;
    return PlaybackExit(context, well);
}

} // namespace

void AddCompareCommand(CLI::App& app, CommandContext& context) {
    static CompareOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand(
        "compare", "Compare the spectra of a device under test with those of a reference");
    AddInstrumentOptions(*command, options.instruments);
    command->add_option("--dut", options.dut, "Name of the device under test")
        ->type_name("NAME")
        ->required();
    command->add_option("--reference", options.reference, "Name of the reference")
        ->type_name("NAME")
        ->required();
    command->add_option("--sensor", options.sensor, "Series to compare, for example LU or ED")
        ->type_name("TYPE");
    AddFormatOption(*command, {"csv", "jsonl"}, "csv (a row a point) or jsonl (an object a frame)",
                    [](const std::string& name) { options.csv = name == "csv"; });
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunCompare(options, context); }; });
}

} // namespace qor
