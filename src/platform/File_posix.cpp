// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files on POSIX systems. Called by whoever reads definitions, plays or writes logs, on that
// caller's thread; no lock here. Exclusive sharing is an advisory flock, taken before anything is
// truncated, so that a log that another process has open is never harmed. It does not buffer:
// a written byte is with the operating system when Write returns.
#include "platform/File.h"

#include "platform/Console.h"
#include "platform/Worker.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace qor {

namespace {

constexpr mode_t AnyWriteBit = S_IWUSR | S_IWGRP | S_IWOTH;

struct CauseOfErrno {
    int error;
    FileCause cause;
};

constexpr CauseOfErrno Causes[] = {
    {ENOENT, FileCause::FileNotFound},
    {ENOTDIR, FileCause::BadPath},
    {ENAMETOOLONG, FileCause::BadPath},
    {ELOOP, FileCause::BadPath},
    {EMFILE, FileCause::TooManyOpenFiles},
    {ENFILE, FileCause::TooManyOpenFiles},
    {EACCES, FileCause::AccessDenied},
    {EPERM, FileCause::AccessDenied},
    {EROFS, FileCause::AccessDenied},
    {EISDIR, FileCause::AccessDenied},
    {ETXTBSY, FileCause::AccessDenied},
    {ENXIO, FileCause::AccessDenied},
    {EBADF, FileCause::InvalidFile},
    {ESPIPE, FileCause::BadSeek},
    {EIO, FileCause::HardwareIo},
    {ENODEV, FileCause::HardwareIo},
    {EEXIST, FileCause::AccessDenied},
    {EBUSY, FileCause::SharingViolation},
    {EWOULDBLOCK, FileCause::SharingViolation},
    {EDEADLK, FileCause::LockViolation},
    {ENOSPC, FileCause::DiskFull},
    {EDQUOT, FileCause::DiskFull},
    {EFBIG, FileCause::DiskFull},
};

constexpr const char* StandardInputPath = "-";
constexpr int StopCheckMilliseconds = 100;
const CEvent* PipeStop = nullptr;

bool IsStandardInput(const std::string& path) {
    return PipeStop != nullptr && path == StandardInputPath;
}

/// Waits until a read would not; false when the process is to stop instead.
bool WaitForInput(int descriptor) {
    if (PipeStop == nullptr)
        return true;
    pollfd readable{descriptor, POLLIN, 0};
    for (;;) {
        const bool stopped = PipeStop->IsSet();
        const int ready = ::poll(&readable, 1, stopped ? 0 : StopCheckMilliseconds);
        if (ready > 0 || (ready < 0 && errno != EINTR))
            return true; // also when it fails: reading tells why
        if (stopped)
            return false;
    }
}

FileCause CauseOf(int error) {
    for (const CauseOfErrno& row : Causes)
        if (row.error == error)
            return row.cause;
    return FileCause::Generic;
}

/// The cause of a failed open: a missing folder is a bad path, a missing file is not.
FileCause OpenFailure(const std::string& path, int error) {
    if (error != ENOENT)
        return CauseOf(error);
    std::error_code ignored;
    auto parent = std::filesystem::path(path).parent_path();
    bool folderThere = parent.empty() || std::filesystem::is_directory(parent, ignored);
    return folderThere && !path.empty() ? FileCause::FileNotFound : FileCause::BadPath;
}

/// Opens without waiting for a pipe's other end or a line's carrier, and makes the calls that
/// follow wait as usual. Fills in what was opened.
FileCause OpenDescriptor(const std::string& path, int flags, int& descriptor, struct stat& status) {
    if (path.find('\0') != std::string::npos)
        return FileCause::BadPath;
    do
        descriptor = ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return OpenFailure(path, errno);
    int mode = ::fcntl(descriptor, F_GETFL);
    if (mode < 0 || ::fcntl(descriptor, F_SETFL, mode & ~O_NONBLOCK) < 0 ||
        ::fstat(descriptor, &status) < 0) {
        FileCause cause = CauseOf(errno);
        ::close(descriptor);
        return cause;
    }
    return FileCause::None;
}

/// The same for a file and no symbolic link, which is AccessDenied.
FileCause OpenFileItself(const std::string& path, int flags, int& descriptor, struct stat& status) {
    const FileCause cause = OpenDescriptor(path, flags | O_NOFOLLOW, descriptor, status);
    return cause != FileCause::None && IsSymbolicLink(path) ? FileCause::AccessDenied : cause;
}

/// A descriptor of the file that standard input was redirected from, with a position of its own;
/// -1 when it is no file or the system cannot open it again.
int ReopenStandardInput() {
    struct stat status {};
    if (::fstat(STDIN_FILENO, &status) < 0 || !S_ISREG(status.st_mode))
        return -1;
    return ::open("/proc/self/fd/0", O_RDONLY | O_CLOEXEC);
}

FileCause OpenStandardInput(int& descriptor, struct stat& status) {
    descriptor = ReopenStandardInput();
    if (descriptor < 0)
        descriptor = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    if (descriptor >= 0 && ::fstat(descriptor, &status) == 0)
        return FileCause::None;
    const FileCause cause = CauseOf(errno);
    if (descriptor >= 0)
        ::close(descriptor);
    return cause;
}

FileCause LockExclusively(int descriptor) {
    int result;
    do
        result = ::flock(descriptor, LOCK_EX | LOCK_NB);
    while (result < 0 && errno == EINTR);
    if (result == 0)
        return FileCause::None;
    // Decided: a file system without locks (some network mounts) still takes a log; data that are
    // not written at all would be the greater harm.
    bool noLocks = errno == ENOLCK || errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL;
    return noLocks ? FileCause::None : CauseOf(errno);
}

bool IsOne(const struct stat& first, const struct stat& second) {
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// True while the path still leads to the opened file: its last owner may have removed or renamed
/// it between our open and our lock.
bool StillAt(const std::string& path, const struct stat& opened) {
    struct stat now {};
    return ::lstat(path.c_str(), &now) == 0 && IsOne(now, opened);
}

FileCause ChangeMode(int descriptor, bool readOnly) {
    struct stat status {};
    if (::fstat(descriptor, &status) < 0)
        return CauseOf(errno);
    mode_t permissions = status.st_mode & 07777;
    permissions = readOnly ? permissions & ~AnyWriteBit : permissions | S_IWUSR;
    return ::fchmod(descriptor, permissions) < 0 ? CauseOf(errno) : FileCause::None;
}

/// Whether the descriptor is the terminal that the operator sits at.
bool IsOperatorTerminal(const struct stat& status) {
    for (int standard = 0; standard <= 2; ++standard) {
        struct stat other {};
        if (::fstat(standard, &other) == 0 && S_ISCHR(other.st_mode) &&
            other.st_rdev == status.st_rdev)
            return true;
    }
    return false;
}

/// Frames written to a serial device must arrive as they are, without LF becoming CR LF.
void PassBytesUnchanged(int descriptor, const struct stat& status) {
    termios settings{};
    if (!S_ISCHR(status.st_mode) || IsOperatorTerminal(status) ||
        ::tcgetattr(descriptor, &settings) < 0)
        return;
    settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    ::tcsetattr(descriptor, TCSANOW, &settings);
}

bool StatusOf(const std::string& path, struct stat& status) {
    return (IsStandardInput(path) ? ::fstat(STDIN_FILENO, &status)
                                  : ::stat(path.c_str(), &status)) == 0;
}

/// Every write goes to the end: a file that another program has cut stays as much shorter as it
/// became, and has no gap that hides it.
constexpr int Created = O_WRONLY | O_CREAT | O_APPEND;

int DescriptorOf(std::intptr_t handle) {
    return static_cast<int>(handle);
}

} // namespace

void SetPipeStop(const CEvent* stop) {
    PipeStop = stop;
}

CFile::~CFile() {
    Close();
}

CFile::CFile(CFile&& other) noexcept
    : Handle(std::exchange(other.Handle, -1)), Claimed(std::exchange(other.Claimed, false)),
      OpenedPath(std::move(other.OpenedPath)), OpenedFullPath(std::move(other.OpenedFullPath)) {}

CFile& CFile::operator=(CFile&& other) noexcept {
    if (this == &other)
        return *this;
    Close();
    Handle = std::exchange(other.Handle, -1);
    Claimed = std::exchange(other.Claimed, false);
    OpenedPath = std::move(other.OpenedPath);
    OpenedFullPath = std::move(other.OpenedFullPath);
    return *this;
}

FileCause CFile::OpenForReading(const std::string& path) {
    Close();
    int descriptor = -1;
    struct stat status {};
    const bool input = IsStandardInput(path);
    FileCause cause = input ? OpenStandardInput(descriptor, status)
                            : OpenDescriptor(path, O_RDONLY, descriptor, status);
    if (cause != FileCause::None)
        return cause;
    // A device could give bytes without end, or none for ever.
    if (!input && !S_ISREG(status.st_mode) && !S_ISFIFO(status.st_mode)) {
        ::close(descriptor);
        return FileCause::AccessDenied;
    }
    Handle = descriptor;
    OpenedPath = path;
    OpenedFullPath = input ? path : FullPathOf(path);
    return FileCause::None;
}

FileCause CFile::CreateExclusive(const std::string& path) {
    Close();
    for (int attempt = 0; attempt < 10; ++attempt) {
        int descriptor = -1;
        struct stat status {};
        FileCause cause = OpenFileItself(path, Created, descriptor, status);
        if (cause != FileCause::None)
            return cause;
        cause = S_ISREG(status.st_mode) ? LockExclusively(descriptor) : FileCause::AccessDenied;
        if (cause == FileCause::None && !StillAt(path, status)) {
            ::close(descriptor);
            continue;
        }
        // Looked at only under the lock: a log that just ended has become read-only by now. The
        // bits decide, because the superuser may open anything.
        if (cause == FileCause::None && ::fstat(descriptor, &status) < 0)
            cause = CauseOf(errno);
        if (cause == FileCause::None && (status.st_mode & AnyWriteBit) == 0)
            cause = FileCause::AccessDenied;
        // Under its other names, as of a backup, its bytes stay.
        if (cause == FileCause::None && status.st_nlink > 1) {
            if (::unlink(path.c_str()) == 0) {
                ::close(descriptor);
                continue;
            }
            cause = CauseOf(errno); // the folder's owner alone may take the name away
        }
        if (cause == FileCause::None && ::ftruncate(descriptor, 0) < 0)
            cause = CauseOf(errno);
        if (cause != FileCause::None) {
            ::close(descriptor);
            return cause;
        }
        Handle = descriptor;
        Claimed = true;
        OpenedPath = path;
        OpenedFullPath = FullPathOf(path);
        return FileCause::None;
    }
    return FileCause::SharingViolation;
}

FileCause CFile::CreateNew(const std::string& path) {
    Close();
    int descriptor = -1;
    struct stat status {};
    FileCause cause = OpenDescriptor(path, Created | O_EXCL, descriptor, status);
    if (cause != FileCause::None)
        return cause;
    cause = LockExclusively(descriptor);
    if (cause != FileCause::None) {
        // An empty file would keep the name. Nobody can act on a failure here.
        if (StillAt(path, status))
            static_cast<void>(RemoveFile(path));
        ::close(descriptor);
        return cause;
    }
    Handle = descriptor;
    Claimed = true;
    OpenedPath = path;
    OpenedFullPath = FullPathOf(path);
    return FileCause::None;
}

FileCause CFile::OpenAlone(const std::string& path) {
    Close();
    int descriptor = -1;
    struct stat status {};
    FileCause cause = OpenDescriptor(path, O_RDWR | O_NOFOLLOW, descriptor, status);
    if (cause != FileCause::None)
        return cause == FileCause::BadPath ? FileCause::AccessDenied : cause;
    cause = S_ISREG(status.st_mode) && (status.st_mode & AnyWriteBit) != 0
                ? LockExclusively(descriptor)
                : FileCause::AccessDenied;
    if (cause == FileCause::None && !StillAt(path, status))
        cause = FileCause::SharingViolation;
    if (cause != FileCause::None) {
        ::close(descriptor);
        return cause;
    }
    Handle = descriptor;
    Claimed = true;
    OpenedPath = path;
    OpenedFullPath = FullPathOf(path);
    return FileCause::None;
}

FileCause CFile::OpenForWriting(const std::string& path) {
    Close();
    int descriptor = -1;
    struct stat status {};
    if (FileCause cause = OpenDescriptor(path, O_WRONLY, descriptor, status);
        cause != FileCause::None)
        return cause;
    if (S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return FileCause::AccessDenied;
    }
    PassBytesUnchanged(descriptor, status);
    // A line whose other end takes nothing must not hold a program that is to end.
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    Handle = descriptor;
    OpenedPath = path;
    OpenedFullPath = FullPathOf(path);
    return FileCause::None;
}

void CFile::Close() {
    // The lock belongs to every duplicate too: given back here, not when the last of them closes.
    if (Handle >= 0 && Claimed)
        ::flock(DescriptorOf(Handle), LOCK_UN);
    if (Handle >= 0)
        ::close(DescriptorOf(Handle));
    Handle = -1;
    Claimed = false;
}

bool CFile::IsOpen() const {
    return Handle >= 0;
}

FileCause CFile::Read(std::span<std::uint8_t> buffer, std::size_t& got) {
    got = 0;
    if (!WaitForInput(DescriptorOf(Handle)))
        return FileCause::Generic;
    ssize_t result;
    do
        result = ::read(DescriptorOf(Handle), buffer.data(), buffer.size());
    while (result < 0 && errno == EINTR);
    if (result < 0)
        return CauseOf(errno);
    got = static_cast<std::size_t>(result);
    return FileCause::None;
}

bool CFile::HasInput() const {
    pollfd readable{DescriptorOf(Handle), POLLIN, 0};
    return ::poll(&readable, 1, 0) != 0; // also when it fails: reading tells why
}

FileCause CFile::Write(ByteSpan bytes) {
    while (!bytes.empty()) {
        ssize_t written = ::write(DescriptorOf(Handle), bytes.data(), bytes.size());
        if (written >= 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(written));
            continue;
        }
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN)
            return CauseOf(errno);
        if (!WaitForReader(DescriptorOf(Handle)))
            return FileCause::Generic;
    }
    return FileCause::None;
}

