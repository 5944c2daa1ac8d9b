// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a command-line program needs of the system: its arguments as UTF-8, its standard streams as
// bytes, and the operator's request to stop. For the command line's main; the engine's layers never
// look at it. It does no formatting and no buffering.
#pragma once

#include "platform/Worker.h"

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// The program's arguments, its own name first, as 8-bit text (UTF-8 on Windows, where the main
/// function's own arguments have lost every character outside the code page). No shell there puts
/// files in the place of "*.raw": those of the folder whose names match stand here, sorted; a text
/// that matches none stays, and so does an option.
std::vector<std::string> CommandLineArguments(int argc, char** argv);

enum class StandardStream { Input = 0, Output = 1, Error = 2 };

/// True when the stream is a terminal that a person sees: the place for progress bars.
bool IsTerminal(StandardStream stream);

/// Lets a program of windows write to the console that it was started from, where it has no streams
/// of its own (Windows). False when nobody reads what it writes.
bool JoinConsole();

/// True for a terminal on which lines can be drawn over one another; one that TERM calls dumb, or
/// of which (on POSIX) it says nothing, is written to as a pipe is.
bool CanDraw(StandardStream stream);

/// Columns of the terminal behind the stream; 80 when it is none or does not tell.
int TerminalColumns(StandardStream stream);

/// What became of a write: a reader that has gone (`| head`) is no fault of anybody's, nor is one
/// that takes nothing when the program is to end.
enum class StreamWrite { Done, ReaderGone, ReaderStalls, Failed };

/// Writes all bytes as they are to standard output or standard error, unbuffered. UTF-8 shows as
/// such in a Windows console. A reader that takes nothing for two seconds after a request to stop
/// stalls. Do not mix with stdio on the same stream.
[[nodiscard]] StreamWrite WriteStream(StandardStream stream, std::string_view bytes);

/// The same for text: control characters that stand in it reach a terminal as "\x1b" (see
/// base/TerminalText.h), never as they are. Everything that a person may read goes this way; what a
/// program itself draws with goes by WriteStream.
[[nodiscard]] StreamWrite WriteText(StandardStream stream, std::string_view text);

/// True when writing to this path shows on a terminal that a person sees: /dev/stdout, the standard
/// streams' own device, CON. Any other line is one that instruments or programs listen on.
bool LeadsToTerminal(const std::string& path);

/// From now on a reader that takes nothing for two seconds stalls, as after a request to stop. Any
/// thread.
void HurryReaders();

/// False when a write of a line would wait for a reader that takes nothing (POSIX).
bool ReaderTakes(StandardStream stream);

/// Waits until a descriptor takes bytes; false when it takes none for two seconds after a request
/// to stop (POSIX).
bool WaitForReader(int descriptor);

/// The line end of text files here: LF, or CR LF on Windows.
std::string_view NativeLineEnd();

/// Catches requests to stop for as long as it lives: SIGINT, SIGTERM and SIGHUP; on Windows Ctrl-C,
/// Ctrl-Break, the closing of the console, log-off and shutdown. The first one sets the event,
/// from a thread of its own; a second one ends the process at once with exit status 130. Also makes
/// a write to a closed pipe an error instead of a signal. At most one lives at a time; made by main
/// before it starts any thread (threads inherit the signal mask), destroyed when the work is wound
/// up: on Windows the closing of a console waits for that.
class CStopWatch {
  public:
    /// Decided: what comes so soon after the first request is the same one again (timeout and other
    /// supervisors signal the process and then its group), and must not cut the winding up short.
    static constexpr std::chrono::milliseconds SameRequest{2000};

    explicit CStopWatch(CEvent& stop, std::chrono::milliseconds sameRequest = SameRequest);
    ~CStopWatch();
    CStopWatch(const CStopWatch&) = delete;
    CStopWatch& operator=(const CStopWatch&) = delete;

    /// False when the system had no thread for it: then a request ends the process as it stands.
    bool IsWatching() const;
    /// Cheap enough for an inner loop.
    bool Requested() const { return Asked.load(std::memory_order_relaxed); }

  private:
    /// Takes one request; called by the system's side only.
    void Request();
    bool IsSecond() {
        auto now = std::chrono::steady_clock::now();
        if (Asked.exchange(true))
            return now - First >= Repeats;
        First = now;
        return false;
    }
    void Listen();

    CEvent& Stop;
    const std::chrono::milliseconds Repeats;
    std::chrono::steady_clock::time_point First; ///< of the thread that takes requests
    std::atomic<bool> Asked{false};
    std::atomic<bool> Ending{false};
    CWorker Listener; ///< POSIX only; Windows has a thread for this itself
    friend struct StopHandler;
};

} // namespace qor
