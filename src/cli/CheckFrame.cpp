// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CheckFrame.h"

#include "base/SilentSink.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "export/TrialText.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "platform/InputFile.h"
#include "platform/SystemText.h"
#include "platform/WholeFile.h"
#include "session/PortSample.h"
#include "session/PortText.h"
#include "views/PortList.h"

#include <algorithm>
#include <array>
#include <deque>

namespace qor {

namespace {

constexpr std::uint64_t EnoughFrames = 3;
constexpr int ShortestWait = 5000, LongestWait = 60000; // milliseconds

using Trials = std::deque<CFrameTrial>; // they stay where they are

/// Long enough for the frames wanted at the slowest instrument's own rate.
int WaitFor(const std::vector<TriedDefinition>& definitions) {
    CSilentSink nobody; // the definitions' faults are said before
    double needed = 0.0;
    for (const TriedDefinition& definition : definitions) {
        const double rate = NominalFrameRate(*definition.instrument, nobody);
        needed =
            std::max(needed, 1000.0 * static_cast<double>(EnoughFrames + 1) / std::max(rate, 1e-3));
    }
    return static_cast<int>(std::clamp<double>(needed, ShortestWait, LongestWait));
}

void Take(Trials& trials, ByteSpan bytes) {
    for (CFrameTrial& trial : trials)
        trial.Take(bytes);
}

bool ReadFile(CInputFile& file, Trials& trials, CommandContext& context) {
    CProgress progress(file.Path(), FileSizeOf(file.Path()), context.quiet);
    std::array<std::uint8_t, 65536> buffer;
    for (std::size_t got = 1; got > 0 && !context.stop.Requested();) {
        const FileCause cause = file.Read(buffer, got);
        if (cause != FileCause::None && !context.stop.Requested()) {
            ReportError(file.Path() + ": could not be read to its end. " +
                        OneLine(GetFileErrorText(cause)));
            return false;
        }
        Take(trials, ByteSpan(buffer).first(got));
        progress.Update(file.BytesTaken());
    }
    return true;
}

bool HasTooFew(const CFrameTrial& trial) {
    return trial.Frames() < EnoughFrames;
}

/// False (reported) when the port could not be opened, or failed.
bool ReadFrom(const SerialResourceSettings& settings, int wait, Trials& trials,
              std::uint64_t& lineErrors, CommandContext& context) {
    if (!context.quiet)
        WriteError(Format("%s at %s: reading for up to %d s ...\n", settings.portName.c_str(),
                          LineTextOf(settings).c_str(), wait / 1000));
    CSystemClock clock;
    const PortSample sample = ReadPort(settings, MakeSystemSerialPort, clock, wait,
                                       context.stopEvent, [&](ByteSpan bytes) {
                                           Take(trials, bytes);
                                           return std::ranges::any_of(trials, HasTooFew);
                                       });
    lineErrors = sample.lineErrors;
    if (sample.result == CommResult::Success)
        return true;
    ReportError(
        settings.portName + ": there is no file of that name, and as a port it " +
        (sample.result == CommResult::PortNotOpened ? "could not be opened" : "could not be read") +
        " (" + OneLine(SystemErrorText(sample.error)) + "). " +
        PortTrouble(settings.portName, sample.error));
    return false;
}

} // namespace

int TryFrames(const std::string& source, const std::vector<TriedDefinition>& definitions, bool json,
              CommandContext& context) {
    Trials trials;
    for (const TriedDefinition& definition : definitions)
        trials.emplace_back(*definition.instrument);
    std::uint64_t lineErrors = 0;
    CInputFile file;
    const FileCause cause = file.OpenForReading(source);
    const std::optional<PortText> port = ParsePort(source);
    if (cause != FileCause::None && (!port || IsDirectory(source))) {
        ReportError(source + ": cannot be read. " + OneLine(GetFileErrorText(cause)));
        return ExitFault;
    }
    const bool read = cause == FileCause::None ? ReadFile(file, trials, context)
                                               : ReadFrom(port->settings, WaitFor(definitions),
                                                          trials, lineErrors, context);
    if (!read)
        return ExitFault;
    COutput output(ReportError);
    bool found = false, well = true;
    for (std::size_t i = 0; i < trials.size(); ++i) {
        const FrameTrialResult result = trials[i].Finish(lineErrors);
        found = found || result.frames > 0;
        well = well && (result.frames == 0 || result.Passed());
        if (json)
            WriteTrialJson(output, source, definitions[i].name, result);
        else
            WriteTrialText(output, source, *definitions[i].instrument, result);
    }
    output.Flush();
    if (context.stop.Requested())
        return ExitInterrupted;
    return found && well && !output.Failed() ? ExitWell : ExitFault;
}

} // namespace qor
