// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a resource needs to know of an instrument, and how that is read off the definition. Used by
// the controller when it attaches an instrument; holds no state.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qor {

class CInstrument;

/// What the controller passes when an instrument is attached to a resource.
struct AttachRequest {
    std::string instrumentName;
    std::string syncHeader;
    std::int32_t frameSize = 0;
    std::string terminator; ///< empty for fixed-length frames
    bool noSync = false;
    std::string typeName;
    std::vector<std::uint8_t> syncBytes; ///< BSI: the synchronisation pairs
};

/// The attach request of an instrument. Its SPECIAL sensor line, if there is one, names the types
/// whose telemetry carries no sync header; every other instrument is a generic one.
AttachRequest MakeAttachRequest(const CInstrument& instrument);

/// How the frames of an instrument are told apart in its telemetry.
enum class FrameRule {
    Header,        ///< from its sync header to its declared size or its terminator
    HeaderAndSize, ///< from its sync header to its declared size, whatever the terminator
    Packets,       ///< byte pairs at their fixed places
    Lines,         ///< whatever stands before its terminator
};

/// The rule of an instrument where its no-sync flag counts: on a port of its own, and in a raw log.
FrameRule RuleOf(const AttachRequest& request);

/// An instrument whose frames a raw log is to hold.
struct LoggedInstrument {
    AttachRequest request;
    bool tagged = true; ///< a time tag follows its frames: it is not in the GPS role
};

/// Why the frames of a raw log could not be told apart again when it is played.
enum class ReplayConflict {
    NoTag,       ///< the second one has no sync header, and no time tag says where its frames end
    LogRecord,   ///< the frames of the second one begin like a record of the log's own
    SameHeader,  ///< the two have the same sync header, or none both
    SameFrames,  ///< the two have no sync header, and frames of one kind
    SharedStart, ///< the sync header of one begins with that of the other: on a port what came
                 ///< before a frame helps to tell whose it is, and a log does not hold it
};
struct ReplayVerdict {
    ReplayConflict conflict;
    std::size_t first, second; ///< positions of the instruments in question; may be one
};

/// What keeps a log of all these instruments, whatever ports they are on, from being taken apart
/// again; empty when nothing does. At most one verdict for two instruments.
std::vector<ReplayVerdict> CheckReplay(std::span<const LoggedInstrument> instruments);

} // namespace qor
