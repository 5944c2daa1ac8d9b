// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli check: loads definition files and packages and reports what was found.
#include "cli/Commands.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "export/DefinitionJson.h"
#include "export/DefinitionText.h"

#include "base/Text.h"
#include "session/FileKind.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <optional>

namespace qor {

namespace {

struct CheckOptions {
    std::vector<std::string> files;
    bool json = false;
};

std::uint64_t SizeOf(const std::string& path) {
    CFile file;
    std::uint64_t size = 0;
    const bool known = !IsDevice(path) && file.OpenForReading(path) == FileCause::None &&
                       file.Size(size) == FileCause::None;
    return known ? size : 0;
}

bool CheckDefinition(COutput& output, const std::string& path, bool json,
                     const CommandContext& context) {
    // Reading is the bar's first half, writing its second.
    const std::uint64_t size = SizeOf(path);
    std::optional<CProgress> bar(std::in_place, path, 2 * size, context.quiet);
    CInstrument instrument;
    DefinitionStatus status = instrument.Load(path, [&](std::uint64_t bytesRead) {
        bar->Update(bytesRead);
        return !context.stop.Requested();
    });
    if (context.stop.Requested())
        return false; // what was read is not the definition
    if (!json || IsTerminal(StandardStream::Output))
        bar.reset(); // the results would stand in its line
    if (json) {
        CJsonWriter writer(output);
        const double share = static_cast<double>(size) / std::max(instrument.SensorCount(), 1);
        WriteDefinition(writer, path, instrument, status, [&](const CSensor& sensor) {
            if (bar && size > 0)
                bar->Update(size + static_cast<std::uint64_t>(share * sensor.Index));
        });
        writer.EndLine();
    } else {
        WriteParseLog(output, instrument.ParseLog());
    }
    bar.reset();
    if (status == DefinitionStatus::Success)
        return true;
    output.Flush();
    ReportError(path + ": could not be loaded (" + Format("0x%08x", static_cast<unsigned>(status)) +
                "); its parse log says why.");
    return false;
}

bool CheckPackage(COutput& output, const std::string& path, bool json, const CommandContext&) {
    const LoadedPackage package = ReadPackage(path); // its messages are part of the result
    if (json)
        WritePackageJson(output, package);
    else
        WritePackageText(output, package);
    if (package.ok && package.failed.empty())
        return true;
    output.Flush();
    if (!package.ok)
        ReportError(path +
                    ": no instrument could be loaded from the package; its messages say why.");
    for (const FailedMember& member : package.failed)
        ReportError(path + "(" + member.name + "): " +
                    (member.instrument ? "could not be loaded; its parse log says why."
                                       : "could not be extracted."));
    return false;
}

int RunCheck(const CheckOptions& options, CommandContext& context) {
    COutput output(ReportError);
    bool well = true;
    for (const std::string& path : options.files) {
        bool isPackage = KindByName(path) == FileKind::Package;
        well = (isPackage ? CheckPackage : CheckDefinition)(output, path, options.json, context) &&
               well;
        if (context.stop.Requested())
            return ExitInterrupted;
        if (!output.Good())
            break;
    }
    output.Flush();
    return well && !output.Failed() ? ExitWell : ExitFault;
}

} // namespace

void AddCheckCommand(CLI::App& app, CommandContext& context) {
    static CheckOptions options; // one command runs in a process
    CLI::App* command =
        app.add_subcommand("check", "Load definition files and packages and report what was found");
    command->add_flag("--json", options.json, "One JSON object a file instead of the parse log");
    command->add_flag("--quiet", context.quiet, "No progress bar");
    command->add_option("FILE", options.files, "Definition files (.cal, .tdf) or packages (.sip)")
        ->type_name("")
        ->required();
    command->callback(
        [&context] { context.body = [&context] { return RunCheck(options, context); }; });
}

} // namespace qor
