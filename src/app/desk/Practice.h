// SPDX-License-Identifier: GPL-3.0-or-later
//
// A practice: a session file like any other whose ports are lines of a bench with simulated
// instruments, read by the very workers that read real ports. User-interface thread; the switches
// take effect while everything runs.
#pragma once

#include "session/SessionRecord.h"
#include "simulation/PracticePort.h"

#include <string>
#include <vector>

namespace qor {

class CPractice {
  public:
    explicit CPractice(CClock& clock) : Bench(clock) {}

    /// Fills the bench with the session's ports and their instruments. What is wrong, as one
    /// sentence, or nothing. Once.
    std::string Begin(const SessionRecord& session);
    /// A port that opens lines of the bench; any thread.
    std::unique_ptr<CSerialPort> MakePort() { return Bench.MakePort(); }

    // The instructor's switches, on all lines or on the first.
    void SetDamaged(bool on);
    void SetLost(bool on);
    bool IsDamaged() const { return Damaged; }
    bool IsLost() const { return Lost; }

  private:
    std::string AddPort(const ResourceRecord& port);
    std::string AddDefinition(CPracticeLine& line, const std::string& path, bool immersed);
    std::string AddPackage(CPracticeLine& line, const PackageRecord& package);

    CPracticeBench Bench;
    std::vector<CPracticeLine*> Lines;
    bool Damaged = false, Lost = false;
};

/// The session file of the practice that comes with the program; empty when it is not installed.
std::string PracticeSessionPath();

} // namespace qor
