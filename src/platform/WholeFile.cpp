// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WholeFile.h"

#include <algorithm>
#include <array>

namespace qor {

namespace {

bool IsSeparator(char c) {
    return c == '/' || c == PathSeparator();
}

FileCause WriteAndSync(CFile& file, std::string_view bytes) {
    FileCause cause = file.Write(AsBytes(bytes));
    if (cause == FileCause::None)
        cause = file.Sync();
    file.Close();
    return cause;
}

} // namespace

FileCause ReadWholeFile(const std::string& path, std::size_t most, std::string& bytes) {
    bytes.clear();
    CFile file;
    FileCause cause = file.OpenForReading(path);
    std::array<std::uint8_t, 16384> buffer{};
    std::size_t got = 1;
    while (cause == FileCause::None && got > 0) {
        cause = file.Read(buffer, got);
        if (cause == FileCause::None && got > most - bytes.size())
            cause = FileCause::InvalidFile;
        if (cause == FileCause::None)
            bytes += AsText(ByteSpan(buffer).first(got));
    }
    if (cause != FileCause::None)
        bytes.clear();
    return cause;
}

FileCause WriteWholeFile(const std::string& path, std::string_view bytes) {
    bool readOnly = false;
    if (IsReadOnly(path, readOnly) == FileCause::None && readOnly)
        return FileCause::AccessDenied;
    const std::string beside = path + ".part";
    CFile file;
    FileCause cause = file.CreateNew(beside);
    // What a crash left behind is in the way; a folder or a foreign user's file stays.
    if (cause == FileCause::AccessDenied && RemoveFile(beside) == FileCause::None)
        cause = file.CreateNew(beside);
    if (cause != FileCause::None)
        return cause;
    cause = WriteAndSync(file, bytes);
    if (cause == FileCause::None)
        cause = RenameFile(beside, path);
    if (cause == FileCause::None)
        return SyncFolderOf(path);
    if (cause != FileCause::None)
        static_cast<void>(RemoveFile(beside));
    return cause;
}

std::uint64_t FileSizeOf(const std::string& path) {
    CFile file;
    std::uint64_t size = 0;
    const bool known = !IsDevice(path) && file.OpenForReading(path) == FileCause::None &&
                       file.Size(size) == FileCause::None;
    return known ? size : 0;
}

FileCause MakeDirectories(const std::string& path) {
    FileCause cause = FileCause::None;
    for (std::size_t end = 1; end <= path.size(); ++end) {
        if (end < path.size() && !IsSeparator(path[end]))
            continue;
        const std::string folder = path.substr(0, end);
        cause = IsDirectory(folder) ? FileCause::None : MakeDirectory(folder);
    }
    return IsDirectory(path) ? FileCause::None : cause;
}

} // namespace qor
