// SPDX-License-Identifier: GPL-3.0-or-later
//
// A serial port whose line is a practice line: instruments to train with on systems without virtual
// ports, through the very worker that reads real ones. Used as any port is: by the connecting
// thread until the worker runs, by the worker after.
#pragma once

#include "simulation/PracticeLine.h"

#include <map>
#include <string>

namespace qor {

/// The lines of a practice, by the names under which their ports are opened. Filled before the
/// first port is opened; outlives the ports.
class CPracticeBench {
  public:
    explicit CPracticeBench(CClock& clock) : Clock(clock) {}

    /// A line of this name; its instruments' bytes follow from the seed.
    CPracticeLine& AddLine(const std::string& portName, std::uint64_t seed);
    /// Null when no line has the name.
    CPracticeLine* Line(const std::string& portName);
    /// A port that opens lines of this bench: what a resource's port factory returns.
    std::unique_ptr<CSerialPort> MakePort();

  private:
    CClock& Clock;
    std::map<std::string, std::unique_ptr<CPracticeLine>> Lines;
};

class CPracticePort final : public CSerialPort {
  public:
    CPracticePort(CPracticeBench& bench, CClock& clock) : Bench(bench), Clock(clock) {}
    ~CPracticePort() override { Close(); }

    /// A name that no line has is a device that is not there.
    SystemError Open(const std::string& name) override;
    SystemError SaveTimeouts() override { return Fault(); }
    SystemError ReadSettings() override { return Fault(); }
    SystemError WriteSettings(const LineSettings&) override { return Fault(); }
    SystemError SetReadInterval(std::uint32_t) override { return Fault(); }
    SystemError SetQueues(std::uint32_t inputBytes, std::uint32_t outputBytes) override;
    SystemError SetEventMask(std::uint32_t mask) override;
    SystemError CreateInput() override { return Fault(); }
    SystemError ReadLineErrors(std::uint32_t& errors) override;
    IssueResult IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) override;
    IssueResult IssueStatusWait(std::uint32_t& mask) override;
    WaitResult Wait(int milliseconds) override;
    SystemError CollectRead(std::size_t& got) override;
    SystemError CollectStatus(std::uint32_t& mask) override;
    SystemError LastError() const override { return IssueError; }
    SystemError RestoreTimeouts() override { return Fault(); }
    SystemError Purge() override;
    void Close() override;

  private:
    /// 0 while the line that was opened is there.
    SystemError Fault() const;

    CPracticeBench& Bench;
    CClock& Clock;
    CPracticeLine* Line = nullptr; ///< of the bench; null: not open
    std::uint32_t Connection = 0;
    std::uint32_t EventMask = 0;
    std::span<std::uint8_t> Buffer; ///< of the pending read
    SystemError IssueError = 0;
    bool ReadPending = false, StatusPending = false;
};

} // namespace qor
