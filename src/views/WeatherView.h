// SPDX-License-Identifier: GPL-3.0-or-later
//
// The weather station, apart from its window: wind at the ship and over ground, air temperature,
// humidity and pressure with their trends, and from where the wind came during ten minutes. The
// true wind is the station's own, or made of the relative one and the GPS receiver's way; it sees
// every frame through its watch.
#pragma once

#include "products/Trend.h"
#include "products/WeatherReading.h"
#include "session/FrameWatch.h"
#include "views/View.h"
#include "views/WindowPlace.h"

#include <array>
#include <string>
#include <vector>

namespace qor {

/// Kept for each weather view under the caller's section prefix.
struct CWeatherViewSettings : WindowPlace {
    int Knots = 0;
    int Trends = 1;

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

class CWeatherView : public CView {
  public:
    explicit CWeatherView(CQorViewDoc& doc);

    CWeatherViewSettings Settings;

    void Show(const std::string& instrument) override;
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Grid, {&Plot}}; }
    Menu ContextMenu(CQorViewDoc& doc) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

  private:
    enum Trended { Temperature, Humidity, Pressure, TrendCount };

    std::vector<const CQorViewIns*> Find() const REQUIRES(Doc.DocLock);
    void Take(const CQorViewIns& instrument) REQUIRES(Doc.DocLock);
    void FillGrid(const WeatherReading& fresh, const std::vector<const CQorViewIns*>& station,
                  std::int64_t now) REQUIRES(Doc.DocLock);
    /// Rows. `oldFor`: milliseconds, -1 when the value is fresh.
    void AddWind(const char* label, const std::optional<Wind>& wind, std::int64_t oldFor);
    void AddTrended(const char* label, const char* units, std::optional<double> value,
                    Trended which, std::int64_t oldFor) REQUIRES(Doc.DocLock);
    void AddRow(const std::string& label, const char* units, std::optional<double> number,
                int decimals, std::int64_t oldFor);
    void FillRose(const std::optional<Wind>& now, bool isTrue) REQUIRES(Doc.DocLock);
    void Toggle(int CWeatherViewSettings::*setting);

    CQorViewDoc& Doc;
    std::string Name;
    bool WasThere = false;
    std::vector<InstrumentId> Station GUARDED_BY(Doc.DocLock);
    std::array<CTrend, TrendCount> Trends GUARDED_BY(Doc.DocLock);
    CWindRose TrueRose GUARDED_BY(Doc.DocLock), RelativeRose GUARDED_BY(Doc.DocLock);
    GridPage Grid;
    PlotPage Plot;
    CFrameWatch Watch; ///< the last member: sees what is above
};

} // namespace qor
