// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/OutputOptions.h"

#include "cli/Commands.h"
#include "cli/Report.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

const char* RefusalText(OutputState state) {
    switch (state) {
    case OutputState::NeedsFolder:
        return "several instruments give several tables; give a folder with -o: one that is there, "
               "or a new name without an extension.";
    case OutputState::IsFolder:
        return "it is a folder; name a file in it.";
    case OutputState::IsInput:
        return "it is one of the files to read; name another one for the results.";
    case OutputState::IsRawLog:
        return "it begins as a raw log, which results do not replace; name another file.";
    case OutputState::IsLink:
        return "it is a symbolic link; name the file itself.";
    case OutputState::Exists:
        return "it exists and is not empty; replace it with --overwrite, or name another file.";
    case OutputState::InUse:
        return "another program holds it; wait for that, or name another file.";
    case OutputState::NeedsFile:
        return "a file of this format is no stream; name it with -o NAME, or a folder.";
    case OutputState::NotBuilt:
        return "this program was built without libnetcdf, which writes netCDF; choose another "
               "--format, or build it where libnetcdf-dev is installed.";
    case OutputState::Good:
    case OutputState::Failed:
        break;
    }
    return "";
}

} // namespace

CLI::Option* AddOutputOptions(CLI::App& command, const std::string& help, std::string& path,
                              OutputRules& rules) {
    command.add_flag("--overwrite", rules.overwrite, "Replace files that exist");
    return command
        .add_option_function<std::string>(
            "-o,--output", [&path](const std::string& name) { path = name == "-" ? "" : name; },
            help)
        ->type_name("PATH");
}

CLI::Option* AddSafeTextsOption(CLI::App& command, bool& safe) {
    return command.add_flag("--csv-safe", safe,
                            "Texts in CSV that begin with = + - @ get a ' before it, so that a "
                            "spreadsheet computes nothing");
}

int OutputExit(const OutputResult& result) {
    if (result.Refused())
        ReportError((result.path.empty() ? "" : result.path + ": ") + RefusalText(result.state));
    return result.Good() ? ExitWell : result.Refused() ? ExitBadCall : ExitFault;
}

} // namespace qor
