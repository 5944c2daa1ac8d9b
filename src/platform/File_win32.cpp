// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files on Windows. Called by whoever reads definitions, plays or writes logs, on that caller's
// thread; no lock here. Files are opened for overlapped input and output although every call waits
// for its end: on a plain handle the system would let a write wait while another thread's Sync
// runs. It does not buffer: a written byte is with the operating system when Write returns.
#include "platform/File.h"

#include "platform/Win32Support.h"
#include "platform/Worker.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include <windows.h>

namespace qor {

namespace {

/// What CFile's handle stands for: the system's handle, an event to wait with, our own position
/// (an overlapped handle has none) and whether the position means anything.
struct OpenFile {
    HANDLE handle = INVALID_HANDLE_VALUE;
    HANDLE done = nullptr;
    std::uint64_t position = 0;
    bool isDisk = false;

    OpenFile() = default;
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
        if (done != nullptr)
            CloseHandle(done);
    }
};
using OpenFilePointer = std::unique_ptr<OpenFile>;

/// One request's largest size; larger ones go in several.
constexpr std::size_t RequestBytes = 16 * 1024 * 1024;

/// Decided: a file that was closed a moment ago may be held a little longer by whoever synchronises
/// it with the disk, or by a virus scanner; only what stays taken beyond half a second is taken.
constexpr int ReleaseAttempts = 25;
constexpr DWORD ReleaseMilliseconds = 20;

struct OpenRequest {
    DWORD access;
    DWORD sharing;
    DWORD disposition;
    DWORD flags = 0;
};
constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr OpenRequest ReadExisting = {GENERIC_READ, ShareAll, OPEN_EXISTING};
/// A link is opened itself, to be looked at before anything is cut.
constexpr OpenRequest CreateAlone = {GENERIC_WRITE, 0, OPEN_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT};
constexpr OpenRequest CreateUnknown = {GENERIC_WRITE, 0, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT};
constexpr OpenRequest ChangeAlone = {GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING};
constexpr OpenRequest WriteAny = {GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING};
constexpr OpenRequest ChangeAttributes = {FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, ShareAll,
                                          OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT};

constexpr const char* StandardInputPath = "-";
constexpr int StopCheckMilliseconds = 50;
const CEvent* PipeStop = nullptr;

bool IsStandardInput(const std::string& path) {
    return PipeStop != nullptr && path == StandardInputPath;
}

OpenFile* OpenedBy(std::intptr_t handle) {
    return handle == -1 ? nullptr : reinterpret_cast<OpenFile*>(handle);
}

/// The cause of the call that has just failed; never None.
FileCause LastCause() {
    FileCause cause = FileCauseOf(GetLastError());
    return cause == FileCause::None ? FileCause::Generic : cause;
}

bool HasReadOnlyAttribute(const std::wstring& path) {
    DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
           (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

FileCause TryOpen(const std::wstring& path, const OpenRequest& request, OpenFilePointer& opened) {
    if (path.empty())
        return FileCause::BadPath;
    // Windows refuses this by itself; Wine run by the superuser would not.
    if ((request.access & GENERIC_WRITE) != 0 && HasReadOnlyAttribute(path))
        return FileCause::AccessDenied;
    opened.reset(new (std::nothrow) OpenFile);
    if (!opened)
        return FileCause::Generic;
    opened->done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (opened->done != nullptr)
        opened->handle =
            CreateFileW(path.c_str(), request.access, request.sharing, nullptr, request.disposition,
                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OVERLAPPED | request.flags, nullptr);
    if (opened->handle == INVALID_HANDLE_VALUE)
        return LastCause();
    opened->isDisk = GetFileType(opened->handle) == FILE_TYPE_DISK;
    return FileCause::None;
}

FileCause OpenHandle(const std::wstring& path, const OpenRequest& request,
                     OpenFilePointer& opened) {
    FileCause cause = TryOpen(path, request, opened);
    for (int i = 0; i < ReleaseAttempts && cause == FileCause::SharingViolation; ++i) {
        Sleep(ReleaseMilliseconds);
        cause = TryOpen(path, request, opened);
    }
    return cause;
}

FileCause OpenStandardInput(OpenFilePointer& opened) {
    opened.reset(new (std::nothrow) OpenFile);
    if (!opened)
        return FileCause::Generic;
    HANDLE process = GetCurrentProcess();
    HANDLE handle = nullptr;
    opened->done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (opened->done == nullptr ||
        !DuplicateHandle(process, GetStdHandle(STD_INPUT_HANDLE), process, &handle, 0, FALSE,
                         DUPLICATE_SAME_ACCESS))
        return LastCause();
    opened->handle = handle;
    opened->isDisk = GetFileType(handle) == FILE_TYPE_DISK;
    return FileCause::None;
}

/// Waits until a read would not; false when the process is to stop instead. A pipe that fails is
/// left to the read, which tells why.
bool WaitForInput(const OpenFile& file) {
    if (PipeStop == nullptr || file.isDisk)
        return true;
    DWORD waiting = 0;
    while (PeekNamedPipe(file.handle, nullptr, 0, nullptr, &waiting, nullptr) && waiting == 0)
        if (PipeStop->Wait(StopCheckMilliseconds))
            return false;
    return true;
}

/// Runs one read or write at the file's position and moves the position on.
template <class Start> FileCause Run(OpenFile& file, Start start, std::size_t& moved) {
    moved = 0;
    OVERLAPPED request{};
    request.hEvent = file.done;
    request.Offset = static_cast<DWORD>(file.position);
    request.OffsetHigh = static_cast<DWORD>(file.position >> 32);
    DWORD count = 0;
    bool started = start(&request) != FALSE || GetLastError() == ERROR_IO_PENDING;
    if (!started || !GetOverlappedResult(file.handle, &request, &count, TRUE))
        return LastCause();
    moved = count;
    file.position += count;
    return FileCause::None;
}

DWORD RequestSize(std::size_t bytes) {
    return static_cast<DWORD>(std::min(bytes, RequestBytes));
}

FileCause CutAt(OpenFile& file, std::uint64_t size) {
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    if (!SetFileInformationByHandle(file.handle, FileEndOfFileInfo, &end, sizeof end))
        return LastCause();
    file.position = size;
    return FileCause::None;
}

/// Whether what was opened as itself leads somewhere else.
bool IsLink(const OpenFile& file) {
    FILE_ATTRIBUTE_TAG_INFO facts{};
    return GetFileInformationByHandleEx(file.handle, FileAttributeTagInfo, &facts, sizeof facts) &&
           (facts.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (facts.ReparseTag == IO_REPARSE_TAG_SYMLINK ||
            facts.ReparseTag == IO_REPARSE_TAG_MOUNT_POINT);
}

bool HasOtherNames(const OpenFile& file) {
    BY_HANDLE_FILE_INFORMATION facts{};
    return GetFileInformationByHandle(file.handle, &facts) && facts.nNumberOfLinks > 1;
}

/// Under its other names, as of a backup, what the file holds stays: another one takes this name.
FileCause TakeName(const std::wstring& path, OpenFilePointer& file) {
    file.reset();
    return DeleteFileW(path.c_str()) ? OpenHandle(path, CreateUnknown, file) : LastCause();
}

/// No attribute at all is spelled "normal".
FileCause ChangeReadOnly(const OpenFile& file, bool readOnly) {
    FILE_BASIC_INFO facts{}; // times of 0 stay as they are
    if (!GetFileInformationByHandleEx(file.handle, FileBasicInfo, &facts, sizeof facts))
        return LastCause();
    DWORD wanted =
        facts.FileAttributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_NORMAL);
    if (readOnly)
        wanted |= FILE_ATTRIBUTE_READONLY;
    facts = {};
    facts.FileAttributes = wanted != 0 ? wanted : FILE_ATTRIBUTE_NORMAL;
    return SetFileInformationByHandle(file.handle, FileBasicInfo, &facts, sizeof facts)
               ? FileCause::None
               : LastCause();
}

FileCause Attributes(const std::string& path, std::wstring& wide, DWORD& attributes) {
    wide = WidePath(path);
    if (wide.empty())
        return FileCause::BadPath;
    attributes = GetFileAttributesW(wide.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ? LastCause() : FileCause::None;
}

bool Identify(const std::string& path, BY_HANDLE_FILE_INFORMATION& known) {
    if (IsStandardInput(path))
        return GetFileInformationByHandle(GetStdHandle(STD_INPUT_HANDLE), &known) != FALSE;
    const std::wstring wide = WidePath(path);
    const HANDLE handle = wide.empty()
                              ? INVALID_HANDLE_VALUE
                              : CreateFileW(wide.c_str(), 0, ShareAll, nullptr, OPEN_EXISTING,
                                            FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    const bool told = GetFileInformationByHandle(handle, &known) != FALSE;
    CloseHandle(handle);
    return told;
}

bool IsOne(const BY_HANDLE_FILE_INFORMATION& first, const BY_HANDLE_FILE_INFORMATION& second) {
    return first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh &&
           first.nFileIndexLow == second.nFileIndexLow;
}

} // namespace

void SetPipeStop(const CEvent* stop) {
    PipeStop = stop;
}

CFile::~CFile() {
    Close();
}

CFile::CFile(CFile&& other) noexcept
    : Handle(std::exchange(other.Handle, -1)), OpenedPath(std::move(other.OpenedPath)),
      OpenedFullPath(std::move(other.OpenedFullPath)) {}

CFile& CFile::operator=(CFile&& other) noexcept {
    if (this == &other)
        return *this;
    Close();
    Handle = std::exchange(other.Handle, -1);
    OpenedPath = std::move(other.OpenedPath);
    OpenedFullPath = std::move(other.OpenedFullPath);
    return *this;
}

FileCause CFile::OpenForReading(const std::string& path) {
    Close();
    OpenFilePointer file;
    const bool input = IsStandardInput(path);
    FileCause cause =
        input ? OpenStandardInput(file) : OpenHandle(WidePath(path), ReadExisting, file);
    if (cause != FileCause::None)
        return cause;
    // A device could give bytes without end, or none for ever.
    if (!input && !file->isDisk && GetFileType(file->handle) != FILE_TYPE_PIPE)
        return FileCause::AccessDenied;
    Handle = reinterpret_cast<std::intptr_t>(file.release());
    OpenedPath = path;
    OpenedFullPath = input ? path : FullPathOf(path);
    return FileCause::None;
}

FileCause CFile::CreateExclusive(const std::string& path) {
    Close();
    OpenFilePointer file;
    const std::wstring wide = WidePath(path);
    FileCause cause = OpenHandle(wide, CreateAlone, file);
    if (cause != FileCause::None)
        return cause;
    if (!file->isDisk || IsLink(*file))
        return FileCause::AccessDenied;
    cause = HasOtherNames(*file) ? TakeName(wide, file) : CutAt(*file, 0);
    if (cause != FileCause::None)
        return cause;
    Handle = reinterpret_cast<std::intptr_t>(file.release());
    OpenedPath = path;
    OpenedFullPath = FullPathOf(path);
    return FileCause::None;
}

FileCause CFile::CreateNew(const std::string& path) {
    Close();
    OpenFilePointer file;
    if (FileCause cause = OpenHandle(WidePath(path), CreateUnknown, file); cause != FileCause::None)
        return cause;
    if (!file->isDisk)
        return FileCause::AccessDenied;
    Handle = reinterpret_cast<std::intptr_t>(file.release());
    OpenedPath = path;
    OpenedFullPath = FullPathOf(path);
    return FileCause::None;
}

FileCause CFile::OpenAlone(const std::string& path) {
    Close();
    OpenFilePointer file;
    if (IsSymbolicLink(path))
        return FileCause::AccessDenied;
    if (FileCause cause = OpenHandle(WidePath(path), ChangeAlone, file); cause != FileCause::None)
        return cause;
    if (!file->isDisk)
        return FileCause::AccessDenied;
    Handle = reinterpret_cast<std::intptr_t>(file.release());
    OpenedPath = path;
    OpenedFullPath = FullPathOf(path);
    return FileCause::None;
}

FileCause CFile::OpenForWriting(const std::string& path) {
    Close();
    OpenFilePointer file;
    FileCause cause = OpenHandle(WidePortName(path), WriteAny, file);
    if (cause != FileCause::None)
        return cause;
    if (file->isDisk)
        return FileCause::AccessDenied;
    Handle = reinterpret_cast<std::intptr_t>(file.release());
    OpenedPath = path;
    OpenedFullPath = FullPathOf(path);
    return FileCause::None;
}

void CFile::Close() {
    delete OpenedBy(Handle);
    Handle = -1;
}

bool CFile::IsOpen() const {
    return Handle != -1;
}

FileCause CFile::Read(std::span<std::uint8_t> buffer, std::size_t& got) {
    got = 0;
    OpenFile* file = OpenedBy(Handle);
    if (file == nullptr)
        return FileCause::InvalidFile;
    if (!WaitForInput(*file))
        return FileCause::Generic;
    auto start = [&](OVERLAPPED* request) {
        return ReadFile(file->handle, buffer.data(), RequestSize(buffer.size()), nullptr, request);
    };
    FileCause cause = Run(*file, start, got);
    // The end of a file, and of a pipe whose writer has gone.
    bool ended = cause == FileCause::EndOfFile || GetLastError() == ERROR_BROKEN_PIPE;
    return cause != FileCause::None && ended ? FileCause::None : cause;
}

bool CFile::HasInput() const {
    OpenFile* file = OpenedBy(Handle);
    DWORD waiting = 0;
    // A pipe whose writer has gone fails: reading tells that.
    return file == nullptr || GetFileType(file->handle) != FILE_TYPE_PIPE ||
           !PeekNamedPipe(file->handle, nullptr, 0, nullptr, &waiting, nullptr) || waiting > 0;
}

FileCause CFile::Write(ByteSpan bytes) {
    OpenFile* file = OpenedBy(Handle);
    if (file == nullptr)
        return FileCause::InvalidFile;
    while (!bytes.empty()) {
        auto start = [&](OVERLAPPED* request) {
            return WriteFile(file->handle, bytes.data(), RequestSize(bytes.size()), nullptr,
                             request);
        };
        std::size_t written = 0;
        if (FileCause cause = Run(*file, start, written); cause != FileCause::None)
            return cause;
        if (written == 0)
            return FileCause::DiskFull;
        bytes = bytes.subspan(written);
    }
    return FileCause::None;
}

FileCause CFile::Sync() {
    OpenFile* file = OpenedBy(Handle);
    if (file == nullptr)
        return FileCause::InvalidFile;
    // A pipe or device has nothing that could be synchronised.
    bool synced = !file->isDisk || FlushFileBuffers(file->handle);
    return synced ? FileCause::None : LastCause();
}

FileCause CFile::Duplicate(CFile& copy) const {
    copy.Close();
    const OpenFile* file = OpenedBy(Handle);
    if (file == nullptr)
        return FileCause::InvalidFile;
    OpenFilePointer second(new (std::nothrow) OpenFile);
    if (!second)
        return FileCause::Generic;
    second->done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE process = GetCurrentProcess();
    HANDLE handle = nullptr;
    if (second->done == nullptr ||
        !DuplicateHandle(process, file->handle, process, &handle, 0, FALSE, DUPLICATE_SAME_ACCESS))
        return LastCause();
    second->handle = handle;
    second->position = file->position;
    second->isDisk = file->isDisk;
    copy.Handle = reinterpret_cast<std::intptr_t>(second.release());
    copy.OpenedPath = OpenedPath;
    copy.OpenedFullPath = OpenedFullPath;
    return FileCause::None;
}

FileCause CFile::Truncate(std::uint64_t size) {
    OpenFile* file = OpenedBy(Handle);
    return file == nullptr ? FileCause::InvalidFile : CutAt(*file, size);
}

FileCause CFile::Size(std::uint64_t& size) const {
    size = 0;
    OpenFile* file = OpenedBy(Handle);
    if (file == nullptr)
        return FileCause::InvalidFile;
    if (!file->isDisk)
        return FileCause::BadSeek;
    LARGE_INTEGER found{};
    if (!GetFileSizeEx(file->handle, &found))
        return LastCause();
    size = static_cast<std::uint64_t>(found.QuadPart);
    return FileCause::None;
}

/// Exclusive sharing keeps others on this computer from deleting, renaming or replacing an open
/// file; a server may do it, or be gone itself.
FileStanding CFile::Standing() const {
    const OpenFile* file = OpenedBy(Handle);
    BY_HANDLE_FILE_INFORMATION facts{};
    if (file == nullptr || !file->isDisk || !GetFileInformationByHandle(file->handle, &facts))
        return FileStanding::There;
    if (facts.nNumberOfLinks == 0)
        return FileStanding::Deleted;
    if (GetFileAttributesW(WidePath(OpenedFullPath).c_str()) != INVALID_FILE_ATTRIBUTES)
        return FileStanding::There;
    const FileCause cause = LastCause();
    return cause == FileCause::FileNotFound || cause == FileCause::BadPath ? FileStanding::Moved
                                                                           : FileStanding::There;
}

FileCause CFile::SeekTo(std::uint64_t position) {
    OpenFile* file = OpenedBy(Handle);
    if (file == nullptr)
        return FileCause::InvalidFile;
    if (!file->isDisk || position > INT64_MAX)
        return FileCause::BadSeek;
    file->position = position;
    return FileCause::None;
}

bool IsDirectory(const std::string& path) {
    std::wstring wide;
    DWORD attributes = 0;
    return Attributes(path, wide, attributes) == FileCause::None &&
           (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsDevice(const std::string& path) {
    if (IsStandardInput(path))
        return GetFileType(GetStdHandle(STD_INPUT_HANDLE)) != FILE_TYPE_DISK;
    // By the name alone: opening a port would move its control lines.
    constexpr std::string_view Device = "\\\\.\\";
    return WidePortName(path).starts_with(L"\\\\.\\") || FullPathOf(path).starts_with(Device);
}

bool FileExists(const std::string& path) {
    std::wstring wide;
    DWORD attributes = 0;
    return Attributes(path, wide, attributes) == FileCause::None;
}

FileCause CFile::SetReadOnly(bool readOnly) const {
    const OpenFile* file = OpenedBy(Handle);
    return file == nullptr ? FileCause::InvalidFile : ChangeReadOnly(*file, readOnly);
}

FileCause SetReadOnly(const std::string& path, bool readOnly) {
    OpenFilePointer file;
    if (FileCause cause = TryOpen(WidePath(path), ChangeAttributes, file); cause != FileCause::None)
        return cause;
    return IsLink(*file) ? FileCause::AccessDenied : ChangeReadOnly(*file, readOnly);
}

FileCause IsReadOnly(const std::string& path, bool& readOnly) {
    std::wstring wide;
    DWORD attributes = 0;
    FileCause cause = Attributes(path, wide, attributes);
    if (cause == FileCause::None)
        readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    return cause;
}

FileCause RemoveFile(const std::string& path) {
    std::wstring wide = WidePath(path);
    if (wide.empty())
        return FileCause::BadPath;
    return DeleteFileW(wide.c_str()) ? FileCause::None : LastCause();
}

/// Moves a file, again and again while somebody holds it or the file that it is to replace: the
/// system calls the latter a denied access, also where a reader has it open for a moment.
static FileCause Move(const std::string& from, const std::string& to, DWORD flags) {
    const std::wstring wideFrom = WidePath(from), wideTo = WidePath(to);
    if (wideFrom.empty() || wideTo.empty())
        return FileCause::BadPath;
    const auto isFile = [&wideTo] {
        const DWORD attributes = GetFileAttributesW(wideTo.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES &&
               (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0;
    };
    const bool replaces = (flags & MOVEFILE_REPLACE_EXISTING) != 0;
    for (int i = 0;; ++i) {
        if (MoveFileExW(wideFrom.c_str(), wideTo.c_str(), flags | MOVEFILE_WRITE_THROUGH))
            return FileCause::None;
        const DWORD error = GetLastError();
        const bool isHeld = error == ERROR_SHARING_VIOLATION ||
                            (error == ERROR_ACCESS_DENIED && replaces && isFile());
        if (!isHeld || i == ReleaseAttempts)
            return FileCauseOf(error);
        Sleep(ReleaseMilliseconds);
    }
}

FileCause RenameFile(const std::string& from, const std::string& to) {
    return Move(from, to, MOVEFILE_REPLACE_EXISTING);
}

FileCause RenameToNew(const std::string& from, const std::string& to) {
    return Move(from, to, 0);
}

FileCause CheckWritable(const std::string& path) {
    constexpr OpenRequest WriteAlone = {GENERIC_WRITE, 0, OPEN_EXISTING};
    OpenFilePointer file;
    return OpenHandle(WidePath(path), WriteAlone, file);
}

bool IsSymbolicLink(const std::string& path) {
    std::wstring wide;
    DWORD attributes = 0;
    if (Attributes(path, wide, attributes) != FileCause::None ||
        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return false;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(wide.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    // Other reparse points are files like any other: in the cloud, deduplicated.
    return found.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
}

bool IsSameFile(const std::string& path, const std::string& other) {
    BY_HANDLE_FILE_INFORMATION first{}, second{};
    return Identify(path, first) && Identify(other, second) && IsOne(first, second);
}

bool IsStandardOutput(const std::string& path) {
    BY_HANDLE_FILE_INFORMATION first{}, second{};
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    return GetFileType(output) == FILE_TYPE_DISK && Identify(path, first) &&
           GetFileInformationByHandle(output, &second) && IsOne(first, second);
}

FileCause MakeDirectory(const std::string& path) {
    std::wstring wide = WidePath(path);
    if (wide.empty())
        return FileCause::BadPath;
    return CreateDirectoryW(wide.c_str(), nullptr) ? FileCause::None : LastCause();
}

/// The file system's own journal keeps names, and files are moved with write-through: a folder
/// cannot be synchronised here by who is no administrator.
FileCause SyncFolderOf(const std::string&) {
    return FileCause::None;
}

FileCause RemoveEmptyDirectory(const std::string& path) {
    const std::wstring wide = WidePath(path);
    if (wide.empty())
        return FileCause::BadPath;
    return RemoveDirectoryW(wide.c_str()) ? FileCause::None : LastCause();
}

std::string FullPathOf(const std::string& path) {
    std::wstring wide = WidePath(path);
    DWORD needed = wide.empty() ? 0 : GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    full.resize(needed == 0 ? 0 : GetFullPathNameW(wide.c_str(), needed, full.data(), nullptr));
    if (full.empty())
        return path;
    // The mark of a long path is this folder's own business.
    constexpr std::wstring_view NetworkMark = L"\\\\?\\UNC\\";
    constexpr std::wstring_view Mark = L"\\\\?\\";
    std::wstring_view shown = full;
    if (shown.starts_with(NetworkMark)) {
        full.replace(0, NetworkMark.size(), L"\\\\");
        shown = full;
    } else if (shown.starts_with(Mark)) {
        shown.remove_prefix(Mark.size());
    }
    return NarrowText(shown);
}

char PathSeparator() {
    return '\\';
}

} // namespace qor
