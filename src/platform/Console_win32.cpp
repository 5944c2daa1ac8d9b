// SPDX-License-Identifier: GPL-3.0-or-later
//
// The console on Windows. The system calls the control handler on a thread of its own, so the
// handler may use the event directly. At log-off and shutdown it calls none in a process that has
// user32.dll, so nothing here may need it, nor shell32.dll, which brings it.
#include "platform/Console.h"

#include "base/Lock.h"
#include "base/Text.h"
#include "platform/Win32Support.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <utility>

#include <windows.h>

#ifndef _MSC_VER
/// Of the C runtime, which has no header for it.
extern "C" int __wgetmainargs(int* count, wchar_t*** arguments, wchar_t*** environment,
                              int expandsWildcards, int* newMode);
#endif

namespace qor {

namespace {

constexpr std::size_t StreamBytes = 1024 * 1024;
/// A write to a pipe ends when the reader has all of it, so only a small one tells that it takes.
constexpr std::size_t PipeBytes = 4096;
/// The system itself ends a process about five seconds after a closed console's notice.
constexpr DWORD CloseMilliseconds = 10000;

HANDLE HandleOf(StandardStream stream) {
    constexpr DWORD Names[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    return GetStdHandle(Names[static_cast<int>(stream)]);
}

/// Consoles show 8-bit output in a code page: ours is UTF-8.
bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE;
}

/// The arguments as the C runtime splits them; none when it could not. It owns them.
std::span<wchar_t*> WideArguments() {
    int count = 0;
    wchar_t** wide = nullptr;
#ifdef _MSC_VER
    if (_configure_wide_argv(_crt_argv_unexpanded_arguments) == 0) {
        count = __argc;
        wide = __wargv;
    }
#else
    wchar_t** environment = nullptr;
    int newMode = 0;
    if (__wgetmainargs(&count, &wide, &environment, 0, &newMode) != 0)
        return {};
#endif
    return wide ? std::span(wide, static_cast<std::size_t>(count)) : std::span<wchar_t*>();
}

/// Whether a name matches a pattern of * and ?, in any case. The system's own search also goes by
/// short names: "*.raw" would find "a.rawold".
bool Matches(std::wstring_view name, std::wstring_view pattern) {
    std::size_t at = 0, from = 0, star = std::wstring_view::npos, starAt = 0;
    const auto same = [](wchar_t first, wchar_t second) {
        return CompareStringOrdinal(&first, 1, &second, 1, TRUE) == CSTR_EQUAL;
    };
    while (at < name.size()) {
        if (from < pattern.size() && pattern[from] == L'*') {
            star = from++;
            starAt = at;
        } else if (from < pattern.size() &&
                   (pattern[from] == L'?' || same(pattern[from], name[at]))) {
            ++from;
            ++at;
        } else if (star != std::wstring_view::npos) {
            from = star + 1;
            at = ++starAt;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', from) == std::wstring_view::npos;
}

/// The files that an argument with * or ? in its last part stands for; none when it is no such.
std::vector<std::wstring> FilesOf(const std::wstring& argument) {
    std::vector<std::wstring> files;
    const std::size_t separator = argument.find_last_of(L"\\/:");
    const std::size_t nameAt = separator == std::wstring::npos ? 0 : separator + 1;
    const std::wstring folder = argument.substr(0, nameAt), pattern = argument.substr(nameAt);
    if (argument.starts_with(L'-') || pattern.find_first_of(L"*?") == std::wstring::npos)
        return files;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(argument.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return files;
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 &&
            Matches(found.cFileName, pattern))
            files.push_back(folder + found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::ranges::sort(files);
    return files;
}

} // namespace

std::vector<std::string> CommandLineArguments(int argc, char** argv) {
    const std::span<wchar_t*> wide = WideArguments();
    if (wide.empty())
        return {argv, argv + argc};
    std::vector<std::string> arguments = {NarrowText(wide[0])};
    for (const wchar_t* argument : wide.subspan(1)) {
        const std::vector<std::wstring> files = FilesOf(argument);
        for (const std::wstring& file : files)
            arguments.push_back(NarrowText(file));
        if (files.empty())
            arguments.push_back(NarrowText(argument));
    }
    return arguments;
}

bool IsTerminal(StandardStream stream) {
    return IsConsole(HandleOf(stream));
}

bool JoinConsole() {
    const HANDLE own = HandleOf(StandardStream::Output);
    if (own != nullptr && own != INVALID_HANDLE_VALUE && GetFileType(own) != FILE_TYPE_UNKNOWN)
        return true;
    if (!AttachConsole(ATTACH_PARENT_PROCESS))
        return false;
    const HANDLE console =
        CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (console == INVALID_HANDLE_VALUE)
        return false;
    SetStdHandle(STD_OUTPUT_HANDLE, console);
    SetStdHandle(STD_ERROR_HANDLE, console);
    return true;
}

bool CanDraw(StandardStream stream) {
    const char* kind = std::getenv("TERM");
    if (kind && std::string_view(kind) == "dumb")
        return false;
    // Consoles of old show the sequences as text until they are asked to follow them.
    DWORD mode = 0;
    const HANDLE console = HandleOf(stream);
    return GetConsoleMode(console, &mode) &&
           SetConsoleMode(console,
                          mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

/// Writes what one request takes, and takes it off the bytes. The system's error.
DWORD WriteOnce(HANDLE handle, std::string_view& bytes, std::size_t most) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), most));
    const bool done = WriteFile(handle, bytes.data(), size, &written, nullptr) != FALSE;
    bytes.remove_prefix(written);
    return done ? ERROR_SUCCESS : GetLastError();
}

/// The writes that wait for a reader. Once the program is to end, one that has waited for two
/// seconds is taken back, from a thread of its own: the writer itself can only wait.
class CStalledWrites {
  public:
    static CStalledWrites& All() {
        static CStalledWrites all;
        return all;
    }
    ~CStalledWrites() {
        Ending.Set();
        Watcher.Join();
    }

