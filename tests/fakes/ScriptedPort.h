// SPDX-License-Identifier: GPL-3.0-or-later
//
// A serial port that reads like a transcript: what the line gives, in order, and which step fails.
// The script belongs to the test and outlives the ports that it makes; a port whose script is
// used up stays silent without time passing, so a test never has to hurry.
#pragma once

#include "base/Lock.h"
#include "platform/SerialPort.h"
#include "telemetry/TelemComm.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qor {

class CPortScript {
  public:
    /// What a read brings: later, or at once when it is issued.
    CPortScript& Bytes(std::string bytes) { return Add({Step::Read, std::move(bytes)}); }
    CPortScript& BytesAtOnce(std::string bytes) {
        return Add({Step::ReadAtOnce, std::move(bytes)});
    }
    /// Waits in a row that bring nothing.
    CPortScript& Silence(int waits) {
        CLock lock(Guard); // all at once: silence has no gaps
        Steps.insert(Steps.end(), static_cast<std::size_t>(waits), {Step::Quiet, {}});
        Exhausted = false;
        return *this;
    }
    /// A communications event, and the line errors that are found then.
    CPortScript& Status(std::uint32_t event, std::uint32_t lineErrors) {
        return Add({Step::Event, {}, event, lineErrors});
    }
    /// A moment at which the test does something, on the worker's thread.
    CPortScript& Then(std::function<void()> action) {
        return Add({Step::Action, {}, 0, 0, std::move(action)});
    }
    /// The named function of the port fails with this error, from now on or once the transcript
    /// has come so far ("IssueRead", "CollectRead", "IssueStatusWait", "CollectStatus").
    CPortScript& Fail(const std::string& function, SystemError error) {
        CLock lock(Guard);
        Failures[function] = error;
        return *this;
    }
    CPortScript& ThenFail(const std::string& function, SystemError error) {
        Then([this, function, error] { Fail(function, error); });
        return function == "CollectStatus" ? Status(EventLineError, 0) : Bytes("?");
    }
    /// Nothing fails any more, and what the transcript still held is forgotten.
    void Repair() {
        CLock lock(Guard);
        Steps.clear();
        Failures.clear();
    }

