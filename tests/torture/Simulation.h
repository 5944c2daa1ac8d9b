// SPDX-License-Identifier: GPL-3.0-or-later
//
// A simulated expedition: lines with instruments, a clock, a disk and an operator around the real
// document, controller and loop, all driven by one seed. Whenever the program ends, its ledger must
// balance to the byte and to the frame. One thread drives; the program's own threads are waited for
// after every step, so that a seed gives the same run again. One at a time: it has the disk.
#pragma once

#include "fakes/ManualClock.h"
#include "fakes/ScriptedUser.h"
#include "fakes/TempFolder.h"
#include "session/AcquisitionLoop.h"
#include "session/FrameWatch.h"
#include "torture/SentFrames.h"
#include "torture/StepPort.h"

#include <random>
#include <set>

namespace qor {

class CChance {
  public:
    explicit CChance(std::uint64_t seed) : Numbers(seed) {}
    std::uint64_t Below(std::uint64_t end) { return Numbers() % end; }
    std::int64_t Between(std::int64_t first, std::int64_t last) {
        return first +
               static_cast<std::int64_t>(Below(static_cast<std::uint64_t>(last - first + 1)));
    }
    /// Once in so many times.
    bool Once(std::uint64_t times) { return Below(times) == 0; }

  private:
    std::mt19937_64 Numbers;
};

/// A line with its instruments and what they have sent.
struct SimulatedPort {
    std::string name;
    FrameLengths lengths;
    CStepLine line;
    ResourceId id = ResourceId::None;
    std::optional<CCutter> sent;                   ///< since the program began
    std::uint64_t lost = 0;                        ///< frames that never came to the session
    std::string waiting;                           ///< bytes under way
    std::int64_t next = 0, period = 0, backAt = 0; ///< on the monotonic clock
};

struct LogFile {
    std::string path; ///< as the program named it
    std::string kept; ///< where it is found
};

class CSimulation {
  public:
    /// `calm`: rounds between two things that happen; `touches`: files that are taken at most.
    CSimulation(std::uint64_t seed, std::uint64_t calm, std::int64_t touches)
        : Seed(seed), Calm(calm), Touches(touches), Chance(seed) {}
    /// Runs so many simulated hours; true when everything balanced.
    bool Run(std::int64_t hours);
    std::string Summary() const;

  private:
    void Fail(const std::string& what);
    void Require(bool holds, const std::string& what) {
        if (!holds)
            Fail(what);
    }
    void MakePorts();
    void BeginProgram();
    void AddPort(SimulatedPort& port);
    void EndProgram();
    void CheckPort(const SimulatedPort& port, const ResourceFigures& figures);
    void CheckLogs();
    void Hear(const Event& event);
    void Seen(const CQorViewIns& instrument);

    void Pass(std::int64_t milliseconds);
    void Round();
    void Step();
    void EndTroubles();
    void Talk(SimulatedPort& port);
    std::string Frame(const std::string& header, std::size_t length);
    std::string Utterance(const SimulatedPort& port);
    void Operate();
    void BeginLog();
    void Disconnect(SimulatedPort& port);
    void Unplug(SimulatedPort& port);
    void StepClock();
    void TroubleDisk();
    void TouchFile();
    std::int64_t Now() const { return Clock.MonotonicMilliseconds(); }

    const std::uint64_t Seed, Calm;
    std::int64_t Touches;
    CChance Chance;
    mutable CManualClock Clock{1'792'800'000'000}; ///< days before summer time ends
    CScriptedUser User;
    CMemoryProfileStore Profile;
    const CTempFolder Temp;
    const std::string Logs = Temp.Path + "logs/", Spare = Temp.Path + "spare/",
                      Kept = Temp.Path + "kept/";
    std::deque<SimulatedPort> Ports;
    FrameLengths AllLengths;
    std::unique_ptr<CQorViewDoc> Doc;
    std::unique_ptr<CAcquisitionLoop> Loop;
    std::unique_ptr<CFrameWatch> Watch;
    std::optional<CLogCheck> Check;
    bool Failed = false;

    // Of this program run.
    std::vector<LogFile> Files;
    std::set<std::string> Ended, Told; ///< logs that were said to be ended, or lost
    std::uint64_t Unstored = 0;        ///< as the program says
    std::uint64_t Steps = 0, StepsTold = 0;
    std::int64_t FullUntil = 0, StallUntil = 0, GoneUntil = 0, LastSyncFailure = -60'000;
    bool TimeNamed = false, Stops = false;

    std::uint32_t Number = 0; ///< of the frame sent last
    std::uint64_t Names = 0, Rounds = 0;
    struct {
        std::uint64_t programs, frames, logged, lost, unstored, logs, sentences, bytes;
        std::uint64_t losses, full, stalls, touched, steps;
    } Total{};
};

} // namespace qor