FileCause CFile::Sync() {
    int result;
    do
        result = ::fdatasync(DescriptorOf(Handle));
    while (result < 0 && errno == EINTR);
    // A pipe or device has nothing that could be synchronised.
    bool synced = result == 0 || errno == EINVAL || errno == ENOTSUP;
    return synced ? FileCause::None : CauseOf(errno);
}

FileCause CFile::Duplicate(CFile& copy) const {
    copy.Close();
    int descriptor = ::fcntl(DescriptorOf(Handle), F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0)
        return CauseOf(errno);
    copy.Handle = descriptor;
    copy.OpenedPath = OpenedPath;
    copy.OpenedFullPath = OpenedFullPath;
    return FileCause::None;
}

FileCause CFile::Truncate(std::uint64_t size) {
    int result;
    do
        result = ::ftruncate(DescriptorOf(Handle), static_cast<off_t>(size));
    while (result < 0 && errno == EINTR);
    return result < 0 ? CauseOf(errno) : SeekTo(size);
}

FileCause CFile::Size(std::uint64_t& size) const {
    size = 0;
    struct stat status {};
    if (::fstat(DescriptorOf(Handle), &status) < 0)
        return CauseOf(errno);
    if (!S_ISREG(status.st_mode))
        return FileCause::BadSeek;
    size = static_cast<std::uint64_t>(status.st_size);
    return FileCause::None;
}

