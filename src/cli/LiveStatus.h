// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a running acquisition says of itself: on a terminal one line a resource, drawn over and
// over; elsewhere one summary line a minute. Runs on the command's thread and takes the document's
// lock only for the moment of reading figures.
#pragma once

#include "session/QorViewDoc.h"

#include <map>

namespace qor {

class CLiveStatus {
  public:
    CLiveStatus(const CQorViewDoc& doc, CClock& clock, bool quiet);
    ~CLiveStatus();

    /// Draws or prints when it is time to. `secondsLeft`: what the disk still takes.
    void Update(std::optional<double> secondsLeft);
    /// Takes the lines off the terminal, so that a message can be written.
    void Erase();

  private:
    std::size_t Room() const;

    const CQorViewDoc& Doc;
    CClock& Clock;
    bool Quiet;
    bool Terminal;
    std::int64_t Last = 0; ///< monotonic milliseconds of the last drawing
    std::map<ResourceId, std::uint64_t> LastFrames;
    int LinesOnScreen = 0;
};

} // namespace qor
