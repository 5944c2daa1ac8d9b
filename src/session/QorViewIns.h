// SPDX-License-Identifier: GPL-3.0-or-later
//
// An instrument of the session: the live instrument plus what the session adds (checks, counts,
// settings). Guarded by the document's lock: the acquisition thread calls Process, displays read
// the live instrument.
#pragma once

#include "instrument/FrameChecks.h"
#include "products/DerivedRows.h"
#include "session/Handles.h"

#include <string>

namespace qor {

class CQorViewIns {
  public:
    CQorViewIns(const CInstrument& definition, InstrumentId id, std::string resourceName,
                CMessageSink& sink);

    const CInstrument& Definition() const { return Live.Definition(); }
    const std::string& Name() const { return Live.Name(); }
    /// As messages and lists show it; see CInstrument.
    std::string ShownName() const { return Definition().ShownName(); }
    const std::string& ResourceName() const { return Resource; }

    /// Checks the frame and converts every sensor; the frame becomes the live instrument's current
    /// one.
    FrameCheckResult Process(CFrameData& frame) {
        const FrameCheckResult result = Checks.Check(frame.Span());
        Live.Take(frame);
        ++FramesReceived;
        return result;
    }

    /// What belongs to the instrument and not to its attachment: settings, counts.
    void TakeOver(const CQorViewIns& before);

    const InstrumentId Id;
    CLiveInstrument Live;
    const CInstrumentRows Products; ///< those that the instrument has by itself
    bool LoggingEnabled = true;
    bool AcquisitionEnabled = true; ///< its frames are looked for
    // Where the raw log counts its frames.
    std::uint32_t SlotLog = 0, Slot = 0;
    std::uint64_t FramesReceived = 0;
    CFrameChecks Checks;
    std::string Title; ///< shown in window captions; empty: none

  private:
    std::string Resource;
};

} // namespace qor
