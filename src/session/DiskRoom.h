// SPDX-License-Identifier: GPL-3.0-or-later
//
// How much room a folder's disk has, looked at again and again on a thread of its own, because a
// network drive that has gone keeps whoever asks waiting.
#pragma once

#include "platform/Worker.h"

#include <cstdint>
#include <optional>
#include <string>

namespace qor {

class CDiskRoom {
  public:
    CDiskRoom() { Looked.Set(); }
    /// Waits for a look that is under way.
    ~CDiskRoom();

    /// Which folder is looked at from now on.
    void Watch(const std::string& folder);
    /// Bytes, as of the last look at the folder; empty before the first, or when it says nothing.
    std::optional<std::uint64_t> FreeBytes() const;
    /// Waits for the first look at the folder, as long as its disk takes: for who looks once.
    void AwaitLook() const { Looked.Wait(); }

  private:
    void Run();

    mutable CMutex Guard; ///< a leaf
    std::string Folder GUARDED_BY(Guard);
    std::optional<std::uint64_t> Free GUARDED_BY(Guard);
    CEvent Stopping, Changed;
    CEvent Looked; ///< at the folder, or there is none
    CWorker Worker;
};

} // namespace qor
