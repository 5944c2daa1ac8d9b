// SPDX-License-Identifier: GPL-3.0-or-later
//
// A water column for the simulator: temperature with a thermocline, salinity, a deep chlorophyll
// maximum, light that falls off with depth after its colour, and a profiler that sinks through it.
// Plausible figures for training and tests, no reference data.
#pragma once

#include "simulation/FrameMaker.h"

#include <functional>

namespace qor {

/// Values of casts from the surface to `depth` metres and back, one after the other; `seconds`
/// tells the time since the start. NaN for sensors that the model does not know.
CFrameMaker::ValueSource CastValues(double depth, std::function<double()> seconds);

} // namespace qor
