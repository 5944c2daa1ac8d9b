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

namespace qor {

namespace {

constexpr std::uint64_t EnoughFrames = 3;
constexpr int ShortestWait = 5000, LongestWait = 60000; // milliseconds

/// Long enough for the frames wanted at the instrument's own rate.
int WaitFor(const CInstrument& instrument) {
    CSilentSink nobody; // the definition's faults are said before
    const double rate = NominalFrameRate(instrument, nobody);
    const double needed = 1000.0 * static_cast<double>(EnoughFrames + 1) / std::max(rate, 1e-3);
    return static_cast<int>(std::clamp<double>(needed, ShortestWait, LongestWait));
}

bool ReadFile(CInputFile& file, CFrameTrial& trial, CommandContext& context) {
    CProgress progress(file.Path(), FileSizeOf(file.Path()), context.quiet);
    std::array<std::uint8_t, 65536> buffer;
    for (std::size_t got = 1; got > 0 && !context.stop.Requested();) {
        const FileCause cause = file.Read(buffer, got);
        if (cause != FileCause::None && !context.stop.Requested()) {
            ReportError(file.Path() + ": could not be read to its end. " +
                        OneLine(GetFileErrorText(cause)));
            return false;
        }
        trial.Take(ByteSpan(buffer).first(got));
        progress.Update(file.BytesTaken());
    }
    return true;
}

/// False (reported) when the port could not be opened, or failed.
bool ReadFrom(const SerialResourceSettings& settings, int wait, CFrameTrial& trial,
              std::uint64_t& lineErrors, CommandContext& context) {
    if (!context.quiet)
        WriteError(Format("%s at %s: reading for up to %d s ...\n", settings.portName.c_str(),
                          LineTextOf(settings).c_str(), wait / 1000));
    CSystemClock clock;
    const PortSample sample = ReadPort(settings, MakeSystemSerialPort, clock, wait,
                                       context.stopEvent, [&](ByteSpan bytes) {
                                           trial.Take(bytes);
                                           return trial.Frames() < EnoughFrames;
                                       });
    lineErrors = sample.lineErrors;
    if (sample.result == CommResult::Success)
        return true;
    ReportError(
        settings.portName + ": there is no file of that name, and as a port it " +
        (sample.result == CommResult::PortNotOpened ? "could not be opened" : "could not be read") +
        " (" + OneLine(SystemErrorText(sample.error)) + "). " + PortTrouble(settings.portName));
    return false;
}

} // namespace

int TryFrames(const std::string& source, const CInstrument& instrument,
              const std::string& definition, bool json, CommandContext& context) {
    CFrameTrial trial(instrument);
    std::uint64_t lineErrors = 0;
    CInputFile file;
    const FileCause cause = file.OpenForReading(source);
    const std::optional<PortText> port = ParsePort(source);
    if (cause != FileCause::None && (!port || IsDirectory(source))) {
        ReportError(source + ": cannot be read. " + OneLine(GetFileErrorText(cause)));
        return ExitFault;
    }
    const bool read = cause == FileCause::None ? ReadFile(file, trial, context)
                                               : ReadFrom(port->settings, WaitFor(instrument),
                                                          trial, lineErrors, context);
    if (!read)
        return ExitFault;
    const FrameTrialResult result = trial.Finish(lineErrors);
    COutput output(ReportError);
    if (json)
        WriteTrialJson(output, source, definition, result);
    else
        WriteTrialText(output, source, instrument, result);
    output.Flush();
    if (context.stop.Requested())
        return ExitInterrupted;
    return result.Passed() && !output.Failed() ? ExitWell : ExitFault;
}

} // namespace qor
