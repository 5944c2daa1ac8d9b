// SPDX-License-Identifier: GPL-3.0-or-later
//
// How the next raw log is named: the four naming modes and how each moves on when a log has ended.
// Plain functions over the naming record, which the document's lock guards; asking about an
// existing file is the raw log's.
#pragma once

#include "platform/Clock.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qor {

struct StationInformation;

enum class LogNamingMode : std::int32_t { UserFileName = 0, AutoCast = 1, TimeStamp = 2, Sqm = 3 };

/// The modes as session files name them.
struct NamingRow {
    LogNamingMode mode;
    std::string_view name;
};
inline constexpr std::array NamingTable = {
    NamingRow{LogNamingMode::UserFileName, "file"},
    NamingRow{LogNamingMode::AutoCast, "autocast"},
    NamingRow{LogNamingMode::TimeStamp, "time-stamp"},
    NamingRow{LogNamingMode::Sqm, "sqm"},
};
std::string_view NamingName(LogNamingMode mode);
std::optional<LogNamingMode> NamingOfName(std::string_view name);
/// All names for a message, in quotes.
std::string AllNamingNames();

inline constexpr const char* TimeStampDisplayName = "(TIME STAMP)";

struct LogNaming {
    LogNamingMode logNamingMode = LogNamingMode::TimeStamp;
    std::string logDirectory;       ///< ends in a path separator; prepended as it is
    std::string logUserFileName;    ///< mode UserFileName
    bool numbered = false;          ///< mode UserFileName: "name_001.raw", "name_002.raw" ...
    std::int32_t number = 1;        ///< of the next log, where they are numbered
    std::string sqmBaseName;        ///< mode Sqm
    std::int32_t sqmSequence = 0;   ///< mode Sqm, 0..999
    std::string logFileDisplayName; ///< as the operator sees it
    std::string logFilePath;        ///< of the current or next log
    bool logNameReady = false;      ///< a name is built and accepted for the next log
    bool logNamePrompted = false;   ///< the name was built, and its replacement asked about
};

/// The display name that the mode gives; empty when a part that it needs is not there.
std::string LogDisplayName(const LogNaming& naming, const StationInformation& station);

/// "YYYY-DDD-HHMMSS.raw" of a local time.
std::string TimeStampFileName(const CalendarTime& local);

/// "name-2.raw" and so on, for a name that is taken; number 1 is the name itself.
std::string WithSuffix(const std::string& path, int number);
/// The last one that is tried.
inline constexpr int LastSuffix = 99;

/// What is wrong with naming settings or with the station, as one sentence; empty when they can be
/// used: a part of a file's name holds no separator and no control character, a cast of AUTOCAST
/// is two letters, a sequence number lies in 0 to 999.
std::string NamingFault(const LogNaming& naming);
std::string StationFault(const StationInformation& station, LogNamingMode mode);
/// The same for what a session file holds: a cast that has moved past two letters, or is not given
/// yet, is none; a log is begun with what stands there, or says why not.
std::string StoredStationFault(const StationInformation& station, LogNamingMode mode);

/// Readies the name after a log: the next cast, the next SQM number; nothing for a user file name.
void AdvanceLogFileName(LogNaming& naming, StationInformation& station);

} // namespace qor
