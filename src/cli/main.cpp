// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli: parses the command line, runs the chosen command, gives its exit status. The
// parser's exceptions end here.
#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/Report.h"
#include "export/Output.h"
#include "platform/File.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <new>

namespace {

constexpr const char* Description =
    "QorView acquires, calibrates, checks and logs telemetry of optical and oceanographic "
    "instruments.\nEach command explains itself: qorview-cli COMMAND --help.";

int Run(int argc, char** argv) {
    std::vector<std::string> arguments = qor::CommandLineArguments(argc, argv);
    if (arguments.size() == 2 && arguments[1] == "--version") {
        qor::COutput output(qor::ReportError);
        output.Text("qorview-cli " QORVIEW_VERSION "\n");
        return output.Flush() || !output.Failed() ? qor::ExitWell : qor::ExitFault;
    }

    CLI::App app(Description, "qorview-cli");
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // a path may begin with "/" there too
    app.set_version_flag("--version", "qorview-cli " QORVIEW_VERSION);
    app.get_formatter()->column_width(34);

    qor::CommandContext context;
    qor::AddCheckCommand(app, context);
    qor::AddDecodeCommand(app, context);
    qor::AddCompareCommand(app, context);
    qor::AddLogCommand(app, context);
    qor::AddSimulateCommand(app, context);
    qor::AddInfoCommand(app, context);
    qor::AddPageCommand(app, context);
    qor::AddSessionCommand(app, context);

    // The parser would take the word behind a bare --wet or --derived for its value.
    std::replace(arguments.begin(), arguments.end(), std::string("--wet"),
                 std::string("--wet=") + qor::EveryInstrument);
    std::replace(arguments.begin(), arguments.end(), std::string("--derived"),
                 std::string("--derived=") + qor::UsualDerived);
    const std::string command = arguments.size() > 1 ? arguments[1] : "";
    std::reverse(arguments.begin() + 1, arguments.end()); // the parser takes them from the back
    arguments.erase(arguments.begin());
    try {
        app.parse(arguments);
    } catch (const CLI::Success& request) { // --help, --version
        return app.exit(request);
    } catch (const CLI::ParseError& error) {
        std::string text = error.what();
        std::replace(text.begin(), text.end(), '\n', ' ');
        if (app.get_subcommands().empty())
            text = command.empty() ? "A command is required"
                                   : "There is no command or option \"" + command + "\"";
        qor::ReportError(text + (text.ends_with('.') ? "" : ".") + " See qorview-cli --help.");
        return qor::ExitBadCall;
    }
    qor::SetPipeStop(&context.stopEvent);
    const int status = context.body();
    qor::SetPipeStop(nullptr);
    return status;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        qor::ReportError("out of memory; close other programs or give a smaller input.");
    } catch (const std::exception& error) {
        qor::ReportError(error.what());
    }
    return qor::ExitFault;
}
