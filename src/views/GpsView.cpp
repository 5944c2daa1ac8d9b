// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/GpsView.h"

#include "base/Text.h"
#include "products/SensorUnits.h"
#include "views/AncRows.h"
#include "views/NumberText.h"
#include "views/PlotRange.h"
#include "views/ShownInstrument.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr const char* GpsSection = "\\GPS";

struct GpsSetting {
    const char* key;
    int CGpsViewSettings::*field;
};
constexpr GpsSetting GpsSettings[] = {
    {"DecimalDegrees", &CGpsViewSettings::DecimalDegrees},
    {"Sentences", &CGpsViewSettings::Sentences},
    {"TrackUnits", &CGpsViewSettings::TrackUnits},
};

/// "48 07.038 N", or degrees with their sign.
std::string AngleText(double degrees, const char* signs, int digits, bool decimal) {
    if (decimal)
        return FixedNumber(degrees, 6);
    // Rounded as a whole, so that no minute is shown as 60.
    const auto thousandths =
        static_cast<std::int64_t>(std::llround(std::fabs(degrees) * 60.0 * 1000.0));
    return Format(
        "%0*d %s %c", digits, static_cast<int>(thousandths / 60'000),
        FixedNumber(static_cast<double>(thousandths % 60'000) / 1000.0, 3, 6, '0').c_str(),
        signs[degrees < 0.0 ? 1 : 0]);
}

std::string TimeOfDayText(double seconds) {
    const auto whole = static_cast<int>(seconds);
    return Format("%02d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
}

/// How far the clock of this computer was from the sentence's when it came.
std::optional<double> ClockError(const SessionState& session, const CQorViewIns& sentence)
    REQUIRES(session.DocLock) {
    const GpsSentence said = ReadGps(sentence.Live);
    const SessionState::FrameOwner* owner = session.OwnerOf(sentence.Id);
    const FrameTime came = MomentOf(session, sentence);
    if (!owner || !owner->resource->KnowsMoments() || !came.known || !said.secondsOfDay)
        return std::nullopt;
    return ClockDifference(SecondsOf(came), *said.secondsOfDay, said.midnight);
}

double ExtentOf(const PlotCurve& curve, double PlotPoint::*along) {
    PlotRange extent{0.0, 0.0};
    bool any = false;
    for (const PlotPoint& point : curve.points) {
        const double place = point.*along;
        if (std::isnan(place))
            continue;
        extent.lower = any ? std::min(extent.lower, place) : place;
        extent.upper = any ? std::max(extent.upper, place) : place;
        any = true;
    }
    return extent.Size();
}

/// Gives an axis limits about its middle when what is there reaches less far.
void Widen(PlotAxis& axis, double extent, double middle, double least) {
    axis.automatic = extent >= least;
    axis.minimum = middle - least;
    axis.maximum = middle + least;
}

bool IsOld(const CQorViewIns& sentence, std::int64_t now) {
    return !sentence.Live.CurrentFrame() || sentence.Live.Stale(now);
}

} // namespace

bool CGpsViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    SavePlace(store, prefix + GpsSection);
    for (const GpsSetting& setting : GpsSettings)
        store.WriteInteger(prefix + GpsSection, setting.key, this->*setting.field);
    return true;
}

bool CGpsViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    LoadPlace(store, prefix + GpsSection);
    for (const GpsSetting& setting : GpsSettings)
        LoadInteger(store, prefix + GpsSection, setting.key, this->*setting.field);
    return true;
}

std::vector<const CQorViewIns*> SentencesOfReceiver(const CQorViewDoc& doc,
                                                    const std::string& name) {
    const CQorViewIns* first = name.empty() ? doc.RoleInstrument(InstrumentRole::Gps) : nullptr;
    if (!first)
        first = FindShown(doc, name, [](const CQorViewIns& instrument) {
            return BringsPosition(instrument.Definition());
        });
    if (!first || !IsGpsSentence(first->Definition()))
        return {};
    std::vector<const CQorViewIns*> sentences{first};
    const SessionState::FrameOwner* owner = doc.OwnerOf(first->Id);
    for (const auto& other : owner->resource->Instruments)
        if (other.get() != first && other->Definition().SyncHeader().starts_with('$') &&
            IsGpsSentence(other->Definition()))
            sentences.push_back(other.get());
    return sentences;
}

GpsSentence ReadReceiver(const std::vector<const CQorViewIns*>& sentences, std::int64_t now) {
    GpsSentence all;
    for (const bool old : {false, true}) // what is old counts where nothing newer is said
        for (const CQorViewIns* sentence : sentences)
            if (IsOld(*sentence, now) == old)
                all.FillFrom(ReadGps(sentence->Live));
    return all;
}

CGpsView::CGpsView(CQorViewDoc& doc)
    : Doc(doc), Watch(doc, [this](CQorViewIns& instrument, const FrameCheckResult&) {
          CRecursiveLock lock(Doc.DocLock);
          Take(instrument);
      }) {}

void CGpsView::Show(const std::string& instrument) {
    CRecursiveLock lock(Doc.DocLock);
    Name = instrument;
    WasThere = false;
    Receiver.clear();
    Track.Clear();
}

void CGpsView::Take(const CQorViewIns& instrument) {
    if (std::ranges::find(Receiver, instrument.Id) == Receiver.end())
        return;
    ++Taken;
    const GpsSentence sentence = ReadGps(instrument.Live);
    if (sentence.position)
        Track.Add(*sentence.position);
    else if (sentence.valid == false)
        Track.MarkGap();
}

bool CGpsView::Refresh(CQorViewDoc&) {
    CRecursiveLock lock(Doc.DocLock);
    const std::int64_t now = Doc.Clock.MonotonicMilliseconds();
    const std::vector<const CQorViewIns*> sentences = SentencesOfReceiver(Doc, Name);
    std::vector<InstrumentId> ids;
    for (const CQorViewIns* sentence : sentences)
        ids.push_back(sentence->Id);
    Doc.RawLog.LockIsHeld();
    const LogStatus log = Doc.RawLog.Status();
    const bool anotherLog = log.logOpen && log.logFilePath != LogPath;
    if (ids != Receiver || anotherLog) {
        // The track is the log's; without one it is that of the window.
        if (anotherLog || Receiver.empty() || ids.empty() || ids.front() != Receiver.front())
            Track.Clear();
        LogPath = log.logOpen ? log.logFilePath : LogPath;
        Receiver = ids;
        for (const CQorViewIns* sentence : sentences)
            Take(*sentence);
        Drawn = Taken + 1;
    }
    WasThere = WasThere || !sentences.empty();
    const PageHead before = Grid.head;
    const std::vector<GridRow> rowsBefore = Grid.rows;
    const bool drawn = Taken != Drawn;
    PageHead head =
        sentences.empty() && !WasThere
            ? EmptyHead(Name.empty() ? "No instrument with a position."
                                     : Utf8Of(Name) + " is no GPS receiver of the session.",
                        "Add instrument")
            : HeadOf(sentences.empty() ? nullptr : sentences.front(), Name, true, now);
    for (const CQorViewIns* sentence : sentences)
        if (head.state == PageState::Waiting && sentence->Live.CurrentFrame())
            head = HeadOf(sentence, Name, true, now);
    FillGrid(sentences, now);
    if (drawn)
        FillTrack();
    Drawn = Taken;
    if (head.state == PageState::Live) {
        const GpsSentence said = ReadReceiver(sentences, now);
        if (said.valid == false)
            head.sign = WorseSign(head.sign, Sign::Warning);
        head.leading =
            said.position ? Grid.rows[0].value.text + " " + Grid.rows[1].value.text : FixText(said);
    }
    Grid.head = Plot.head = head;
    return drawn || head != before || Grid.rows != rowsBefore;
}

void CGpsView::FillGrid(const std::vector<const CQorViewIns*>& sentences, std::int64_t now) {
    const GpsSentence said = ReadReceiver(sentences, now);
    const bool decimal = Settings.DecimalDegrees != 0;
    Grid.title = "GPS";
    Grid.ownColours = false;
    Grid.rows.clear();
    const auto old = [&](auto GpsSentence::*member) {
        return !std::ranges::any_of(sentences, [&](const CQorViewIns* sentence) {
            return !IsOld(*sentence, now) && (ReadGps(sentence->Live).*member).has_value();
        });
    };
    const auto add = [&](const char* label, const char* units, std::optional<double> number,
                         const std::string& text, bool isOld) {
        GridRow row{label, units, {number || !text.empty() ? text : "--"}};
        row.number = number;
        row.id = Grid.rows.size() + 1;
        MarkRow(row, Sign::None, -1, isOld && text != "");
        Grid.rows.push_back(std::move(row));
    };
    const auto addNumber = [&](const char* label, const char* units, std::optional<double> number,
                               int decimals, bool isOld) {
        add(label, units, number, number ? FixedNumber(*number, decimals) : "", isOld);
    };
    const auto latitude = said.position ? std::optional(said.position->latitude) : std::nullopt;
    const auto longitude = said.position ? std::optional(said.position->longitude) : std::nullopt;
    const bool oldPlace = old(&GpsSentence::position);
    add("Latitude", decimal ? "deg" : "", latitude,
        latitude ? AngleText(*latitude, "NS", 2, decimal) : "", oldPlace);
    add("Longitude", decimal ? "deg" : "", longitude,
        longitude ? AngleText(*longitude, "EW", 3, decimal) : "", oldPlace);
    add("Time", "UTC", said.secondsOfDay,
        said.secondsOfDay ? TimeOfDayText(*said.secondsOfDay) : "",
        old(&GpsSentence::secondsOfDay));
    add("Date", "", {},
        said.midnight ? FormatTime("%Y-%m-%d", CalendarFromSeconds(*said.midnight)) : "",
        old(&GpsSentence::midnight));
    add("Fix", "", said.quality ? std::optional<double>(*said.quality) : std::nullopt,
        FixText(said), old(&GpsSentence::valid));
    addNumber("Satellites", "", said.satellites, 0, old(&GpsSentence::satellites));
    addNumber("HDOP", "", said.hdop, 1, old(&GpsSentence::hdop));
    addNumber("Altitude", "m", said.altitude, 1, old(&GpsSentence::altitude));
    const auto knots = said.speed ? std::optional(*said.speed / MpsPerKnot) : std::nullopt;
    addNumber("Speed", "kn", knots, 1, old(&GpsSentence::speed));
    addNumber("Course", "deg", said.course, 0, old(&GpsSentence::course));
    if (said.heading)
        addNumber("Heading", "deg", said.heading, 0, old(&GpsSentence::heading));

    std::optional<double> age, clock;
    for (const CQorViewIns* sentence : sentences)
        if (sentence->Live.CurrentFrame()) {
            const double seconds =
                static_cast<double>(now - sentence->Live.ArrivalMonotonic) / 1000.0;
            age = std::min(age.value_or(seconds), seconds);
            clock = clock ? clock : ClockError(Doc, *sentence);
        }
    add("Age", "", age, age ? AgeText(static_cast<std::int64_t>(std::llround(*age * 1000.0))) : "",
        false);
    add("Clock", "s", clock, clock ? (*clock < 0.0 ? "" : "+") + FixedNumber(*clock, 1) : "",
        false);
    if (Settings.Sentences != 0)
        AddSentences(sentences, now);
}

void CGpsView::AddSentences(const std::vector<const CQorViewIns*>& sentences, std::int64_t now) {
    for (const CQorViewIns* sentence : sentences) {
        GridRow row{Utf8Of(sentence->Name()), "", {"--"}};
        row.id = Grid.rows.size() + 1;
        if (const CFrameData* frame = sentence->Live.CurrentFrame())
            row.value.text = Utf8Of(Trim(frame->Text()));
        MarkRow(row, Sign::None, now - sentence->Live.ArrivalMonotonic, sentence->Live.Stale(now));
        Grid.rows.push_back(std::move(row));
    }
}

void CGpsView::FillTrack() {
    const bool metres = Settings.TrackUnits == 0;
    const std::vector<CTrack::Place> places = Track.All();
    Plot.title = "Track";
    Plot.sameScale = true;
    Plot.key = {.label = metres ? "East" : "Longitude",
                .units = metres ? "m" : "deg",
                .decimals = metres ? 0 : 5};
    Plot.axes = {{.label = metres ? "North" : "Latitude",
                  .units = metres ? "m" : "deg",
                  .decimals = metres ? 0 : 5}};
    PlotCurve track, here;
    track.title = "Track";
    here.title = "Now";
    track.id = 1;
    here.id = 2;
    track.loops = here.loops = true;
    track.units = here.units = Plot.axes[0].units;
    here.style = CurveStyle::Points;
    here.place = 1.0;
    for (const CTrack::Place& place : places) {
        const LocalPlace local = PlaceFrom(places.front().position, place.position);
        const PlotPoint point{metres ? local.east : place.position.longitude,
                              metres ? local.north : place.position.latitude};
        if (place.gap)
            track.points.push_back({point.x, std::numeric_limits<double>::quiet_NaN()});
        track.points.push_back(point);
        here.points = {point};
    }
    // At anchor a track is no wider than the receiver's noise.
    const double least = metres ? 10.0 : 1e-4;
    const PlotPoint middle = here.points.empty() ? PlotPoint() : here.points.front();
    Widen(Plot.key, ExtentOf(track, &PlotPoint::x), middle.x, least);
    Widen(Plot.axes[0], ExtentOf(track, &PlotPoint::y), middle.y, least);
    Plot.curves.clear();
    Plot.curves.push_back(std::move(track));
    Plot.curves.push_back(std::move(here));
}

void CGpsView::Toggle(int CGpsViewSettings::*setting) {
    CRecursiveLock lock(Doc.DocLock);
    Settings.*setting = Settings.*setting == 0;
    Drawn = Taken + 1;
}

Menu CGpsView::ContextMenu(CQorViewDoc&) {
    const auto entry = [this](const char* text, int CGpsViewSettings::*setting) {
        return MenuEntry{text, [this, setting] { Toggle(setting); }, true, Settings.*setting != 0};
    };
    return {entry("&Decimal Degrees", &CGpsViewSettings::DecimalDegrees),
            entry("&Sentences", &CGpsViewSettings::Sentences),
            entry("&Track in Degrees", &CGpsViewSettings::TrackUnits),
            {},
            {"&Clear Track", [this] {
                 CRecursiveLock lock(Doc.DocLock);
                 Track.Clear();
                 Drawn = Taken + 1;
             }}};
}

void CGpsView::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    CRecursiveLock lock(Doc.DocLock);
    if (Settings.Load(store, prefix))
        Drawn = Taken + 1;
}

void CGpsView::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    (void)Settings.Save(store, prefix); // without a prefix there is nothing to keep
}

} // namespace qor
