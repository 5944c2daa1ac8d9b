// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli compare: the optical reality check over a raw log, for every frame of the device
// under test against the latest frame of the reference before it.
#include "cli/Commands.h"
#include "cli/Playback.h"
#include "cli/Report.h"
#include "export/Comparison.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

struct CompareOptions : PlaybackOptions {
    std::string dut, reference;
    std::string sensor;
    bool csv = false;
};

bool FindPair(CPlayback& playback, const CompareOptions& options, ComparedPair& pair) {
    const struct {
        const char* option;
        const std::string& name;
        const CLiveInstrument*& instrument;
    } sides[] = {{"--dut", options.dut, pair.dut},
                 {"--reference", options.reference, pair.reference}};
    for (const auto& side : sides)
        if (const CQorViewIns* found = playback.Doc().FindInstrument(side.name))
            side.instrument = &found->Live;
        else
            ReportError(std::string(side.option) + " " + side.name +
                        ": there is no instrument of that name.");
    if (!pair.dut || !pair.reference)
        return false;
    const std::optional<std::string> fault = ChooseComparedSeries(pair, options.sensor);
    if (fault)
        ReportError(*fault);
    return !fault;
}

int RunCompare(const CompareOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files) || !NamesInstrument(options.instruments))
        return ExitBadCall;
    COutput output(ReportError);
    if (options.csv)
        WriteComparisonHeader(output);
    bool well = true;
    for (const std::string& path : options.files) {
        CPlayback playback(options.chunk);
        ComparedPair pair;
        well = playback.Open(path, options.instruments) && well;
        if (!playback.IsOpen() || !FindPair(playback, options, pair)) {
            well = false;
            continue;
        }
        well = playback.Play(
                   context,
                   [&](CQorViewIns& instrument, const FrameCheckResult&) {
                       if (&instrument.Live == pair.dut)
                           (options.csv ? WriteComparisonCsv
                                        : WriteComparisonJson)(output, CompareCurrent(pair));
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
