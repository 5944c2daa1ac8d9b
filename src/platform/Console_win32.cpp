// SPDX-License-Identifier: GPL-3.0-or-later
//
// The console on Windows. The system calls the control handler on a thread of its own, so the
// handler may use the event directly.
#include "platform/Console.h"

#include "base/Text.h"
#include "platform/Win32Support.h"

#include <algorithm>
#include <cstdlib>

#include <windows.h>

#include <shellapi.h>

namespace qor {

namespace {

constexpr DWORD RequestBytes = 1024 * 1024;
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
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wide == nullptr)
        return {argv, argv + argc};
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        const std::vector<std::wstring> files =
            i > 0 ? FilesOf(wide[i]) : std::vector<std::wstring>();
        for (const std::wstring& file : files)
            arguments.push_back(NarrowText(file));
        if (files.empty())
            arguments.push_back(NarrowText(wide[i]));
    }
    LocalFree(wide);
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
    return IsTerminal(stream) && !(kind && std::string_view(kind) == "dumb");
}

void HurryReaders() {}

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
    while (!bytes.empty()) {
        DWORD size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), RequestBytes));
        DWORD written = 0;
        if (!WriteFile(handle, bytes.data(), size, &written, nullptr)) {
            DWORD error = GetLastError();
            bool gone = error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE ||
                        error == ERROR_PIPE_NOT_CONNECTED;
            return gone ? StreamWrite::ReaderGone : StreamWrite::Failed;
        }
        bytes.remove_prefix(written);
    }
    return StreamWrite::Done;
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
    Stop.Set();
}

} // namespace qor
