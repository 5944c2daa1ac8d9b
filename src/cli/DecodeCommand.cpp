// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli decode: plays raw logs through the acquisition engine and prints every frame with its
// values.
#include "cli/Commands.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "export/DerivedColumns.h"
#include "export/FrameSummary.h"
#include "export/FrameText.h"

#include "base/Text.h"

#include <CLI/CLI.hpp>

#include <map>
#include <set>

namespace qor {

namespace {

enum class DecodeFormat { Csv, Jsonl, None, Summary };

struct DecodeOptions : PlaybackOptions {
    DecodeFormat format = DecodeFormat::Csv;
    std::string output;
    bool rawCounts = false;
    bool hex = false;
    bool derived = false;

    ValueView View() const {
        return hex         ? ValueView::HexCounts
               : rawCounts ? ValueView::RawCounts
                           : ValueView::Calibrated;
    }
};

/// The CSV tables of a call: one on standard output or in the named file, or one file an
/// instrument.
class CCsvTables {
  public:
    explicit CCsvTables(const DecodeOptions& options) : Options(options) {}

    /// Makes the table of every instrument that has none yet. False when a file cannot be written.
    bool AddTables(const CPlayedFile& playback);
    void WriteFrame(const CQorViewIns& instrument);
    /// The next raw log brings instruments of its own: the tables with the same name go on.
    void NextFile() { Tables.clear(); }
    bool Good() const;
    bool Finish();

  private:
    struct Table {
        COutput* output;
        CFrameCsv rows;
    };
    std::string PathInFolder(const std::string& instrument);
    COutput* OutputFor(const std::string& name, bool only);

    const DecodeOptions& Options;
    std::map<std::string, std::unique_ptr<COutput>> Outputs; ///< by instrument name
    std::set<std::string> FileNames;                         ///< taken, in lower case
    std::map<const CQorViewIns*, Table> Tables;
    std::optional<CDerivedColumns> Derived;
};

/// An instrument's name as part of a file name: what is not harmless everywhere becomes "_".
std::string FileNameOf(const std::string& instrument) {
    std::string name = instrument.empty() ? "instrument" : instrument;
    for (char& c : name)
        if (!(c >= '0' && c <= '9') &&
            !(ToLower({&c, 1})[0] >= 'a' && ToLower({&c, 1})[0] <= 'z') && c != '-' && c != '.')
            c = '_';
    return name;
}

/// The file of an instrument in the folder. Names that differ only in case or in what a file name
/// cannot hold get a number, so that no table overwrites another.
std::string CCsvTables::PathInFolder(const std::string& instrument) {
    const std::string stem = FileNameOf(instrument);
    std::string name = stem;
    for (int number = 2; !FileNames.insert(ToLower(name)).second; ++number)
        name = stem + "_" + std::to_string(number);
    const std::string& folder = Options.output;
    const bool separated = folder.ends_with('/') || folder.ends_with(PathSeparator());
    return folder + (separated ? "" : std::string(1, PathSeparator())) + name + ".csv";
}

COutput* CCsvTables::OutputFor(const std::string& name, bool only) {
    auto output = std::make_unique<COutput>(ReportError);
    const bool inFolder = !only || IsDirectory(Options.output);
    if (!Options.output.empty() &&
        !output->OpenFile(inFolder ? PathInFolder(name) : Options.output))
        return nullptr;
    return (Outputs[name] = std::move(output)).get();
}

bool CCsvTables::AddTables(const CPlayedFile& playback) {
    const std::vector<CQorViewIns*>& instruments = playback.Instruments();
    if (Options.derived)
        Derived.emplace(playback.Doc());
    // What is in the way of the folder shows when the first table is opened.
    if (instruments.size() > 1 && !IsDirectory(Options.output)) [[maybe_unused]]
        FileCause made = MakeDirectory(Options.output);
    for (CQorViewIns* instrument : instruments) {
        auto known = Outputs.find(instrument->Name());
        COutput* output = known != Outputs.end()
                              ? known->second.get()
                              : OutputFor(instrument->Name(), instruments.size() == 1);
        if (!output)
            return false;
        CFrameCsv rows(*output, instrument->Definition(), Options.View());
        if (known == Outputs.end()) {
            rows.WriteHeader();
            if (Derived)
                Derived->WriteCsvHeader(*output, *instrument);
            rows.EndRow();
        }
        Tables.emplace(instrument, Table{output, std::move(rows)});
    }
    return true;
}

void CCsvTables::WriteFrame(const CQorViewIns& instrument) {
    Table& table = Tables.at(&instrument);
    table.rows.WriteFrame(instrument.Live);
    if (Derived)
        Derived->WriteCsv(*table.output, instrument);
    table.rows.EndRow();
}

bool CCsvTables::Good() const {
    for (const auto& [name, output] : Outputs)
        if (!output->Good())
            return false;
    return true;
}

bool CCsvTables::Finish() {
    bool well = true;
    for (const auto& [name, output] : Outputs)
        well = (output->Flush() || !output->Failed()) && well;
    return well;
}

int DecodeToCsv(const DecodeOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files) || !NamesInstrument(options.instruments))
        return ExitBadCall;
    CCsvTables tables(options);
    bool well = true;
    for (const std::string& path : options.files) {
        CPlayedFile playback(options.chunk);
        well = playback.Open(path, options.instruments, options.strict) && well;
        if (playback.IsBadCall())
            return ExitBadCall;
        if (!playback.IsOpen())
            continue;
        if (playback.Instruments().size() > 1 && options.output.empty()) {
            ReportError(
                "several instruments give several tables: name a folder for them with -o DIR.");
            return ExitBadCall;
        }
        if (!tables.AddTables(playback))
            return ExitFault;
        well = playback.Play(
                   context,
                   [&](CQorViewIns& instrument, const FrameCheckResult&) {
                       tables.WriteFrame(instrument);
                   },
                   [&] { return tables.Good(); }) &&
               well;
        if (context.stop.Requested() || !tables.Good())
            break;
        tables.NextFile();
    }
    well = tables.Finish() && well;
    return PlaybackExit(context, well);
}

