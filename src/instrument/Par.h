// SPDX-License-Identifier: GPL-3.0-or-later
//
// Photosynthetically available radiation from an irradiance series.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionPlan.h"
#include "instrument/ConversionStatus.h"
#include "instrument/Instrument.h"

#include <string_view>
#include <vector>

namespace qor {

/// One point of the PAR band: a wavelength and the sensor that is read there.
struct ParChannel {
    double wavelength = 0.0; ///< nm
    const CSensor* sensor = nullptr;
};

/// The instrument has optical sensors of the type in "uW/cm^2/nm", whatever their wavelengths.
bool HasParSeries(const CInstrument& instrument, std::string_view type);

/// The channels of a series ("ES", "ED") in 399.5..700.4 nm, sorted, closed at 400 and 700 nm by
/// repeating the end channels. Only optical sensors in "uW/cm^2/nm" whose id is a number.
std::vector<ParChannel> ParSeries(const CInstrument& instrument, std::string_view type);

/// The instrument's PAR list: from "ED" when it has one, replaced by "ES" when it has that.
std::vector<ParChannel> ParList(const CInstrument& instrument);

/// PAR in umol photons m^-2 s^-1 over the list (photon conversion 1/11968.725 for uW/cm^2/nm).
/// A channel that cannot be converted ends with its status; NotUsable for an empty list, NotFinite
/// for an infinite sum.
ConversionStatus ComputePar(const std::vector<ParChannel>& channels, ByteSpan frame, bool immersed,
                            double& par);

/// The same from a frame that is already converted.
ConversionStatus ComputePar(const std::vector<ParChannel>& channels, const FrameValues& values,
                            double& par);

} // namespace qor
