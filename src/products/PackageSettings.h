// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the operator sets for a package in the session; not in the package file.
#pragma once

#include <optional>

namespace qor {

struct PackageSettings {
    bool UseDefSalinity = false;       ///< scattering starts from DefaultSalinity
    double DefaultSalinity = 35.0;     ///< practical salinity
    double SaturationIrradiance = 0.0; ///< Ek, umol photons m^-2 s^-1; 0 = not set
    double AttenuationWindow = 5.0;    ///< m of depth over which K is taken
};

/// What a session or a call says of these settings.
struct PackageOptions {
    std::optional<double> defaultSalinity;      ///< practical salinity
    std::optional<double> saturationIrradiance; ///< umol photons m^-2 s^-1; 0: not set
    std::optional<double> attenuationWindow;    ///< dbar

    /// The settings with what is said laid over them.
    PackageSettings Over(PackageSettings settings) const {
        settings.UseDefSalinity = settings.UseDefSalinity || defaultSalinity;
        settings.DefaultSalinity = defaultSalinity.value_or(settings.DefaultSalinity);
        settings.SaturationIrradiance =
            saturationIrradiance.value_or(settings.SaturationIrradiance);
        settings.AttenuationWindow = attenuationWindow.value_or(settings.AttenuationWindow);
        return settings;
    }
};

} // namespace qor