/// JSON Lines, a summary, or nothing: one output whatever the number of instruments.
class CFrameStream {
  public:
    CFrameStream(COutput& output, const DecodeOptions& options, const std::string& path,
                 const CPlayedFile& playback)
        : Out(output), Shown(options.format), Json(output, path, options.View()) {
        if (options.derived && Shown == DecodeFormat::Jsonl)
            Derived.emplace(playback.Doc());
        if (Shown == DecodeFormat::Summary)
            for (const CQorViewIns* instrument : playback.Instruments())
                Summaries.emplace_back(instrument, instrument->Definition());
    }
    void WriteFrame(const CQorViewIns& instrument, const FrameCheckResult& checks) {
        if (Shown == DecodeFormat::Jsonl) {
            Json.BeginFrame(instrument.Live, checks);
            if (Derived)
                Derived->WriteJson(Json.Writer(), instrument);
            Json.EndFrame();
        }
        for (auto& [owner, summary] : Summaries)
            if (owner == &instrument)
                summary.AddFrame(instrument.Live);
    }
    void Finish() {
        for (const auto& [owner, summary] : Summaries)
            summary.Write(Out);
    }

  private:
    COutput& Out;
    DecodeFormat Shown;
    CFrameJson Json;
    std::optional<CDerivedColumns> Derived;
    std::vector<std::pair<const CQorViewIns*, CFrameSummary>> Summaries;
};

int DecodeToStream(const DecodeOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files) || !NamesInstrument(options.instruments))
        return ExitBadCall;
    COutput output(ReportError);
    if (!options.output.empty() && !output.OpenFile(options.output))
        return ExitFault;
    bool well = true;
    for (const std::string& path : options.files) {
        CPlayedFile playback(options.chunk);
        well = playback.Open(path, options.instruments, options.strict) && well;
        if (playback.IsBadCall())
            return ExitBadCall;
        if (!playback.IsOpen())
            continue;
        CFrameStream stream(output, options, path, playback);
        well = playback.Play(
                   context,
                   [&](CQorViewIns& instrument, const FrameCheckResult& checks) {
                       stream.WriteFrame(instrument, checks);
                   },
                   [&] { return output.Good(); }) &&
               well;
        stream.Finish();
        if (context.stop.Requested() || !output.Good())
            break;
    }
    well = (output.Flush() || !output.Failed()) && well;
    return PlaybackExit(context, well);
}

} // namespace

void AddDecodeCommand(CLI::App& app, CommandContext& context) {
    static DecodeOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand(
        "decode", "Play raw logs through the engine and print every frame with its values");
    AddInstrumentOptions(*command, options.instruments);
    AddPackageOptions(*command, options.instruments.packageSettings);
    AddFormatOption(
        *command, {"csv", "jsonl", "summary", "none"},
        "csv (a table an instrument), jsonl (an object a frame), summary (for people) or none",
        [](const std::string& name) {
            options.format = name == "csv"     ? DecodeFormat::Csv
                             : name == "jsonl" ? DecodeFormat::Jsonl
                             : name == "none"  ? DecodeFormat::None
                                               : DecodeFormat::Summary;
        });
    command
        ->add_option("-o,--output", options.output,
                     "File for the results, or the folder for several tables")
        ->type_name("PATH");
    command->add_flag("--raw-counts", options.rawCounts, "Raw counts instead of calibrated values");
    command->add_flag("--hex", options.hex, "Raw counts in hexadecimal");
    command->add_flag("--derived", options.derived,
                      "Derived products too: those of a package for its frames, else tilt and PAR");
    AddPlaybackOptions(*command, options, context);
    command->callback([&context] {
        context.body = [&context] {
            return options.format == DecodeFormat::Csv ? DecodeToCsv(options, context)
                                                       : DecodeToStream(options, context);
        };
    });
}

} // namespace qor
