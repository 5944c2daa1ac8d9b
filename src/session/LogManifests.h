// SPDX-License-Identifier: GPL-3.0-or-later
//
// Makes the manifests of a session's raw logs: notes how things stand when a log begins, and writes
// what became of it when it has ended. The raw log tells of begins and ends under the document's
// lock; files are read and written on a thread of its own, so that no log, frame or end of a log
// waits for it. Only the end of the program does. Off until it is enabled.
#pragma once

#include "platform/Worker.h"
#include "session/LogManifest.h"
#include "session/SessionSnapshot.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qor {

class CLogManifests {
  public:
    /// `snapshot` gives the session's figures, under the document's lock.
    CLogManifests(SessionState& session, CMessageSink& messages,
                  std::function<SessionSnapshot()> snapshot)
        : Session(session), Messages(messages), Snapshot(std::move(snapshot)) {}
    /// Stops.
    ~CLogManifests() { Stop(); }
    CLogManifests(const CLogManifests&) = delete;
    CLogManifests& operator=(const CLogManifests&) = delete;

    /// Before anything is loaded.
    void Enable() { Enabled = true; }
    bool IsEnabled() const { return Enabled; }

    /// A definition or package was read, or the session's file was read or written (empty: there is
    /// none). Reads the file for its hash.
    void NoteSource(const std::string& path);
    void NoteSession(const std::string& path);

    void Begin(const std::string& rawLog);
    void End(const FinishedFile& file);

    /// What could not be written since the last call, a line each.
    std::vector<std::string> TakeFaults();
    /// Writes what waits, and ends the thread.
    void Stop();

  private:
    struct Job {
        std::string rawLog;
        std::optional<LogManifest> manifest; ///< none: an earlier log of the name was replaced
    };
    LogManifest::Port PortOf(const ResourceStatus& resource) REQUIRES(Session.DocLock);
    LogManifest::Instrument InstrumentOf(const InstrumentFigures& figures)
        REQUIRES(Session.DocLock);
    ManifestSource SourceOf(const std::string& path) const REQUIRES(Session.DocLock);
    void Hand(Job job);
    void Run();
    void Do(const Job& job);

    SessionState& Session;
    CMessageSink& Messages;
    const std::function<SessionSnapshot()> Snapshot;
    bool Enabled = false;
    std::map<std::string, std::string> Hashes GUARDED_BY(Session.DocLock); ///< by path
    std::string SessionPath GUARDED_BY(Session.DocLock);
    SessionSnapshot Before GUARDED_BY(Session.DocLock); ///< as the log began
    FrameTime Begun GUARDED_BY(Session.DocLock);

    mutable CMutex JobLock; ///< a leaf
    CCondition Changed;
    std::vector<Job> Jobs GUARDED_BY(JobLock);
    std::vector<std::string> Faults GUARDED_BY(JobLock);
    bool Stopping GUARDED_BY(JobLock) = false;
    bool Started GUARDED_BY(JobLock) = false;
    CWorker Thread;
};

} // namespace qor
