// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/StatusView.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "views/AncRows.h"
#include "views/NumberText.h"
#include "views/PortWords.h"
#include "views/ShownInstrument.h"

#include <algorithm>
#include <numeric>

namespace qor {

namespace {

constexpr const char* StatusSection = "\\Status";
constexpr std::uint64_t ResourceBit = std::uint64_t{1} << 32; ///< tells the two kinds of ids apart

const std::vector<GridColumn> Columns = {
    {"Name"},          {"State"},          {"Rate", true},   {"Frames", true},    {"Counter", true},
    {"Dropped", true}, {"Checksum", true}, {"Values", true}, {"Discarded", true}, {"Lost", true},
    {"Line", true},    {"Age", true},      {"Wet"}};

std::uint64_t IdOf(const ResourceStatus& resource) {
    return ResourceBit | static_cast<std::uint64_t>(resource.id);
}

std::uint64_t IdOf(const InstrumentFigures& instrument) {
    return static_cast<std::uint64_t>(instrument.id);
}

GridCell Count(std::uint64_t count) {
    GridCell cell{CountText(count)};
    cell.number = static_cast<double>(count);
    return cell;
}

/// What cannot be checked is not "none".
GridCell Checked(bool checked, std::uint64_t count) {
    return checked ? Count(count) : GridCell{"--"};
}

/// The value of the frame counter, as it was sent.
std::string CounterText(const CQorViewIns& instrument) {
    const CSensor* counter = instrument.Definition().Sensor(instrument.Checks.CounterIndex);
    const CFrameData* frame = instrument.Live.CurrentFrame();
    double value = 0.0;
    return counter && frame && RawNumber(*counter, frame->Span(), value) == ConversionStatus::Good
               ? FixedNumber(value, 0)
               : "--";
}

} // namespace

bool CStatusViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    SavePlace(store, prefix + StatusSection);
    store.WriteInteger(prefix + StatusSection, "SinceLog", SinceLog);
    return true;
}

bool CStatusViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    LoadPlace(store, prefix + StatusSection);
    LoadInteger(store, prefix + StatusSection, "SinceLog", SinceLog);
    return true;
}

CStatusView::CStatusView(CQorViewDoc& doc) : Doc(doc), Rates(doc) {
    Grid.title = "Instrument status";
    Grid.ownColours = false;
    Grid.columns = Columns;
}

CStatusView::Counts CStatusView::Counts::Since(const Counts& before) const {
    const auto less = [](std::uint64_t now, std::uint64_t then) {
        return now >= then ? now - then : now; // counts that were reset meanwhile
    };
    return {less(frames, before.frames),
            less(dropped, before.dropped),
            less(checksum, before.checksum),
            less(values, before.values),
            less(discarded, before.discarded),
            less(lost, before.lost),
            less(line, before.line)};
}

CStatusView::Counts CStatusView::CountsOf(const InstrumentFigures& figures) {
    return {.frames = figures.frames,
            .dropped = figures.dropped,
            .checksum = figures.checksumErrors,
            .values = figures.valueErrors};
}

CStatusView::Counts CStatusView::CountsOf(const ResourceStatus& resource) {
    Counts counts{.frames = resource.frames,
                  .dropped = resource.dropped,
                  .checksum = resource.checksumErrors,
                  .discarded = resource.figures.bytesDiscarded,
                  .lost = resource.figures.framesLost};
    for (const InstrumentFigures& instrument : resource.instruments)
        counts.values += instrument.valueErrors;
    counts.line = std::accumulate(resource.figures.lineErrors.begin(),
                                  resource.figures.lineErrors.end(), std::uint64_t{0});
    return counts;
}

/// Counts begin with a connection or with a log, whichever is asked for.
void CStatusView::FollowBeginnings(const SessionSnapshot& snapshot) {
    const bool anotherLog = snapshot.log.logOpen && snapshot.log.logFilePath != LogPath;
    if (snapshot.log.logOpen)
        LogPath = snapshot.log.logFilePath;
    for (const ResourceStatus& resource : snapshot.resources) {
        Known& known = Bases[IdOf(resource)];
        const bool connected = resource.figures.connected || resource.playing;
        const bool begins = Settings.SinceLog != 0
                                ? anotherLog
                                : connected && !known.connected && resource.frames > 0;
        known.connected = connected;
        if (begins)
            BeginCounts(resource);
    }
}

