// SPDX-License-Identifier: GPL-3.0-or-later
//
// Somebody who sees every frame while this exists: a view that needs more than the latest frame (a
// track, a mean, the last lines). It is called on the thread that acquires, under the document's
// lock, right after the frame's products, for each frame of each instrument: it is quick, and
// makes or ends no watch. Made and ended on any thread; it goes before its document.
#pragma once

#include "session/SessionState.h"

namespace qor {

class CFrameWatch {
  public:
    /// Null: nobody looks.
    CFrameWatch(SessionState& session, FrameHook seen);
    ~CFrameWatch();
    CFrameWatch(const CFrameWatch&) = delete;
    CFrameWatch& operator=(const CFrameWatch&) = delete;

  private:
    SessionState& Session;
    const FrameHook Seen;
};

} // namespace qor
