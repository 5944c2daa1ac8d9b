// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/WeatherView.h"

#include "base/Text.h"
#include "views/AncRows.h"
#include "views/FrameRates.h"
#include "views/GpsView.h"
#include "views/ShownInstrument.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qor {

namespace {

constexpr const char* SectionName = "\\Weather";
constexpr double RoseMargin = 1.1;
constexpr double MetresPerSecondInAKnot = 1852.0 / 3600.0;

bool IsStation(const CQorViewIns& instrument) {
    return IsWeatherStation(instrument.Definition());
}

/// What the station says now, with the true wind made where it does not give it and the ship's way
/// is known and fresh.
WeatherReading ReadStation(const CQorViewDoc& doc, const std::vector<const CQorViewIns*>& station)
    REQUIRES(doc.DocLock) {
    WeatherReading reading;
    for (const CQorViewIns* part : station)
        reading.FillFrom(ReadWeather(part->Live));
    if (reading.trueWind || !reading.relative || !reading.relative->from)
        return reading;
    const std::int64_t now = doc.Clock.MonotonicMilliseconds();
    std::vector<const CQorViewIns*> fresh = SentencesOfReceiver(doc, {});
    std::erase_if(fresh, [now](const CQorViewIns* sentence) { return sentence->Live.Stale(now); });
    const GpsSentence way = ReadReceiver(fresh, now);
    if (!way.speed || way.valid == false)
        return reading;
    // At anchor a receiver gives no course, and none is needed but for the bow's.
    const std::optional<double> bow = reading.heading ? reading.heading
                                      : way.heading   ? way.heading
                                                      : way.course;
    if (bow && (way.course || *way.speed == 0.0))
        reading.trueWind = TrueWind(reading.relative->speed, *reading.relative->from,
                                    {*way.speed, way.course.value_or(0.0), *bow});
    return reading;
}

std::string SignedNumber(double value, int decimals) {
    const std::string text = FixedNumber(value, decimals);
    return value < 0.0 ? text : "+" + text;
}

/// "3 h", or since it began.
std::string SpanOf(double seconds) {
    const auto minutes = static_cast<int>(seconds / 60.0 + 0.5);
    return minutes >= 180 ? "3 h" : Format("%d min", minutes);
}

PlotPoint OnRose(double degrees, double radius) {
    const double radians = degrees * std::numbers::pi / 180.0;
    return {radius * std::sin(radians), radius * std::cos(radians)};
}

/// Petals out of the middle, as long as the percentage of their sector.
PlotCurve RoseCurve(const char* title, std::uint64_t id, const CWindRose& rose) {
    constexpr double Width = 360.0 / static_cast<double>(CWindRose::Sectors);
    PlotCurve curve;
    curve.title = title;
    curve.id = id;
    curve.units = "%";
    curve.loops = true;
    double middle = 0.0;
    for (const double share : rose.Shares()) {
        if (share > 0.0) {
            curve.points.push_back({0.0, 0.0});
            for (const double part : {-0.4, -0.2, 0.0, 0.2, 0.4})
                curve.points.push_back(OnRose(middle + part * Width, 100.0 * share));
            curve.points.push_back({0.0, 0.0});
        }
        middle += Width;
    }
    return curve;
}

/// A round percentage that no petal reaches beyond.
double RingAround(const CWindRose& rose) {
    const auto shares = rose.Shares();
    const double greatest = 100.0 * *std::ranges::max_element(shares);
    double ring = 100.0;
    for (const double percent : {50.0, 25.0, 10.0})
        ring = greatest <= percent ? percent : ring;
    return ring;
}

} // namespace

bool CWeatherViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    SavePlace(store, prefix + SectionName);
    store.WriteInteger(prefix + SectionName, "Knots", Knots);
    store.WriteInteger(prefix + SectionName, "Trends", Trends);
    return true;
}

bool CWeatherViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    LoadPlace(store, prefix + SectionName);
    LoadInteger(store, prefix + SectionName, "Knots", Knots);
    LoadInteger(store, prefix + SectionName, "Trends", Trends);
    return true;
}

CWeatherView::CWeatherView(CQorViewDoc& doc)
    : Doc(doc), Watch(doc, [this](CQorViewIns& instrument, const FrameCheckResult&) {
          CRecursiveLock lock(Doc.DocLock);
          Take(instrument);
      }) {}

