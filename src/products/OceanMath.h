// SPDX-License-Identifier: GPL-3.0-or-later
//
// The formulas behind derived products: tilt, depth, velocity, salinity, scattering, light
// saturation. Each is one function from numbers to a number, usable by every display and by the
// command line. Sensors, frames and failures are DerivedRows' business, diffuse attenuation is
// Attenuation's.
#pragma once

#include "products/VelocityState.h"

#include <cstdint>
#include <optional>

namespace qor {

/// Angle between the instrument's axis and the vertical, degrees, from its tilts about two
/// horizontal axes (degrees): atan(hypot(tan x, tan y)). 0 to 90, symmetric in x and y.
double TiltDegrees(double x, double y);

/// Depth in the pressure's own units: pressure less the offset that was read in air.
double DepthOf(double pressure, double offset);

/// Practical salinity on the scale of 1978 from conductivity (mS/cm), temperature (degrees C,
/// IPTS-68) and pressure (dbar); UNESCO Technical Papers in Marine Science 44 (1983). Valid for
/// salinities 2 to 42, -2 to 35 degrees C, 0 to 10000 dbar. A result that is not finite is 0.
double PracticalSalinity(double conductivity, double temperature, double pressure);

/// Volume scattering of pure seawater at 117 degrees, 1/(m sr), at a wavelength (nm, above 0) and a
/// practical salinity; Morel (1974) in the usual power law.
double SeawaterScattering(double wavelength, double salinity);

/// Particulate volume scattering, 1/(m sr): the measured total less the seawater's.
double ParticulateScattering(double total, double wavelength, double salinity);

/// Particulate backscattering coefficient, 1/m, from the particulate volume scattering at 117
/// degrees: 2 pi chi with chi = 1.1 (Boss and Pegau 2001).
double ParticulateBackscattering(double particulateScattering);

/// Backscattering coefficient of seawater, 1/m, at a wavelength (nm, above 0).
double WaterBackscattering(double wavelength);

/// Light saturation of photosynthesis in percent: 100 tanh(PAR / Ek), both in umol photons m^-2
/// s^-1, Ek above 0. Jassby and Platt (1976); Ek after Talling (1957).
double LightSaturation(double par, double saturationIrradiance);

/// The pressure that a display's velocity was last computed at, and the timer then; one a display.
struct PressureHistory {
    std::optional<double> previous, timer;
};

/// Whether the pressure (dbar) has moved far enough since the last velocity, 0.25, for a new
/// one. The first pressure only begins the history.
bool PressureMoved(PressureHistory& history, double pressure);

/// Moves the history and the shared state on to a new velocity, after PressureMoved said yes. The
/// time is the timer's difference when the package has a timer, otherwise the difference of frame
/// numbers over the frame rate (Hz), and 1 s for the first velocity. While a timer that comes
/// slower than the pressure stands still nothing moves.
void ComputeVelocity(PressureHistory& history, VelocityState& state, double pressure,
                     std::optional<double> timer, std::uint32_t frameNumber, double frameRate);

} // namespace qor
