// SPDX-License-Identifier: GPL-3.0-or-later
//
// One acquisition run from serial ports into raw logs, from the first port to the last byte: what a
// face without an operator does with a document. The acquisition loop does the work on its own
// threads; the caller's thread sets up, looks from time to time, says what happened, and ends.
#pragma once

#include "session/AcquisitionLoop.h"
#include "session/LogPlan.h"

#include <string>
#include <vector>

namespace qor {

/// A port that could not be had.
struct PortRefusal {
    SerialResourceSettings settings;
    CommResult result = CommResult::Success;
    SystemError systemError = 0; ///< 0: none is known
    bool triedAgain = false;
};

class CLogRun {
  public:
    CLogRun(CQorViewDoc& doc, LogRunPlan plan);

    /// Fills the document. What could not be used is in Set and PortRefusals. False when a port was
    /// refused, or the session as a whole (see SessionFault).
    bool SetUp();
    const std::string& SessionRefusal() const { return Refused; }
    /// As the session and the call have it, once it is set up.
    std::string Directory() const;
    /// Where the first log will be; empty when its name is the time.
    std::string FirstLogPath() const;
    /// The files that the run reads.
    std::vector<std::string> Inputs() const {
        return FilesOf(Plan.names, Plan.session, Plan.sessionPath);
    }
    bool WantsPosition() const;
    /// Whether there is anything to log.
    bool HasInstruments() const;
    /// Connects every port. True when at least one is connected or will be tried again.
    bool Connect();
    /// With a position in the header: waits at most so long for one. What other instruments on
    /// the GPS's port send meanwhile is kept for the log.
    void WaitForPosition(int milliseconds, const CEvent& stop);
    /// Begins the first log.
    bool Begin();
    /// Starts the loop; false when the system has no threads to give.
    bool Start() { return Loop.Start(); }

    enum class State { Going, Done, NoPort };
    /// How the run stands; to be asked a few times a second.
    State Look() const;
    /// Disconnects, ends the log and waits until the disk has it, stops the loop.
    void End();

    const CSessionSetup& Set() const { return Setup; }
    const std::vector<PortRefusal>& PortRefusals() const { return PortsRefused; }
    /// What has happened since the last call, but for notes.
    std::vector<Event> TakeEvents();
    /// The logs of the run, in order.
    std::vector<std::string> LogFiles() const;
    /// Whether the run ended by a failure.
    bool Failed() const { return Doc.RawLog.Status().runFailed; }

  private:
    void SetUpPort(const PortPlan& port);
    ResourceId AddPort(const PortPlan& port, std::vector<LoadedPackage>& packages,
                       std::vector<std::string>& definitions);
    void Note(const Event& event);

    CQorViewDoc& Doc;
    CSessionSetup Setup;
    CAcquisitionLoop Loop;
    const LogRunPlan Plan;
    std::string Refused;
    std::vector<PortRefusal> PortsRefused;
    CFrameQueue Held;         ///< frames that came while the position was waited for
    mutable CMutex EventLock; ///< a leaf
    std::vector<Event> Events GUARDED_BY(EventLock);
    std::vector<std::string> Files GUARDED_BY(EventLock);
};

} // namespace qor
