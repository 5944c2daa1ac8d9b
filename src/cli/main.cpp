// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli: parses the command line, runs the chosen command, gives its exit status. The
// parser's exceptions end here.
#include "cli/CallText.h"
#include "cli/Commands.h"
#include "cli/HelpText.h"
#include "cli/Report.h"
#include "platform/File.h"

#include <cstdlib>
#include <exception>
#include <memory>
#include <new>

namespace {

constexpr const char* Description =
    "QorView acquires, calibrates, checks and logs telemetry of optical and oceanographic "
    "instruments.\nEach command explains itself: qorview-cli help COMMAND.";

/// Said without asking for more.
constexpr std::string_view NoMemory =
    "qorview-cli: error: out of memory; close other programs or give a smaller input.\n";

/// Ends the program as it stands. What was handed to the system stays, and logs end with a whole
/// record.
[[noreturn]] void EndForMemory() {
    qor::DrawError(NoMemory);
    std::_Exit(qor::ExitFault);
}

int Run(int argc, char** argv) {
    std::vector<std::string> arguments = qor::CommandLineArguments(argc, argv);
    CLI::App app(Description, "qorview-cli");
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // a path may begin with "/" there too
    app.set_version_flag("-V,--version", "qorview-cli " QORVIEW_VERSION);
    app.formatter(std::make_shared<qor::CHelpText>());

    qor::CommandContext context;
    for (const std::string& word : arguments)
        context.call += (context.call.empty() ? "" : " ") + word;
    qor::AddCheckCommand(app, context);
    qor::AddDecodeCommand(app, context);
    qor::AddCompareCommand(app, context);
    qor::AddLogCommand(app, context);
    qor::AddSimulateCommand(app, context);
    qor::AddInfoCommand(app, context);
    qor::AddVerifyCommand(app, context);
    qor::AddDiffCommand(app, context);
    qor::AddPageCommand(app, context);
    qor::AddSessionCommand(app, context);

    if (const std::optional<int> status = qor::AnswerCall(app, arguments))
        return *status;
    if (const std::string slip = qor::SettleBareOptions(arguments); !slip.empty()) {
        qor::ReportError(slip);
        return qor::ExitBadCall;
    }
    try { // the parser takes them from the back
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
    } catch (const CLI::ParseError& error) {
        qor::ReportError(qor::WhyRefused(app, error, arguments));
        return qor::ExitBadCall;
    }
    qor::SetPipeStop(&context.stopEvent);
    const int status = context.body();
    qor::SetPipeStop(nullptr);
    return status;
}

} // namespace

int main(int argc, char** argv) {
    std::set_terminate([] {
        try {
            if (std::current_exception())
                std::rethrow_exception(std::current_exception());
        } catch (const std::bad_alloc&) {
            EndForMemory();
        }
        std::abort(); // as it does when another exception leaves here
    });
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        EndForMemory();
    } catch (const std::exception& error) {
        qor::ReportError(error.what());
    }
    return qor::ExitFault;
}
