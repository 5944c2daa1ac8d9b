// SPDX-License-Identifier: GPL-3.0-or-later
//
// Definitions of sentences with commas between their fields, from a list of fields: "TYPE ID
// 'units' DATA FIT", where a number's fit is POLYU 0 1.
#pragma once

#include <string>
#include <vector>

namespace qor {

inline std::string SentenceDefinition(const std::string& header,
                                      const std::vector<std::string>& fields) {
    std::string text = "VLF_INSTRUMENT " + header + " '' " + std::to_string(header.size()) +
                       " AS 0 NONE\nRATE 1 'Hz' 0 BU 0 NONE\n";
    for (const std::string& field : fields) {
        const std::size_t fit = field.rfind(' '), data = field.rfind(' ', fit - 1);
        const bool poly = field.substr(fit + 1) == "POLYU";
        text += "FIELD NONE ',' 1 AS 0 DELIMITER\n" + field.substr(0, data) + " V" +
                field.substr(data, fit - data) + (poly ? " 1" : " 0") + field.substr(fit) + "\n" +
                (poly ? "0 1\n" : "");
    }
    return text + "FIELD NONE '*' 1 AS 0 DELIMITER\nSENTENCESUM NONE '' V AS 0 NONE\n"
                  "TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n";
}

inline std::string RmcDefinition(const std::string& header) {
    return SentenceDefinition(header,
                              {"UTCTIME NONE '' AF HHMMSS", "FIXSTATUS NONE '' AS NONE",
                               "LATITUDE NONE '' AF DDMM", "LATHEMISPHERE NONE '' AS NONE",
                               "LONGITUDE NONE '' AF DDMM", "LONHEMISPHERE NONE '' AS NONE",
                               "SPEED NONE 'kn' AF POLYU", "COURSE NONE 'deg' AF POLYU",
                               "DATE NONE 'ddmmyy' AI DDMMYY", "MAGVARIATION NONE 'deg' AF POLYU",
                               "MAGHEMISPHERE NONE '' AS NONE"});
}
inline std::string GgaDefinition(const std::string& header) {
    return SentenceDefinition(header,
                              {"UTCTIME NONE '' AF HHMMSS", "LATITUDE NONE '' AF DDMM",
                               "LATHEMISPHERE NONE '' AS NONE", "LONGITUDE NONE '' AF DDMM",
                               "LONHEMISPHERE NONE '' AS NONE", "FIXQUALITY NONE '' AI COUNT",
                               "SATELLITES NONE '' AI COUNT", "HDOP NONE '' AF POLYU",
                               "ALTITUDE NONE 'm' AF POLYU", "ALTUNITS NONE '' AS NONE"});
}
/// An anemometer's sentence with what is in the air.
inline std::string WeatherDefinition(const std::string& header) {
    return SentenceDefinition(header, {"WINDANGLE NONE 'deg' AF POLYU", "WINDREF NONE '' AS NONE",
                                       "WINDSPEED NONE '' AF POLYU", "WINDUNITS NONE '' AS NONE",
                                       "TEMP AIR 'F' AF POLYU", "HUMIDITY NONE '%' AF POLYU",
                                       "BAROMETER NONE 'kPa' AF POLYU"});
}

} // namespace qor
