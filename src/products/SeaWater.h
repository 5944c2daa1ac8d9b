// SPDX-License-Identifier: GPL-3.0-or-later
//
// Properties of sea water by the thermodynamic equation of 2010 (TEOS-10: IOC, SCOR and IAPSO
// 2010, Manuals and Guides 56) and the solubility of oxygen. Pure arithmetic, used by the optional
// rows of derived products; pressures are sea pressures (0 at the surface) in dbar, temperatures
// degrees C. The practical salinity is OceanMath's.
#pragma once

#include "products/Position.h"

#include <optional>

namespace qor {

/// Absolute Salinity in g/kg from practical salinity. The composition of the water is taken as that
/// of the reference, SP x 35.16504 / 35, because the atlas of its anomalies is not at hand: up to
/// 0.03 g/kg too low in the open ocean. A position in the Baltic Sea gives the Baltic's own
/// relation (Feistel et al. 2010).
double AbsoluteSalinity(double practicalSalinity, const std::optional<GeoPosition>& position);

/// Potential temperature referred to the surface, from in-situ temperature: where the entropy of
/// the Gibbs function is the same.
double PotentialTemperature(double absoluteSalinity, double temperature, double pressure);

/// Conservative Temperature: potential enthalpy over 3991.86795711963 J/(kg K).
double ConservativeTemperature(double absoluteSalinity, double temperature, double pressure);

/// Density in kg/m^3 by the polynomial of 75 terms (Roquet et al. 2015).
double SeaWaterDensity(double absoluteSalinity, double conservativeTemperature, double pressure);

/// Potential density anomaly referred to the surface, kg/m^3 above 1000.
double SigmaTheta(double absoluteSalinity, double conservativeTemperature);

/// Speed of sound in m/s, from the same polynomial.
double SoundSpeed(double absoluteSalinity, double conservativeTemperature, double pressure);

/// Depth in metres of a pressure at a latitude (degrees): the standard ocean's specific volume
/// (35.16504 g/kg, 0 degrees C) over gravity, which grows with depth (Saunders 1981).
double DepthInMetres(double pressure, double latitude);

/// Oxygen in umol/kg that water in balance with moist air of one atmosphere holds, from practical
/// salinity and potential temperature. Garcia and Gordon (1992), fit to Benson and Krause (1984).
double OxygenSolubility(double practicalSalinity, double potentialTemperature);

} // namespace qor
