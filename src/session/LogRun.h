// SPDX-License-Identifier: GPL-3.0-or-later
//
// One acquisition run from serial ports into raw logs, from the first port to the last byte: what a
// face without an operator does with a document. The acquisition loop does the work on its own
// threads; the caller's thread sets up, looks from time to time, says what happened, and ends.
#pragma once

#include "session/AcquisitionLoop.h"
#include "session/SessionSetup.h"

#include <string>
#include <vector>

namespace qor {

/// A port and the instruments on it.
struct PortPlan {
    SerialResourceSettings settings;
    bool baudGiven = false; ///< else a package's own speed holds
    InstrumentSelection instruments;
};

struct LogRunPlan {
    std::vector<PortPlan> ports;
    InstrumentSelection names; ///< roles and immersion, over all ports
    std::string directory = ".";
    std::string name;                ///< of the log; empty: the time of its beginning
    std::string sessionLogDirectory; ///< empty: that of the logs
    LogOptions log;
    StationInformation station;
    bool reconnect = false; ///< ports that are lost, or not there yet, are tried until the end
    bool strict = false;    ///< nothing is logged with a definition that was repaired
    bool partly = false;    ///< start although some definition or member cannot be used
};

/// A port that could not be had.
struct PortRefusal {
    SerialResourceSettings settings;
    CommResult result = CommResult::Success;
    SystemError systemError = 0; ///< 0: none is known
};

class CLogRun {
  public:
    CLogRun(CQorViewDoc& doc, LogRunPlan plan);

    /// Fills the document. What could not be used is in Set and PortRefusals. False when a
    /// port was refused.
    bool SetUp();
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
    bool SetUpPort(const PortPlan& port);
    void Note(const Event& event);

    CQorViewDoc& Doc;
    CSessionSetup Setup;
    CAcquisitionLoop Loop;
    const LogRunPlan Plan;
    std::vector<PortRefusal> PortsRefused;
    CFrameQueue Held;         ///< frames that came while the position was waited for
    mutable CMutex EventLock; ///< a leaf
    std::vector<Event> Events GUARDED_BY(EventLock);
    std::vector<std::string> Files GUARDED_BY(EventLock);
};

} // namespace qor
