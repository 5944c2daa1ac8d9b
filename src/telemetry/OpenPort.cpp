// SPDX-License-Identifier: GPL-3.0-or-later
//
// The steps of opening and closing a port, in the order of their codes.
#include "telemetry/OpenPort.h"

#include "base/Text.h"
#include "platform/SystemText.h"

#include <tuple>

namespace qor {

namespace {

/// How long the driver may hold bytes back after a pause on the line: one character and 6 ms.
std::uint32_t ReadInterval(std::uint32_t baudRate) {
    return baudRate == 0 ? 6 : 10000 / baudRate + 6;
}

} // namespace

CommResult COpenPort::Open(const SerialResourceSettings& settings, SystemError& error) {
    Name = settings.portName;
    TimeoutsSaved = false;
    Port = MakePort();
    error = Port == nullptr ? SystemErrorNoMemory : Port->Open(Name);
    if (error != 0) {
        Port.reset();
        return CommResult::PortNotOpened;
    }
    CommResult result = Configure(settings, error);
    if (result != CommResult::Success)
        std::ignore = Close();
    return result;
}

CommResult COpenPort::Configure(const SerialResourceSettings& settings, SystemError& error) {
    if ((error = Port->SaveTimeouts()) != 0)
        return Fail("get serial port timeouts", CommResult::TimeoutsNotRead, error);
    TimeoutsSaved = true;
    if ((error = Port->ReadSettings()) != 0)
        return Fail("get serial port settings", CommResult::SettingsNotRead, error);
    if ((error = Port->WriteSettings(
             {settings.baudRate, settings.dataBits, settings.parity, settings.stopBits})) != 0)
        return Fail("set serial port settings", CommResult::SettingsNotWritten, error);
    if ((error = Port->SetReadInterval(ReadInterval(settings.baudRate))) != 0)
        return Fail("set serial port timeouts", CommResult::TimeoutsNotSet, error);
    if ((error = Port->SetQueues(settings.bufferSize, 0)) != 0)
        return Fail("set serial communications buffer", CommResult::QueueSizeNotSet, error);
    if ((error = Port->SetEventMask(EventBreak | EventLineError)) != 0)
        return Fail("set serial communications mask", CommResult::EventMaskNotSet, error);
    return CommResult::Success;
}

CommResult COpenPort::Close() {
    CommResult result = CommResult::Success;
    SystemError error = TimeoutsSaved ? Port->RestoreTimeouts() : 0;
    if (error != 0)
        result = Fail("reset serial port timeouts", CommResult::NotRestored, error);
    if ((error = Port->Purge()) != 0)
        result = Fail("purge serial port buffers", CommResult::NotRestored, error);
    Port->Close();
    Port.reset();
    return result;
}

CommResult COpenPort::Fail(const char* deed, CommResult code, SystemError error) {
    Sink.Report(Format("Unable to %s for %s.\r\n", deed, Name.c_str())
                    .append(CommDetail(code))
                    .append(SystemErrorText(error)));
    return code;
}

} // namespace qor
