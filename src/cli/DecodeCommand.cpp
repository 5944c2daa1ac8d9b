// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli decode: plays raw logs through the acquisition engine and prints every frame with its
// values. Here are its options; what it does with them is DecodeRun's.
#include "cli/Commands.h"
#include "cli/DecodeRun.h"
#include "cli/NumberOptions.h"
#include "cli/OutputOptions.h"
#include "cli/Report.h"
#include "export/SeaBassHeader.h"
#include "session/KeptProfile.h"
#include "telemetry/RawLogFormat.h"
#include "views/Windows.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

/// The names of the formats that can do it: "csv, jsonl or netcdf".
template <class Can> std::string FormatsThat(Can can) {
    std::vector<std::string> names;
    for (const ExportFormat& format : ExportFormats())
        if (can(format))
            names.emplace_back(format.name);
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return text;
}

/// What of --bin and --qc the other options do not go with; empty when all is well.
std::string WhyNoMeans(const DecodeOptions& options) {
    const ExportFormat& format = *options.format;
    const std::string name(format.name);
    const char* const option = options.settings.bins ? "--bin" : "--qc";
    if (options.settings.bins && !format.makeBins)
        return "--format " + name + " holds no means; --bin goes with " +
               FormatsThat([](const ExportFormat& one) { return one.makeBins != nullptr; }) + ".";
    if (options.settings.bins && options.files.size() > 1 && options.jobs == 0 &&
        format.makeBins == FindExportFormat("netcdf")->makeBins)
        return "a netCDF file holds the means of one log; give -j 1 and a folder for a file each.";
    if (options.settings.bins && options.settings.qc && !options.goodOnly)
        return "means have no flags; with --bin and --qc give --good-only, which leaves the values "
               "that are bad out of them.";
    if (options.settings.qc && !format.qc)
        return "--format " + name + " shows no quality flags; --qc goes with " +
               FormatsThat([](const ExportFormat& one) { return one.qc; }) + ".";
    if ((options.settings.bins || options.settings.qc) &&
        options.settings.style.view != ValueView::Calibrated)
        return std::string(option) + " is of calibrated values; leave out --raw-counts and --hex.";
    return {};
}

/// The warning and alarm ranges that the desktop's settings keep, for products.
WatchedRanges RangesOfSettings() {
    const std::shared_ptr<const CKeptProfileStore> profile = OpenProgramProfile();
    if (profile->LoadCause() != FileCause::None)
        ReportWarning("qorview.ini: the desktop's settings could not be read; values are not "
                      "checked by its warning ranges.");
    return [profile](const ExportedInstrument& instrument, const DerivedRow& row) {
        const WarningRanges kept =
            KeptRanges(*profile, instrument.live->Name(), instrument.package, row.kind);
        QcRules rules;
        if (kept.WarnEnabled)
            rules.warning = {kept.WarnMin, kept.WarnMax};
        if (kept.AlarmEnabled)
            rules.alarm = {kept.AlarmMin, kept.AlarmMax};
        return rules;
    };
}

/// Reads the limits and settles what follows from them. The exit status.
int TakeMeans(DecodeOptions& options) {
    ExportSettings& settings = options.settings;
    if (!options.limits.empty())
        settings.qc.emplace();
    if (const std::string wrong = WhyNoMeans(options); !wrong.empty()) {
        ReportError(wrong);
        return ExitBadCall;
    }
    if (settings.qc && options.limits != NoLimitsFile)
        if (const std::string wrong = ReadQcLimits(options.limits, *settings.qc); !wrong.empty()) {
            ReportError(wrong);
            return ExitFault;
        }
    if (options.limits == NoLimitsFile)
        settings.ranges = RangesOfSettings();
    settings.rejects = settings.qc && options.goodOnly;
    settings.style.qc = settings.qc && !settings.bins;
    settings.style.flags = settings.style.flags || settings.style.qc;
    return ExitWell;
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
    if (options.metadata && (options.format != FindExportFormat("csv") ||
                             options.settings.path.empty() || options.settings.path == "-")) {
        ReportError("--metadata describes CSV files; give -o NAME.csv, or a folder for several.");
        return ExitBadCall;
    }
    options.settings.style.described = options.metadata || options.settings.style.simpleNames;
    if (const int status = TakeMeans(options); status != ExitWell)
        return status;
    options.settings.report = ReportError;
    options.settings.warn = ReportWarning;
    options.settings.call = context.call;
    options.settings.rules.inputs = options.Inputs();
    if (!options.limits.empty() && options.limits != NoLimitsFile)
        options.settings.rules.inputs.push_back(options.limits);
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

/// Adds --bin and --qc.
void AddMeansOptions(CLI::App& command, DecodeOptions& options) {
    command
        .add_option_function<std::string>(
            "--bin",
            [&options](const std::string& text) { options.settings.bins = ReadBinSpan(text); },
            "Means, standard deviations and counts over so much pressure, depth or time, as \"1 "
            "dbar\", \"0.5 m\", \"10 s\" or \"5 min\", instead of frames")
        ->type_name("SPAN")
        ->check([](const std::string& text) {
            return ReadBinSpan(text) ? std::string()
                                     : text + ": give a width above 0 and its units, as in \"1 "
                                              "dbar\", \"0.5 m\", \"10 s\" or \"5 min\"; times "
                                              "in whole hundredths of a second";
        });
    command
        .add_option("--qc", options.limits,
                    "Quality flags of values, by the limits in a text file, else by the desktop's "
                    "warning ranges for products, and of gaps")
        ->type_name("[FILE.txt]");
}

} // namespace

void AddDecodeCommand(CLI::App& app, CommandContext& context) {
    static DecodeOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand(
        "decode", "Play raw logs through the engine and print every frame with its values");
    AddInstrumentOptions(*command, options.instruments);
    AddPackageOptions(*command, options.instruments.packageOptions);
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
                      "Columns for what the frame checks found, in CSV; --qc has them too");
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
    command->add_flag("--metadata", options.metadata,
                      "Beside each CSV file NAME.csv.json, which describes its columns (CSVW)");
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
    AddMeansOptions(*command, options);
    command
        ->add_option("-j,--jobs", options.jobs,
                     "Each log by itself, so many at once: results in the folder of -o, named as "
                     "the logs")
        ->type_name("N")
        ->transform(CountIn(1, 64));
    command->add_flag("--good-only", options.goodOnly,
                      "Leave out frames that failed their checks, and values that --qc finds bad");
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunDecode(options, context); }; });
}

} // namespace qor
