// SPDX-License-Identifier: GPL-3.0-or-later
//
// The depth profile, apart from its window: values of the cast under way, or the last one, against
// depth, which runs down from 0, with the cast before behind them. What a cast is and which depth
// values belong to is the history's business. On the user-interface thread.
#pragma once

#include "views/HistoryPlot.h"
#include "views/View.h"

#include <string>
#include <vector>

namespace qor {

/// Kept for each profile view under the caller's section prefix.
struct CDepthProfileSettings : CHistoryPlotSettings {
    int UpCast = 0;
    int PreviousCast = 1;

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

class CDepthProfileView : public CView {
  public:
    /// It is destroyed before the document.
    explicit CDepthProfileView(CQorViewDoc& doc);

    CDepthProfileSettings Settings;

    void Show(const std::string& instrument) override { Plot.Show(instrument); }
    /// A value ("TEMP(W)", "SALINITY", "NAME: TYPE(ID)") or another entry of the menu.
    std::string Select(CQorViewDoc& doc, std::string_view item) override;
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {nullptr, {&Page}}; }
    Menu ContextMenu(CQorViewDoc& doc) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    /// A choice of the operator's for an axis of the page, -1 for the key axis.
    void SetAxis(int axis, const AxisChoice& choice) { Plot.SetAxis(Page, axis, choice); }
    /// How high the plot is: no more than two points a pixel are taken.
    void SetPlotSize(int width, int height) override;

  private:
    /// A stretch of time that is drawn as one curve.
    struct Stretch {
        double from, to;
        const char* suffix;
        int number; ///< tells an item's curves apart
        CurveRole role = CurveRole::Series;
    };

    void Draw() REQUIRES(Plot.Doc.DocLock);
    std::vector<Stretch> Stretches(const CCastDetector& casts) const;
    void DrawCurve(const CHistoryPlot::Curve& curve, std::size_t place, const Stretch& stretch)
        REQUIRES(Plot.Doc.DocLock);
    void MarkDepth(std::optional<double> depth) REQUIRES(Plot.Doc.DocLock);
    void Toggle(int CDepthProfileSettings::*setting);

    CHistoryPlot Plot;
    PlotPage Page;
    std::size_t MostPoints = 2000;
    std::vector<HistoryPoint> Points; ///< its memory is used from curve to curve
};

} // namespace qor
