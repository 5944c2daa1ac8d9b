// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/DiskRoom.h"

#include "platform/DiskSpace.h"

namespace qor {

namespace {

constexpr int LookMilliseconds = 5000;

} // namespace

CDiskRoom::~CDiskRoom() {
    Stopping.Set();
    Changed.Set();
    Worker.Join();
}

void CDiskRoom::Watch(const std::string& folder) {
    {
        CLock lock(Guard);
        if (folder == Folder)
            return;
        Folder = folder;
        Free.reset();
        Looked.Clear();
    }
    Changed.Set();
    // Without a thread the room stays unknown, which is what is shown.
    if (!Worker.IsRunning() && !Worker.Start(ThreadPriority::Normal, [this] { Run(); }))
        Looked.Set();
}

std::optional<std::uint64_t> CDiskRoom::FreeBytes() const {
    CLock lock(Guard);
    return Free;
}

void CDiskRoom::Run() {
    while (!Stopping.IsSet()) {
        Changed.Clear();
        std::string folder;
        {
            CLock lock(Guard);
            folder = Folder;
        }
        const std::optional<std::uint64_t> free = FreeDiskSpace(folder);
        {
            CLock lock(Guard);
            if (folder == Folder) {
                Free = free;
                Looked.Set();
            }
        }
        Changed.Wait(LookMilliseconds);
    }
}

} // namespace qor
