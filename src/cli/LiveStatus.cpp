// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LiveStatus.h"
#include "cli/Report.h"

#include "base/TerminalText.h"
#include "platform/Console.h"
#include "views/LogLines.h"

#include <utility>

namespace qor {

namespace {

constexpr std::int64_t DrawMilliseconds = 500, SummaryMilliseconds = 60'000;

std::vector<std::string*> NamesIn(SessionSnapshot& snapshot) {
    std::vector<std::string*> names{&snapshot.log.logFilePath};
    for (ResourceStatus& resource : snapshot.resources)
        names.push_back(&resource.name);
    return names;
}

} // namespace

CLiveStatus::CLiveStatus(const CQorViewDoc& doc, CClock& clock, bool quiet)
    : Doc(doc), Clock(clock), Quiet(quiet), Terminal(CanDraw(StandardStream::Error)),
      Last(clock.MonotonicMilliseconds()) {}

CLiveStatus::~CLiveStatus() {
    Erase();
}

void CLiveStatus::Erase() {
    for (; LinesOnScreen > 0; --LinesOnScreen)
        DrawError("\x1b[A\x1b[2K");
}

/// Columns of a line.
std::size_t CLiveStatus::Room() const {
    return Terminal ? static_cast<std::size_t>(TerminalColumns(StandardStream::Error)) - 1
                    : std::string::npos;
}

void CLiveStatus::Update(std::optional<double> secondsLeft) {
    if (Quiet)
        return;
    std::int64_t now = Clock.MonotonicMilliseconds();
    std::int64_t since = now - Last;
    if (since < (Terminal ? DrawMilliseconds : SummaryMilliseconds))
        return;
    Last = now;
    const std::size_t room = Room();
    SessionSnapshot snapshot = Doc.Snapshot();
    std::string text;
    int lines = 0;
    if (Terminal) // names as they are shown, so that a line has the room that is meant
        for (std::string* name : NamesIn(snapshot))
            *name = TerminalText(*name, TerminalLayout::OneLine);
    for (const ResourceStatus& resource : snapshot.resources) {
        const std::uint64_t before = std::exchange(LastFrames[resource.id], resource.frames);
        const double frames = static_cast<double>(resource.frames - before);
        text += StatusLine(resource, frames / (static_cast<double>(since) / 1000.0), room) + "\n";
        ++lines;
    }
    if (const std::string line = LogLine(snapshot.log, secondsLeft, room); !line.empty()) {
        text += line + "\n";
        ++lines;
    }
    Erase();
    WriteError(text);
    if (Terminal)
        LinesOnScreen = lines;
}

} // namespace qor
