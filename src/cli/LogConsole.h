// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the command line says of a run of logs: refusals, troubles as they come, the status line,
// the summary. The run itself is CLogRun's.
#pragma once

#include "cli/Commands.h"
#include "cli/LivePrint.h"
#include "cli/LiveStatus.h"
#include "cli/OutputOptions.h"
#include "cli/TerminalUser.h"
#include "session/LogRun.h"
#include "views/SpaceWarning.h"

namespace qor {

class CLogConsole {
  public:
    CLogConsole(LogRunPlan plan, std::optional<PrintSettings> print, CommandContext& context);

    /// Runs until the operator, the log's end or the last port ends it; returns the exit status.
    int Run();

  private:
    bool Begin();
    OutputResult PlaceOfFirstLog() const;
    void ReportPorts();
    bool IsTriedAgain(const std::string& port) const;
    void WarnOfFiles();
    bool ReportTroubles(CLiveStatus* status);
    void Watch();
    void LookAtSpace(const LogStatus& log);
    void Say(CLiveStatus& status);
    void NoteAborts(CLiveStatus& status, const SessionSnapshot& snapshot);
    void Summarise();
    void ReportSilent(const SessionSnapshot& snapshot);

    CommandContext& Context;
    const bool Strict;
    const bool Partly;
    const bool NamesSessionLog; ///< the call says where it is kept
    CSystemClock Clock;
    CTerminalUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Document;
    CLogRun LogRun;
    CLivePrint Print; ///< ends before what it prints
    CSpaceWarning Space;
    std::optional<double> SecondsLeft; ///< as of the last look with an open log
    std::size_t PortsReported = 0;
    std::vector<ResourceId> Aborted;
    bool Fault = false;
};

} // namespace qor
