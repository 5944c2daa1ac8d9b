// SPDX-License-Identifier: GPL-3.0-or-later
//
// One raw log played through a document of its own, with a progress bar and with its faults said:
// what decode, compare and info have in common.
#pragma once

#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/TerminalUser.h"
#include "session/Playback.h"

#include <functional>
#include <string>
#include <vector>

namespace qor {

/// What the commands that play raw logs are called with.
struct PlaybackOptions {
    InstrumentSelection instruments;
    std::vector<std::string> files;
    std::string sessionPath; ///< empty: none
    std::uint32_t chunk = 0; ///< 0: not given
    bool strict = false;

    /// What the results must not be written onto.
    std::vector<std::string> Inputs() const {
        return FilesOf(instruments, instruments.session, sessionPath, files);
    }
};

class CPlayedFile {
  public:
    /// As CPlayback takes them.
    explicit CPlayedFile(std::uint32_t chunk,
                         std::uint32_t framesAtOnce = FileResourceSettings().framesAtOnce);

    /// Opens the file and sets up the instruments. Every fault is reported; false when there was
    /// one. With a fault in some definition the others still play: see IsOpen.
    bool Open(const std::string& path, const InstrumentSelection& selection, bool strict = false);
    bool IsOpen() const { return Opened; }
    /// Whether the call names an instrument that is not there: nothing is to be printed (2).
    bool IsBadCall() const { return HasUnknownName(Playback.Set().Refusals()); }

    /// The instruments, in the order in which they were named.
    const std::vector<CQorViewIns*>& Instruments() const { return Playback.Instruments(); }
    /// The instrument of a name, or null.
    const CQorViewIns* Find(std::string_view name) const;
    CQorViewDoc& Doc() { return Document; }
    const CQorViewDoc& Doc() const { return Document; }
    /// Before it is played: keeps what belongs to no frame. It lives longer than this.
    void KeepDiscarded(CDiscardedBytes& kept) { Playback.KeepDiscarded(kept); }
    ResourceFigures Figures() const { return Playback.Figures(); }

    /// Plays to the end, or until the operator stops it or `goOn` says no (asked once a batch).
    /// `onFrame` sees every frame, under the document's lock. False when reading failed (reported).
    /// `onIdle` is called before the playing waits for input, as of a pipe that grows.
    using FrameFunction = std::function<void(CQorViewIns&, const FrameCheckResult&)>;
    bool Play(CommandContext& context, const FrameFunction& onFrame,
              const std::function<bool()>& goOn, const std::function<void()>& onIdle = {});

  private:
    void SayLoss(const Event& event);
    bool SayEnd();

    CSystemClock Clock;
    CTerminalUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Document;
    CPlayback Playback;
    std::string Path;
    bool Opened = false;
    bool LossTold = false;
};

/// Adds --session, --chunk, --quiet and the raw logs. A definition or package that stands among
/// these (as in
/// `-d FIRST SECOND`) is taken for what its extension says.
void AddPlaybackOptions(CLI::App& command, PlaybackOptions& options, CommandContext& context);

/// False (reported) when no raw log was named.
bool NamesRawFile(const std::vector<std::string>& files);

/// Reads the session that was named. ExitWell when there is something to play with; else the exit
/// status of what was reported.
int TakeInstruments(PlaybackOptions& options);

/// Says that no file is made because some log could not be read whole, and, where standard
/// output may take the results, that it does. The exit status.
int WithholdResults(const std::string& path, bool mayPrint = true);

/// Adds --format; `take` gets the one of the formats that was chosen.
void AddFormatOption(CLI::App& command, const std::vector<std::string>& formats,
                     const std::string& help, std::function<void(const std::string&)> take);

/// The exit status of a command that has played.
int PlaybackExit(const CommandContext& context, bool well);

} // namespace qor
