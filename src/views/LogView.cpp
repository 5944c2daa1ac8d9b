// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/LogView.h"

#include "base/Text.h"
#include "views/LogBanner.h"
#include "views/NumberText.h"

#include <cmath>

namespace qor {

namespace {

const char* StateText(LogState state) {
    switch (state) {
    case LogState::Idle:
        return "not logging";
    case LogState::Open:
        return "logging";
    case LogState::Between:
        return "waiting for the next log";
    case LogState::Failed:
        return "log failed";
    }
    return "";
}

Sign StateSign(LogState state, bool nagging) {
    switch (state) {
    case LogState::Idle:
        return nagging ? Sign::Warning : Sign::Off;
    case LogState::Open:
        return Sign::Ok;
    case LogState::Between:
        return Sign::Waiting;
    case LogState::Failed:
        return Sign::Error;
    }
    return Sign::None;
}

} // namespace

CLogView::CLogView(CQorViewDoc& doc)
    : CLogView(doc, [&doc](const std::string& folder) {
          doc.Room.Watch(folder);
          return doc.Room.FreeBytes();
      }) {}

CLogView::CLogView(CQorViewDoc& doc, DiskSpace space) : Doc(doc), Space(std::move(space)) {
    Grid.title = "Log";
    Grid.ownColours = false;
}

void CLogView::SetRun(RunKind run, std::string speed) {
    Facts.run = run;
    Facts.speed = std::move(speed);
}

bool CLogView::Refresh(CQorViewDoc&) {
    const std::int64_t now = Doc.Clock.MonotonicMilliseconds();
    const SessionSnapshot snapshot = Doc.Snapshot();
    Facts.log = snapshot.log;
    Facts.freeBytes = Space(LogFolder(Doc));
    Facts.bytesPerSecond = LogBytesPerSecond(Doc);
    Facts.nextName = Facts.log.logOpen ? "" : Facts.log.logFileDisplayName;
    Facts.flowing = Flow.Since(snapshot, now);
    Banner = MakeLogPage(Facts);
    const std::vector<GridRow> before = std::move(Grid.rows);
    FillGrid();
    Grid.head.sign = StateSign(Banner.state, Banner.nagging);
    Grid.head.leading = Banner.state == LogState::Open ? Banner.elapsed : "";
    return Grid.rows != before;
}

void CLogView::Add(const char* label, std::string text, const char* units,
                   std::optional<double> number, Sign sign) {
    GridRow row{label, units, {std::move(text)}};
    row.number = number;
    row.sign = sign;
    row.id = Grid.rows.size() + 1;
    Grid.rows.push_back(std::move(row));
}

void CLogView::FillGrid() {
    constexpr double Megabyte = 1e6;
    const LogStatus& log = Facts.log;
    Grid.rows.clear();
    Add("State", StateText(Banner.state), "", {}, StateSign(Banner.state, Banner.nagging));
    Add("File", log.logFilePath.empty() ? "--" : log.logFilePath, "", {});
    const bool timed = log.logOpen;
    Add("Elapsed", timed ? Banner.elapsed : "--", "",
        timed ? std::optional(static_cast<double>(log.logElapsed)) : std::nullopt);
    Add("Frames", CountText(log.framesLogged), "", static_cast<double>(log.framesLogged));
    Add("Not stored", CountText(log.framesUnstored), "frames",
        static_cast<double>(log.framesUnstored), log.framesUnstored > 0 ? Sign::Error : Sign::None);
    Add("Size", FixedNumber(static_cast<double>(log.fileSize) / Megabyte, 3), "MB",
        static_cast<double>(log.fileSize) / Megabyte);
    Add("Waiting for the disk", CountText(log.waitingBytes), "bytes",
        static_cast<double>(log.waitingBytes),
        log.stalledMilliseconds > 2000 ? Sign::Warning : Sign::None);
    const auto space = Facts.freeBytes
                           ? std::optional(static_cast<double>(*Facts.freeBytes) / Megabyte)
                           : std::nullopt;
    Add("Space left", space ? FixedNumber(*space, 0) : "--", "MB", space);
    const std::optional<double> left = SecondsLeft(Facts);
    Add("Time left", left ? Banner.left : "--", "",
        left ? std::optional(*left / 3600.0) : std::nullopt,
        left ? TimeLeftSign(*left) : Sign::None);
    if (Banner.state == LogState::Between)
        Add("Next log", Banner.next, "", {});
}

} // namespace qor
