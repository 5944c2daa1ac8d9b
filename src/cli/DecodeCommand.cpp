// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli decode: plays raw logs through the acquisition engine and prints every frame with its
// values.
#include "cli/Commands.h"
#include "cli/Jobs.h"
#include "cli/NumberOptions.h"
#include "cli/OutputOptions.h"
#include "cli/PlayedFile.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "export/CheckCounts.h"
#include "export/ExportFormat.h"
#include "export/SeaBassHeader.h"
#include "export/TimeWindow.h"

#include "base/Lock.h"
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/FileKind.h"
#include "telemetry/RawLogReader.h"

#include <CLI/CLI.hpp>

#include <set>
#include <utility>

namespace qor {

namespace {

struct DecodeOptions : PlaybackOptions {
    const ExportFormat* format = nullptr; ///< null: that of the output's name
    ExportSettings settings;
    bool rawCounts = false;
    bool hex = false;
    bool goodOnly = false;
    bool utc = false; ///< by each log's own zone
    std::string from, to;
    TimeWindow window;    ///< of these
    std::size_t jobs = 0; ///< logs that are decoded at once, each by itself; 0: all into one
};

/// The minutes that a log is ahead of UTC by its own ZONE record; none (reported) when that is not
/// to be read.
std::optional<int> ZoneOf(const std::string& path) {
    constexpr const char* Advice = "; give --utc-offset=+HH:MM instead of --utc.";
    CRawLogReader log;
    if (IsDevice(path)) {
        ReportError(path + ": it can be read only once, not for its zone first" + Advice);
        return std::nullopt;
    }
    if (const FileCause cause = log.Open(path); cause != FileCause::None) {
        ReportError(path + ": cannot be read. " + std::string(GetFileErrorText(cause)));
        return std::nullopt;
    }
    const std::string* zone = log.Header().ValueOf("ZONE");
    const std::optional<int> minutes = zone ? MinutesOfZone(*zone) : std::nullopt;
    if (!minutes)
        ReportError(path +
                    (zone ? ": its zone \"" + Printable(*zone) + "\" says no offset from UTC"
                          : std::string(": it has no header that says its zone")) +
                    Advice);
    return minutes;
}

/// The logs to decode, with their zones where these count; empty when one is missing.
std::vector<ExportedLog> LogsOf(const DecodeOptions& options) {
    std::vector<ExportedLog> logs;
    bool well = true;
    for (const std::string& path : options.files) {
        logs.push_back({path, options.utc ? ZoneOf(path) : std::nullopt});
        well = well && (!options.utc || logs.back().utcOffset);
    }
    return well ? logs : std::vector<ExportedLog>();
}

/// What came of playing a log into the sink.
struct DecodedLog {
    bool well = false;        ///< everything that was named could be used
    bool begun = false;       ///< the sink has taken it
    bool whole = false;       ///< and it was read to its end
    bool badCall = false;     ///< reported
    bool anyFrame = false;    ///< of the time that is wanted
    OutputResult result = {}; ///< of the sink
};

DecodedLog DecodeLog(const ExportedLog& exported, const DecodeOptions& options,
                     CommandContext& context, CFrameSink& sink) {
    const std::string& path = exported.path;
    CPlayedFile playback(options.chunk);
    DecodedLog log;
    log.well = playback.Open(path, options.instruments, options.strict);
    log.badCall = playback.IsBadCall();
    if (log.badCall || !playback.IsOpen())
        return log;
    const bool derives = options.settings.style.derived && options.format->derived;
    std::vector<DerivedRow> derived; // its memory is used from frame to frame
    std::vector<ExportedInstrument> instruments;
    for (const CQorViewIns* instrument : playback.Instruments())
        instruments.push_back({&instrument->Live, {}});
    for (std::size_t i = 0; derives && i < instruments.size(); ++i)
        playback.Doc().ReadDerived(*playback.Instruments()[i], instruments[i].derived);
    log.result = sink.BeginLog(exported, instruments);
    log.begun = log.result.Good();
    if (!log.begun)
        return log;
    CFailedFrames failed;
    const std::optional<int> utcOffset = exported.StyleOf(options.settings.style).utcOffset;
    log.whole = playback.Play(
        context,
        [&](CQorViewIns& instrument, const FrameCheckResult& checks) {
            if (!options.window.Has(instrument.Live.CurrentFrame()->Info.time, utcOffset))
                return;
            log.anyFrame = true;
            failed.Add(instrument.ShownName(), checks);
            if (derives)
                playback.Doc().ReadDerived(instrument, derived);
            const ExportedFrame frame{instrument.Live, checks, derived};
            options.goodOnly&& checks.Failed() ? sink.LeaveOut(frame) : sink.Write(frame);
        },
        [&] { return sink.Good(); }, [&] { sink.Flush(); });
    sink.EndLog();
    if (const std::string text = failed.Sentence(); !text.empty())
        ReportWarning(path + ": " + text +
                      (options.goodOnly ? " They are left out."
                                        : " --flags marks them, --good-only leaves them out."));
    return log;
}

/// Decodes logs into one result; the exit status.
int DecodeTogether(std::span<const ExportedLog> logs, const DecodeOptions& options,
                   CommandContext& context) {
    const std::unique_ptr<CFrameSink> sink = options.format->make(options.settings);
    bool well = true, whole = true, begun = false, anyFrame = false;
    for (const ExportedLog& exported : logs) {
        const DecodedLog log = DecodeLog(exported, options, context, *sink);
        if (log.badCall)
            return ExitBadCall;
        if (!log.result.Good())
            return OutputExit(log.result);
        if (context.stop.Requested())
            return ExitInterrupted; // files that are not complete are not there
        well = well && log.well;
        whole = whole && log.whole;
        begun = begun || log.begun;
        anyFrame = anyFrame || log.anyFrame;
        if (!sink->Good())
            break;
    }
    if (begun && !anyFrame && !options.window.IsAll())
        ReportWarning("no frame that was played lies between --from and --to; frames without a "
                      "time lie in no such stretch. qorview-cli info says when a log begins.");
    if (begun && !whole && !options.settings.path.empty())
        return WithholdResults(options.settings.stem.empty() ? options.settings.path
                                                             : logs.front().path);
    return sink->Finish().Good() && well && whole ? ExitWell : ExitFault;
}

/// The log's name without its folder and extensions, once in the folder whatever the case.
std::string StemOf(const std::string& path, std::set<std::string>& taken) {
    std::string stem(LastPartOf(path));
    if (PackingOf(path) != Packing::None)
        stem.resize(std::min(stem.size(), stem.rfind('.')));
    if (const std::size_t dot = stem.rfind('.'); dot != stem.npos && dot > 0)
        stem.resize(dot);
    std::string name = stem;
    for (int number = 2; !taken.insert(ToLower(name)).second; ++number)
        name = stem + "_" + std::to_string(number);
    return name;
}

/// Decodes each log into results of its own in the folder, several at once; the exit status.
int DecodeApart(const std::vector<ExportedLog>& logs, const DecodeOptions& options,
                CommandContext& context) {
    const std::string& folder = options.settings.path;
    const bool makesFiles = options.format != FindExportFormat("none");
    if (makesFiles && (folder.empty() || (FileExists(folder) && !IsDirectory(folder)))) {
        ReportError((folder.empty() ? "" : folder + ": ") +
                    "-j makes results for each log; give a folder for them with -o.");
        return ExitBadCall;
    }
    const bool isNew = makesFiles && !IsDirectory(folder);
    if (isNew)
        if (const FileCause cause = MakeDirectory(folder); cause != FileCause::None) {
            ReportError(folder + ": cannot be made. " + std::string(GetFileErrorText(cause)));
            return ExitFault;
        }
    std::vector<DecodeOptions> calls(logs.size(), options);
    std::set<std::string> taken;
    for (std::size_t i = 0; i < logs.size(); ++i) {
        ExportSettings& settings = calls[i].settings;
        settings.stem = StemOf(logs[i].path, taken);
        const std::string_view extension = options.format->extension;
        if (!makesFiles)
            settings.path.clear();
        else if (!options.format->tables)
            settings.path += PathSeparator() + settings.stem +
                             (extension.empty() ? ".txt" : std::string(extension));
    }
    CMutex lock; // a leaf: of the bar and of what came of the logs
    CProgress progress(folder, logs.size(), std::exchange(context.quiet, true));
    std::uint64_t done = 0;
    std::set<int> statuses;
    DoJobs(logs.size(), options.jobs, [&](std::size_t i) {
        if (context.stop.Requested())
            return;
        const int status = DecodeTogether({&logs[i], 1}, calls[i], context);
        const CLock held(lock);
        statuses.insert(status);
        progress.Update(++done);
    });
    if (isNew) // and nothing came of any log
        static_cast<void>(RemoveEmptyDirectory(folder));
    return context.stop.Requested() ? ExitInterrupted : *statuses.rbegin();
}

int RunDecode(DecodeOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files))
        return ExitBadCall;
    if (const int status = TakeInstruments(options); status != ExitWell)
        return status;
    options.window = {SecondsFromText(options.from), SecondsFromText(options.to)};
    if (options.window.IsEmpty()) {
        ReportError("--from " + options.from + " is not before --to " + options.to +
                    "; give the earlier time first.");
        return ExitBadCall;
    }
    if (!options.format)
        options.format = ExportFormatOf(options.settings.path);
    options.settings.style.files = options.files.size() > 1 && options.jobs == 0;
    options.settings.style.view = options.hex         ? ValueView::HexCounts
                                  : options.rawCounts ? ValueView::RawCounts
                                                      : ValueView::Calibrated;
    if (options.settings.style.view != ValueView::Calibrated && !options.format->counts) {
        ReportError("--format " + std::string(options.format->name) +
                    " takes calibrated values alone; leave out --raw-counts and --hex.");
        return ExitBadCall;
    }
    options.settings.report = ReportError;
    options.settings.warn = ReportWarning;
    options.settings.call = context.call;
    options.settings.rules.inputs = options.Inputs();
    const std::vector<ExportedLog> logs = LogsOf(options);
    if (logs.empty())
        return ExitFault;
    return options.jobs == 0 ? DecodeTogether(logs, options, context)
                             : DecodeApart(logs, options, context);
}

