// SPDX-License-Identifier: GPL-3.0-or-later
//
// A whole session as plain records: what a session file says, and what the document is asked to be.
// Made by the reader of session files, by faces from their options, and by the document when it is
// saved. No behaviour, no identity of anything that runs.
//
// Texts are UTF-8, as people type them and as arguments of a call are; they go into a raw log's
// header byte for byte. Paths are absolute here; the file holds them relative to its folder.
#pragma once

#include "session/JsonValue.h"
#include "session/PortText.h"
#include "session/SessionState.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

/// What a session says of an instrument. What is not there is as Instruments.ini has it.
struct InstrumentRecord {
    std::string definition; ///< path of its definition; in a package the member's file name
    std::optional<std::string> title;
    std::vector<InstrumentRole> roles;
    std::optional<bool> immersed;
    std::optional<bool> acquire;
    std::optional<bool> log;
    std::optional<bool> check; ///< frame checks at all
    std::optional<bool> checkCounter;
    std::optional<bool> checkSum;
    std::optional<bool> beep; ///< on a check's error
    JsonValue unknown = JsonValue::Object();

    bool operator==(const InstrumentRecord&) const = default;
};

struct PackageRecord : PackageOptions {
    std::string file;
    std::vector<InstrumentRecord> instruments; ///< by member; those of which anything is said
    JsonValue unknown = JsonValue::Object();
};

/// A serial port or a file to be played: one of the two is named.
struct ResourceRecord {
    std::string port;
    std::string file;
    std::optional<std::uint32_t> baud; ///< not there: a package's own speed, else SessionBaud
    std::optional<LineFormat> format;
    bool reconnect = false; ///< a port that was lost is tried again
    std::vector<InstrumentRecord> instruments;
    std::vector<PackageRecord> packages;
    JsonValue unknown = JsonValue::Object();

    bool IsFile() const { return port.empty(); }
};
/// What a session's port has when neither it nor a package says more.
inline constexpr std::uint32_t SessionBaud = 9600;

struct LogRecord {
    std::string directory; ///< without a separator at its end; empty: not said
    LogNamingMode naming = LogNamingMode::TimeStamp;
    std::string name;          ///< modes UserFileName and Sqm
    std::int32_t sequence = 0; ///< mode Sqm
    bool timeStamps = false;
    bool gpsHeader = false;
    std::optional<LogSpan> duration;
    std::optional<LogSpan> repeat;
    std::optional<LogSpan> every; ///< between round times of the day; not with repeat
    bool sessionLog = true;
    std::string sessionLogDirectory; ///< as directory
    JsonValue unknown = JsonValue::Object();
};

struct SessionRecord {
    std::string title;
    std::vector<ResourceRecord> resources; ///< in the order of adding
    StationInformation station;
    JsonValue unknownOfStation = JsonValue::Object();
    LogRecord log;
    std::optional<double> pressureTare; ///< dbar; none was taken
    bool calibrationMode = false;
    JsonValue windows = JsonValue::Array(); ///< the desktop's own
    JsonValue unknown = JsonValue::Object();
};

} // namespace qor
