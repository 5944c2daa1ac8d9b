// SPDX-License-Identifier: GPL-3.0-or-later
//
// The time series, apart from its window: values against time, a lane for each unit, over the last
// minutes or as far back as the history goes. Gaps are gaps, and the curve of an instrument that
// sends no more ends. On the user-interface thread.
#pragma once

#include "views/HistoryPlot.h"
#include "views/View.h"

#include <map>
#include <string>
#include <vector>

namespace qor {

/// Kept for each series view under the caller's section prefix.
struct CTimeSeriesSettings : CHistoryPlotSettings {
    int Span = 1; ///< by TimeSpans
    int LocalTime = 0;
    int AlarmLimits = 0; ///< are shaded

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

struct TimeSpan {
    const char* text;
    double seconds; ///< 0: all that is there
};
inline constexpr TimeSpan TimeSpans[] = {
    {"1 min", 60.0}, {"10 min", 600.0}, {"1 h", 3600.0}, {"All", 0.0}};

class CTimeSeriesView : public CView {
  public:
    /// It is destroyed before the document.
    explicit CTimeSeriesView(CQorViewDoc& doc);

    CTimeSeriesSettings Settings;

    void Show(const std::string& instrument) override { Plot.Show(instrument); }
    /// A value ("TEMP(W)", "TILT", "NAME: TYPE(ID)") or another entry of the menu ("1 h").
    std::string Select(CQorViewDoc& doc, std::string_view item) override;
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {nullptr, {&Page}}; }
    Menu ContextMenu(CQorViewDoc& doc) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    void TakeRanges(const RangesFinder& find) override;
    /// A choice of the operator's for an axis of the page.
    void SetAxis(int axis, const AxisChoice& choice) { Plot.SetAxis(Page, axis, choice); }
    /// How wide the plot is: no more than two points a pixel are taken.
    void SetPlotSize(int width, int height) override;
    void SetKeyRange(const std::optional<PlotRange>& zoomed) override;

  private:
    void Draw() REQUIRES(Plot.Doc.DocLock);
    void SetTimes() REQUIRES(Plot.Doc.DocLock);
    void DrawCurve(const CHistoryPlot::Curve& curve, std::size_t place) REQUIRES(Plot.Doc.DocLock);
    void ShadeLimits() REQUIRES(Plot.Doc.DocLock);
    void Set(int CTimeSeriesSettings::*setting, int value);

    CHistoryPlot Plot;
    PlotPage Page;
    std::map<std::uint64_t, WarningRanges> Limits; ///< of curves, by their id
    std::size_t MostPoints = 2000;
    std::optional<PlotRange> Zoomed;
    std::vector<HistoryPoint> Points; ///< its memory is used from curve to curve
};

} // namespace qor