FileStanding CFile::Standing() const {
    struct stat open {};
    struct stat named {};
    if (::fstat(DescriptorOf(Handle), &open) < 0)
        return FileStanding::There;
    if (open.st_nlink == 0)
        return FileStanding::Deleted;
    if (::lstat(OpenedFullPath.c_str(), &named) < 0)
        return errno == ENOENT || errno == ENOTDIR ? FileStanding::Moved : FileStanding::There;
    return IsOne(open, named) ? FileStanding::There : FileStanding::Replaced;
}

FileCause CFile::SeekTo(std::uint64_t position) {
    if (::lseek(DescriptorOf(Handle), static_cast<off_t>(position), SEEK_SET) >= 0)
        return FileCause::None;
    return errno == EBADF ? FileCause::InvalidFile : FileCause::BadSeek;
}

bool IsDirectory(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool IsDevice(const std::string& path) {
    if (IsStandardInput(path)) {
        const int descriptor = ReopenStandardInput();
        if (descriptor >= 0)
            ::close(descriptor);
        return descriptor < 0;
    }
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode) &&
           !S_ISREG(status.st_mode);
}

bool FileExists(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

FileCause CFile::SetReadOnly(bool readOnly) const {
    return ChangeMode(DescriptorOf(Handle), readOnly);
}

FileCause SetReadOnly(const std::string& path, bool readOnly) {
    int descriptor = -1;
    struct stat status {};
    FileCause cause = OpenFileItself(path, O_RDONLY, descriptor, status);
    if (cause == FileCause::AccessDenied) // it may be one that can only be written
        cause = OpenFileItself(path, O_WRONLY, descriptor, status);
    if (cause != FileCause::None)
        return cause;
    cause = ChangeMode(descriptor, readOnly);
    ::close(descriptor);
    return cause;
}

FileCause IsReadOnly(const std::string& path, bool& readOnly) {
    struct stat status {};
    if (::stat(path.c_str(), &status) < 0)
        return OpenFailure(path, errno);
    readOnly = (status.st_mode & AnyWriteBit) == 0;
    return FileCause::None;
}

FileCause RemoveFile(const std::string& path) {
    return ::unlink(path.c_str()) < 0 ? OpenFailure(path, errno) : FileCause::None;
}

FileCause RenameFile(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str()) < 0 ? CauseOf(errno) : FileCause::None;
}

