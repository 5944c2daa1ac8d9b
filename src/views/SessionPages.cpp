// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/SessionPages.h"

#include "base/Text.h"
#include "session/FileKind.h"
#include "session/PortText.h"
#include "telemetry/CommResult.h"
#include "views/NumberText.h"
#include "views/PortWords.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qor {

namespace {

constexpr std::int64_t NaggingAfter = 60'000, FlowEnds = 10'000; ///< ms
constexpr std::int64_t GrowthKnownAfter = 10;                    ///< s
constexpr double SecondsAnHour = 3600.0, AmberUnder = 6 * SecondsAnHour,
                 RedUnder = 0.5 * SecondsAnHour;
constexpr int TimeTagBytes = 7; ///< behind each frame of a log

// Ids of rows: a number of the session, and which kind it numbers.
constexpr std::uint64_t ResourceRow = 1, InstrumentRow = 2, PackageRow = 3, NoteRow = 4;

template <class Id> std::uint64_t RowId(std::uint64_t kind, Id id) {
    return kind << 32 | static_cast<std::uint64_t>(id);
}

template <class Id> Id IdOf(std::uint64_t row, std::uint64_t kind) {
    return row >> 32 == kind ? static_cast<Id>(row & 0xFFFFFFFF) : Id::None;
}

std::string HoursText(double seconds) {
    const auto whole = static_cast<long long>(std::max(seconds, 0.0));
    return Format("%02lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string RolesOf(const CQorViewDoc& doc, InstrumentId instrument) {
    std::string letters;
    for (const RoleRow& row : RoleTable)
        if (doc.Role(row.role) == instrument)
            letters += row.title.front();
    return letters;
}

TreeRow RowOfInstrument(const CQorViewDoc& doc, const CFrameRates& rates,
                        const InstrumentFigures& figures, const ResourceStatus& resource)
    REQUIRES(doc.DocLock) {
    const CQorViewIns* instrument = doc.Find(figures.id);
    const std::int64_t now = doc.Clock.MonotonicMilliseconds();
    const bool sent = instrument && instrument->Live.CurrentFrame();
    const bool idle = WordOf(resource).sign == Sign::Off;
    const std::uint64_t faults = figures.dropped + figures.checksumErrors + figures.valueErrors;
    TreeRow row;
    row.id = RowId(InstrumentRow, figures.id);
    row.kind = TreeKind::Instrument;
    row.sign = !sent                         ? (idle ? Sign::Off : Sign::Waiting)
               : instrument->Live.Stale(now) ? Sign::Stale
               : faults > 0                  ? Sign::Warning
                                             : Sign::Ok;
    row.name = Utf8Of(figures.name);
    row.role = RolesOf(doc, figures.id);
    rates.LockIsHeld();
    row.rate = rates.TextOf(figures);
    row.age = AgeText(sent ? now - instrument->Live.ArrivalMonotonic : -1);
    row.detail = CountText(figures.frames) + " frames, " +
                 CheckedText(figures.checksCounter, figures.dropped, "dropped") + ", " +
                 CheckedText(figures.checksSum, figures.checksumErrors, "checksum errors") + ", " +
                 CountText(figures.valueErrors) + " value errors, " +
                 (figures.immersed ? "wet" : "dry");
    return row;
}

/// Where a resource's instrument belongs: under its package, which is made where its first one
/// stands.
void PutInstrument(const CQorViewDoc& doc, TreeRow row, InstrumentId id, TreeRow& parent)
    REQUIRES(doc.DocLock) {
    const SessionState::FrameOwner* owner = doc.OwnerOf(id);
    const CPackage* package = owner ? owner->package : nullptr;
    if (!package) {
        parent.rows.push_back(std::move(row));
        return;
    }
    const std::uint64_t packageId = RowId(PackageRow, package->Id);
    auto found = std::ranges::find(parent.rows, packageId, &TreeRow::id);
    if (found == parent.rows.end()) {
        TreeRow made;
        made.id = packageId;
        made.kind = TreeKind::Package;
        made.name = Utf8Of(package->Name);
        found = parent.rows.insert(parent.rows.end(), std::move(made));
    }
    found->sign = WorseSign(found->sign, row.sign);
    found->rows.push_back(std::move(row));
}

void MarkAlarms(const std::set<std::string>& alarmed, std::vector<TreeRow>& rows) {
    for (TreeRow& row : rows) {
        const bool named = row.kind == TreeKind::Instrument || row.kind == TreeKind::Package;
        if (named && row.sign != Sign::Error && alarmed.contains(row.name))
            row.sign = Sign::Alarm;
        MarkAlarms(alarmed, row.rows);
    }
}

TreeRow RowOfResource(const CQorViewDoc& doc, const CFrameRates& rates,
                      const ResourceStatus& resource) REQUIRES(doc.DocLock) {
    const ResourceFigures& figures = resource.figures;
    const PortWord word = WordOf(resource);
    TreeRow row;
    row.id = RowId(ResourceRow, resource.id);
    row.kind = TreeKind::Resource;
    row.sign = word.sign;
    row.name = Utf8Of(resource.name);
    if (!resource.isFile)
        row.name += " " + LineTextOf(resource.serial);
    row.detail = word.text;
    if (word.sign == Sign::Error && figures.lastLoss.code != CommResult::Success)
        row.detail = "lost at " + TimeOfDayText(figures.lastLoss.time);
    const std::uint64_t lineErrors =
        std::accumulate(figures.lineErrors.begin(), figures.lineErrors.end(), std::uint64_t{0});
    TreeRow note;
    note.id = RowId(NoteRow, resource.id);
    note.kind = TreeKind::Note;
    note.name = "discarded " + CountText(figures.bytesDiscarded) + "  lost " +
                CountText(figures.framesLost) + "  line errors " + CountText(lineErrors);
    row.rows.push_back(std::move(note));
    for (const InstrumentFigures& instrument : resource.instruments)
        PutInstrument(doc, RowOfInstrument(doc, rates, instrument, resource), instrument.id, row);
    return row;
}

} // namespace

TreeTarget TargetOf(std::uint64_t row) {
    const auto resource = IdOf<ResourceId>(row, ResourceRow);
    return {resource != ResourceId::None ? resource : IdOf<ResourceId>(row, NoteRow),
            IdOf<InstrumentId>(row, InstrumentRow), IdOf<PackageId>(row, PackageRow)};
}

TreePage MakeTreePage(const CQorViewDoc& doc, const CFrameRates& rates,
                      const std::set<std::string>& alarmed) {
    CRecursiveLock lock(doc.DocLock);
    TreePage page;
    for (const ResourceStatus& resource : doc.Snapshot().resources)
        page.rows.push_back(RowOfResource(doc, rates, resource));
    MarkAlarms(alarmed, page.rows);
    return page;
}

std::int64_t CFrameFlow::Since(const SessionSnapshot& snapshot, std::int64_t now) {
    std::uint64_t frames = 0;
    for (const ResourceStatus& resource : snapshot.resources)
        frames += resource.isFile ? 0 : resource.frames;
    if (frames < Frames || now - Latest > FlowEnds)
        Began.reset();
    if (frames > Frames) {
        Latest = now;
        Began = Began.value_or(now);
    }
    Frames = frames;
    return Began ? now - *Began : 0;
}

std::optional<double> LogGrowth(const LogStatus& log) {
    if (!log.logOpen || log.logElapsed < GrowthKnownAfter)
        return std::nullopt;
    return static_cast<double>(log.fileSize + log.waitingBytes) /
           static_cast<double>(log.logElapsed);
}

std::optional<double> LogBytesPerSecond(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    if (const std::optional<double> growth = LogGrowth(doc.RawLog.Status()))
        return growth;
    double sum = 0.0;
    for (const auto& resource : doc.Resources)
        for (const auto& instrument : resource->Instruments)
            if (const CFrameData* frame = instrument->Live.CurrentFrame();
                frame && instrument->LoggingEnabled && std::isfinite(instrument->Live.FrameRate))
                sum += std::max(instrument->Live.FrameRate, 0.0) *
                       static_cast<double>(frame->Bytes.size() + TimeTagBytes);
    return sum > 0.0 ? std::optional(sum) : std::nullopt;
}

std::optional<double> SecondsLeft(const LogFacts& facts) {
    if (!facts.freeBytes || !facts.bytesPerSecond || !(*facts.bytesPerSecond > 0.0))
        return std::nullopt;
    return static_cast<double>(*facts.freeBytes) / *facts.bytesPerSecond;
}

std::string TimeLeftText(double seconds) {
    constexpr double Most = 9999.0; // beyond a year the figure says nothing
    const double hours = std::floor(seconds / SecondsAnHour);
    if (hours > Most)
        return "over 9999 h left";
    return hours >= 2.0 ? FixedNumber(hours, 0) + " h left"
                        : FixedNumber(std::floor(seconds / 60.0), 0) + " min left";
}

Sign TimeLeftSign(double seconds) {
    return seconds < RedUnder ? Sign::Alarm : seconds < AmberUnder ? Sign::Warning : Sign::None;
}

LogPage MakeLogPage(const LogFacts& facts) {
    const LogStatus& log = facts.log;
    LogPage page;
    page.state = log.recovering          ? LogState::Failed
                 : log.logOpen           ? LogState::Open
                 : log.waitingForNextLog ? LogState::Between
                 : log.runFailed         ? LogState::Failed
                                         : LogState::Idle;
    page.run = facts.run;
    page.speed = facts.speed;
    page.nagging =
        page.state == LogState::Idle && facts.run == RunKind::Live && facts.flowing >= NaggingAfter;
    if (page.state == LogState::Open)
        page.elapsed = HoursText(static_cast<double>(log.logElapsed));
    // The open log by its real name; the one that was shown may have been "(TIME STAMP)".
    page.file =
        page.state == LogState::Open ? std::string(LastPartOf(log.logFilePath)) : facts.nextName;
    page.frames = CountText(log.framesLogged);
    if (const std::optional<double> left = SecondsLeft(facts)) {
        page.left = TimeLeftText(*left);
        page.leftSign = TimeLeftSign(*left);
    }
    if (page.state == LogState::Between)
        page.next = TimeOfDayText(log.logStartTime);
    if (page.state == LogState::Failed)
        page.cause = facts.cause;
    return page;
}

ReplayPage MakeReplayPage(const ReplayFacts& facts) {
    const auto part = [](double of, double all) {
        return all > 0.0 ? std::clamp(of / all, 0.0, 1.0) : 0.0;
    };
    ReplayPage page;
    page.playing = facts.playing;
    page.speed = facts.speed > 0.0 ? "x" + GeneralNumber(facts.speed, 3) : "full";
    page.place = part(static_cast<double>(facts.played), static_cast<double>(facts.inAll));
    page.elapsed = facts.elapsed ? HoursText(*facts.elapsed) : "--";
    page.length = facts.length ? HoursText(*facts.length) : "--";
    for (const double cast : facts.casts)
        if (facts.length && cast >= 0.0 && cast <= *facts.length)
            page.marks.push_back(part(cast, *facts.length));
    return page;
}

ReplayPage MakeReplayPage(const ResourceStatus& file, const LogOutline& outline) {
    ReplayFacts facts;
    facts.playing = file.playing;
    facts.speed = file.playSpeed;
    facts.played = file.filePosition;
    facts.inAll = file.fileSize;
    if (outline.begin && outline.end) {
        facts.length = *outline.end - *outline.begin;
        if (file.fileTime.known)
            facts.elapsed = SecondsOf(file.fileTime) - *outline.begin;
        for (const double cast : outline.castBegins)
            facts.casts.push_back(cast - *outline.begin);
    }
    return MakeReplayPage(facts);
}

std::uint64_t ReplayOffset(double place, std::uint64_t fileSize) {
    return static_cast<std::uint64_t>(std::clamp(place, 0.0, 1.0) * static_cast<double>(fileSize));
}

double ReplayPlaceAfter(const ResourceStatus& file, const LogOutline& outline, double seconds) {
    const double all = static_cast<double>(file.fileSize);
    const double length = outline.begin && outline.end ? *outline.end - *outline.begin : 0.0;
    if (!(length > 0.0) || !(all > 0.0))
        return 0.0;
    return std::clamp(static_cast<double>(file.filePosition) / all + seconds / length, 0.0, 1.0);
}

std::string WhenText(std::int64_t seconds, const FrameTime& now) {
    if (seconds == 0)
        return {};
    FrameTime then = now;
    then.seconds = seconds;
    FrameTime yesterday = now;
    yesterday.seconds -= 24 * 3600;
    const std::string day = FormatTime("%Y-%m-%d", LocalCalendar(then));
    const std::string time = FormatTime("%H:%M", LocalCalendar(then));
    if (day == FormatTime("%Y-%m-%d", LocalCalendar(now)))
        return "today " + time;
    return (day == FormatTime("%Y-%m-%d", LocalCalendar(yesterday)) ? "yesterday " : day + " ") +
           time;
}

std::string CheckedText(bool checked, std::uint64_t count, std::string_view what) {
    return checked ? CountText(count) + ' ' + std::string(what) : CheckedCount(false, 0, what);
}

} // namespace qor
