// SPDX-License-Identifier: GPL-3.0-or-later
//
// An instrument with its latest frame and that frame's values: what everything derived is computed
// from. The session adds its checks and settings (CQorViewIns). Written by the thread that acquires
// and read by displays, both under the document's lock.
#pragma once

#include "instrument/ConversionPlan.h"
#include "instrument/Par.h"
#include "telemetry/FrameData.h"

#include <string>
#include <vector>

namespace qor {

class CLiveInstrument {
  public:
    /// The definition lives longer.
    explicit CLiveInstrument(const CInstrument& definition);

    const CInstrument& Definition() const { return Instrument; }
    const std::string& Name() const { return Instrument.Name(); }

    /// Converts every sensor; the frame becomes the current one (its bytes are exchanged with the
    /// previous frame's). On the path of every frame: nothing is allocated and no text copied once
    /// the first frame is in.
    void Take(CFrameData& frame) {
        Plan.Convert(frame.Span(), Immersed, CurrentValues);
        // The texts of the attachment change only with the attachment.
        if (!HasFrame || Current.Info.identity != frame.Info.identity || frame.Info.identity == 0)
            TakeAttachment(frame.Info);
        Current.Info.frameCounter = frame.Info.frameCounter;
        Current.Info.time = frame.Info.time;
        Current.Bytes.swap(frame.Bytes);
        Current.StreamOffset = frame.StreamOffset;
        Current.Error = frame.Error;
    }

    /// The latest frame, or null before the first.
    const CFrameData* CurrentFrame() const { return HasFrame ? &Current : nullptr; }
    /// 1-based count of frames cut for the instrument, of the current frame.
    std::uint32_t FrameNumber() const { return Current.Info.frameCounter; }
    const FrameValues& Values() const { return CurrentValues; }

    /// The calibrated value of a sensor in the current frame. MissingArgument without a frame.
    ConversionStatus Value(const CSensor& sensor, double& value) const;
    /// PAR of the current frame over the instrument's PAR list.
    ConversionStatus Par(double& par) const;
    /// The sensor's value in the current frame counts as none from now on.
    void Reject(const CSensor& sensor) {
        CurrentValues.Reject(static_cast<std::size_t>(sensor.Index));
    }

    /// Whether the current frame is old: none has come for three periods of the nominal rate, at
    /// least 3 s, before `now` on the clock of ArrivalMonotonic. Never without a frame.
    bool Stale(std::int64_t now) const;
    /// Milliseconds without a frame after which the current one is old.
    std::int64_t Patience() const;

    bool Immersed = false;  ///< "Immersed (Wet)"
    bool Unusable = false;  ///< derived products are not to be asked for
    double FrameRate = 6.0; ///< nominal, Hz
    /// When the current frame came, in milliseconds of the monotonic clock; whoever hands frames to
    /// Take sets it.
    std::int64_t ArrivalMonotonic = 0;

  private:
    void TakeAttachment(const CFrameInfo& info);

    const CInstrument& Instrument;
    CConversionPlan Plan;
    std::vector<ParChannel> ParChannels;
    CFrameData Current;
    FrameValues CurrentValues;
    bool HasFrame = false;
};

} // namespace qor
