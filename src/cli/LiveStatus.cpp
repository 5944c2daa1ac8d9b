// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LiveStatus.h"
#include "cli/Report.h"

#include "base/Text.h"
#include "platform/Console.h"

namespace qor {

namespace {

constexpr std::int64_t DrawMilliseconds = 500, SummaryMilliseconds = 60'000;

} // namespace

CLiveStatus::CLiveStatus(const CQorViewDoc& doc, CClock& clock, bool quiet)
    : Doc(doc), Clock(clock), Quiet(quiet), Terminal(IsTerminal(StandardStream::Error)),
      Last(clock.MonotonicMilliseconds()) {}

CLiveStatus::~CLiveStatus() {
    Erase();
}

void CLiveStatus::Erase() {
    for (; LinesOnScreen > 0; --LinesOnScreen)
        WriteError("\x1b[A\x1b[2K");
}

std::string CLiveStatus::Line(const ResourceStatus& status, double seconds, std::size_t room) {
    std::uint64_t& last = LastFrames[status.id];
    double rate = static_cast<double>(status.frames - last) / seconds;
    last = status.frames;
    const char* state = status.reconnects && !status.figures.connected ? "lost, trying"
                        : status.figures.abortCode != 0                ? "ABORTED"
                        : !status.figures.connected                    ? "not connected"
                        : status.figures.waiting                       ? "waiting"
                                                                       : "reading";
    auto frames = static_cast<unsigned long long>(status.frames);
    auto dropped = static_cast<unsigned long long>(status.dropped);
    auto checksumErrors = static_cast<unsigned long long>(status.checksumErrors);
    auto discarded = static_cast<unsigned long long>(status.figures.bytesDiscarded);
    const std::string lost =
        status.figures.framesLost == 0
            ? std::string()
            : Format(" %llu LOST", static_cast<unsigned long long>(status.figures.framesLost));
    std::string line = Format("%-16s %-13s %9llu frames %7.1f/s %s %llu dropped  %llu checksum "
                              "errors  %llu bytes discarded",
                              status.name.c_str(), state, frames, rate, lost.c_str(), dropped,
                              checksumErrors, discarded);
    if (line.size() <= room)
        return line;
    // All figures are to be seen in 80 columns too.
    constexpr std::string_view devices = "/dev/";
    std::size_t skipped = status.name.starts_with(devices) ? devices.size() : 0;
    line = Format("%s %s %llu frames %.1f/s%s %llu dropped %llu checksum errors %llu discarded",
                  status.name.c_str() + skipped, state, frames, rate, lost.c_str(), dropped,
                  checksumErrors, discarded);
    return line.substr(0, room);
}

void CLiveStatus::Update() {
    if (Quiet)
        return;
    std::int64_t now = Clock.MonotonicMilliseconds();
    std::int64_t since = now - Last;
    if (since < (Terminal ? DrawMilliseconds : SummaryMilliseconds))
        return;
    Last = now;
    std::size_t room = std::string::npos;
    if (Terminal)
        room = static_cast<std::size_t>(TerminalColumns(StandardStream::Error)) - 1;
    std::string text;
    int lines = 0;
    for (const ResourceStatus& resource : Doc.Snapshot().resources) {
        text += Line(resource, static_cast<double>(since) / 1000.0, room) + "\n";
        ++lines;
    }
    Erase();
    WriteError(text);
    if (Terminal)
        LinesOnScreen = lines;
}

} // namespace qor
