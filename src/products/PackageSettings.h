// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the operator sets for a package in the session; not in the package file.
#pragma once

namespace qor {

struct PackageSettings {
    bool UseDefSalinity = false;       ///< scattering starts from DefaultSalinity
    double DefaultSalinity = 35.0;     ///< practical salinity
    double SaturationIrradiance = 0.0; ///< Ek, umol photons m^-2 s^-1; 0 = not set
    double AttenuationWindow = 5.0;    ///< m of depth over which K is taken
};

} // namespace qor
