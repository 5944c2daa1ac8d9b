// SPDX-License-Identifier: GPL-3.0-or-later
//
// A raw log played for a program that computes: nothing is printed and nobody is asked, what is
// wrong is a sentence that names the log. Each object has a document of its own, so that several
// threads can read at once, each with an object.
#pragma once

#include "session/Playback.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qor {

/// What a log is read with.
struct LogCall {
    std::string path;
    InstrumentSelection instruments;
    std::optional<int> utcOffset;           ///< minutes; none: that of the log's zone
    std::string text;                       ///< how the caller wrote it, for files that keep it
    std::vector<std::string> files = {};    ///< that values follow from, the log among them
    std::vector<std::string> warnings = {}; ///< of the session
};

/// What could not be read or was asked for wrongly; the sentence is empty where nothing is wrong.
struct ReadFault {
    std::string text = {};
    bool ofFile = false; ///< the system or the file's bytes, not the call

    explicit operator bool() const { return !text.empty(); }
};

/// Adds the instruments of a session to the call.
ReadFault TakeSession(const std::string& path, LogCall& call);
/// Where the call names no instrument: those of the log's manifest, as far as they are there.
void TakeManifest(LogCall& call);

class CLogReading {
  public:
    CLogReading();

    ReadFault Open(const LogCall& call);
    /// What is used and yet may not be what was meant; a line each.
    const std::vector<std::string>& Warnings() const { return Warned; }
    std::vector<std::string> Names() const;
    ReadFault Find(const std::string& name, CQorViewIns*& found) const;
    CQorViewDoc& Doc() { return Document; }
    CPlayback& Playing() { return Playback; }

    /// Plays to the end; `seen` sees every frame of every instrument.
    ReadFault Play(const FrameHook& seen);

  private:
    std::string Path;
    CSystemClock Clock;
    CNobody Nobody;
    CMemoryProfileStore Profile;
    CQorViewDoc Document;
    CPlayback Playback;
    std::vector<std::string> Warned;
};

} // namespace qor
