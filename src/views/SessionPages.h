// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the shell shows of a session at one moment: the tree of resources and instruments, the
// state of logging, the replay's place. Plain texts, made under the document's lock and shown
// without it.
#pragma once

#include "views/PageHead.h"

#include <cstdint>
#include <string>
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

} // namespace qor
