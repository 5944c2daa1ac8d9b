// SPDX-License-Identifier: GPL-3.0-or-later
//
// The dialogs of logging and of the program, apart from their widgets: station, log options,
// naming, override, application settings, tare. A form holds what stands in the fields; its check
// says what is wrong with each, and what OK would take. Pure but for looking at named folders; on
// the user-interface thread, without a lock. Fields are named as the members.
#pragma once

#include "session/SessionState.h"
#include "views/FormFaults.h"

#include <optional>
#include <string>

namespace qor {

/// The texts of the station; `naming` is the mode whose names may be made of them.
FormFaults CheckForm(const StationInformation& station, LogNamingMode naming);

// OK takes what was changed in the form since it was opened; the rest stays as it is by now,
// because the end of a log moves names on.
StationInformation WithChanges(StationInformation now, const StationInformation& opened,
                               const StationInformation& form);

struct LogOptionsForm {
    bool timeStamps = false;
    bool gpsHeader = false;
    bool hasGps = false; ///< the role is filled
    bool useDuration = false;
    std::string duration; ///< [HH:]MM:SS
    bool useRepeat = false;
    std::string repeat;
    bool loggingSounds = false;
    bool overwriteExisting = false;
};
LogOptionsForm FormOf(const LogOptions& options, bool hasGps);
FormFaults CheckForm(const LogOptionsForm& form);
std::optional<LogOptions> SettingsOf(const LogOptionsForm& form);

struct NamingForm {
    LogNamingMode mode = LogNamingMode::TimeStamp;
    std::string directory;
    std::string userFileName;
    std::string sqmBaseName;
    std::string sqmSequence = "0";
    StationInformation station; ///< names are made of it in mode AutoCast
    bool numbered = false;      ///< the logs of a run with a user file name
    std::int32_t number = 1;    ///< of the next one, while the name is `numberedName`
    std::string numberedName = {};
};
NamingForm FormOf(const LogNaming& naming, const StationInformation& station);
FormFaults CheckForm(const NamingForm& form);
std::optional<LogNaming> SettingsOf(const NamingForm& form);
LogNaming WithChanges(LogNaming now, const NamingForm& opened, const NamingForm& form);
/// The next log's name as the form would have it; empty while something is wrong.
std::string NextName(const NamingForm& form);

/// The question before a run: the next log and the station's texts, "log as shown" or "change
/// first". Whether a log may be replaced was asked when its name was built.
struct OverrideForm {
    std::string displayName;
    StationInformation station;
    LogNamingMode mode = LogNamingMode::TimeStamp;
};
FormFaults CheckForm(const OverrideForm& form);

struct SettingsForm {
    bool sessionLog = false;
    std::string sessionLogDirectory;
    std::string textSize = "100"; ///< %
    bool loggingSounds = false;
};
FormFaults CheckForm(const SettingsForm& form);
/// The text size in %; nothing while it cannot be used.
std::optional<int> TextSizeOf(const SettingsForm& form);
std::string TextSizeText(int percent);

/// A tare by hand.
struct TareForm {
    std::string pressure; ///< dbar
    bool hasProfiler = false;
};
FormFaults CheckForm(const TareForm& form);
std::optional<double> SettingsOf(const TareForm& form);

} // namespace qor
