// SPDX-License-Identifier: GPL-3.0-or-later
//
// The calls of the system that a disk answers. See TroubledDisk.h.
#include "torture/TroubledDisk.h"

#include "base/Lock.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qor::disk {
namespace {

CMutex Guard;
CCondition Changed;
std::int64_t Room GUARDED_BY(Guard) = -1;
bool Stalled GUARDED_BY(Guard) = false;
bool SyncFails GUARDED_BY(Guard) = false;
std::map<std::uint64_t, std::uint64_t> Syncs GUARDED_BY(Guard); ///< by file

bool IsFile(int descriptor, struct stat& status) {
    return descriptor > 2 && ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// How many of the bytes the disk takes now, once it goes on.
std::size_t Takes(std::size_t size) {
    CLock lock(Guard);
    while (!Changed.WaitFor(Guard, 10'000, []() REQUIRES(Guard) { return !Stalled; })) {
    }
    if (Room < 0)
        return size;
    const std::size_t taken = std::min(size, static_cast<std::size_t>(Room));
    Room -= static_cast<std::int64_t>(taken);
    return taken;
}

} // namespace

void SetRoom(std::int64_t bytes) {
    CLock lock(Guard);
    Room = bytes;
}

void SetStalled(bool stalled) {
    CLock lock(Guard);
    Stalled = stalled;
    Changed.NotifyAll();
}

void SetSyncFails(bool fails) {
    CLock lock(Guard);
    SyncFails = fails;
}

std::uint64_t FileNumber(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

bool AwaitSync(std::uint64_t file) {
    CLock lock(Guard);
    const std::uint64_t before = Syncs[file];
    return Changed.WaitFor(Guard, 20'000, [=]() REQUIRES(Guard) { return Syncs[file] > before; });
}

} // namespace qor::disk

using namespace qor::disk;

extern "C" ssize_t write(int descriptor, const void* data, size_t size) {
    struct stat status {};
    size_t takes = size;
    if (IsFile(descriptor, status) && (takes = Takes(size)) == 0 && size > 0) {
        errno = ENOSPC;
        return -1;
    }
    return static_cast<ssize_t>(::syscall(SYS_write, descriptor, data, takes));
}

/// Nothing is synchronised: no power goes here.
extern "C" int fdatasync(int descriptor) {
    struct stat status {};
    if (!IsFile(descriptor, status))
        return 0;
    qor::CLock lock(Guard);
    ++Syncs[status.st_ino];
    Changed.NotifyAll();
    if (!SyncFails)
        return 0;
    errno = EIO;
    return -1;
}
