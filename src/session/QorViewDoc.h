// SPDX-License-Identifier: GPL-3.0-or-later
//
// The session document: owns the controller, the lists of resources and instruments, the roles, the
// raw log and the session log. An owner, not a workshop: what its rooms do is in their files.
//
// Threads: one thread commands the document (the user interface, or the command line's main
// thread); the acquisition loop calls it beside that. Data is read and written under DocLock
// (`CRecursiveLock lock(doc.DocLock)`); operations take it themselves. Nothing that may show a
// message to the operator (adding, connecting, logging) is to be called with DocLock held.
#pragma once

#include "session/QorTelemetryDoc.h"
#include "session/RawLog.h"
#include "session/SessionLog.h"
#include "session/SessionState.h"

namespace qor {

/// What became of adding an instrument. `instrument` is null when it was not added; then either the
/// load failed (`definition` is not Success; `parseLog` says why) or the controller refused
/// (`comm`).
struct AddedInstrument {
    CQorViewIns* instrument = nullptr; ///< owned by the document
    int index = -1;                    ///< within its resource
    DefinitionStatus definition = DefinitionStatus::NoError;
    CommResult comm = CommResult::Success;
    std::string parseLog;
};

/// A moment's figures of an instrument.
struct InstrumentFigures {
    std::string name;
    int resource = -1;
    std::uint64_t frames = 0; ///< received
    std::uint64_t dropped = 0;
    std::uint64_t checksumErrors = 0;
    std::uint64_t valueErrors = 0;
    std::uint32_t framesThisLog = 0;
};

/// A moment's figures of a resource, with the sums of its instruments.
struct ResourceStatus {
    std::string name;
    bool isFile = false;
    ResourceFigures figures;
    std::uint64_t frames = 0;
    std::uint64_t dropped = 0;
    std::uint64_t checksumErrors = 0;
};

class CQorViewDoc : public CQorTelemetryDoc, public SessionState {
  public:
    /// The seams live longer than the document. `makePort` makes the ports of serial resources.
    CQorViewDoc(CClock& clock, SerialPortFactory makePort, CUserService& user,
                CProfileStore& profile);
    /// Ends an open log, disconnects, and delivers what is still reported.
    ~CQorViewDoc() override;

    CSessionLog SessionLog;
    CRawLog RawLog;

    /// Stamps, stores and writes one message: where reported messages end up.
    virtual void AddSessionLogEntry(const std::string& message);

    /// Begins a session: opens the session log, reports "Beginning new session." or, with a path,
    /// "Beginning session ...".
    void BeginSession(const std::string& sessionPath = {});
    /// The application's settings of the session log and of logging sounds, from and to the profile
    /// store.
    void LoadSettings();
    void SaveSettings();

    // Each failure below has been reported when the call returns. Indices count from 0 in the order
    // of adding; a resource's index stays until one before it is removed.

    /// Adds a serial port. The index, or -1 (with the code in `result` when given).
    int AddSerialResource(const SerialResourceSettings& settings, CommResult* result = nullptr);
    /// Opens a file and adds it as a resource to be played.
    int AddFileResource(const std::string& path, const FileResourceSettings& settings = {},
                        CommResult* result = nullptr);
    CommResult RemoveResource(int resource);

    /// Loads a definition file and attaches it to a resource, acquisition enabled.
    AddedInstrument AddInstrument(const std::string& definitionPath, int resource);
    /// The same with a definition that is already loaded (a package's member).
    AddedInstrument AddInstrument(std::unique_ptr<CInstrument> definition, int resource);
    CommResult RemoveInstrument(int resource, int instrument);

    /// Connecting and disconnecting wait for the port's worker, without DocLock. Disconnecting
    /// first processes the frames that are still queued.
    CommResult ConnectResource(int resource);
    CommResult DisconnectResource(int resource);
    /// Every serial resource; false when one failed.
    bool ConnectAll();
    void DisconnectAll();
    /// Takes back a resource's abort code, so that it may connect again.
    CommResult ResetAbort(int resource, std::uint32_t& abortCode);

    /// Gives a role to an instrument, or takes it away (-1, -1).
    void SetRole(InstrumentRole role, int resource, int instrument);
    /// Looks an instrument up by name (byte for byte) over all resources; null, or where it is.
    CQorViewIns* FindInstrument(std::string_view name, RoleHolder* place = nullptr) const;
    /// Immerses the instrument of that name, or all with an empty name; how many it were.
    int SetImmersed(std::string_view name, bool immersed);

    std::size_t ResourceCount() const;
    ResourceStatus StatusOf(int resource) const;
    /// Of the instruments on a resource, in order; -1: on all resources.
    std::vector<InstrumentFigures> FiguresOf(int resource) const;

    /// Takes the frames that wait on every resource and processes and logs them; from a playing
    /// file, one batch. Returns how many there were.
    std::size_t TakeFrames();
    /// Whether some file is being read on.
    bool IsPlaying() const;
    /// The same for one resource; a file's batch may be empty before its end: see AtEnd.
    std::size_t TakeFramesOf(int resource);
    /// True when a file resource has given all that it has (and for any other resource).
    bool AtEnd(int resource) const;
    /// Delivers queued messages to the session log, in order, waiting at most so long for the first
    /// command. True when a command came.
    bool TakeCommands(int milliseconds);

    /// Hears every notice about a resource (status changed, end of file, frames available) on the
    /// thread that acquires, without the lock; set before anything runs.
    std::function<void(NoticeCode, const std::string& resource)> OnNotice;

  private:
    CQorViewRes* ResourceAt(int resource) const REQUIRES(DocLock);
    std::string NameOf(int resource) const;
    CommResult NoResource(const char* operation);
    std::size_t TakeBatch(CQorViewRes& resource) REQUIRES(DocLock);

    CFrameQueue Batch GUARDED_BY(DocLock); ///< its memory is used again from batch to batch
    std::vector<QueuedCommand> Taken;      ///< of the thread that acquires
};

} // namespace qor
