// SPDX-License-Identifier: GPL-3.0-or-later
//
// A file played as if it were a port: it has no thread and is read on demand by whoever retrieves
// frames. Guarded by the frame lock of its resource.
#pragma once

#include "platform/InputFile.h"
#include "telemetry/FrameSync.h"
#include "telemetry/ProcessCommand.h"
#include "telemetry/ResourceSettings.h"

namespace qor {

class CFilePlayer {
  public:
    /// `commands` may be null: no notice is posted.
    CFilePlayer(CMessageSink& sink, CProcessCommand* commands) : Sink(sink), Commands(commands) {}

    /// Another file (reads of 0 bytes: of 2048).
    void Load(CInputFile file, const FileResourceSettings& settings);
    /// Decided: a file is in use from its first read until its last frame is handed over.
    bool InUse() const { return Started && !EndReported; }
    /// Read to its end, the last frame handed over.
    bool AtEnd() const { return EndReported; }
    std::uint32_t ReadSize() const { return Piece; }
    /// Bytes read of the file, compressed where it is.
    std::uint64_t BytesTaken() const { return File.BytesTaken(); }
    /// False when reading on would wait for more.
    bool HasInput() const { return EndReported || !File.IsOpen() || File.HasInput(); }

    /// Plays on from that byte, 0 for anew. Frames that wait are dropped; from the middle of a
    /// frame the search finds the next one. A file that cannot be read there stays as it was, and
    /// the cause is why.
    FileCause Seek(CFrameSync& sync, std::uint64_t offset);

    /// Reads on until a frame is queued, there is no more, or much was read without one; the code
    /// of a file that failed.
    CommResult ReadOn(CFrameSync& sync);

  private:
    void ReadPiece(CFrameSync& sync);
    void Fail(CFrameSync& sync, CommResult code, std::string_view causeText);
    void ReportEnd();

    CMessageSink& Sink;
    CProcessCommand* const Commands;
    CInputFile File;
    std::string Name;
    FileResourceSettings Settings;
    std::uint32_t Piece = 0;
    bool Started = false;     ///< read from
    bool WasRead = false;     ///< to its end, or as far as it could be
    bool EndReported = false; ///< and the last frame is handed over
    CommResult Result = CommResult::Success;
};

} // namespace qor
