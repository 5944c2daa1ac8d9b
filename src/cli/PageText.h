// SPDX-License-Identifier: GPL-3.0-or-later
//
// Pages as text and as JSON, so that what a window shows can be read and checked without one.
#pragma once

#include "export/Output.h"
#include "views/GridPage.h"
#include "views/PlotPage.h"

#include <string_view>
#include <vector>

namespace qor {

/// What a window shows: one grid, or one or more plots.
struct ShownPages {
    const GridPage* grid = nullptr;
    std::vector<const PlotPage*> plots;
};

/// One JSON object a line: window, title, rows, curves, axes.
void WritePageJson(COutput& output, std::string_view window, const ShownPages& pages);
void WritePageText(COutput& output, const ShownPages& pages);

} // namespace qor
