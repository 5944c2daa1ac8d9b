// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files of the operating system. Every call returns the cause of its failure (0..14), from which
// FileErrorText makes the text that the operator reads. Paths are 8-bit text as the system has
// them (UTF-8 on Windows).
#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <string>

namespace qor {

/// Causes of file errors, numbered as the text tables are.
enum class [[nodiscard]] FileCause : std::uint32_t{
    None = 0,
    Generic = 1,
    FileNotFound = 2,
    BadPath = 3,
    TooManyOpenFiles = 4,
    AccessDenied = 5,
    InvalidFile = 6,
    RemoveCurrentDirectory = 7,
    DirectoryFull = 8,
    BadSeek = 9,
    HardwareIo = 10,
    SharingViolation = 11,
    LockViolation = 12,
    DiskFull = 13,
    EndOfFile = 14,
};

/// What has become of an open file behind its back.
enum class FileStanding : std::uint8_t {
    There,
    Deleted,
    Replaced, ///< its name is another file's
    Moved,    ///< its name is nobody's
};

class CEvent;

/// How the whole process reads pipes. A command-line program sets it up before it starts threads,
/// and resets it before the event goes: until then the path "-" is standard input, whatever that
/// is, reading a pipe waits for its first writer, and a read that waits when the event is set ends
/// at once as Generic. Otherwise "-" is a file like any other and a pipe without a writer is empty.
void SetPipeStop(const CEvent* stop);

/// One open file. Not shared between threads, but for Sync, which may run beside Write.
class CFile {
  public:
    CFile() = default;
    ~CFile();
    CFile(CFile&& other) noexcept;
    CFile& operator=(CFile&& other) noexcept;

    /// Opens an existing regular file (or pipe) for reading. A directory is AccessDenied.
    FileCause OpenForReading(const std::string& path);

    /// Creates the file, or truncates an existing one, for writing with exclusive sharing: while it
    /// is open here, another CreateExclusive of it (from any process) is a SharingViolation and
    /// leaves its content alone. A read-only file (no write permission, also for root) is
    /// AccessDenied, and so is a symbolic link, wherever it leads.
    FileCause CreateExclusive(const std::string& path);

    /// The same for a file that must not be there yet: anything of that name, also a symbolic link
    /// that leads nowhere, is AccessDenied.
    FileCause CreateNew(const std::string& path);

    /// Opens a file that is there, for reading and writing with exclusive sharing; nothing of it
    /// changes. A read-only one, or a symbolic link, is AccessDenied.
    FileCause OpenAlone(const std::string& path);

    /// Opens an existing device, port or pipe for writing. A file is AccessDenied: it is created.
    FileCause OpenForWriting(const std::string& path);

    void Close();
    bool IsOpen() const;
    /// The path as given; FullPath is absolute.
    const std::string& Path() const { return OpenedPath; }
    const std::string& FullPath() const { return OpenedFullPath; }

    /// Reads up to the buffer's size; got is 0 at the end of the file.
    FileCause Read(std::span<std::uint8_t> buffer, std::size_t& got);
    /// False when a read would wait, as of a pipe into which nothing was written yet.
    bool HasInput() const;
    /// Writes all bytes, unbuffered. On failure part of them may stand in the file.
    FileCause Write(ByteSpan bytes);
    /// Makes what was written survive a power cut.
    FileCause Sync();
    /// Cuts the file to this size and goes on writing there.
    FileCause Truncate(std::uint64_t size);
    FileCause Size(std::uint64_t& size) const;
    /// Takes every write permission from the file, or gives its owner one; this very file, whatever
    /// has its name by now.
    FileCause SetReadOnly(bool readOnly) const;
    /// Whether the file still is where it was opened; There when the system cannot tell. May run
    /// beside Write.
    FileStanding Standing() const;
    FileCause SeekTo(std::uint64_t position);
    /// A second handle of the open file for `copy`, for Sync on another thread. The copy holds no
    /// claim of its own: exclusive sharing ends when the original is closed (on Windows: both).
    FileCause Duplicate(CFile& copy) const;

  private:
    std::intptr_t Handle = -1;
    bool Claimed = false; ///< holds the claim of exclusive sharing, where that is a lock of its own
    std::string OpenedPath;
    std::string OpenedFullPath;
};

/// True for an existing directory, and for what has no size and can be read only once: an existing
/// device, pipe or socket, and standard input (see SetPipeStop) unless it comes from a file.
bool IsDirectory(const std::string& path);
bool IsDevice(const std::string& path);
bool FileExists(const std::string& path);
/// The same as CFile::SetReadOnly by name. A symbolic link is AccessDenied.
FileCause SetReadOnly(const std::string& path, bool readOnly);
FileCause IsReadOnly(const std::string& path, bool& readOnly);
FileCause RemoveFile(const std::string& path);
/// Moves a file onto another name of the same disk in one step; what had that name is replaced.
FileCause RenameFile(const std::string& from, const std::string& to);
/// The same for a name that is free; what has it is left alone and AccessDenied.
FileCause RenameToNew(const std::string& from, const std::string& to);
/// Whether an existing file could be written and nobody holds it: SharingViolation when another
/// program does, AccessDenied when it is read-only. Leaves it as it is.
FileCause CheckWritable(const std::string& path);
/// True for a symbolic link, also for one that leads nowhere.
bool IsSymbolicLink(const std::string& path);
/// True when both paths lead to one existing file. Standard input (see SetPipeStop) is the file
/// that it comes from.
bool IsSameFile(const std::string& path, const std::string& other);
/// True when standard output goes into that file.
bool IsStandardOutput(const std::string& path);
/// Makes a folder in an existing one.
FileCause MakeDirectory(const std::string& path);
/// Makes the names in the folder of this file survive a power cut, as after creating or renaming
/// it: a file's own Sync says nothing about its name.
FileCause SyncFolderOf(const std::string& path);
/// Removes a folder that holds nothing; any other stays.
FileCause RemoveEmptyDirectory(const std::string& path);
/// Absolute form of a path; the path itself when the system cannot tell.
std::string FullPathOf(const std::string& path);
/// The system's path separator ('/' or '\\').
char PathSeparator();

} // namespace qor
