// SPDX-License-Identifier: GPL-3.0-or-later
//
// The manifest of a raw log ("NAME.raw.json" beside it): which bytes the log had when it ended,
// with which definitions it was logged, when, and what was counted. Records, their one form as
// JSON, and the reading of it, for which the bytes may be anybody's. Who makes one is CLogManifests
// (a run) or verify (what a crash has left). Any thread.
#pragma once

#include "platform/Clock.h"
#include "platform/FileErrorText.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// A step of the clock, or of local time against it, while a log was written.
struct ClockStep {
    FrameTime after; ///< seen within a second
    std::int64_t milliseconds = 0;
    bool ofZone = false; ///< the zone's offset changed, as by daylight saving

    bool operator==(const ClockStep&) const = default;
};

/// A file that was read for a log, and the hash that it had then; empty: not known.
struct ManifestSource {
    std::string path, sha256;

    bool operator==(const ManifestSource&) const = default;
};

struct LogManifest {
    struct Instrument {
        std::string name;
        ManifestSource source; ///< its definition, or the package that it is a member of
        std::string member;    ///< of the package; empty: a definition
        std::optional<std::uint64_t> received, logged, dropped, checksumErrors;
    };
    struct Port {
        std::string name, line; ///< "57600 8N1"
        std::optional<std::uint64_t> bytesReceived, bytesDiscarded, bytesCutShort, framesLost;
        std::vector<Instrument> instruments;
    };

    std::string log; ///< its name, without folder and compression
    std::uint64_t size = 0;
    std::string sha256;
    std::string program;
    bool repaired = false; ///< made from the log afterwards: counts of the ports are not known
    FrameTime begin, end;
    bool zoneKnown = true; ///< else the times are local ones
    std::vector<ClockStep> steps;
    std::optional<std::uint64_t> framesUnstored;
    ManifestSource session;
    std::vector<Port> ports;
};

/// The manifest's path for a raw log, also for one that was compressed.
std::string ManifestPathOf(const std::string& rawLog);

/// Paths are relative to the folder, with a separator at its end, where they lead into it.
std::string ManifestText(const LogManifest& manifest, const std::string& folder);

struct ManifestReading {
    LogManifest manifest; ///< with absolute paths; those that lead to another computer are empty
    std::string fault;    ///< one line; empty: read
};
ManifestReading ReadManifest(std::string_view bytes, const std::string& folder);

/// The manifest of a log. `there` says whether there is any file of its name.
ManifestReading LoadManifest(const std::string& rawLog, bool& there);

/// Writes it beside the raw log, in the place of an earlier manifest of that log and of nothing
/// else. What is wrong, or nothing.
std::string SaveManifest(const LogManifest& manifest, const std::string& rawLog);

/// The hash of a file's bytes; empty when it cannot be read.
std::string Sha256OfFile(const std::string& path);

} // namespace qor
