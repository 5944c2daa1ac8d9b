// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the shell shows of a session at one moment: the tree of resources and instruments, the
// state of logging, the replay's place. Plain texts, made under the document's lock and shown
// without it; UTF-8, as all pages are.
#pragma once

#include "session/ReplaySources.h"
#include "session/SessionSnapshot.h"
#include "views/FrameRates.h"
#include "views/PageHead.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

enum class TreeKind : std::uint8_t { Resource, Instrument, Package, Note };

struct TreeRow {
    std::uint64_t id = 0;
    TreeKind kind = TreeKind::Instrument;
    Sign sign = Sign::None;
    std::string name;
    std::string role = {};   ///< letters of its roles
    std::string rate = {};   ///< "9.9/10", as received and as it should be
    std::string age = {};    ///< since its last frame
    std::string detail = {}; ///< the long form, for the tip: state, line settings, counts
    std::vector<TreeRow> rows = {};

    bool operator==(const TreeRow&) const = default;
};

struct TreePage {
    std::vector<TreeRow> rows;

    bool operator==(const TreePage&) const = default;
};

enum class LogState : std::uint8_t { Idle, Open, Between, Failed };
enum class RunKind : std::uint8_t { Live, Practice, Replay };

struct LogPage {
    LogState state = LogState::Idle;
    RunKind run = RunKind::Live;
    std::string speed;    ///< of a replay, "x4"
    bool nagging = false; ///< idle although frames have come for a minute
    std::string elapsed;
    std::string file; ///< the open log; idle and between: the next one
    std::string frames;
    std::string left; ///< what the disk holds, "212 h left"
    Sign leftSign = Sign::None;
    std::string next;  ///< between logs: when the next one begins
    std::string cause; ///< of a failure

    bool operator==(const LogPage&) const = default;
};

struct ReplayPage {
    bool playing = false;
    std::string speed;  ///< "x1", "full"
    double place = 0.0; ///< 0 to 1
    std::string elapsed;
    std::string length;
    std::vector<double> marks = {}; ///< where casts begin, 0 to 1
};

/// What a row of the tree stands for; the others are None. A note is of its resource.
struct TreeTarget {
    ResourceId resource = ResourceId::None;
    InstrumentId instrument = InstrumentId::None;
    PackageId package = PackageId::None;
};
TreeTarget TargetOf(std::uint64_t row);

/// The tree of the session as it is now; instruments and packages of the names in `alarmed` have a
/// value in its alarm range. Takes the document's lock.
TreePage MakeTreePage(const CQorViewDoc& doc, const CFrameRates& rates,
                      const std::set<std::string>& alarmed = {});

/// What the state of logging is told from.
struct LogFacts {
    LogStatus log;
    std::string nextName; ///< of the next log, as it was built; empty: not known yet
    std::optional<std::uint64_t> freeBytes;
    std::optional<double> bytesPerSecond;
    RunKind run = RunKind::Live;
    std::string speed;
    std::int64_t flowing = 0; ///< milliseconds for which frames have come
    std::string cause;        ///< of the failure of the last run
};
LogPage MakeLogPage(const LogFacts& facts);

/// For how long the instruments of a session have been sending.
class CFrameFlow {
  public:
    /// Milliseconds from the first frame on; 0 when none has come for ten seconds, or another
    /// session has begun. `now`: monotonic. Played files do not count.
    std::int64_t Since(const SessionSnapshot& snapshot, std::int64_t now);

  private:
    std::uint64_t Frames = 0; ///< at the last look
    std::int64_t Latest = 0;  ///< when there were more than before
    std::optional<std::int64_t> Began;
};

/// How fast the open log grows; empty before it has run for ten seconds, and without one.
std::optional<double> LogGrowth(const LogStatus& log);
/// How fast logs grow: as this one does, once it has run for ten seconds; before that, and without
/// one, as the instruments that are to be logged send.
std::optional<double> LogBytesPerSecond(const CQorViewDoc& doc);
/// How long the disk lasts; empty when it is not known or nothing is written.
std::optional<double> SecondsLeft(const LogFacts& facts);
/// "212 h left", "29 min left"; amber under six hours, red under half an hour.
std::string TimeLeftText(double seconds);
Sign TimeLeftSign(double seconds);

struct ReplayFacts {
    bool playing = false;
    double speed = 1.0;                              ///< of the recording's; 0: as fast as it goes
    std::uint64_t played = 0;                        ///< bytes
    std::uint64_t inAll = 0;                         ///< bytes of the file; 0: not known
    std::optional<double> elapsed = {}, length = {}; ///< seconds of the recording
    std::vector<double> casts = {}; ///< seconds of the recording at which casts began
};
ReplayPage MakeReplayPage(const ReplayFacts& facts);
ReplayPage MakeReplayPage(const ResourceStatus& file, const LogOutline& outline);
/// The byte of a file at a place of its bar, 0 to 1.
std::uint64_t ReplayOffset(double place, std::uint64_t fileSize);
/// The place so many seconds of the recording after where the replay is.
double ReplayPlaceAfter(const ResourceStatus& file, const LogOutline& outline, double seconds);

/// When something was, for a list: "today 18:02", "yesterday 18:02", "2026-06-21 18:02"; empty when
/// it is not known (0).
std::string WhenText(std::int64_t seconds, const FrameTime& now);

/// As CheckedCount, with the thousands apart.
std::string CheckedText(bool checked, std::uint64_t count, std::string_view what);

} // namespace qor
