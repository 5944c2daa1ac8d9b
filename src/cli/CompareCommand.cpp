// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli compare: the optical reality check over a raw log, for every frame of the device
// under test against the latest frame of the reference before it.
#include "base/NearName.h"
#include "cli/Commands.h"
#include "cli/OutputOptions.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "export/Comparison.h"
#include "session/FileKind.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

namespace qor {

namespace {

struct CompareOptions : PlaybackOptions {
    std::string dut, reference;
    std::string sensor;
    std::string output;
    OutputRules rules;
    std::optional<bool> csv; ///< not given: as the output's name says
};

/// False when a name of the call is none's; reported.
bool KnowsNames(CPlayedFile& playback, const CompareOptions& options, ComparedPair& pair) {
    const struct {
        const char* option;
        const std::string& name;
        const CLiveInstrument*& instrument;
    } sides[] = {{"--dut", options.dut, pair.dut},
                 {"--reference", options.reference, pair.reference}};
    for (const auto& side : sides)
        if (const CQorViewIns* found = playback.Find(side.name))
            side.instrument = &found->Live;
        else
            ReportError(std::string(side.option) + " " + side.name +
                        ": there is no instrument of that name." +
                        NameAdvice(side.name, InstrumentNames(playback.Doc())));
    if (!pair.dut || !pair.reference)
        return false;
    if (options.sensor.empty() || HasSeries(*pair.dut, options.sensor) ||
        HasSeries(*pair.reference, options.sensor))
        return true;
    ReportError("--sensor " + options.sensor + ": neither instrument has a series of that type." +
                NameAdvice(options.sensor, SeriesTypes(pair)));
    return false;
}

bool FindSeries(const CompareOptions& options, ComparedPair& pair) {
    const CLiveInstrument* without = ChooseComparedSeries(pair, options.sensor);
    if (without)
        ReportError(without->Definition().ShownName() + ": it has no optical series" +
                    (options.sensor.empty() ? "" : " of type " + options.sensor) +
                    "; choose one with --sensor TYPE.");
    return !without;
}

class CComparison {
  public:
    CComparison(CompareOptions& options, CommandContext& context)
        : Options(options), Context(context) {}
    int Run();

  private:
    int CompareLog(const std::string& path);
    int Begin(const ComparedPair& pair);

    CompareOptions& Options;
    CommandContext& Context;
    COutput Out{ReportError};
    bool Begun = false, Whole = true;
};

/// Before the first result: opens the output and says what makes the results doubtful.
int CComparison::Begin(const ComparedPair& pair) {
    if (std::exchange(Begun, true))
        return ExitWell;
    const std::string &dut = pair.dutSeries.units, &reference = pair.referenceSeries.units;
    if (dut != reference)
        ReportWarning(Options.dut + " measures in " + dut + ", " + Options.reference + " in " +
                      reference + ": the percentages compare unlike units.");
    OutputRules rules = Options.rules;
    rules.inputs = Options.Inputs();
    const int status = OutputExit(Out.Open(Options.output, rules));
    if (status == ExitWell && *Options.csv)
        WriteComparisonHeader(Out);
    return status;
}

/// ExitFault also when part of what was named could not be used.
int CComparison::CompareLog(const std::string& path) {
    CPlayedFile playback(Options.chunk);
    ComparedPair pair;
    bool well = playback.Open(path, Options.instruments, Options.strict);
    if (playback.IsBadCall())
        return ExitBadCall;
    Whole = Whole && playback.IsOpen();
    if (!playback.IsOpen())
        return ExitFault;
    if (!KnowsNames(playback, Options, pair))
        return well ? ExitBadCall : ExitFault; // it may be a name of what did not load
    if (!FindSeries(Options, pair))
        return ExitFault;
    if (const int status = Begin(pair); status != ExitWell)
        return status;
    const auto write = *Options.csv ? WriteComparisonCsv : WriteComparisonJson;
    const bool whole = playback.Play(
        Context,
        [&](CQorViewIns& instrument, const FrameCheckResult&) {
            if (&instrument.Live == pair.dut)
                write(Out, CompareCurrent(pair));
        },
        [&] { return Out.Good(); });
    Whole = Whole && whole;
    return whole && well ? ExitWell : ExitFault;
}

int CComparison::Run() {
    if (!NamesRawFile(Options.files))
        return ExitBadCall;
    if (const int status = TakeInstruments(Options); status != ExitWell)
        return status;
    Options.csv = Options.csv.value_or(ExtensionOf(Options.output) == "csv");
    int status = ExitWell;
    for (const std::string& path : Options.files) {
        status = std::max(status, CompareLog(path));
        if (Context.stop.Requested())
            return ExitInterrupted; // a file that is not complete is not there
        if (status == ExitBadCall || !Out.Good())
            break;
    }
    if (Begun && !Whole && status != ExitBadCall && !Options.output.empty())
        return WithholdResults(Options.output);
    return status != ExitBadCall && !Out.Finish().Good() ? ExitFault : status;
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
    AddOutputOptions(*command, "File for the results", options.output, options.rules);
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return CComparison(options, context).Run(); }; });
}

} // namespace qor
