// SPDX-License-Identifier: GPL-3.0-or-later
//
// A frame becomes a record of the raw log. Called for every frame, on the acquisition thread and
// under the document's lock. The records of a batch go to the stage together; counting follows the
// write, so the counts say what stands in the file.
#include "session/RawLog.h"
#include "telemetry/RawLogFormat.h"

namespace qor {
namespace {

/// A batch goes to the stage when it has grown to this, however many frames still wait.
constexpr std::size_t BatchLimit = 1u << 20;

} // namespace

void CRawLog::AddFrame(CQorViewIns& instrument) {
    // Frames with check errors are logged: raw data are not judged. Only an unusable record is not.
    const CFrameData& frame = *instrument.Live.CurrentFrame();
    if (frame.Error) {
        ++FaultyOffered;
        return;
    }
    if (frame.Bytes.empty()) {
        Messages.Report("Error writing to log file. Invalid frame pointer.\r\n");
        return;
    }
    State.dataLogged = true;
    const bool tagged =
        instrument.Id != Session.Roles[static_cast<std::size_t>(InstrumentRole::Gps)];
    if (!tagged) {
        Records.Add(SlotOf(instrument), frame.Span());
    } else {
        // Decided: a frame of a capture without times is tagged with the time of its logging;
        // readers do not take anything else for a tag.
        const FrameTime& arrival = frame.Info.time;
        Records.Add(SlotOf(instrument), frame.Span(),
                    MakeTimeTag(arrival.known ? arrival : Session.Clock.Now()));
    }
    if (Records.bytes.size() >= BatchLimit)
        Flush();
}

/// Where the instrument's frames are counted in this log; 0 is for what is no frame.
std::uint32_t CRawLog::SlotOf(CQorViewIns& instrument) {
    if (instrument.SlotLog != LogNumber) {
        instrument.SlotLog = LogNumber;
        instrument.Slot = ++Slots;
    }
    return instrument.Slot;
}

OwnerFrames CRawLog::FramesThisLog(const CQorViewIns& instrument) const {
    return instrument.SlotLog == LogNumber && LogNumber != 0 ? Stage.FramesOf(instrument.Slot)
                                                             : OwnerFrames();
}

std::uint64_t CRawLog::NextOffset() const {
    const StageFigures stage = Stage.Figures();
    return stage.fileSize + stage.waitingBytes + Records.bytes.size();
}

void CRawLog::Flush() {
    if (!Records.Empty() && !Stage.Append(Records))
        ViewsUpdate = true; // what had no room is counted, and said with the next tick
}

} // namespace qor
