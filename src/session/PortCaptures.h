// SPDX-License-Identifier: GPL-3.0-or-later
//
// Looks after ports that give bytes and no frame: says so once a port, with the likely cause, and
// keeps such bytes, or on request all, in capture files. Tended by a thread of its own, which alone
// waits for the disk here: neither a port's worker nor the raw log is ever held up by a capture.
#pragma once

#include "base/MessageSink.h"
#include "session/CaptureFile.h"
#include "session/SessionState.h"

#include <memory>
#include <string>
#include <vector>

namespace qor {

/// Which bytes go into capture files.
enum class CaptureRule : std::uint8_t {
    None,
    Unframed, ///< of a port that was warned of, from its connection to its first frame
    All
};

/// How a port's capture stands.
struct CaptureStatus {
    std::string path;
    bool made = false;        ///< else the file could not be created
    std::uint64_t unkept = 0; ///< bytes of the port that should be in it and are not
};

class CPortCaptures {
  public:
    CPortCaptures(SessionState& session, CMessageSink& messages)
        : Session(session), Messages(messages) {}

    /// For the ports that the session has; before they are connected.
    void Begin(CaptureRule rule, std::uint64_t limit = CCaptureFile::DefaultLimit);
    /// Looks at every port and writes what has come. A few times a second, on one thread at a time.
    void Tend();
    /// Writes what is left and closes the files. When the ports are disconnected.
    void Finish();
    /// The captures of the session, in the order in which they were begun. Any thread.
    std::vector<CaptureStatus> Status() const;

  private:
    struct Port {
        ResourceId id = ResourceId::None;
        bool warned = false;
        bool done = false; ///< it will not be captured any more
        std::uint64_t unkeptSaid = 0;
        std::size_t place = 0; ///< of its file among all
        std::unique_ptr<CCaptureFile> file;
    };
    struct Look;

    Port& PortOf(ResourceId id);
    std::vector<Look> LookAtAll();
    void LookAt(CQorViewRes& resource, Look& look) REQUIRES(Session.DocLock);
    bool IsOverdue(const CQorViewRes& resource, const Look& look) const REQUIRES(Session.DocLock);
    void Warn(Port& port, const Look& look);
    std::string BeginFile(Port& port, const Look& look);
    void Write(Port& port, const Look& look);

    SessionState& Session;
    CMessageSink& Messages;
    mutable CMutex FilesLock; ///< a leaf
    std::vector<CaptureStatus> Files GUARDED_BY(FilesLock);
    CaptureRule Rule GUARDED_BY(Session.DocLock) = CaptureRule::None;
    std::uint64_t Limit GUARDED_BY(Session.DocLock) = CCaptureFile::DefaultLimit;
    // Of the thread that tends.
    std::vector<Port> Ports;
};

} // namespace qor
