// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli check: loads definition files and packages and reports what was found.
#include "cli/Commands.h"
#include "cli/DefinitionJson.h"
#include "cli/SessionSetup.h"

#include "base/Text.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

struct CheckOptions {
    std::vector<std::string> files;
    bool json = false;
};

/// The log with this platform's line ends.
void WriteLog(COutput& output, std::string_view log) {
    for (std::size_t start = 0; start < log.size();) {
        std::size_t end = log.find("\r\n", start);
        output.Text(log.substr(start, end - start));
        if (end == std::string_view::npos)
            return;
        output.Text(NativeLineEnd());
        start = end + 2;
    }
}

bool CheckDefinition(COutput& output, const std::string& path, bool json) {
    CInstrument instrument;
    DefinitionStatus status = instrument.Load(path);
    if (json) {
        CJsonWriter writer(output);
        WriteDefinition(writer, path, instrument, status);
        writer.EndLine();
    } else {
        WriteLog(output, instrument.ParseLog());
    }
    if (status == DefinitionStatus::Success)
        return true;
    output.Flush();
    ReportError(path + ": could not be loaded (" + Format("0x%08x", static_cast<unsigned>(status)) +
                "); its parse log says why.");
    return false;
}

int RunCheck(const CheckOptions& options, CommandContext& context) {
    COutput output;
    bool well = true;
    for (const std::string& path : options.files) {
        if (context.stop.Requested())
            return ExitInterrupted;
        well = CheckDefinition(output, path, options.json) && well;
        if (!output.Good())
            break;
    }
    output.Flush();
    return well && !output.Failed() ? ExitWell : ExitFault;
}

} // namespace

void AddCheckCommand(CLI::App& app, CommandContext& context) {
    static CheckOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand(
        "check", "Load definition files and packages and report what was found");
    command->add_flag("--json", options.json, "One JSON object a file instead of the parse log");
    command->add_option("FILE", options.files, "Definition files (.cal, .tdf) or packages (.sip)")->required();
    command->callback([&context] { context.body = [&context] { return RunCheck(options, context); }; });
}

} // namespace qor
