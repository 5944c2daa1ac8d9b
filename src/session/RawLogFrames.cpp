// SPDX-License-Identifier: GPL-3.0-or-later
//
// The path of a frame into the raw log. Called for every frame, on the acquisition thread and under
// the document's lock. Records are assembled in the writer and leave it in one write for all frames
// that waited; counting follows the write, so the counts say what stands in the file.
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/RawLog.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>

namespace qor {
namespace {

/// A batch goes to the file when it has grown to this, however many frames still wait.
constexpr std::size_t BatchLimit = 1u << 20;

} // namespace

std::size_t CRawLog::LogFrames(CFrameQueue& frames) {
    CRecursiveLock lock(Session.DocLock);
    std::size_t claimed = 0;
    for (; !frames.Empty(); frames.DropFront())
        claimed += LogFrame(frames.Front()) ? 1 : 0;
    FlushFrames();
    return claimed;
}

/// Returns whether an instrument claimed the frame.
bool CRawLog::LogFrame(CFrameData& frame) {
    const SessionState::FrameOwner* owner = Session.OwnerOf(frame.Info.identity);
    if (!owner)
        return false;
    CQorViewIns& instrument = *owner->instrument;
    FrameCheckResult found = instrument.Process(frame);
    PendingBeep = PendingBeep || found.beep;
    if (Session.OnFrame)
        Session.OnFrame(owner->resource, instrument, found);
    if (!State.logOpen || !instrument.LoggingEnabled)
        return true;

    // Frames with check errors are logged: raw data are not judged. Only an unusable record is not.
    const CFrameData* current = instrument.Live.CurrentFrame();
    if (current->Error) {
        ++State.framesOffered;
        return true;
    }
    const RoleHolder& gps = Session.Roles[static_cast<std::size_t>(InstrumentRole::Gps)];
    const bool tagged = owner->resource != gps.resource || owner->index != gps.instrument;
    if (WriteFrameRecord(current, tagged))
        Unwritten.push_back(&instrument);
    if (Writer.BatchBytes() >= BatchLimit)
        FlushFrames();
    return true;
}

/// Hands the record to the writer, which puts it into the file with the batch; false when there is
/// nothing to write or nowhere.
bool CRawLog::WriteFrameRecord(const CFrameData* frame, bool tagged) {
    if (!Writer.IsOpen()) {
        Messages.Report("Error writing to log file. The file is not open.\r\n");
        return false;
    }
    if (!frame || frame->Bytes.empty()) {
        Messages.Report("Error writing to log file. Invalid frame pointer.\r\n");
        return false;
    }
    if (!tagged) {
        Writer.Add(frame->Span());
        return true;
    }
    // Decided: a frame of a capture without times is tagged with the time of its logging; readers
    // do not take anything else for a tag.
    const FrameTime& arrival = frame->Info.time;
    Writer.Add(frame->Span(), MakeTimeTag(arrival.known ? arrival : Session.Clock.Now()));
    return true;
}

void CRawLog::FlushFrames() {
    if (Unwritten.empty())
        return;
    std::size_t written = 0;
    FileCause cause = Writer.Flush(written);
    // Counted are the frames in the file and, as offered, the one at which the file failed.
    std::size_t offered = std::min(Unwritten.size(), written + (cause == FileCause::None ? 0 : 1));
    for (std::size_t i = 0; i < offered; ++i)
        ++Unwritten[i]->FramesThisLog;
    State.framesLogged += static_cast<std::uint32_t>(written);
    State.framesOffered += static_cast<std::uint32_t>(offered);
    State.dataLogged = State.dataLogged || offered > 0;
    Unwritten.clear();
    if (cause != FileCause::None)
        AbortLog(cause);
}

void CRawLog::AbortLog(FileCause cause) {
    std::string message =
        "Error writing to log file: " + std::string(GetFileErrorText(cause)) + ".\r\n";
    if (Writer.CutCause() != FileCause::None)
        message += "\tThe file may end in a part of a record.\r\n";
    Messages.Report(message);
    State.runFailed = true;
    EndLocked(true);
}

} // namespace qor
