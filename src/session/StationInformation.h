// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the operator says of where and by whom a log is made. Plain texts.
#pragma once

#include <string>

namespace qor {

/// Entered in the station dialog and stored with the session; goes into the raw log's header.
struct StationInformation {
    std::string cruiseId;
    std::string operatorName;
    std::string latitude;
    std::string longitude;
    std::string zone;
    std::string comment;
    std::string stationId;
    std::string cast; ///< two letters in AUTOCAST mode
};

} // namespace qor
