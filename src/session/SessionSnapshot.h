// SPDX-License-Identifier: GPL-3.0-or-later
//
// A moment's figures of a whole session, for status lines, trees and summaries: plain values that
// whoever asked for them may keep.
#pragma once

#include "session/Handles.h"
#include "session/RawLog.h"

#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct InstrumentFigures {
    InstrumentId id = InstrumentId::None;
    std::string name;
    std::uint64_t frames = 0; ///< received
    std::uint64_t dropped = 0;
    std::uint64_t checksumErrors = 0;
    std::uint64_t valueErrors = 0;
    std::uint32_t framesThisLog = 0; ///< written into the present or latest file
    double nominalRate = 0.0;        ///< Hz
    bool immersed = false;
    bool acquired = true;       ///< its frames are looked for
    bool checksCounter = false; ///< else `dropped` says nothing
    bool checksSum = false;     ///< else `checksumErrors` says nothing
};

/// A resource with its instruments, and the sums of theirs.
struct ResourceStatus {
    ResourceId id = ResourceId::None;
    std::string name;
    bool isFile = false;
    bool playing = false;
    double playSpeed = 0;           ///< times as recorded; 0: as fast as it goes
    std::uint64_t filePosition = 0; ///< of a file: behind the frame that was played last
    std::uint64_t fileSize = 0;     ///< 0: it has none that is known
    FrameTime fileTime;             ///< of that frame, as recorded
    bool reconnects = false;        ///< is tried again when it is lost
    SerialResourceSettings serial;  ///< of a port
    ResourceFigures figures;
    std::vector<InstrumentFigures> instruments;
    std::uint64_t frames = 0;
    std::uint64_t dropped = 0;
    std::uint64_t checksumErrors = 0;
    bool checksCounter = false; ///< of some of its instruments
    bool checksSum = false;
    /// Bytes of the longest frame that is to be expected: that of a begun frame may be cut off.
    std::uint64_t longestFrame = 0;
};

struct SessionSnapshot {
    std::vector<ResourceStatus> resources; ///< in the order of adding
    LogStatus log;

    /// The resource of a handle, or null.
    const ResourceStatus* Find(ResourceId id) const;
    const InstrumentFigures* Find(InstrumentId id) const;
};

/// "3 dropped"; "dropped not checked" where a count could not have been made.
std::string CheckedCount(bool checked, std::uint64_t count, std::string_view what);

} // namespace qor
