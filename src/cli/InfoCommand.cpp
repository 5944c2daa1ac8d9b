// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli info: what a raw log holds. The header and the time stamps are read from the file's
// bytes; with definitions the file is played and its frames are counted.
#include "cli/Commands.h"
#include "cli/Playback.h"
#include "cli/RawHeader.h"
#include "cli/Report.h"
#include "export/LogFacts.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "telemetry/RawLogFormat.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace qor {

namespace {

struct InfoOptions : PlaybackOptions {
    bool json = false;
};

/// When the log was begun, in its local time; empty when its header does not say.
std::optional<std::int64_t> BeginOf(const std::vector<HeaderRecord>& records) {
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    for (const HeaderRecord& record : records) {
        char name[4] = {};
        int day = 0, hour = 0, minute = 0, second = 0, year = 0;
        if (record.tag != "TIME-STAMP" ||
            std::sscanf(record.value.c_str(), "%*3s %3s %2d %2d:%2d:%2d %4d", name, &day, &hour,
                        &minute, &second, &year) != 6)
            continue;
        std::size_t month = months.find(name);
        if (month != std::string_view::npos)
            return SecondsFromCalendar(year, static_cast<int>(month / 3) + 1, day, hour, minute,
                                       second);
    }
    return {};
}

/// Reads the header block, then time-stamp sentences and tags, a piece of the file at a time.
class CLogReader {
  public:
    bool Read(const std::string& path, const CommandContext& context, LogFacts& facts);

  private:
    void FindTimeTags();
    void CountTimeStamps(bool last);

    LogFacts* Facts = nullptr;
    std::optional<std::int64_t> Begin;
    std::vector<std::uint8_t> Piece;
};

bool CLogReader::Read(const std::string& path, const CommandContext& context, LogFacts& facts) {
    constexpr std::size_t pieceSize = 1 << 18;
    Facts = &facts;
    CFile file;
    FileCause cause = file.OpenForReading(path);
    HeaderBlock block;
    if (cause == FileCause::None)
        cause = ReadHeaderBlock(file, block);
    facts.records = std::move(block.records);
    Begin = BeginOf(facts.records);
    facts.size = block.size + block.rest.size();
    Piece = std::move(block.rest);
    for (std::size_t got = 1; cause == FileCause::None && got > 0 && !context.stop.Requested();) {
        std::size_t kept = Piece.size();
        Piece.resize(kept + pieceSize);
        cause = file.Read(std::span(Piece).subspan(kept), got);
        Piece.resize(kept + got);
        facts.size += got;
        FindTimeTags();
        CountTimeStamps(got == 0);
    }
    if (cause == FileCause::None)
        return true;
    if (!context.stop.Requested())
        ReportError(path + ": cannot be read. " + std::string(GetFileErrorText(cause)));
    return false;
}

/// Where frames end only a definition knows: here a tag is what reads as a time of this log.
void CLogReader::FindTimeTags() {
    constexpr std::int64_t day = 86400, longest = 366 * day;
    if (!Begin || Piece.size() < TimeTagSize)
        return;
    auto find = [&](std::size_t place, FrameTime& found) {
        std::optional<FrameTime> time = ParseTimeTag(ByteSpan(Piece).subspan(place, TimeTagSize));
        if (!time || time->seconds < *Begin - day || time->seconds > *Begin + longest)
            return false;
        found = *time;
        return true;
    };
    const std::size_t places = Piece.size() - TimeTagSize + 1;
    for (std::size_t i = 0; !Facts->firstTag.known && i < places; ++i)
        find(i, Facts->firstTag);
    for (std::size_t i = places; i > 0 && !find(i - 1, Facts->lastTag);)
        --i;
}

void CLogReader::CountTimeStamps(bool last) {
    std::string_view text = AsText(Piece);
    std::size_t place = 0;
    for (;;) {
        std::size_t found = text.find(TimeStampStart, place);
        if (found == std::string_view::npos || (!last && text.size() - found < MaxTimeStampSize)) {
            place = found == std::string_view::npos
                        ? text.size() - std::min(text.size() - place, TimeStampStart.size() - 1)
                        : found;
            break;
        }
        std::size_t length = TimeStampLength(ByteSpan(Piece).subspan(found)).value_or(0);
        std::optional<FrameTime> time = ParseTimeStamp(text.substr(found, length));
        if (time) {
            if (Facts->timeStamps++ == 0)
                Facts->firstTimeStamp = *time;
            Facts->lastTimeStamp = *time;
        }
        place = found + std::max<std::size_t>(length, 1);
    }
    Piece.erase(Piece.begin(), Piece.begin() + static_cast<std::ptrdiff_t>(place));
}

bool PlayLog(const std::string& path, const InfoOptions& options, CommandContext& context,
             PlayFacts& facts) {
    CPlayback playback(options.chunk);
    bool well = playback.Open(path, options.instruments);
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
    for (const InstrumentFigures& figures : playback.Doc().FiguresOf(-1))
        facts.instruments.push_back(
            {figures.name, figures.frames, figures.dropped, figures.checksumErrors});
    facts.bytesDiscarded = playback.Figures().bytesDiscarded;
    return well;
}

int RunInfo(const InfoOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files))
        return ExitBadCall;
    COutput output(ReportError);
    bool well = true;
    bool plays = !options.instruments.definitions.empty() || !options.instruments.packages.empty();
    for (const std::string& path : options.files) {
        LogFacts facts;
        PlayFacts play;
        if (plays && IsDevice(path)) {
            ReportError(path + ": a pipe can be read only once; save it to a file to have its "
                               "frames counted.");
            well = false;
            continue;
        }
        const bool read = CLogReader().Read(path, context, facts);
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
        (options.json ? WriteLogJson : WriteLogText)(output, path, facts, plays ? &play : nullptr);
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
