// SPDX-License-Identifier: GPL-3.0-or-later
//
// One raw log played through a document of its own: what decode, compare and info have in common.
#pragma once

#include "cli/Commands.h"
#include "cli/SessionSetup.h"
#include "session/AcquisitionLoop.h"

#include <functional>
#include <memory>

namespace qor {

/// What the commands that play raw logs are called with.
struct PlaybackOptions {
    InstrumentOptions instruments;
    std::vector<std::string> files;
    std::uint32_t chunk = 0; ///< 0: not given
};

class CPlayback {
  public:
    /// `chunk` is the read size in bytes, 0 for the one that plays fastest.
    explicit CPlayback(std::uint32_t chunk);

    /// Opens the file and sets up the instruments. Every fault is reported; false when there was
    /// one. With a fault in some definition the others still play: see IsOpen.
    bool Open(const std::string& path, const InstrumentOptions& options);
    bool IsOpen() const { return Resource >= 0; }

    /// The instruments, in the order in which they were named.
    const std::vector<CQorViewIns*>& Instruments() const { return Named; }
    const CPackageList& Packages() const { return NamedPackages; }
    /// The pressure tare that the log's header states.
    double PressureTare() const { return Tare; }
    CQorViewDoc& Doc() { return Document; }
    ResourceFigures Figures() const { return Comm->Figures(); }

    /// Plays to the end, or until the operator stops it or `goOn` says no (asked once a batch).
    /// `onFrame` sees every frame. False when reading failed (reported).
    using FrameFunction = std::function<void(CQorViewIns&, const FrameCheckResult&)>;
    bool Play(CommandContext& context, const FrameFunction& onFrame,
              const std::function<bool()>& goOn);

  private:
    void NoteEntry(std::string_view entry);

    CSystemClock Clock;
    CTerminalUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Document;
    CPackageList NamedPackages;
    CAcquisitionLoop Loop;
    std::uint32_t Chunk;
    std::string Path;
    std::uint64_t Size = 0;
    int Resource = -1;
    std::vector<CQorViewIns*> Named;
    double Tare = 0.0;
    bool LossTold = false;
    CTelemComm* Comm = nullptr; ///< of the file, the document's
};

/// Adds --chunk, --quiet and the raw logs. A definition or package that stands among these (as in
/// `-d FIRST SECOND`) is taken for what its extension says.
void AddPlaybackOptions(CLI::App& command, PlaybackOptions& options, CommandContext& context);

/// False (reported) when no raw log was named.
bool NamesRawFile(const std::vector<std::string>& files);

/// False (reported) when neither a definition nor a package was named.
bool NamesInstrument(const InstrumentOptions& instruments);

/// Adds --format; `take` gets the one of the formats that was chosen.
void AddFormatOption(CLI::App& command, const std::vector<std::string>& formats,
                     const std::string& help, std::function<void(const std::string&)> take);

/// The exit status of a command that has played.
int PlaybackExit(const CommandContext& context, bool well);

} // namespace qor
