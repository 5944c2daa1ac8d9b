// SPDX-License-Identifier: GPL-3.0-or-later
//
// A raw log against its manifest: the log's hash, made on a thread of its own while the log is
// played, and the definitions that it is played with. Makes the manifest of a log that has none.
// One thread, that of verify.
#pragma once

#include "export/LogVerdict.h"
#include "platform/Worker.h"
#include "session/LogManifest.h"
#include "session/SessionSetup.h"

#include <atomic>
#include <string>

namespace qor {

/// The hash of a log as it is unpacked.
class CLogHash {
  public:
    CLogHash() = default;
    ~CLogHash() { Cancelled = true; }
    CLogHash(const CLogHash&) = delete;
    CLogHash& operator=(const CLogHash&) = delete;

    void Begin(const std::string& rawLog);
    /// Waits for it; empty when the log could not be read, or none was begun.
    const std::string& Digits();

  private:
    void Read();

    std::string Path, Found;
    std::atomic<bool> Cancelled = false;
    CWorker Thread;
};

class CManifestCheck {
  public:
    /// Looks for the log's manifest. With one, or to make one (`repairs`), the log is hashed.
    CManifestCheck(const std::string& rawLog, bool repairs);

    bool IsThere() const { return There; }
    const LogManifest& Manifest() const { return Reading.manifest; }
    /// The definitions and packages that the manifest names, as far as they are there.
    InstrumentSelection Selection() const;

    /// The log was played with the document's instruments: what the manifest says against it.
    void Judge(const CQorViewDoc& doc, LogVerdict& verdict);
    /// Makes the manifest of a log that has none, of what was found in it. What is wrong, or
    /// nothing.
    std::string Repair(const CQorViewDoc& doc, const CRawLogReader& log, const PlayFacts& play,
                       const LogVerdict& verdict);

  private:
    const std::string RawLog;
    bool There = false;
    ManifestReading Reading;
    CLogHash Hash;
};

} // namespace qor
