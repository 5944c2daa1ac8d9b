// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/FrameWatch.h"

#include <utility>

namespace qor {

CFrameWatch::CFrameWatch(SessionState& session, FrameHook seen)
    : Session(session), Seen(std::move(seen)) {
    CRecursiveLock lock(Session.DocLock);
    if (Seen)
        Session.Watches.push_back(&Seen);
}

CFrameWatch::~CFrameWatch() {
    CRecursiveLock lock(Session.DocLock);
    std::erase(Session.Watches, &Seen);
}

} // namespace qor
