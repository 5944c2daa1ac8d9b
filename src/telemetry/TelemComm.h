// SPDX-License-Identifier: GPL-3.0-or-later
//
// One source of telemetry: a serial port with its worker thread, or a file played as if it were a
// port. Its room is five files: TelemComm.cpp (settings, instruments, frames, figures),
// CommConnection.cpp (connect and disconnect), CommWorker.cpp (the worker's loop), CommFile.cpp
// (reading a file) and LineStatus.cpp (line errors); cutting frames is CFrameSync's.
// Called by the controller on the application or acquisition thread; the operations may be called
// from any thread but for initialising, which is for a time when nobody else uses the resource.
// Locks: OperationLock (one connect, disconnect or initialisation at a time; never taken by the
// worker), StatusLock, FrameLock, in this order.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"
#include "platform/Clock.h"
#include "platform/File.h"
#include "platform/SerialPort.h"
#include "platform/Worker.h"
#include "telemetry/CommResult.h"
#include "telemetry/FrameSync.h"
#include "telemetry/ProcessCommand.h"
#include "telemetry/ResourceSettings.h"

#include <functional>
#include <memory>
#include <optional>

namespace qor {

enum class ResourceState : std::uint32_t {
    NotInitialised = 0,
    File = 1,
    FileReporting = 2,
    Serial = 3,
    SerialReporting = 4,
};

/// Makes the port object of a connection; tests script one.
using SerialPortFactory = std::function<std::unique_ptr<CSerialPort>()>;

/// A moment's figures of a resource, for status lines.
struct ResourceFigures {
    bool connected = false;
    bool waiting = false; ///< "waiting for telemetry" was reported
    std::uint32_t abortCode = 0;
    std::uint32_t connectError = 0; ///< system error that the last attempt to connect ended with
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesDiscarded = 0;
    std::uint64_t framesCut = 0;
};

class CTelemComm {
  public:
    /// `commands` may be null: a resource that posts no notices (state 1 or 3). Messages go to
    /// `sink`.
    CTelemComm(CMessageSink& sink, CProcessCommand* commands, CClock& clock,
               SerialPortFactory makePort);
    ~CTelemComm();

    CommResult InitialiseSerial(const SerialResourceSettings& settings);
    CommResult InitialiseFile(const FileResourceSettings& settings, CFile file);
    /// Opens the port and starts the worker; returns when the worker runs. Success without change
    /// when connected already, and for a file.
    CommResult Connect();
    /// Tells the worker to end, and returns at once. Disconnect still has to follow: with many
    /// ports, telling all of them first makes their workers end at the same time.
    void RequestStop();
    /// Ends the worker and closes the port. Frames that are still queued when the worker has ended,
    /// also one that ended by itself, go to `left` (when given) before the queue is emptied, so
    /// that a disconnection loses none.
    CommResult Disconnect(CFrameQueue* left = nullptr);
    CommResult Attach(const AttachRequest& request);
    CommResult Detach(const std::string& instrumentName);
    CommResult EnableAcquisition(const std::string& instrumentName);
    CommResult DisableAcquisition(const std::string& instrumentName);

    /// The oldest queued frame, exchanged with `frame` (whose memory is used again); `found` tells
    /// whether there was one. A file resource reads on as needed.
    CommResult RetrieveFrame(CFrameData& frame, bool& found);
    /// All queued frames at once (a file resource: the next batch): one lock for many frames. The
    /// queue handed in is emptied and its memory used again. No frame and Success: none waits, or
    /// the file is at its end. A file that could not be read on gives its code after its last
    /// frame.
    CommResult RetrieveFrames(CFrameQueue& frames);

    std::optional<SerialResourceSettings> QuerySerialSettings() const;
    std::optional<FileResourceSettings> QueryFileSettings() const;
    CommResult ResetAbortCode(std::uint32_t& abortCode);

    const std::string& Name() const;
    ResourceState State() const;
    bool IsFile() const;
    /// A file resource that has been read to its end, its last frame handed over.
    bool AtEnd() const;
    std::uint32_t IdentityOf(const std::string& instrumentName) const;
    ResourceFigures Figures() const;
    void ResetBytesDiscarded();
    /// The playback frame synchroniser's untagged instruments (see CFrameSync::SetUntagged).
    void SetUntagged(const std::string& instrumentName, bool untagged);

  private:
    struct Impl;
    std::unique_ptr<Impl> Data;
};

} // namespace qor
