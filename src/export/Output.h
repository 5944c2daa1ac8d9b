// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where results go: standard output or a file, through one large buffer. A file is complete or not
// there: it is written beside its place and put there at the end. Numbers are written with the
// fewest digits that read back to the same double. A terminal never gets control characters of
// texts as they are (base/TerminalText.h), everything else gets its bytes. One thread at a time.
#pragma once

#include "platform/File.h"

#include <charconv>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// Takes one sentence that names what failed and why.
using FaultReport = std::function<void(const std::string& text)>;

/// What became of an output. Beyond Failed, which is reported where it happens, the call asked for
/// what is not done; a face says so in its own words.
enum class OutputState {
    Good,        ///< also when the reader of a pipe has gone
    Failed,      ///< the system refused or lost it
    NeedsFolder, ///< several tables, and no folder is named for them
    IsFolder,    ///< a folder is there
    IsInput,     ///< the file is one of the call's inputs
    IsRawLog,    ///< a file that begins as a raw log is there
    IsLink,      ///< a symbolic link is there
    Exists,      ///< a file that is not empty is there, without leave to replace it
    InUse,       ///< another program holds the file
    NeedsFile,   ///< the format is none for standard output, a device or a pipe
    NotBuilt,    ///< the program is built without the format
};
struct [[nodiscard]] OutputResult {
    OutputState state = OutputState::Good;
    std::string path = {}; ///< that was refused

    bool Good() const { return state == OutputState::Good; }
    bool Refused() const { return state > OutputState::Failed; }
};

/// What a file may replace.
struct OutputRules {
    bool overwrite = false;               ///< a file that is not empty
    bool overRawLogs = false;             ///< such a one also when it begins as a raw log
    std::vector<std::string> inputs = {}; ///< paths that are never written onto
};

/// What stands in the way of writing there: one of those from IsFolder on, or Good. Nothing does of
/// a device or pipe, which is written as it is.
OutputState StateOfPlace(const std::string& path, const OutputRules& rules);

class COutput {
  public:
    /// Standard output. What fails is told to `report`, once.
    explicit COutput(FaultReport report);
    /// Somebody who takes pieces of text, until it says no.
    using TextTaker = std::function<bool(std::string_view)>;
    /// `shown`: what he takes reaches a terminal.
    explicit COutput(TextTaker taker, bool shown = false);
    /// A file that Finish has not put in its place is gone.
    ~COutput();
    COutput(const COutput&) = delete;
    COutput& operator=(const COutput&) = delete;

    /// Writes to this file instead; standard output when the path is empty, and to a device or pipe
    /// as it is. Harmless when it is open already.
    /// Standard output is refused where it goes into an input.
    OutputResult Open(const std::string& path, const OutputRules& rules);

    /// Of a file that was opened: somebody else writes it from now on by this name, until Finish,
    /// and has closed it by then.
    std::string HandOver();

    void Text(std::string_view text) {
        if (text.size() > Buffer.size() - Used && !MakeRoom(text))
            return;
        std::memcpy(Buffer.data() + Used, text.data(), text.size());
        Used += text.size();
    }
    /// A part of a line that instruments, files or names have written: a line end in it is none of
    /// ours, and is shown as such where the output goes to a terminal.
    void Foreign(std::string_view text);
    void Char(char c) { Text({&c, 1}); }
    /// A finite number.
    void Number(double value) {
        Reserve(32);
        Used = static_cast<std::size_t>(
            std::to_chars(Buffer.data() + Used, Buffer.data() + Buffer.size(), value).ptr -
            Buffer.data());
    }
    void Integer(std::int64_t value) {
        Reserve(32);
        Used = static_cast<std::size_t>(
            std::to_chars(Buffer.data() + Used, Buffer.data() + Buffer.size(), value).ptr -
            Buffer.data());
    }

    /// Hands everything to the system. False when the reader has gone or the writing failed (which
    /// is reported once).
    bool Flush();
    /// False once nothing more can be written: the command ends early.
    bool Good() const { return Usable; }
    /// True when a write failed for a fault (not because a pipe's reader has gone).
    bool Failed() const { return WriteFailed; }
    /// Ends the output: a file is made safe on the disk and put in its place.
    OutputResult Finish();

  private:
    void Reserve(std::size_t bytes) {
        if (Buffer.size() - Used < bytes)
            Flush();
    }
    bool MakeRoom(std::string_view text);
    bool Write(std::string_view bytes);
    OutputResult OpenBeside();
    bool MayBeReplaced() const;
    OutputResult Fail(FileCause cause);
    OutputResult Refuse(OutputState state, const std::string& path);

    const FaultReport Report;
    const TextTaker Taker; ///< null: a file or standard output
    std::vector<char> Buffer;
    std::size_t Used = 0;
    CFile File;
    std::string Place; ///< where the file belongs; empty for standard output
    OutputRules Rules;
    std::string Beside; ///< where it is written meanwhile; empty when it is no such file
    bool HandedOver = false;
    bool Replaces = false;
    bool Shown = false; ///< on a terminal, which is to obey nothing that stands in texts
    bool Usable = true;
    bool WriteFailed = false;
};

} // namespace qor