    void Hurry() {
        CLock lock(Guard);
        if (std::exchange(Hurried, true))
            return;
        HurriedAt = GetTickCount64();
        // Without a thread the writer waits, as before.
        static_cast<void>(Watcher.Start(ThreadPriority::Normal, [this] { Watch(); }));
    }

    /// Writes on this thread, after the other threads' writes to the stream. The system's error;
    /// ERROR_OPERATION_ABORTED when it was taken back, or one before it: once is enough.
    DWORD Write(StandardStream stream, HANDLE handle, std::string_view bytes) {
        const auto place = static_cast<std::size_t>(stream);
        const CLock turn(Turns[place]);
        HANDLE thread = nullptr;
        DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread,
                        THREAD_TERMINATE, FALSE, 0);
        const std::size_t most = GetFileType(handle) == FILE_TYPE_PIPE ? PipeBytes : StreamBytes;
        DWORD error = ERROR_SUCCESS;
        while (!bytes.empty() && error == ERROR_SUCCESS)
            error = Begin(place, thread) ? WriteOnce(handle, bytes, most) : ERROR_OPERATION_ABORTED;
        End(place, error == ERROR_OPERATION_ABORTED);
        CloseHandle(thread);
        return error;
    }

  private:
    struct Writer {
        HANDLE thread = nullptr; ///< while it writes
        ULONGLONG since = 0;     ///< tick count
        bool givenUp = false;    ///< the reader took nothing once
    };
    static constexpr ULONGLONG StillMilliseconds = 2000;
    static constexpr int LookMilliseconds = 250;

    bool Begin(std::size_t place, HANDLE thread) {
        CLock lock(Guard);
        Writer& writer = Writers[place];
        writer.thread = thread;
        writer.since = GetTickCount64();
        return !writer.givenUp;
    }

    void End(std::size_t place, bool givenUp) {
        CLock lock(Guard);
        Writers[place].thread = nullptr;
        Writers[place].givenUp = Writers[place].givenUp || givenUp;
    }

