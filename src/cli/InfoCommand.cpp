// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli info: what a raw log holds. CRawLogReader reads what its bytes say without
// definitions; with definitions the file is played and its frames are counted.
#include "cli/Commands.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "export/FrameText.h"
#include "telemetry/RawLogReader.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "telemetry/RawLogReader.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace qor {

namespace {

struct InfoOptions : PlaybackOptions {
    bool json = false;
};

/// What playing it with definitions adds.
struct PlayFacts {
    struct Instrument {
        std::string name;
        std::uint64_t frames = 0, dropped = 0, checksumErrors = 0;
    };
    std::vector<Instrument> instruments;
    FrameTime firstTag, lastTag;
    std::uint64_t bytesDiscarded = 0;
};

/// Reads the whole file; false when it cannot be read, which is told, or the user stops it.
bool ReadLog(const std::string& path, const CommandContext& context, CRawLogReader& log) {
    FileCause cause = log.Open(path);
    while (cause == FileCause::None && !log.AtEnd() && !context.stop.Requested())
        cause = log.ReadOn();
    if (cause != FileCause::None && !context.stop.Requested())
        ReportError(path + ": cannot be read. " + std::string(GetFileErrorText(cause)));
    return cause == FileCause::None;
}

bool PlayLog(const std::string& path, const InfoOptions& options, CommandContext& context,
             PlayFacts& facts) {
    CPlayedFile playback(options.chunk);
    bool well = playback.Open(path, options.instruments, options.strict);
    if (!playback.IsOpen())
        return false;
    well = playback.Play(
               context,
               [&](CQorViewIns& instrument, const FrameCheckResult&) {
                   const FrameTime& time = instrument.Live.CurrentFrame()->Info.time;
                   if (!time.known)
                       return;
                   if (!facts.firstTag.known)
                       facts.firstTag = time;
                   facts.lastTag = time;
               },
               [] { return true; }) &&
           well;
    for (const ResourceStatus& resource : playback.Doc().Snapshot().resources)
        for (const InstrumentFigures& figures : resource.instruments)
            facts.instruments.push_back(
                {figures.name, figures.frames, figures.dropped, figures.checksumErrors});
    facts.bytesDiscarded = playback.Figures().bytesDiscarded;
    return well;
}

void WriteJson(COutput& output, const std::string& path, const CRawLogReader& log,
               const PlayFacts* play) {
    CJsonWriter json(output);
    auto time = [&](const char* key, const FrameTime& value) {
        json.Key(key), WriteTimeValue(json, output, value);
    };
    json.BeginObject();
    json.Key("file"), json.Path(path);
    json.Key("size"), json.Integer(static_cast<std::int64_t>(log.BytesRead()));
    json.Key("raw_log"), json.Bool(log.Header().IsRawLog());
    json.Key("header"), json.BeginArray();
    for (const HeaderRecord& record : log.Header().records) {
        json.BeginArray();
        json.Text(record.tag);
        json.Text(record.value);
        json.EndArray();
    }
    json.EndArray();
    json.Key("time_stamps"), json.Integer(static_cast<std::int64_t>(log.Times().timeStamps));
    time("first_time_stamp", log.Times().firstTimeStamp);
    time("last_time_stamp", log.Times().lastTimeStamp);
    time("first_time_tag", play ? play->firstTag : log.Times().firstTag);
    time("last_time_tag", play ? play->lastTag : log.Times().lastTag);
    if (play) {
        json.Key("instruments"), json.BeginArray();
        for (const PlayFacts::Instrument& instrument : play->instruments) {
            json.BeginObject();
            json.Key("instrument"), json.Text(instrument.name);
            json.Key("frames"), json.Integer(static_cast<std::int64_t>(instrument.frames));
            json.Key("dropped"), json.Integer(static_cast<std::int64_t>(instrument.dropped));
            json.Key("checksum_errors"),
                json.Integer(static_cast<std::int64_t>(instrument.checksumErrors));
            json.EndObject();
        }
        json.EndArray();
        json.Key("bytes_discarded"), json.Integer(static_cast<std::int64_t>(play->bytesDiscarded));
    }
    json.EndObject();
    json.EndLine();
}

void WriteText(COutput& output, const std::string& path, const CRawLogReader& log,
               const PlayFacts* play) {
    auto time = [&](const char* label, const FrameTime& value) {
        if (!value.known)
            return;
        output.Text(label);
        WriteTime(output, value);
        output.Char('\n');
    };
    output.Text(path + "\n");
    output.Text(Format("  size              %llu bytes\n",
                       static_cast<unsigned long long>(log.BytesRead())));
    if (!log.Header().IsRawLog())
        output.Text("  no header: a plain capture, not a raw log\n");
    for (const HeaderRecord& record : log.Header().records)
        output.Text(Format("  %-17s %s\n", record.tag.c_str(), record.value.c_str()));
    output.Text(Format("  time stamps       %llu\n",
                       static_cast<unsigned long long>(log.Times().timeStamps)));
    time("  first time stamp  ", log.Times().firstTimeStamp);
    time("  last time stamp   ", log.Times().lastTimeStamp);
    time("  first time tag    ", play ? play->firstTag : log.Times().firstTag);
    time("  last time tag     ", play ? play->lastTag : log.Times().lastTag);
    if (!play)
        return;
    for (const PlayFacts::Instrument& instrument : play->instruments)
        output.Text(Format("  %-17s %llu frames, %llu dropped, %llu checksum errors\n",
                           instrument.name.c_str(),
                           static_cast<unsigned long long>(instrument.frames),
                           static_cast<unsigned long long>(instrument.dropped),
                           static_cast<unsigned long long>(instrument.checksumErrors)));
    output.Text(Format("  bytes discarded   %llu\n",
                       static_cast<unsigned long long>(play->bytesDiscarded)));
}

int RunInfo(const InfoOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files))
        return ExitBadCall;
    COutput output(ReportError);
    bool well = true;
    bool plays = !options.instruments.definitions.empty() || !options.instruments.packages.empty();
    for (const std::string& path : options.files) {
        CRawLogReader log;
        PlayFacts play;
        if (plays && IsDevice(path)) {
            ReportError(path + ": a pipe can be read only once; save it to a file to have its "
                               "frames counted.");
            well = false;
            continue;
        }
        const bool read = ReadLog(path, context, log);
        if (context.stop.Requested())
            return ExitInterrupted;
        if (!read) {
            well = false;
            continue;
        }
        if (plays)
            well = PlayLog(path, options, context, play) && well;
        for (const PlayFacts::Instrument& instrument : play.instruments)
            well = well && instrument.checksumErrors == 0;
        (options.json ? WriteJson : WriteText)(output, path, log, plays ? &play : nullptr);
        if (context.stop.Requested())
            return ExitInterrupted;
    }
    return (output.Flush() || !output.Failed()) && well ? ExitWell : ExitFault;
}

} // namespace

void AddInfoCommand(CLI::App& app, CommandContext& context) {
    static InfoOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand("info", "Say what a raw log holds");
    AddInstrumentOptions(*command, options.instruments);
    command->add_flag("--json", options.json, "One JSON object a file");
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunInfo(options, context); }; });
}

} // namespace qor
