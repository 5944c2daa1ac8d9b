// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/PracticePort.h"

#include "platform/SystemText.h"

#include <algorithm>

namespace qor {

CPracticeLine& CPracticeBench::AddLine(const std::string& portName, std::uint64_t seed) {
    std::unique_ptr<CPracticeLine>& line = Lines[portName];
    line = std::make_unique<CPracticeLine>(Clock, seed);
    return *line;
}

CPracticeLine* CPracticeBench::Line(const std::string& portName) {
    const auto found = Lines.find(portName);
    return found == Lines.end() ? nullptr : found->second.get();
}

std::unique_ptr<CSerialPort> CPracticeBench::MakePort() {
    return std::make_unique<CPracticePort>(*this, Clock);
}

SystemError CPracticePort::Fault() const {
    return Line && Line->Holds(Connection) ? 0 : SystemErrorGone;
}

SystemError CPracticePort::Open(const std::string& name) {
    Close();
    CPracticeLine* line = Bench.Line(name);
    const SystemError error = line ? line->Listen(Connection) : SystemErrorNoDevice;
    if (error == 0)
        Line = line;
    return error;
}

SystemError CPracticePort::SetQueues(std::uint32_t inputBytes, std::uint32_t) {
    if (SystemError fault = Fault())
        return fault;
    Line->SetInputQueue(inputBytes);
    return 0;
}

SystemError CPracticePort::SetEventMask(std::uint32_t mask) {
    EventMask = mask;
    return Fault();
}

SystemError CPracticePort::ReadLineErrors(std::uint32_t& errors) {
    errors = 0;
    if (SystemError fault = Fault())
        return fault;
    errors = Line->TakeErrors();
    return 0;
}

IssueResult CPracticePort::IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) {
    got = 0;
    Buffer = buffer;
    IssueError = Line ? 0 : SystemErrorGone;
    if (IssueError != 0)
        return IssueResult::Failed;
    // A line that is lost shows when the read is collected, as it does with a driver.
    if (Fault() == 0)
        got = Line->Take(Buffer);
    ReadPending = got == 0;
    return ReadPending ? IssueResult::Pending : IssueResult::Done;
}

IssueResult CPracticePort::IssueStatusWait(std::uint32_t& mask) {
    mask = 0;
    StatusPending = true;
    return IssueResult::Pending;
}

WaitResult CPracticePort::Wait(int milliseconds) {
    for (const std::int64_t end = Clock.MonotonicMilliseconds() + milliseconds;;) {
        if (ReadPending && (Fault() != 0 || Line->HasInput()))
            return WaitResult::ReadDone;
        if (StatusPending && Line && Line->HasErrors() && (EventMask & EventLineError) != 0)
            return WaitResult::StatusDone;
        const auto left = static_cast<int>(end - Clock.MonotonicMilliseconds());
        if (left <= 0)
            return WaitResult::TimeOut;
        Clock.Sleep(Line && ReadPending ? Line->MillisecondsToNext(left) : left);
    }
}

SystemError CPracticePort::CollectRead(std::size_t& got) {
    got = 0;
    ReadPending = false;
    if (SystemError fault = Fault())
        return fault;
    got = Line->Take(Buffer);
    return 0;
}

SystemError CPracticePort::CollectStatus(std::uint32_t& mask) {
    mask = EventLineError;
    StatusPending = false;
    return Fault();
}

SystemError CPracticePort::Purge() {
    if (SystemError fault = Fault())
        return fault;
    Line->Purge();
    return 0;
}

void CPracticePort::Close() {
    // A line that was lost may have another listener by now.
    if (Fault() == 0)
        Line->Leave();
    Line = nullptr;
    ReadPending = StatusPending = false;
}

} // namespace qor