void CWeatherView::Show(const std::string& instrument) {
    CRecursiveLock lock(Doc.DocLock);
    Name = instrument;
    WasThere = false;
    Station.clear();
}

/// The station: the one named, else the one of the role, else the first that is one; and those
/// beside it on its resource.
std::vector<const CQorViewIns*> CWeatherView::Find() const {
    const CQorViewIns* first =
        Name.empty() ? Doc.RoleInstrument(InstrumentRole::WeatherStation) : nullptr;
    if (!first)
        first = FindShown(Doc, Name, IsStation);
    if (!first || !IsStation(*first))
        return {};
    std::vector<const CQorViewIns*> station{first};
    const SessionState::FrameOwner* owner = Doc.OwnerOf(first->Id);
    for (const auto& other : owner->resource->Instruments)
        if (other.get() != first && IsStation(*other))
            station.push_back(other.get());
    return station;
}

void CWeatherView::Take(const CQorViewIns& instrument) {
    if (std::ranges::find(Station, instrument.Id) == Station.end())
        return;
    const double time = FrameSeconds(instrument.Live);
    const WeatherReading said = ReadWeather(instrument.Live);
    const std::optional<double> values[TrendCount] = {said.airTemperature, said.humidity,
                                                      said.pressure};
    for (int i = 0; i < TrendCount; ++i)
        if (values[i])
            Trends[static_cast<std::size_t>(i)].Add(time, *values[i]);
    if (!said.relative && !said.trueWind)
        return;
    const WeatherReading whole = ReadStation(Doc, {&instrument});
    if (whole.relative)
        RelativeRose.Add(time, *whole.relative);
    if (whole.trueWind)
        TrueRose.Add(time, *whole.trueWind);
}

bool CWeatherView::Refresh(CQorViewDoc&) {
    CRecursiveLock lock(Doc.DocLock);
    const std::vector<const CQorViewIns*> station = Find();
    std::vector<InstrumentId> ids;
    for (const CQorViewIns* part : station)
        ids.push_back(part->Id);
    if (ids != Station) {
        Station = ids;
        Trends = {};
        TrueRose.Clear();
        RelativeRose.Clear();
        for (const CQorViewIns* part : station)
            if (part->Live.CurrentFrame())
                Take(*part);
    }
    WasThere = WasThere || !station.empty();
    const std::int64_t now = Doc.Clock.MonotonicMilliseconds();
    const CQorViewIns* first = station.empty() ? nullptr : station.front();
    PageHead head = !first && !WasThere
                        ? EmptyHead(Name.empty() ? "No instrument with wind or weather."
                                                 : Utf8Of(Name) + " is no weather station of the "
                                                                  "session.",
                                    "Add instrument")
                        : HeadOf(first, Name, true, now);
    const PageHead headBefore = Grid.head;
    const std::vector<GridRow> rowsBefore = Grid.rows;
    const WeatherReading reading = ReadStation(Doc, station);
    FillGrid(reading, first && first->Live.Stale(now),
             first ? now - first->Live.ArrivalMonotonic : -1);
    FillRose(reading.trueWind ? reading.trueWind : reading.relative, TrueRose.Count() > 0);
    if (head.state == PageState::Live && !Grid.rows.empty()) {
        const std::size_t wind = reading.trueWind || !reading.relative ? 0 : 2;
        head.leading = Grid.rows[wind].value.text + " " + Grid.rows[wind].units + " " +
                       Grid.rows[wind + 1].value.text + " " + Grid.rows[wind + 1].units +
                       (wind == 0 ? "" : " relative");
    }
    Grid.head = Plot.head = head;
    return head != headBefore || Grid.rows != rowsBefore;
}

void CWeatherView::AddRow(const std::string& label, const char* units, std::optional<double> number,
                          int decimals) {
    GridRow row{label, units, {number ? FixedNumber(*number, decimals) : "--"}};
    row.number = number;
    row.id = Grid.rows.size() + 1;
    Grid.rows.push_back(std::move(row));
}

