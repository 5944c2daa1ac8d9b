// SPDX-License-Identifier: GPL-3.0-or-later
//
// A serial line in steps: what the simulation gives is read by the port's worker before the giving
// returns, so that a seed gives the same run however threads are scheduled. The line outlives its
// ports. The simulation's thread gives, the worker's reads; Guard is a leaf.
#pragma once

#include "base/Lock.h"
#include "telemetry/OpenPort.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace qor {

class CStepLine {
  public:
    /// The worker reads the bytes, as many at a time as it asks for.
    void Bytes(std::string bytes) { Give({Step::Reads, std::move(bytes), 0, 0}); }
    /// So many waits bring nothing.
    void Silence(int waits) { Give({Step::Rests, {}, waits, 0}); }
    void LineErrors(std::uint32_t errors) { Give({Step::Fails, {}, 0, errors}); }
    /// The line is gone: the read fails, and nothing opens it until it is Present again. Returns
    /// when the worker has closed the port.
    void Lose() {
        SetPresent(false);
        Give({Step::Ends, {}, 0, 0});
    }
    void SetPresent(bool present) {
        CLock lock(Guard);
        Present = present;
    }
    /// Somebody is about to disconnect: the worker waits for nothing any more.
    void LetGo() {
        CLock lock(Guard);
        Leaving = true;
        Changed.NotifyAll();
    }
    bool IsOpen() {
        CLock lock(Guard);
        return Open;
    }

  private:
    friend class CStepPort;
    struct Step {
        enum { None, Reads, Rests, Fails, Ends } kind = None;
        std::string bytes;
        int waits = 0;
        std::uint32_t errors = 0;
    };

    void Give(Step step) {
        CLock lock(Guard);
        if (!Open)
            return;
        Now = std::move(step);
        Changed.NotifyAll();
        const auto done = [this]() REQUIRES(Guard) {
            return !Open || (Resting && Now.kind == Step::None);
        };
        while (!Changed.WaitFor(Guard, 10'000, done)) {
        }
    }

    CMutex Guard;
    CCondition Changed;
    Step Now GUARDED_BY(Guard);
    bool Present GUARDED_BY(Guard) = true;
    bool Open GUARDED_BY(Guard) = false;
    bool Resting GUARDED_BY(Guard) = false; ///< the worker waits for a step
    bool Leaving GUARDED_BY(Guard) = false;
};

/// The port of the line that Find knows by its name.
class CStepPort : public CSerialPort {
  public:
    explicit CStepPort(std::function<CStepLine&(const std::string&)> find)
        : Find(std::move(find)) {}

    SystemError Open(const std::string& name) override {
        Line = &Find(name);
        CLock lock(Line->Guard);
        if (!Line->Present)
            return 2;
        Line->Open = true;
        Line->Resting = Line->Leaving = false;
        Line->Now = {};
        return 0;
    }
    SystemError SaveTimeouts() override { return 0; }
    SystemError ReadSettings() override { return 0; }
    SystemError WriteSettings(const LineSettings&) override { return 0; }
    SystemError SetReadInterval(std::uint32_t) override { return 0; }
    SystemError SetQueues(std::uint32_t, std::uint32_t) override { return 0; }
    SystemError SetEventMask(std::uint32_t) override { return 0; }
    SystemError CreateInput() override { return 0; }
    SystemError ReadLineErrors(std::uint32_t& errors) override {
        errors = std::exchange(Errors, 0);
        return 0;
    }
    IssueResult IssueRead(std::span<std::uint8_t> buffer, std::size_t&) override {
        Buffer = buffer;
        return IssueResult::Pending;
    }
    IssueResult IssueStatusWait(std::uint32_t&) override { return IssueResult::Pending; }
    WaitResult Wait(int milliseconds) override {
        using Step = CStepLine::Step;
        CLock lock(Line->Guard);
        if (milliseconds == 0)
            return WaitResult::TimeOut;
        Line->Resting = true;
        Line->Changed.NotifyAll();
        CStepLine& line = *Line;
        const auto goesOn = [&line]() REQUIRES(line.Guard) {
            return line.Leaving || line.Now.kind != Step::None;
        };
        while (!Line->Changed.WaitFor(Line->Guard, 10'000, goesOn)) {
        }
        Line->Resting = false;
        // A worker of the highest priority that never rested would keep out who tells it to stop.
        if (Line->Leaving)
            Line->Changed.WaitFor(Line->Guard, 1, [] { return false; });
        if (Line->Now.kind == Step::Rests) {
            if (--Line->Now.waits <= 0)
                Line->Now.kind = Step::None;
            return WaitResult::TimeOut;
        }
        const bool status = Line->Now.kind == Step::Fails || Line->Now.kind == Step::None;
        return status ? WaitResult::StatusDone : WaitResult::ReadDone;
    }
    SystemError CollectRead(std::size_t& got) override {
        CLock lock(Line->Guard);
        CStepLine::Step& step = Line->Now;
        got = std::min(step.bytes.size(), Buffer.size());
        if (step.kind == CStepLine::Step::Ends)
            return 5;
        std::memcpy(Buffer.data(), step.bytes.data(), got);
        step.bytes.erase(0, got);
        if (step.bytes.empty())
            step.kind = CStepLine::Step::None;
        return 0;
    }
    SystemError CollectStatus(std::uint32_t& mask) override {
        CLock lock(Line->Guard);
        Errors = std::exchange(Line->Now.errors, 0);
        mask = Errors != 0 ? std::uint32_t{EventLineError} : 0;
        Line->Now.kind = CStepLine::Step::None;
        return 0;
    }
    SystemError LastError() const override { return 0; }
    SystemError RestoreTimeouts() override { return 0; }
    SystemError Purge() override { return 0; }
    void Close() override {
        CLock lock(Line->Guard);
        Line->Open = false;
        Line->Changed.NotifyAll();
    }

  private:
    const std::function<CStepLine&(const std::string&)> Find;
    CStepLine* Line = nullptr;
    std::span<std::uint8_t> Buffer;
    std::uint32_t Errors = 0;
};

} // namespace qor
