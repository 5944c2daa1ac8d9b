// SPDX-License-Identifier: GPL-3.0-or-later
//
// The playing of logs into results. See DecodeRun.h.
#include "cli/DecodeRun.h"

#include "cli/Jobs.h"
#include "cli/OutputOptions.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "export/CheckCounts.h"
#include "export/CheckedFrames.h"

#include "base/Lock.h"
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/Depths.h"
#include "session/FileKind.h"
#include "telemetry/RawLogReader.h"

#include <algorithm>
#include <set>
#include <utility>

namespace qor {

namespace {

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
    const std::optional<int> minutes = log.Header().ZoneMinutes();
    if (!minutes)
        ReportError(path +
                    (zone ? ": its zone \"" + Printable(*zone) + "\" says no offset from UTC"
                          : std::string(": it has no header that says its zone")) +
                    Advice);
    return minutes;
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

bool WantsDepth(const DecodeOptions& options) {
    return options.settings.bins && !options.settings.bins->IsTime();
}

/// Says which instruments have no bins; false when none of them has.
bool CanBin(const std::string& path, const CPlayedFile& playback,
            std::span<const ExportedInstrument> binned) {
    std::string names;
    for (const CQorViewIns* instrument : playback.Instruments())
        if (std::ranges::find(binned, &instrument->Live, &ExportedInstrument::live) == binned.end())
            names += (names.empty() ? "" : ", ") + instrument->ShownName();
    if (names.empty())
        return true;
    (binned.empty() ? ReportError : ReportWarning)(
        path + ": " + names +
        ": no pressure in known units says where the frames are from; give a package with -p, the "
        "instrument that has it with -d and --role NAME=profiler, or a --bin of time.");
    return !binned.empty();
}

/// Says which rule of the limits speaks of nothing that is there; false then.
bool KnowsLimits(const std::optional<QcLimits>& limits,
                 std::span<const ExportedInstrument> instruments) {
    if (!limits)
        return true;
    const std::string wrong = limits->WhyUnknown(CheckedNames(instruments), NamesOf(instruments));
    if (!wrong.empty())
        ReportError(wrong);
    return wrong.empty();
}

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
    CDepths depths(playback.Doc(), WantsDepth(options));
    std::vector<ExportedInstrument> instruments;
    for (const CQorViewIns* instrument : playback.Instruments())
        if (depths.Wanted(*instrument)) {
            instruments.push_back({&instrument->Live, {}, playback.Doc().PackageOf(*instrument)});
            if (const PressureSource* source = depths.SourceOf(*instrument)) {
                instruments.back().depthCarrier = &source->carrier->instrument->Live;
                instruments.back().depthSensor = source->sensor;
            }
            if (derives)
                playback.Doc().ReadDerived(*instrument, instruments.back().derived);
        }
    log.badCall =
        !CanBin(path, playback, instruments) || !KnowsLimits(options.settings.qc, instruments);
    if (log.badCall)
        return log;
    log.result = sink.BeginLog(exported, instruments);
    log.begun = log.result.Good();
    if (!log.begun)
        return log;
    CFailedFrames failed;
    const std::optional<int> utcOffset = exported.StyleOf(options.settings.style).utcOffset;
    log.whole = playback.Play(
        context,
        [&](CQorViewIns& instrument, const FrameCheckResult& checks) {
            const CLiveInstrument& live = instrument.Live;
            // Decided: a frame that is left out only for a gap before it says the depth of others.
            depths.Distrust(instrument,
                            options.goodOnly && (checks.checksumError || checks.valueError));
            if (!options.window.Has(live.CurrentFrame()->Info.time, utcOffset) ||
                !depths.Wanted(instrument))
                return;
            log.anyFrame = true;
            failed.Add(instrument.ShownName(), checks);
            if (derives)
                playback.Doc().ReadDerived(instrument, derived);
            const ExportedFrame frame{live, checks, derived, depths.Of(instrument)};
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

} // namespace

std::vector<ExportedLog> LogsOf(const DecodeOptions& options) {
    std::vector<ExportedLog> logs;
    bool well = true;
    for (const std::string& path : options.files) {
        logs.push_back({path, options.utc ? ZoneOf(path) : std::nullopt});
        well = well && (!options.utc || logs.back().utcOffset);
    }
    return well ? logs : std::vector<ExportedLog>();
}

int DecodeTogether(std::span<const ExportedLog> logs, const DecodeOptions& options,
                   CommandContext& context) {
    const std::unique_ptr<CFrameSink> sink = MakeSink(*options.format, options.settings);
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
    const std::string &path = options.settings.path, &stem = options.settings.stem;
    if (begun && !whole && !path.empty() && stem.empty())
        return WithholdResults(path);
    if (begun && !whole && !path.empty()) // one of many, which standard output does not take
        return WithholdResults(options.format->tables ? path + PathSeparator() + stem + ".*" : path,
                               false);
    return sink->Finish().Good() && well && whole ? ExitWell : ExitFault;
}

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

} // namespace qor
