// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/LogLines.h"

#include "base/Text.h"
#include "session/FileKind.h"
#include "views/PortWords.h"
#include "views/SessionPages.h"

#include <algorithm>
#include <numeric>

namespace qor {

namespace {

constexpr std::size_t LeastName = 12; // characters of a port's name
/// A write that has taken so long is a disk that takes nothing, in milliseconds.
constexpr std::int64_t Stalled = 2000;

std::string SizeText(std::uint64_t bytes) {
    const double size = static_cast<double>(bytes);
    return bytes < 1'000'000 ? FixedNumber(size / 1e3, 0) + " kB"
                             : FixedNumber(size / 1e6, 1) + " MB";
}

/// What a log lacks, to follow what it has.
std::string Missing(const LogStatus& log) {
    std::string text;
    if (log.runUnstored > 0)
        text += Format(", %llu LOST (received and not stored)", Printed(log.runUnstored));
    if (log.runGone > 0)
        text += Format(", %llu LOST (file deleted or cut)", Printed(log.runGone));
    return text;
}

/// The name of a port in so many characters: what tells ports apart stands at its end.
std::string EndOfName(std::string_view name, std::size_t room) {
    constexpr std::string_view devices = "/dev/", left = "...";
    if (name.size() > room && name.starts_with(devices))
        name.remove_prefix(devices.size());
    if (name.size() <= room)
        return std::string(name);
    return std::string(left) + std::string(name.substr(name.size() - (room - left.size())));
}

/// An abort has to stand out among lines that come again and again.
const char* StateText(const ResourceStatus& resource) {
    const ResourceFigures& figures = resource.figures;
    const bool lost = resource.reconnects && !figures.connected;
    return figures.abortCode != 0 && !lost ? "ABORTED" : WordOfPort(resource).text;
}

/// What a port did not bring into the log.
std::string MissingLine(const ResourceStatus& resource) {
    const ResourceFigures& figures = resource.figures;
    const struct {
        std::uint64_t count;
        const char* what;
    } parts[] = {
        {figures.bytesCutShort, " of frames that the end of a connection cut short"},
        {figures.framesLost, " frames lost"},
        {std::accumulate(figures.lineErrors.begin(), figures.lineErrors.end(), std::uint64_t{0}),
         " line errors"},
    };
    std::string text = resource.name + ": " + std::to_string(figures.bytesDiscarded) + " of " +
                       std::to_string(figures.bytesReceived) + " bytes discarded";
    for (const auto& part : parts)
        if (part.count > 0)
            text += ", " + std::to_string(part.count) + part.what;
    return text + "\n";
}

} // namespace

std::string StatusLine(const ResourceStatus& resource, double framesPerSecond, std::size_t room) {
    const ResourceFigures& figures = resource.figures;
    const char* state = StateText(resource);
    const std::string lost =
        figures.framesLost == 0 ? std::string() : Format(" %llu LOST", Printed(figures.framesLost));
    const std::string dropped = CheckedCount(resource.checksCounter, resource.dropped, "dropped");
    const std::string errors =
        CheckedCount(resource.checksSum, resource.checksumErrors, "checksum errors");
    std::string line =
        Format("%-16s %-13s %9llu frames %7.1f/s %s %s  %s  "
               "%llu bytes discarded",
               resource.name.c_str(), state, Printed(resource.frames), framesPerSecond,
               lost.c_str(), dropped.c_str(), errors.c_str(), Printed(figures.bytesDiscarded));
    if (line.size() <= room)
        return line;
    // All figures are to be seen in 80 columns too.
    const std::string checks = !resource.checksCounter && !resource.checksSum ? "not checked"
                               : resource.checksSum ? dropped + " " + errors
                                                    : dropped + " checksum not checked";
    line = Format(" %s %llu frames %.1f/s%s %s %llu discarded", state, Printed(resource.frames),
                  framesPerSecond, lost.c_str(), checks.c_str(), Printed(figures.bytesDiscarded));
    const std::size_t left = room - std::min(room, line.size());
    return (EndOfName(resource.name, std::max(left, LeastName)) + line).substr(0, room);
}

std::string LogLine(const LogStatus& log, std::optional<double> secondsLeft, std::size_t room) {
    if (!log.loggingActive)
        return {};
    const std::string waiting =
        SizeText(log.waitingBytes) + " of " + SizeText(log.waitingCapacity) + " wait in memory";
    std::string line = "log: ";
    if (log.recovering)
        line += "NO FILE, " + waiting;
    else if (log.stalledMilliseconds >= Stalled)
        line += Format("disk has taken nothing for %lld s, ",
                       static_cast<long long>(log.stalledMilliseconds / 1000)) +
                waiting;
    else if (!log.logOpen)
        line += "waits for its next file";
    else
        line += std::string(LastPartOf(log.logFilePath)) + " " + SizeText(log.fileSize);
    line += Missing(log);
    if (secondsLeft)
        line += ", " + TimeLeftText(*secondsLeft);
    return line.substr(0, room);
}

std::string LogSummary(const LogStatus& log, std::size_t files, std::optional<double> secondsLeft) {
    return Format("logs: %llu frames in %zu %s, %llu received and not stored",
                  Printed(log.runFrames), files, files == 1 ? "file" : "files",
                  Printed(log.runUnstored)) +
           (log.runGone == 0
                ? ""
                : Format(", %llu were in files that were deleted or cut", Printed(log.runGone))) +
           (secondsLeft ? "; at this rate the disk has " + TimeLeftText(*secondsLeft) : "") + "\n";
}

std::string CaptureLine(const CaptureStatus& capture) {
    return (capture.made ? "capture: " : "no capture: ") + capture.path +
           (capture.unkept == 0 ? "" : Format(", %llu bytes not kept", Printed(capture.unkept))) +
           "\n";
}

std::string SummaryLines(const SessionSnapshot& snapshot) {
    std::string text;
    for (const ResourceStatus& resource : snapshot.resources) {
        for (const InstrumentFigures& figures : resource.instruments)
            text += Format(
                "%s on %s: %llu frames, %u in the last log, %s, %s\n", figures.name.c_str(),
                resource.name.c_str(), Printed(figures.frames), figures.framesThisLog,
                CheckedCount(figures.checksCounter, figures.dropped, "dropped").c_str(),
                CheckedCount(figures.checksSum, figures.checksumErrors, "checksum errors").c_str());
        if (!resource.isFile)
            text += MissingLine(resource);
    }
    return text;
}

std::vector<std::string> SilentLines(const SessionSnapshot& snapshot) {
    std::vector<std::string> lines;
    for (const ResourceStatus& resource : snapshot.resources)
        for (const InstrumentFigures& figures : resource.instruments) {
            if (resource.isFile || !figures.acquired || figures.frames > 0)
                continue;
            const std::string name = figures.name + " on " + resource.name;
            lines.push_back(
                resource.figures.bytesReceived == 0
                    ? name + ": no frame came, and no byte on its port. Is it switched on and "
                             "sending, and the cable on this port?"
                    : name + Format(": no frame came; the port gave %llu bytes. Is it on this "
                                    "port, and is its definition right?",
                                    Printed(resource.figures.bytesReceived)));
        }
    return lines;
}

std::string DiscardedLine(const ResourceStatus& resource) {
    const ResourceFigures& figures = resource.figures;
    if (figures.bytesDiscarded <= resource.longestFrame)
        return {};
    return Format("%s: %llu of %llu bytes belong to no frame of its instruments. Is the line "
                  "noisy, or the speed or a definition wrong?",
                  resource.name.c_str(), Printed(figures.bytesDiscarded),
                  Printed(figures.bytesReceived));
}

} // namespace qor