    void Watch() {
        while (!Ending.Wait(LookMilliseconds)) {
            CLock lock(Guard);
            const ULONGLONG now = GetTickCount64();
            for (const Writer& writer : Writers)
                if (writer.thread && now - std::max(writer.since, HurriedAt) >= StillMilliseconds)
                    CancelSynchronousIo(writer.thread);
        }
    }

    CMutex Turns[3]; ///< of the streams; Guard alone is taken under one
    CMutex Guard;    ///< a leaf
    Writer Writers[3] GUARDED_BY(Guard);
    bool Hurried GUARDED_BY(Guard) = false;
    ULONGLONG HurriedAt GUARDED_BY(Guard) = 0; ///< tick count
    CEvent Ending;
    CWorker Watcher;
};

void HurryReaders() {
    CStalledWrites::All().Hurry();
}

bool ReaderTakes(StandardStream) {
    return true;
}

int TerminalColumns(StandardStream stream) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    bool told = GetConsoleScreenBufferInfo(HandleOf(stream), &info) != FALSE;
    int columns = info.srWindow.Right - info.srWindow.Left + 1;
    return told && columns > 1 ? columns : 80;
}

StreamWrite WriteStream(StandardStream stream, std::string_view bytes) {
    HANDLE handle = HandleOf(stream);
    if (GetConsoleOutputCP() != CP_UTF8 && IsConsole(handle))
        SetConsoleOutputCP(CP_UTF8);
    DWORD error = ERROR_SUCCESS;
    if (GetFileType(handle) != FILE_TYPE_DISK) // a file has no reader that could stall
        error = CStalledWrites::All().Write(stream, handle, bytes);
    else
        while (!bytes.empty() && error == ERROR_SUCCESS)
            error = WriteOnce(handle, bytes, StreamBytes);
    switch (error) {
    case ERROR_SUCCESS:
        return StreamWrite::Done;
    case ERROR_OPERATION_ABORTED:
        return StreamWrite::ReaderStalls;
    case ERROR_NO_DATA:
    case ERROR_BROKEN_PIPE:
    case ERROR_PIPE_NOT_CONNECTED:
        return StreamWrite::ReaderGone;
    default: // no enum of ours: any other error of the system
        return StreamWrite::Failed;
    }
}

bool LeadsToTerminal(const std::string& path) {
    const std::size_t separator = path.find_last_of("\\/");
    const std::string name = path.substr(separator == std::string::npos ? 0 : separator + 1);
    return EqualsNoCase(name, "CON") || EqualsNoCase(name, "CONOUT$");
}

std::string_view NativeLineEnd() {
    return "\r\n";
}

/// The way from the system's handler, which has no argument for it, to the one watch that lives.
struct StopHandler {
    static inline CMutex WatchLock;
    static inline CStopWatch* Watch GUARDED_BY(WatchLock) = nullptr;
    static inline const HANDLE WoundUp = CreateEventW(nullptr, TRUE, FALSE, nullptr);

    static BOOL WINAPI Handle(DWORD event) {
        {
            CLock lock(WatchLock);
            if (Watch == nullptr)
                return FALSE;
            Watch->Request();
        }
        // After the closing of the console, log-off and shutdown the process ends as soon as the
        // handler returns.
        if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
            WaitForSingleObject(WoundUp, CloseMilliseconds);
        return TRUE;
    }

    static void SetWatch(CStopWatch* watch) {
        CLock lock(WatchLock);
        Watch = watch;
    }
};

CStopWatch::CStopWatch(CEvent& stop, std::chrono::milliseconds sameRequest)
    : Stop(stop), Repeats(sameRequest) {
    ResetEvent(StopHandler::WoundUp);
    StopHandler::SetWatch(this);
    SetConsoleCtrlHandler(StopHandler::Handle, TRUE);
}

bool CStopWatch::IsWatching() const {
    return true; // the system brings a thread of its own
}

CStopWatch::~CStopWatch() {
    SetConsoleCtrlHandler(StopHandler::Handle, FALSE);
    StopHandler::SetWatch(nullptr);
    SetEvent(StopHandler::WoundUp);
}

void CStopWatch::Request() {
    if (IsSecond())
        ExitProcess(130);
    HurryReaders();
    Stop.Set();
}

} // namespace qor
