// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/WeatherView.h"

#include "base/Text.h"
#include "products/SensorUnits.h"
#include "views/AncRows.h"
#include "views/FrameRates.h"
#include "views/GpsView.h"
#include "views/ShownInstrument.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace qor {

namespace {

constexpr const char* WeatherSection = "\\Weather";
constexpr double RoseMargin = 1.1;

bool IsStation(const CQorViewIns& instrument) {
    return IsWeatherStation(instrument.Definition());
}

bool IsFresh(const CQorViewIns& part, std::int64_t now) {
    return part.Live.CurrentFrame() && !part.Live.Stale(now);
}

/// What the fresh parts of the station say, with the true wind made where they do not give it and
/// the ship's way is known and fresh.
WeatherReading ReadStation(const CQorViewDoc& doc, const std::vector<const CQorViewIns*>& station)
    REQUIRES(doc.DocLock) {
    const std::int64_t now = doc.Clock.MonotonicMilliseconds();
    WeatherReading reading;
    for (const CQorViewIns* part : station)
        if (IsFresh(*part, now))
            reading.FillFrom(ReadWeather(part->Live));
    if (reading.trueWind || !reading.relative || !reading.relative->from)
        return reading;
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

std::vector<const CQorViewIns*> NewestFirst(std::vector<const CQorViewIns*> station) {
    std::ranges::stable_sort(station, std::ranges::greater(),
                             [](const CQorViewIns* part) { return part->Live.ArrivalMonotonic; });
    return station;
}

/// How long ago, in milliseconds, one of them last said something that none says freshly.
template <typename Value>
std::int64_t AgeOf(const std::vector<const CQorViewIns*>& newestFirst,
                   std::optional<Value> WeatherReading::*said, std::int64_t now) {
    for (const CQorViewIns* part : newestFirst)
        if ((ReadWeather(part->Live).*said).has_value())
            return now - part->Live.ArrivalMonotonic;
    return -1;
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
    SavePlace(store, prefix + WeatherSection);
    store.WriteInteger(prefix + WeatherSection, "Knots", Knots);
    store.WriteInteger(prefix + WeatherSection, "Trends", Trends);
    return true;
}

bool CWeatherViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    LoadPlace(store, prefix + WeatherSection);
    LoadInteger(store, prefix + WeatherSection, "Knots", Knots);
    LoadInteger(store, prefix + WeatherSection, "Trends", Trends);
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
    TrueRose.Forget(time);
    RelativeRose.Forget(time);
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
    for (const CQorViewIns* part : station)
        if (part->Live.CurrentFrame()) { // one that never came is no part of the station
            const PageHead its = HeadOf(part, Name, true, now);
            head = head.state == PageState::Waiting || WorseSign(head.sign, its.sign) != head.sign
                       ? its
                       : head;
        }
    const PageHead headBefore = Grid.head;
    const std::vector<GridRow> rowsBefore = Grid.rows;
    const WeatherReading fresh = ReadStation(Doc, station);
    const bool isTrue = TrueRose.Count() > 0;
    FillRose(isTrue ? fresh.trueWind : fresh.relative, isTrue);
    FillGrid(fresh, station, now);
    if (head.state == PageState::Live && !Grid.rows.empty()) {
        const std::size_t wind = Grid.rows[0].number || !Grid.rows[2].number ? 0 : 2;
        head.leading = Grid.rows[wind].value.text + " " + Grid.rows[wind].units + " " +
                       Grid.rows[wind + 1].value.text + " " + Grid.rows[wind + 1].units +
                       (wind == 0 ? "" : " relative");
    }
    Grid.head = Plot.head = head;
    return head != headBefore || Grid.rows != rowsBefore;
}

void CWeatherView::AddRow(const std::string& label, const char* units, std::optional<double> number,
                          int decimals, std::int64_t oldFor) {
    GridRow row{label, units, {number ? FixedNumber(*number, decimals) : "--"}};
    row.number = number;
    row.id = Grid.rows.size() + 1;
    MarkRow(row, Sign::None, oldFor, oldFor >= 0 && number);
    Grid.rows.push_back(std::move(row));
}

void CWeatherView::AddWind(const char* label, const std::optional<Wind>& wind,
                           std::int64_t oldFor) {
    const bool knots = Settings.Knots != 0;
    std::optional<double> speed = wind ? std::optional(wind->speed) : std::nullopt;
    if (speed && knots)
        *speed /= MpsPerKnot;
    AddRow(std::string(label) + " wind", knots ? "kn" : "m/s", speed, 1, oldFor);
    AddRow(std::string(label) + " wind from", "deg", wind ? wind->from : std::nullopt, 0, oldFor);
}

void CWeatherView::AddTrended(const char* label, const char* units, std::optional<double> value,
                              Trended which, std::int64_t oldFor) {
    AddRow(label, units, value, 1, oldFor);
    if (Settings.Trends == 0)
        return;
    // Nothing is said now: the change would be that of an earlier frame.
    const auto change = value ? Trends[which].SinceThreeHours() : std::nullopt;
    GridRow row{
        std::string(label) + " trend",
        units,
        {change ? SignedNumber(change->difference, 1) + " in " + SpanOf(change->seconds) : "--"}};
    row.number = change ? std::optional(change->difference) : std::nullopt;
    row.id = Grid.rows.size() + 1;
    MarkRow(row, Sign::None, oldFor, oldFor >= 0 && change);
    Grid.rows.push_back(std::move(row));
}

void CWeatherView::FillGrid(const WeatherReading& fresh,
                            const std::vector<const CQorViewIns*>& station, std::int64_t now) {
    const std::vector<const CQorViewIns*> newestFirst = NewestFirst(station);
    WeatherReading said = fresh;
    for (const CQorViewIns* part : newestFirst) // what is old counts where nothing newer is said
        said.FillFrom(ReadWeather(part->Live));
    const auto oldFor = [&](auto WeatherReading::*value) {
        return fresh.*value ? -1 : AgeOf(newestFirst, value, now);
    };
    Grid.title = "Weather";
    Grid.ownColours = false;
    Grid.rows.clear();
    AddWind("True", said.trueWind, oldFor(&WeatherReading::trueWind));
    AddWind("Relative", said.relative, oldFor(&WeatherReading::relative));
    AddTrended("Air temperature", "deg C", said.airTemperature, Temperature,
               oldFor(&WeatherReading::airTemperature));
    AddTrended("Humidity", "%", said.humidity, Humidity, oldFor(&WeatherReading::humidity));
    AddTrended("Pressure", "hPa", said.pressure, Pressure, oldFor(&WeatherReading::pressure));
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
