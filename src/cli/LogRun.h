// SPDX-License-Identifier: GPL-3.0-or-later
//
// One acquisition from serial ports into raw logs, from the first port to the summary. The
// acquisition loop does the work on its own threads; the caller's thread starts, watches, says what
// happens, and winds up.
#pragma once

#include "cli/Commands.h"
#include "cli/LiveStatus.h"
#include "cli/SessionSetup.h"
#include "session/AcquisitionLoop.h"
#include "session/PortText.h"

#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// A port of the call and the instruments named behind it.
struct PortOptions {
    PortText port;
    InstrumentOptions instruments;
};

/// What a call asks for.
struct LogRunOptions {
    InstrumentOptions instruments; ///< definitions and packages of all ports; roles and immersion
    std::vector<PortOptions> ports;
    std::string directory = ".";
    std::string name;
    std::string sessionLogDirectory;
    LogOptions log;
    StationInformation station;
};

/// The run of one `log` call.
class CLogRun {
  public:
    CLogRun(LogRunOptions& options, CommandContext& context)
        : Options(options), Context(context), Document(Clock, MakeSystemSerialPort, User, Profile),
          Packages(Document), Loop(Document) {}

    /// Runs until the operator, the log's end or the last port ends it; returns the exit status.
    int Run();

  private:
    void SetUpDocument();
    bool SetUpPorts();
    bool SetUpPort(const PortOptions& port);
    bool ConnectPorts();
    void ReportRefusal(int resource, CommResult result);
    void WaitForPosition();
    bool BeginLog();
    void Watch();
    void NoteEntry(std::string_view entry);
    bool ReportTroubles(CLiveStatus* status);
    void NoteAborts(CLiveStatus& status);
    void Summarise();

    LogRunOptions& Options;
    CommandContext& Context;
    CSystemClock Clock;
    CTerminalUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Document;
    CPackageList Packages;
    CAcquisitionLoop Loop;
    std::vector<std::string> LogFiles;     ///< under the document's lock, as are:
    std::vector<std::string> TroublesSeen; ///< not yet reported
    std::vector<bool> Aborted;
    bool Fault = false;
};

} // namespace qor
