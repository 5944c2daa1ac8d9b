// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the sentence of a GPS receiver says, whoever talks (GP, GN, GL, ...) and whichever it is
// (RMC, GGA, GLL, VTG, ZDA): its fields are found by what the definition calls them. Pure reading
// of the current frame, under the document's lock.
#pragma once

#include "products/LiveInstrument.h"
#include "products/Position.h"

#include <optional>
#include <string>

namespace qor {

/// Empty: the sentence has no such field, or nothing stands in it.
struct GpsSentence {
    std::optional<GeoPosition> position; ///< of a valid fix
    std::optional<double> secondsOfDay;
    std::optional<std::int64_t> midnight; ///< seconds since 1970
    std::optional<bool> valid;            ///< as the status letter or the quality says
    std::optional<int> quality;           ///< of GGA, 0 to 8
    std::optional<double> satellites;
    std::optional<double> hdop;
    std::optional<double> altitude; ///< m
    std::optional<double> speed;    ///< over ground, m/s
    std::optional<double> course;   ///< over ground, degrees from true north
    std::optional<double> heading;  ///< of the bow, degrees from true north

    /// What this one does not say is taken from another.
    void FillFrom(const GpsSentence& other);
};

/// Whether a definition has fields of a receiver: coordinates, or way or time behind a "$".
bool IsGpsSentence(const CInstrument& definition);
/// Whether it brings positions.
bool BringsPosition(const CInstrument& definition);

GpsSentence ReadGps(const CLiveInstrument& instrument);

/// Whether the sensor is a coordinate that is sent as degrees and minutes, and such a coordinate of
/// the current frame in degrees, south and west negative; empty without its hemisphere.
bool IsCoordinateText(const CSensor& sensor);
/// Whether its name says that it is a latitude, or a longitude; of one of another name only the
/// hemisphere of each frame says which.
bool IsNamedLatitude(const CSensor& sensor);
bool IsNamedLongitude(const CSensor& sensor);
std::optional<double> SignedDegrees(const CLiveInstrument& instrument, const CSensor& sensor);

/// "GPS", "DGPS", ... of a quality, "no fix", or "fix" where only the status is known.
std::string FixText(const GpsSentence& sentence);

} // namespace qor
