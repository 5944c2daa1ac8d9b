// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ports on Linux: the device's mode says who may open it, the open files of the processes that this
// user may look at say who holds it. Nothing is opened: that would raise the port's lines.
#include "platform/PortAccess.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <memory>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace qor {

namespace {

constexpr const char* StableNames = "/dev/serial/by-id";
constexpr const char* Terminals = "/sys/class/tty";
constexpr std::size_t LookUpBytes = 64 * 1024; ///< of a group with many members

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// Calls for each entry of a folder that has no "." in front; of one that cannot be read for none.
template <class Use> void ForEachIn(const char* path, Use use) {
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path));
    if (!folder)
        return;
    while (const dirent* entry = ::readdir(folder.get()))
        if (entry->d_name[0] != '.')
            use(entry->d_name);
}

std::int64_t NumberOf(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

std::string CanonicalPath(const std::string& path) {
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) ? resolved : std::string();
}

/// Of a small file of the system; empty when it cannot be read.
std::string FirstLine(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return {};
    char bytes[64];
    const ssize_t got = ::read(file, bytes, sizeof bytes);
    ::close(file);
    std::string line(bytes, got > 0 ? static_cast<std::size_t>(got) : 0);
    line.resize(std::min(line.find('\n'), line.size()));
    return line;
}

/// The name of the program, as the system shortens it; other programs choose it, so that only what
/// can be shown is taken.
std::string ProgramName(std::int64_t pid) {
    std::string name = FirstLine("/proc/" + std::to_string(pid) + "/comm");
    std::ranges::replace_if(
        name, [](char c) { return c < 0x20 || c > 0x7E; }, '?');
    return name;
}

/// Whether the system counts a device among something else than its terminals.
bool IsOtherDevice(dev_t device) {
    const std::string kind = CanonicalPath("/sys/dev/char/" + std::to_string(major(device)) + ':' +
                                           std::to_string(minor(device)) + "/subsystem");
    return !kind.empty() && !kind.ends_with("/tty");
}

/// A port that is looked for among the open files.
struct Sought {
    dev_t device;
    PortAccess* access;
};

void LookAtProcess(std::int64_t pid, std::span<const Sought> ports) {
    const std::string files = "/proc/" + std::to_string(pid) + "/fd";
    ForEachIn(files.c_str(), [&](const char* entry) {
        struct stat status {};
        if (::stat((files + '/' + entry).c_str(), &status) < 0 || !S_ISCHR(status.st_mode))
            return;
        for (const Sought& port : ports) {
            if (port.device != status.st_rdev || port.access->state == PortState::InUse)
                continue;
            port.access->state = PortState::InUse;
            port.access->pid = pid;
            port.access->holder = ProgramName(pid);
        }
    });
}

void LookForHolders(std::span<const Sought> ports) {
    if (ports.empty())
        return;
    const std::int64_t own = ::getpid();
    ForEachIn("/proc", [&](const char* entry) {
        const std::int64_t pid = NumberOf(entry);
        if (pid > 0 && pid != own)
            LookAtProcess(pid, ports);
    });
}

bool IsMember(const group& found) {
    std::vector<char> bytes(LookUpBytes);
    passwd entry{};
    passwd* user = nullptr;
    if (::getpwuid_r(::getuid(), &entry, bytes.data(), bytes.size(), &user) != 0 || !user)
        return false;
    for (char** member = found.gr_mem; member && *member; ++member)
        if (std::string_view(*member) == user->pw_name)
            return true;
    return false;
}

/// Says whose port it is. A group helps only where the mode gives it both directions.
void ExplainRefusal(const struct stat& status, PortAccess& access) {
    access.state = PortState::NotAllowed;
    std::vector<char> bytes(LookUpBytes);
    group entry{};
    group* found = nullptr;
    constexpr mode_t Both = S_IRGRP | S_IWGRP;
    if ((status.st_mode & Both) != Both || status.st_gid == 0 ||
        ::getgrgid_r(status.st_gid, &entry, bytes.data(), bytes.size(), &found) != 0 || !found)
        return;
    access.group = found->gr_name;
    access.groupAtNextLogin = IsMember(*found);
}

} // namespace

std::vector<PortAccess> LookAtPorts(std::span<const std::string> names) {
    std::vector<PortAccess> all(names.size());
    std::vector<Sought> sought;
    for (std::size_t i = 0; i < names.size(); ++i) {
        struct stat status {};
        const bool whole = names[i].find('\0') == std::string::npos;
        if (!whole || ::stat(names[i].c_str(), &status) < 0)
            all[i].state = whole && errno == EACCES ? PortState::NotAllowed : PortState::Missing;
        else if (!S_ISCHR(status.st_mode) || IsOtherDevice(status.st_rdev))
            all[i].state = PortState::NoPort;
        else if (::access(names[i].c_str(), R_OK | W_OK) < 0)
            ExplainRefusal(status, all[i]);
        else
            sought.push_back({status.st_rdev, &all[i]});
    }
    LookForHolders(sought);
    return all;
}

/// A terminal that has a device behind it; one of the computer itself may have no hardware.
std::vector<std::string> PortNames() {
    std::vector<std::string> names;
    ForEachIn(Terminals, [&](const char* entry) {
        const std::string terminal = std::string(Terminals) + '/' + entry;
        std::string name = std::string("/dev/") + entry;
        struct stat status {};
        const bool there = ::access((terminal + "/device").c_str(), F_OK) == 0 &&
                           ::stat(name.c_str(), &status) == 0 && S_ISCHR(status.st_mode);
        if (there && FirstLine(terminal + "/type") != "0")
            names.push_back(std::move(name));
    });
    std::ranges::sort(names);
    return names;
}

std::string StablePortName(const std::string& name) {
    const std::string device = CanonicalPath(name);
    std::string best;
    if (!device.empty())
        ForEachIn(StableNames, [&](const char* entry) {
            std::string link = std::string(StableNames) + '/' + entry;
            if (CanonicalPath(link) == device && (best.empty() || link < best))
                best = std::move(link);
        });
    return best.empty() ? name : best;
}

} // namespace qor
