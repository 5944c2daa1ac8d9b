// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the operator does with the resources of the session beyond connecting them: other line
// settings for a port, another try after an abort, and playing a file. The resources belong to the
// document, which owns this room. Called on the thread that commands the document, without its
// lock; an operation gives what was wrong as one sentence, empty when it was done.
#pragma once

#include "session/Handles.h"
#include "telemetry/ResourceSettings.h"

#include <cstdint>
#include <string>

namespace qor {

class CQorViewDoc;

class CResourceList {
  public:
    /// The document that it is a part of.
    explicit CResourceList(CQorViewDoc& doc) : Doc(doc) {}

    /// Another speed or format for a port, by its name; one that is connected is connected anew.
    std::string ModifyResource(ResourceId resource, const SerialResourceSettings& settings);
    /// Takes back a port's abort code and connects it.
    std::string ResetAndConnect(ResourceId resource);
    /// Counts of the checks of its instruments, and the bytes discarded, begin anew.
    std::string ResetCounts(ResourceId resource);

    /// Plays a file on; one that was played to its end begins anew.
    std::string Play(ResourceId file);
    /// Stops where it is.
    std::string Pause(ResourceId file);
    std::string Rewind(ResourceId file) { return Seek(file, 0); }
    /// Goes on from that byte of the file; whether it plays stays.
    std::string Seek(ResourceId file, std::uint64_t offset);
    /// So many times faster than recorded (0.01 to 1000); 0: as fast as it goes.
    std::string SetSpeed(ResourceId file, double times);

  private:
    std::string WhyNotAFile(ResourceId file) const;

    CQorViewDoc& Doc;
};

} // namespace qor
