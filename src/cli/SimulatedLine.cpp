// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SimulatedLine.h"

#include "base/Text.h"
#include "cli/Report.h"
#include "platform/SystemText.h"

namespace qor {

namespace {

constexpr int WriteWaitMilliseconds = 100;

} // namespace

int CSimulatedLine::OpenOutput(const std::string& path, const OutputRules& rules) {
    return OutputExit(Out.Open(path, rules));
}

int CSimulatedLine::OpenPort() {
    std::string name;
    Port.emplace();
    SystemError error = Port->Open(name);
    if (error != 0) {
        ReportError("no virtual serial port could be made: " + OneLine(SystemErrorText(error)));
        return ExitFault;
    }
    COutput announcement(ReportError);
    announcement.Text(name + "\n");
    return announcement.Flush() ? ExitWell : ExitFault;
}

bool CSimulatedLine::WaitForListener() {
    while (Port && !Port->WaitForListener(WriteWaitMilliseconds))
        if (Context.stop.Requested())
            return false;
    return true;
}

bool CSimulatedLine::Send(ByteSpan bytes) {
    if (!Port) {
        Out.Text(AsText(bytes));
        return Out.Good();
    }
    while (!bytes.empty() && !Context.stop.Requested()) {
        std::size_t written = 0;
        SystemError error = Port->Write(bytes, WriteWaitMilliseconds, written);
        if (error != 0) {
            ReportError("the virtual serial port cannot be written: " +
                        OneLine(SystemErrorText(error)));
            return false;
        }
        bytes = bytes.subspan(written);
    }
    return bytes.empty();
}

bool CSimulatedLine::Finish() {
    if (!Port)
        return Out.Finish().Good();
    constexpr int drainMilliseconds = 5000, step = 10, graceMilliseconds = 200;
    for (int waited = 0;
         waited < drainMilliseconds && !Port->Drained() && !Context.stop.Requested();
         waited += step)
        Context.stopEvent.Wait(step);
    Context.stopEvent.Wait(
        graceMilliseconds); // a listener with exclusive use does not show what it has read
    return true;
}

} // namespace qor