GridRow CStatusView::ResourceRow(const ResourceStatus& resource, std::int64_t now) {
    const Counts counts = SinceBase(IdOf(resource), CountsOf(resource));
    const PortWord word = WordOf(resource);
    GridRow row{Utf8Of(resource.name), "", {word.text}};
    row.id = IdOf(resource);
    row.sign = word.sign == Sign::Ok && counts.Faulty() ? Sign::Warning : word.sign;
    row.number = static_cast<double>(counts.frames);
    std::int64_t age = -1;
    for (const InstrumentFigures& figures : resource.instruments)
        if (const CQorViewIns* instrument = Doc.Find(figures.id);
            instrument && instrument->Live.CurrentFrame()) {
            const std::int64_t one = now - instrument->Live.ArrivalMonotonic;
            age = age < 0 ? one : std::min(age, one);
        }
    row.more = {{"--"},
                Count(counts.frames),
                {"--"},
                Checked(resource.checksCounter, counts.dropped),
                Checked(resource.checksSum, counts.checksum),
                Count(counts.values),
                Count(counts.discarded),
                Count(counts.lost),
                Count(counts.line),
                {AgeText(age)},
                {""}};
    return row;
}

GridRow CStatusView::InstrumentRow(const InstrumentFigures& figures, const ResourceStatus& resource,
                                   std::int64_t now) {
    const Counts counts = SinceBase(IdOf(figures), CountsOf(figures));
    const CQorViewIns& instrument = *Doc.Find(figures.id);
    const bool sent = instrument.Live.CurrentFrame() != nullptr;
    const bool stale = instrument.Live.Stale(now);
    const PortWord port = WordOf(resource);
    GridRow row{Utf8Of(figures.name), "", {}};
    row.id = IdOf(figures);
    row.number = static_cast<double>(counts.frames);
    row.sign = !sent             ? (port.sign == Sign::Off ? Sign::Off : Sign::Waiting)
               : stale           ? Sign::Stale
               : counts.Faulty() ? Sign::Warning
                                 : Sign::Ok;
    row.stale = stale;
    row.value.text = SignWord(sent && !stale ? Sign::Ok : row.sign);
    const std::int64_t age = sent ? now - instrument.Live.ArrivalMonotonic : -1;
    row.age = stale ? AgeText(age) : "";
    Rates.LockIsHeld();
    row.more = {{Rates.TextOf(figures)},
                Count(counts.frames),
                {CounterText(instrument)},
                Checked(figures.checksCounter, counts.dropped),
                Checked(figures.checksSum, counts.checksum),
                Count(counts.values),
                {"--"},
                {"--"},
                {"--"},
                {AgeText(age)},
                {figures.immersed ? "wet" : "dry"}};
    return row;
}

bool CStatusView::Refresh(CQorViewDoc&) {
    CRecursiveLock lock(Doc.DocLock);
    const SessionSnapshot snapshot = Doc.Snapshot();
    FollowBeginnings(snapshot);
    const std::int64_t now = Doc.Clock.MonotonicMilliseconds();
    std::vector<GridRow> rows;
    for (const ResourceStatus& resource : snapshot.resources) {
        rows.push_back(ResourceRow(resource, now));
        for (const InstrumentFigures& instrument : resource.instruments)
            rows.push_back(InstrumentRow(instrument, resource, now));
    }
    std::ranges::stable_sort(rows, [](const GridRow& a, const GridRow& b) {
        return a.sign != b.sign && WorseSign(a.sign, b.sign) == a.sign;
    });
    PageHead head;
    if (rows.empty())
        head = EmptyHead("There is no port and no instrument.");
    else
        head.sign = rows.front().sign;
    if (head.sign != Sign::None && head.sign != Sign::Ok)
        head.leading = rows.front().label + " " + rows.front().value.text;
    const bool changed = rows != Grid.rows || head != Grid.head;
    Grid.rows = std::move(rows);
    Grid.head = std::move(head);
    return changed;
}

void CStatusView::BeginCounts(const ResourceStatus& resource) {
    Bases[IdOf(resource)].base = CountsOf(resource);
    for (const InstrumentFigures& instrument : resource.instruments)
        Bases[IdOf(instrument)].base = CountsOf(instrument);
}

void CStatusView::Reset() {
    for (const ResourceStatus& resource : Doc.Snapshot().resources)
        BeginCounts(resource);
}

Menu CStatusView::ContextMenu(CQorViewDoc&) {
    return {{"Since &Connection", [this] { Settings.SinceLog = 0; }, true, Settings.SinceLog == 0},
            {"Since &Log", [this] { Settings.SinceLog = 1; }, true, Settings.SinceLog != 0},
            {"&Reset", [this] { Reset(); }}};
}

void CStatusView::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    (void)Settings.Load(store, prefix); // without a prefix there is nothing kept
}

void CStatusView::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    (void)Settings.Save(store, prefix);
}

} // namespace qor
