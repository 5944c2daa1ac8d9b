// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SessionPath.h"

#include "base/Text.h"
#include "platform/File.h"

#include <algorithm>
#include <filesystem>

namespace qor {

namespace {

bool IsSeparator(char c) {
    return c == '/' || c == PathSeparator();
}

bool HasDrives() {
    return PathSeparator() == '\\';
}

bool IsAbsolute(const std::string& text) {
    return !text.empty() &&
           (IsSeparator(text[0]) || (HasDrives() && text.size() > 1 && text[1] == ':'));
}

/// The root keeps its separator: "/", "C:\".
std::string WithoutEndSeparator(std::string path) {
    while (path.size() > 1 && IsSeparator(path.back()) && path[path.size() - 2] != ':')
        path.pop_back();
    return path;
}

bool Climbs(const std::string& path) {
    return path.find("/..") != std::string::npos;
}

/// Absolute, with every ".." worked off. One that stays behind a symbolic link, where it does not
/// lead back to where the text says, is left to the system.
std::string AbsolutePath(const std::string& path) {
    std::string full = FullPathOf(path);
    if (!HasDrives() && Climbs(full) && !FileExists(full))
        full = std::filesystem::path(full).lexically_normal().string();
    return WithoutEndSeparator(std::move(full));
}

bool LiesIn(const std::string& folder, const std::string& path) {
    if (path.size() < folder.size() || Climbs(path))
        return false;
    return HasDrives() ? EqualsNoCase(path.substr(0, folder.size()), folder)
                       : path.starts_with(folder);
}

/// The name behind two separators at the beginning; empty where there are none. Only the system
/// that knows drives leaves two of them in an absolute path.
std::string ServerOf(const std::string& path) {
    constexpr std::string_view Separators = "\\/";
    if (path.size() < 2 || path.find_first_not_of(Separators) < 2)
        return {};
    return path.substr(0, path.find_first_of(Separators, 2));
}

} // namespace

std::string SessionFolder(const std::string& sessionPath) {
    std::string full = FullPathOf(sessionPath);
    while (!full.empty() && !IsSeparator(full.back()))
        full.pop_back();
    return full;
}

std::string ResolvedPath(const std::string& folder, const std::string& text) {
    return AbsolutePath(IsAbsolute(text) ? text : folder + text);
}

bool LeadsToServer(const std::string& folder, const std::string& path) {
    const std::string server = ServerOf(path);
    return !server.empty() && !EqualsNoCase(server, ServerOf(folder));
}

std::string StoredPath(const std::string& folder, const std::string& path) {
    std::string stored = AbsolutePath(path);
    if (LiesIn(folder, stored + PathSeparator()))
        stored = stored.size() < folder.size() ? "." : stored.substr(folder.size());
    if (HasDrives())
        std::ranges::replace(stored, '\\', '/');
    return stored.empty() ? "." : stored;
}

std::string WithSeparator(std::string folder) {
    if (!folder.empty() && !IsSeparator(folder.back()))
        folder += PathSeparator();
    return folder;
}

} // namespace qor
