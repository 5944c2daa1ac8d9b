// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where a command's results go: standard output or a file, through one large buffer. Numbers are
// written with the fewest digits that read back to the same double. One thread at a time.
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

/// What became of an output: good (also when the reader of a pipe has gone), refused because the
/// call was wrong, or failed.
enum class [[nodiscard]] OutputResult{Good, Refused, Failed};

class COutput {
  public:
    /// Standard output. What fails is told to `report`, once.
    explicit COutput(FaultReport report);
    ~COutput();
    COutput(const COutput&) = delete;
    COutput& operator=(const COutput&) = delete;

    /// Writes to a file instead, which is created or replaced; reports when it cannot be.
    OutputResult OpenFile(const std::string& path);
    /// The same the first time; standard output for no path.
    OutputResult OpenOnce(const std::string& path);

    void Text(std::string_view text) {
        if (text.size() > Buffer.size() - Used && !MakeRoom(text))
            return;
        std::memcpy(Buffer.data() + Used, text.data(), text.size());
        Used += text.size();
    }
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
    /// Ends the output: hands everything to the system.
    OutputResult Finish();

  private:
    void Reserve(std::size_t bytes) {
        if (Buffer.size() - Used < bytes)
            Flush();
    }
    bool MakeRoom(std::string_view text);
    bool Write(std::string_view bytes);

    const FaultReport Report;
    std::vector<char> Buffer;
    std::size_t Used = 0;
    CFile File;
    bool Usable = true;
    bool WriteFailed = false;
};

} // namespace qor