    /// Waits until the worker has used the transcript up and has come round to wait again.
    void Played() {
        CLock lock(Guard);
        auto usedUp = [this]() REQUIRES(Guard) { return Steps.empty() && Exhausted; };
        while (!Changed.WaitFor(Guard, 10'000, usedUp))
            ;
    }
    /// The functions called so far, which are then forgotten.
    std::vector<std::string> TakeCalls() {
        CLock lock(Guard);
        return std::exchange(Calls, {});
    }
    SerialPortFactory Factory();

    std::uint32_t ReadInterval = 0;
    int LongestRead = 0; ///< a wait that is shorter sees no read end, in milliseconds
    LineSettings Line;
    std::function<void()> WhileClosing; ///< the worker has ended

  private:
    friend class CScriptedPort;
    struct Step {
        enum { Read, ReadAtOnce, Quiet, Event, Action } kind;
        std::string bytes;
        std::uint32_t mask = 0, errors = 0;
        std::function<void()> action = {};
    };

    CPortScript& Add(Step step) {
        CLock lock(Guard);
        Steps.push_back(std::move(step));
        Exhausted = false;
        Changed.NotifyAll();
        return *this;
    }
    SystemError Called(const std::string& function) {
        CLock lock(Guard);
        if (Calls.size() < 1000)
            Calls.push_back(function);
        auto failure = Failures.find(function);
        return failure == Failures.end() ? 0 : failure->second;
    }
    /// Runs the actions that are next, then returns the kind of the next step, or -1.
    int Next() {
        for (;;) {
            std::function<void()> action;
            {
                CLock lock(Guard);
                if (Steps.empty() || Steps.front().kind != Step::Action)
                    return Steps.empty() ? -1 : static_cast<int>(Steps.front().kind);
                action = std::move(Steps.front().action);
                Steps.pop_front();
            }
            action();
        }
    }
    Step Take() {
        CLock lock(Guard);
        Step step = std::move(Steps.front());
        Steps.pop_front();
        return step;
    }
    /// Rests until the transcript goes on, but not for long: the worker has to look at its events.
    void Rest() {
        CLock lock(Guard);
        Exhausted = Steps.empty();
        Changed.NotifyAll();
        Changed.WaitFor(Guard, 5, [this]() REQUIRES(Guard) { return !Steps.empty(); });
    }

    CMutex Guard;
    CCondition Changed;
    std::deque<Step> Steps GUARDED_BY(Guard);
    std::map<std::string, SystemError> Failures GUARDED_BY(Guard);
    std::vector<std::string> Calls GUARDED_BY(Guard);
    bool Exhausted GUARDED_BY(Guard) = false;
};

class CScriptedPort : public CSerialPort {
  public:
    explicit CScriptedPort(CPortScript& script) : Script(script) {}

    SystemError Open(const std::string&) override { return Script.Called("Open"); }
    SystemError SaveTimeouts() override { return Script.Called("SaveTimeouts"); }
    SystemError ReadSettings() override { return Script.Called("ReadSettings"); }
    SystemError WriteSettings(const LineSettings& settings) override {
        Script.Line = settings;
        return Script.Called("WriteSettings");
    }
    SystemError SetReadInterval(std::uint32_t milliseconds) override {
        Script.ReadInterval = milliseconds;
        return Script.Called("SetReadInterval");
    }
    SystemError SetQueues(std::uint32_t, std::uint32_t) override {
        return Script.Called("SetQueues");
    }
    SystemError SetEventMask(std::uint32_t mask) override {
        return mask == 0xC0 ? Script.Called("SetEventMask") : 1;
    }
    SystemError CreateInput() override { return Script.Called("CreateInput"); }
    SystemError ReadLineErrors(std::uint32_t& errors) override {
        errors = std::exchange(Errors, 0);
        return Script.Called("ReadLineErrors");
    }
    IssueResult IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) override {
        Buffer = buffer;
        LastFailure = Script.Called("IssueRead");
        if (LastFailure != 0)
            return IssueResult::Failed;
        ReadPending = Script.Next() != CPortScript::Step::ReadAtOnce;
        if (ReadPending)
            return IssueResult::Pending;
        got = Fill();
        return IssueResult::Done;
    }
    IssueResult IssueStatusWait(std::uint32_t&) override {
        LastFailure = Script.Called("IssueStatusWait");
        return LastFailure != 0 ? IssueResult::Failed : IssueResult::Pending;
    }
    int LongestRead() const override { return Script.LongestRead; }
    WaitResult Wait(int milliseconds) override {
        int next = Script.Next();
        if (next == CPortScript::Step::Event)
            return WaitResult::StatusDone;
        if (next == CPortScript::Step::Quiet && ReadPending)
            Script.Take();
        if (next < 0)
            Script.Rest();
        if (milliseconds < Script.LongestRead)
            return WaitResult::TimeOut;
        return ReadPending && next != CPortScript::Step::Quiet ? WaitResult::ReadDone
                                                               : WaitResult::TimeOut;
    }
    SystemError CollectRead(std::size_t& got) override {
        got = 0;
        if (SystemError failure = Script.Called("CollectRead"))
            return failure;
        ReadPending = false;
        int next = Script.Next();
        if (next == CPortScript::Step::Read || next == CPortScript::Step::ReadAtOnce)
            got = Fill();
        return 0;
    }
    SystemError CollectStatus(std::uint32_t& mask) override {
        auto step = Script.Take();
        mask = step.mask;
        Errors = step.errors;
        return Script.Called("CollectStatus");
    }
    SystemError LastError() const override { return LastFailure; }
    SystemError RestoreTimeouts() override { return Script.Called("RestoreTimeouts"); }
    SystemError Purge() override { return Script.Called("Purge"); }
    void Close() override {
        std::ignore = Script.Called("Close");
        if (Script.WhileClosing)
            Script.WhileClosing();
    }

  private:
    std::size_t Fill() {
        std::string bytes = Script.Take().bytes;
        std::size_t count = std::min(bytes.size(), Buffer.size());
        std::memcpy(Buffer.data(), bytes.data(), count);
        return count;
    }

    CPortScript& Script;
    std::span<std::uint8_t> Buffer;
    bool ReadPending = false;
    std::uint32_t Errors = 0;
    SystemError LastFailure = 0;
};

inline SerialPortFactory CPortScript::Factory() {
    return [this] { return std::make_unique<CScriptedPort>(*this); };
}

} // namespace qor
