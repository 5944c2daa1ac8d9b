// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a sensor of some type and unit is likely to measure at sea. The frame maker fills its frames
// with such values; no state.
#pragma once

#include "instrument/Sensor.h"

#include <optional>

namespace qor {

/// Measurements around `base`, slowly swinging by up to `swing` to either side.
struct PlausibleValue {
    double base = 0.0, swing = 0.0;
    bool elapsed = false; ///< instead of both: the seconds since the first frame
};

/// Empty for a sensor about which its type and units say nothing.
std::optional<PlausibleValue> PlausibleValueOf(const CSensor& sensor);

/// The shape of daylight under water over the wavelength in the sensor's id, 0 to 1; 1 without one.
double SpectralShape(const CSensor& sensor);

} // namespace qor
