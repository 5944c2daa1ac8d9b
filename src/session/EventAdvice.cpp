// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/EventAdvice.h"

#include "base/Text.h"

#include <algorithm>

namespace qor {

namespace {

constexpr EventAdvice Advices[] = {
    {EventKind::NameTaken, true, true, "Choose another name, or let it be replaced."},
    {EventKind::LogFailed, false, true, "Look at its disk and folder."},
    {EventKind::LogGoesOn, true, false, ""},
    {EventKind::LogNotBegun, true, true, ""},
    {EventKind::SpaceLow, true, false, "Make room, or name another disk with --spare."},
    {EventKind::SpaceShort, true, true, "Make room, or name another disk with --spare."},
    {EventKind::LogRecovered, true, false, ""},
    {EventKind::ClockEarly, true, false, "Set it; times in the log follow it."},
    {EventKind::SyncFailed, true, true, "A power cut now may cost data; look at the disk."},
    {EventKind::DiskStalled, true, false, "Look at the disk; nothing is lost yet."},
    {EventKind::FramesUnstored, true, true, "The disk was too slow, full or gone."},
    {EventKind::FramesLost, true, true, "The program had no time for them; close other programs."},
    {EventKind::BytesLost, true, true, "Is it the right definition?"},
    {EventKind::NoFrames, true, false, "Try its definition with check --frame."},
    {EventKind::BytesNotKept, true, false, ""},
    {EventKind::CaptureFailed, true, true, "Look at its disk and folder."},
    {EventKind::ClockStepped, true, false, "Times in the log follow it."},
    {EventKind::PositionKept, true, false, "The typed position stands there."},
    {EventKind::UnitsUnknown, true, false, "Nothing is derived from it."},
    {EventKind::PortLost, true, false, ""},
    {EventKind::PortBack, true, false, ""},
};

} // namespace

const EventAdvice* AdviceOf(EventKind kind) {
    const auto* row = std::ranges::find(Advices, kind, &EventAdvice::kind);
    return row == std::end(Advices) ? nullptr : row;
}

std::string EventLine(const Event& event, const EventAdvice& row, std::string_view advice) {
    return (row.namesSubject ? "" : event.subject + ": ") + OneLine(event.text) +
           (advice.empty() ? "" : " ") + std::string(advice);
}

} // namespace qor
