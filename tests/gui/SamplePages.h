// SPDX-License-Identifier: GPL-3.0-or-later
//
// Made-up pages for looking at widgets and for testing them: a moored profiler with one spectrum,
// one cast, ten minutes of tilt and chlorophyll with a gap.
#pragma once

#include "views/GridPage.h"
#include "views/PlotPage.h"
#include "views/SessionPages.h"

namespace qor {

GridPage SampleAncillary();
GridPage SampleStatus();
PlotPage SampleSpectrum();
PlotPage SampleWavelengths();
PlotPage SampleProfile();
PlotPage SampleSeries();
PlotPage SampleTrack();
PlotPage SampleComparison();
TreePage SampleTree();
LogPage SampleLog(LogState state, RunKind run);

} // namespace qor
