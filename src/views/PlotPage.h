// SPDX-License-Identifier: GPL-3.0-or-later
//
// A page of curves: what a plot shows, apart from any widget.
#pragma once

#include <string>
#include <vector>

namespace qor {

struct PlotPoint {
    double x = 0.0;
    double y = 0.0;
    bool valid = true; ///< false: the point has a place but no value (marked, not joined)
};

struct PlotCurve {
    std::string title;
    std::vector<PlotPoint> points;
};

struct PlotPage {
    std::string title;
    std::string xLabel, yLabel;
    double yMinimum = 0.0, yMaximum = 1.0;
    std::vector<PlotCurve> curves;
};

} // namespace qor
