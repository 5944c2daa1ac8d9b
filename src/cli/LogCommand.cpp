// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli log: what a call may say. The run is CLogConsole's.
#include "cli/Commands.h"

#include "cli/InstrumentOptions.h"
#include "cli/LogConsole.h"
#include "cli/LogOptions.h"
#include "cli/OutputOptions.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

int RunLog(const CLI::App& command, LogCallOptions& options, CommandContext& context) {
    if (const int status = ReadLogCall(command, options); status != ExitWell)
        return status;
    if (options.directory.empty() && !(options.session && !options.session->log.directory.empty()))
        options.directory = ".";
    if (options.print)
        options.print->style.safeTexts = options.csvSafe;
    return CLogConsole(options, options.print, context).Run();
}

} // namespace

void AddLogCommand(CLI::App& app, CommandContext& context) {
    static LogCallOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand("log", "Acquire from serial ports and write raw logs");
    AddLogOptions(*command, options);
    command->add_option("-o,--output", options.directory, "Folder of the raw logs (.)")
        ->type_name("DIR");
    command->add_flag("--overwrite", options.log.overwriteExisting,
                      "Replace an existing log of the same name");
    command
        ->add_option("--spare", options.spareDirectories,
                     "Folder for the log when that of -o takes none any more (repeatable)")
        ->type_name("DIR")
        ->check(CLI::ExistingDirectory.description(""))
        ->allow_extra_args(false);
    command->add_flag(
        "--exit-on-error", options.exitOnError,
        "End the run when a log cannot be written, instead of beginning another file");
    command->add_flag_callback(
        "--no-manifest", [] { options.manifests = false; },
        "Write no NAME.raw.json beside the logs");
    AddStrictOption(*command, options.strict);
    command->add_flag("--partly", options.partly,
                      "Log with what can be used when some definition cannot");
    command->add_flag("--capture", options.captureAll,
                      "Keep every port's bytes in a file beside the logs, up to 100 MB a port");
    command
        ->add_option_function<std::string>(
            "--print",
            [](const std::string& format) {
                options.print = {format == "csv" ? PrintFormat::Csv : PrintFormat::JsonLines, {}};
            },
            "Values of each frame on standard output, as decode prints them")
        ->type_name("csv|jsonl")
        ->check(CLI::IsMember({"csv", "jsonl"}).description(""));
    AddSafeTextsOption(*command, options.csvSafe)->needs("--print");
    command->add_flag("--quiet", context.quiet, "No status lines");
    command->callback([command, &context] {
        context.body = [command, &context] { return RunLog(*command, options, context); };
    });
}

} // namespace qor