/// "csv (a table an instrument), ... or none" and the names alone.
std::string FormatHelp(std::vector<std::string>& names) {
    std::string help;
    for (const ExportFormat& format : ExportFormats()) {
        names.emplace_back(format.name);
        help += (help.empty()                         ? ""
                 : &format == &ExportFormats().back() ? " or "
                                                      : ", ") +
                names.back();
        if (!format.help.empty())
            help += " (" + std::string(format.help) + ")";
    }
    return help;
}

/// "KEY=VALUE", of which the parser has seen that both can be.
void AddArchiveOption(CLI::App& command, ExportSettings& settings) {
    const auto check = [](const std::string& text) {
        const std::size_t at = text.find('=');
        return at == text.npos
                   ? text + ": give KEY=VALUE, as in cruise=KA2603"
                   : WhyNoSeaBassValue(std::string_view(text).substr(0, at), text.substr(at + 1));
    };
    const auto take = [&settings](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            const std::size_t at = text.find('=');
            settings.archive[text.substr(0, at)] = text.substr(at + 1);
        }
    };
    command
        .add_option_function<std::vector<std::string>>(
            "--seabass", take, "What a SeaBASS header says; blanks in it become underscores")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false)
        ->check(check);
}

} // namespace

void AddDecodeCommand(CLI::App& app, CommandContext& context) {
    static DecodeOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand(
        "decode", "Play raw logs through the engine and print every frame with its values");
    AddInstrumentOptions(*command, options.instruments);
    AddPackageOptions(*command, options.instruments.packageSettings);
    std::vector<std::string> formats;
    const std::string help = FormatHelp(formats);
    AddFormatOption(*command, formats, help,
                    [](const std::string& name) { options.format = FindExportFormat(name); });
    AddOutputOptions(*command, "File for the results, or the folder for several tables",
                     options.settings.path, options.settings.rules);
    command->add_flag("--raw-counts", options.rawCounts, "Raw counts instead of calibrated values");
    command->add_flag("--hex", options.hex, "Raw counts in hexadecimal");
    AddSafeTextsOption(*command, options.settings.style.safeTexts);
    AddDerivedOption(*command, options.instruments, &options.settings.style.derived,
                     "Derived products too: those of a package for its frames, else tilt and PAR");
    command->add_flag("--flags", options.settings.style.flags,
                      "Columns for what the frame checks found, in CSV");
    command
        ->add_option_function<std::string>(
            "--names",
            [](const std::string& names) {
                options.settings.style.simpleNames = names == "simple";
            },
            "Columns of CSV as ED_412.5 (simple) or as ED(412.5) [units] (full); with simple names "
            "the units stand in NAME.csv.json beside the file, of standard output nowhere")
        ->type_name("full|simple")
        ->check(CLI::IsMember({"full", "simple"}).description(""));
    command
        ->add_option("--digits", options.settings.style.digits,
                     "Significant digits of calibrated values and products (all)")
        ->type_name("N")
        ->transform(CountIn(1, 17));
    CLI::Option* utc = command->add_flag("--utc", options.utc,
                                         "Times in UTC, by the zone that each log's header says");
    command
        ->add_option_function<std::string>(
            "--utc-offset",
            [](const std::string& text) {
                options.settings.style.utcOffset = MinutesOfOffset(text);
            },
            "Times in UTC, from local ones that are ahead by so much")
        ->type_name("+-HH:MM")
        ->excludes(utc)
        ->check([](const std::string& text) {
            return MinutesOfOffset(text) ? std::string()
                                         : text + ": give hours and minutes as in +13:00 or -03:30";
        });
    constexpr const char* TimeForm = "YYYY-MM-DDTHH:MM:SS";
    command
        ->add_option("--from", options.from,
                     "Frames from this time on, in the times that are shown: the log's local ones, "
                     "UTC with --utc or --utc-offset")
        ->type_name(TimeForm)
        ->check(TimeOfLogs());
    command->add_option("--to", options.to, "Frames before this time")
        ->type_name(TimeForm)
        ->check(TimeOfLogs());
    command->add_flag("--decimal-degrees", options.settings.style.degrees,
                      "Positions in degrees too, south and west negative");
    AddArchiveOption(*command, options.settings);
    command
        ->add_option("-j,--jobs", options.jobs,
                     "Each log by itself, so many at once: results in the folder of -o, named as "
                     "the logs")
        ->type_name("N")
        ->transform(CountIn(1, 64));
    command->add_flag("--good-only", options.goodOnly, "Leave out frames that failed their checks");
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunDecode(options, context); }; });
}

} // namespace qor
