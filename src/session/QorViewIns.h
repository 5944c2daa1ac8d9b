// SPDX-License-Identifier: GPL-3.0-or-later
//
// An instrument of the session: the live instrument plus what the session adds (checks, counts,
// settings). Guarded by the document's lock: the acquisition thread calls Process, displays read
// the live instrument.
#pragma once

#include "instrument/FrameChecks.h"
#include "products/LiveInstrument.h"

#include <string>

namespace qor {

class CQorViewIns {
  public:
    CQorViewIns(const CInstrument& definition, std::string resourceName, CMessageSink& sink);

    const CInstrument& Definition() const { return Live.Definition(); }
    const std::string& Name() const { return Live.Name(); }
    const std::string& ResourceName() const { return Resource; }

    /// Checks the frame and converts every sensor; the frame becomes the live instrument's current
    /// one.
    FrameCheckResult Process(CFrameData& frame);

    CLiveInstrument Live;
    bool LoggingEnabled = true;
    std::uint32_t FramesThisLog = 0;
    std::uint64_t FramesReceived = 0;
    CFrameChecks Checks;
    std::string Title; ///< shown in window captions; empty: none

  private:
    std::string Resource;
};

} // namespace qor
