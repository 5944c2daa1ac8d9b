// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli session: writes the session file of what a call of log would run. Definitions are
// loaded, because roles and immersion go by the names of instruments; no port is opened.
#include "base/Text.h"
#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/LogOptions.h"
#include "cli/OutputOptions.h"
#include "cli/Report.h"
#include "cli/TerminalUser.h"
#include "platform/Clock.h"
#include "session/LogRun.h"
#include "session/SessionFile.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

struct SessionCallOptions : LogCallOptions {
    std::string title;
    std::string path; ///< empty: standard output
    OutputRules rules;
};

/// Makes the document of the call; its records, unless they may not be written. The exit status.
int MakeSession(const SessionCallOptions& options, std::optional<SessionRecord>& session) {
    CSystemClock clock;
    CTerminalUser user;
    CMemoryProfileStore profile;
    CQorViewDoc doc(clock, MakeSystemSerialPort, user, profile);
    doc.SessionLog.KeepFile = false;
    CLogRun run(doc, options);
    const bool ports = run.SetUp();
    if (!run.SessionRefusal().empty())
        ReportError(run.SessionRefusal());
    for (const PortRefusal& port : run.PortRefusals())
        ReportError("--port " + port.settings.portName + ": " + OneLine(CommDetail(port.result)));
    const bool usable = ReportSetup(run.Set(), options.strict, true);
    if (HasUnknownName(run.Set().Refusals()))
        return ExitBadCall;
    if (ports && !usable && !options.partly)
        ReportError("no session was written; --partly writes what can be used.");
    if (ports && (usable || options.partly)) {
        session = doc.Session.Record();
        if (!options.title.empty())
            session->title = options.title;
    }
    return ports && usable ? ExitWell : ExitFault;
}

int RunSession(const CLI::App& command, SessionCallOptions& options) {
    if (const int status = ReadLogCall(command, options); status != ExitWell)
        return status;
    options.rules.inputs = FilesOf(options.names, options.session, options.sessionPath);
    std::optional<SessionRecord> session;
    const int made = MakeSession(options, session);
    if (!session)
        return made;
    // What goes to standard output is taken for a file of this folder.
    const SessionWriting written =
        WriteSession(*session, options.path.empty() ? "session.qor" : options.path);
    if (!written.refusal.empty()) {
        ReportError(written.refusal);
        return ExitFault;
    }
    COutput output(ReportError);
    OutputResult result = output.Open(options.path, options.rules);
    if (result.Good()) {
        output.Text(written.bytes);
        result = output.Finish();
    }
    return std::max(made, OutputExit(result));
}

} // namespace

void AddSessionCommand(CLI::App& app, CommandContext& context) {
    static SessionCallOptions options; // one command runs in a process
    CLI::App* command =
        app.add_subcommand("session", "Write the session file of what log would run");
    AddLogOptions(*command, options);
    command->add_option("--title", options.title, "Title of the session")->type_name("TEXT");
    command->add_option("--directory", options.directory, "Folder of the raw logs")
        ->type_name("DIR");
    AddOutputOptions(*command, "The session file (.qor)", options.path, options.rules);
    AddStrictOption(*command, options.strict);
    command->add_flag("--partly", options.partly,
                      "Write what can be used when some definition cannot");
    command->callback([command, &context] {
        context.body = [command] { return RunSession(*command, options); };
    });
}

} // namespace qor