void CWeatherView::AddWind(const char* label, const std::optional<Wind>& wind) {
    const bool knots = Settings.Knots != 0;
    std::optional<double> speed = wind ? std::optional(wind->speed) : std::nullopt;
    if (speed && knots)
        *speed /= MetresPerSecondInAKnot;
    AddRow(std::string(label) + " wind", knots ? "kn" : "m/s", speed, 1);
    AddRow(std::string(label) + " wind from", "deg", wind ? wind->from : std::nullopt, 0);
}

void CWeatherView::AddTrended(const char* label, const char* units, std::optional<double> value,
                              Trended which) {
    AddRow(label, units, value, 1);
    const auto change = Trends[which].SinceThreeHours();
    if (Settings.Trends == 0)
        return;
    GridRow row{
        std::string(label) + " trend",
        units,
        {change ? SignedNumber(change->difference, 1) + " in " + SpanOf(change->seconds) : "--"}};
    row.number = change ? std::optional(change->difference) : std::nullopt;
    row.id = Grid.rows.size() + 1;
    Grid.rows.push_back(std::move(row));
}

void CWeatherView::FillGrid(const WeatherReading& reading, bool stale, std::int64_t age) {
    Grid.title = "Weather";
    Grid.ownColours = false;
    Grid.rows.clear();
    AddWind("True", reading.trueWind);
    AddWind("Relative", reading.relative);
    AddTrended("Air temperature", "deg C", reading.airTemperature, Temperature);
    AddTrended("Humidity", "%", reading.humidity, Humidity);
    AddTrended("Pressure", "hPa", reading.pressure, Pressure);
    for (GridRow& row : Grid.rows)
        MarkRow(row, Sign::None, age, stale && row.number.has_value());
}

/// The share of each sector as a petal, and now as a line out of the middle, in a ring of so many
/// percent. Behind the true winds the relative ones, where ahead is up.
void CWeatherView::FillRose(const std::optional<Wind>& now, bool isTrue) {
    const CWindRose& rose = isTrue ? TrueRose : RelativeRose;
    const double ring = RingAround(rose);
    Plot.title = isTrue ? "Wind of 10 min" : "Relative wind of 10 min";
    Plot.sameScale = true;
    Plot.key = {.label = isTrue ? "East" : "Starboard", .units = "%", .decimals = 0};
    Plot.axes = {{.label = isTrue ? "North" : "Ahead", .units = "%", .decimals = 0}};
    for (PlotAxis* axis : {&Plot.key, &Plot.axes[0]}) {
        axis->automatic = false;
        axis->minimum = -RoseMargin * ring;
        axis->maximum = RoseMargin * ring;
    }
    PlotCurve winds = RoseCurve("Winds from", 1, rose), direction, circle;
    winds.broad = true;
    direction.title = "Now";
    direction.id = 2;
    direction.place = 1.0;
    direction.units = "%";
    direction.loops = circle.loops = true;
    if (now && now->from)
        direction.points = {{0.0, 0.0}, OnRose(*now->from, ring)};
    circle.title = FixedNumber(ring, 0) + " %";
    circle.id = 3;
    circle.frozen = true;
    for (int degrees = 0; degrees <= 360; degrees += 5)
        circle.points.push_back(OnRose(degrees, ring));
    Plot.curves.clear();
    for (PlotCurve* curve : {&winds, &direction, &circle})
        Plot.curves.push_back(std::move(*curve));
    if (isTrue)
        Plot.curves.push_back(RoseCurve("Relative", 4, RelativeRose));
    if (isTrue)
        Plot.curves.back().role = CurveRole::PreviousCast;
}

void CWeatherView::Toggle(int CWeatherViewSettings::*setting) {
    Settings.*setting = Settings.*setting == 0;
}

Menu CWeatherView::ContextMenu(CQorViewDoc&) {
    return {
        {"&Metres a Second", [this] { Settings.Knots = 0; }, true, Settings.Knots == 0},
        {"&Knots", [this] { Settings.Knots = 1; }, true, Settings.Knots != 0},
        {"&Trends", [this] { Toggle(&CWeatherViewSettings::Trends); }, true, Settings.Trends != 0}};
}

void CWeatherView::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    (void)Settings.Load(store, prefix); // without a prefix there is nothing kept
}

void CWeatherView::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    (void)Settings.Save(store, prefix);
}

} // namespace qor
