// SPDX-License-Identifier: GPL-3.0-or-later
//
// An instrument of the session: the definition plus what the session adds (checks, counts,
// immersion, the current frame and its values, the PAR list). Guarded by the document's lock: the
// acquisition thread calls Process, displays read the current frame.
#pragma once

#include "instrument/ConversionPlan.h"
#include "instrument/FrameChecks.h"
#include "instrument/Par.h"
#include "telemetry/FrameData.h"

#include <string>
#include <vector>

namespace qor {

class CQorViewIns {
  public:
    CQorViewIns(const CInstrument& definition, std::string resourceName, CMessageSink& sink);

    const CInstrument& Definition() const { return Instrument; }
    const std::string& Name() const { return Instrument.Name(); }
    const std::string& ResourceName() const { return Resource; }

    /// Checks the frame and converts every sensor; the frame becomes the current one (its bytes are
    /// exchanged with the previous frame's, so nothing is copied).
    FrameCheckResult Process(CFrameData& frame);

    /// The latest frame, or null before the first.
    const CFrameData* CurrentFrame() const { return HasFrame ? &Current : nullptr; }
    /// 1-based count of frames cut for the instrument, of the current frame.
    std::uint32_t FrameNumber() const { return Current.Info.frameCounter; }
    const FrameValues& Values() const { return CurrentValues; }

    /// The calibrated value of a sensor in the current frame. MissingArgument without a frame.
    ConversionStatus Value(const CSensor& sensor, double& value) const;
    /// PAR of the current frame over the instrument's PAR list.
    ConversionStatus Par(double& par) const;

    bool Immersed = false; ///< "Immersed (Wet)"
    bool LoggingEnabled = true;
    bool Unusable = false; ///< derived products are not to be asked for
    std::uint32_t FramesThisLog = 0;
    std::uint64_t FramesReceived = 0;
    double FrameRate = 6.0; ///< nominal, Hz
    CFrameChecks Checks;
    std::string Title; ///< shown in window captions; empty: none

  private:
    const CInstrument& Instrument;
    std::string Resource;
    CConversionPlan Plan;
    std::vector<ParChannel> ParChannels;
    CFrameData Current;
    FrameValues CurrentValues;
    bool HasFrame = false;
};

} // namespace qor