FileCause RenameToNew(const std::string& from, const std::string& to) {
    if (::link(from.c_str(), to.c_str()) == 0)
        return RemoveFile(from);
    const int error = errno;
    struct stat status {};
    if (error == EEXIST || ::lstat(to.c_str(), &status) == 0)
        return FileCause::AccessDenied;
    // A file system without links: the moment between looking and renaming stays.
    const bool noLinks =
        error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
    return noLinks ? RenameFile(from, to) : CauseOf(error);
}

FileCause CheckWritable(const std::string& path) {
    int descriptor = -1;
    struct stat status {};
    if (FileCause cause = OpenDescriptor(path, O_WRONLY, descriptor, status);
        cause != FileCause::None)
        return cause;
    FileCause cause = LockExclusively(descriptor);
    struct flock record {};
    record.l_type = F_WRLCK;
    if (cause == FileCause::None && ::fcntl(descriptor, F_GETLK, &record) == 0 &&
        record.l_type != F_UNLCK)
        cause = FileCause::SharingViolation;
    if (cause == FileCause::None && (status.st_mode & AnyWriteBit) == 0)
        cause = FileCause::AccessDenied;
    ::close(descriptor);
    return cause;
}

bool IsSymbolicLink(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool IsSameFile(const std::string& path, const std::string& other) {
    struct stat first {
    }, second{};
    return StatusOf(path, first) && StatusOf(other, second) && IsOne(first, second);
}

bool IsStandardOutput(const std::string& path) {
    struct stat first {
    }, second{};
    return StatusOf(path, first) && S_ISREG(first.st_mode) &&
           ::fstat(STDOUT_FILENO, &second) == 0 && IsOne(first, second);
}

FileCause MakeDirectory(const std::string& path) {
    return ::mkdir(path.c_str(), 0777) < 0 ? OpenFailure(path, errno) : FileCause::None;
}

FileCause SyncFolderOf(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    int descriptor = -1;
    struct stat status {};
    FileCause cause = OpenDescriptor(folder.empty() ? "." : folder.string(), O_RDONLY | O_DIRECTORY,
                                     descriptor, status);
    if (cause == FileCause::AccessDenied) // one may make files there and not list them
        return FileCause::None;
    if (cause != FileCause::None)
        return cause;
    int result;
    do
        result = ::fsync(descriptor);
    while (result < 0 && errno == EINTR);
    // Network and foreign file systems have no such synchronisation.
    if (result < 0 && errno != EINVAL && errno != ENOTSUP && errno != EROFS && errno != EBADF)
        cause = CauseOf(errno);
    ::close(descriptor);
    return cause;
}

FileCause RemoveEmptyDirectory(const std::string& path) {
    return ::rmdir(path.c_str()) < 0 ? OpenFailure(path, errno) : FileCause::None;
}

std::string FullPathOf(const std::string& path) {
    std::error_code error;
    auto absolute = std::filesystem::absolute(path, error);
    if (error || path.empty())
        return path;
    // ".." behind a symbolic link does not lead back to where the text says.
    bool climbs = path.find("..") != std::string::npos;
    auto normal = absolute.lexically_normal();
    if (climbs && !std::filesystem::equivalent(absolute, normal, error))
        return absolute.string();
    return normal.string();
}

char PathSeparator() {
    return '/';
}

} // namespace qor
