// SPDX-License-Identifier: GPL-3.0-or-later
//
// Looks after the session's ports: says once that a port was lost and, where that is wanted, opens
// it again with growing pauses until the run ends; says once that it is back, and what was missed.
// Tended by the loop's threads, without the document's lock.
#pragma once

#include "base/MessageSink.h"
#include "session/SessionState.h"

#include <vector>

namespace qor {

class CPortKeeper {
  public:
    CPortKeeper(SessionState& session, CMessageSink& messages)
        : Session(session), Messages(messages) {}

    /// Looks at every port and tries those whose time has come. May wait for a port to open.
    void Tend();

  private:
    /// What an instrument's counter was to be when its port was lost.
    struct Expected {
        InstrumentId instrument = InstrumentId::None;
        std::int64_t counter = 0;
        std::uint64_t framesBefore = 0;
    };
    struct Port {
        ResourceId id = ResourceId::None;
        bool lost = false;
        bool counting = false; ///< back, and what was missed is not known yet
        std::int64_t since = 0;
        std::int64_t backAt = 0;
        std::int64_t nextTry = 0;
        std::int64_t pause = 0;
        std::vector<Expected> expected;
    };
    struct Look;

    Port& PortOf(ResourceId id) REQUIRES(Session.PortsLock);
    void NoteLoss(Port& port, const Look& look);
    void Try(Port& port, const Look& look);
    void NoteReturn(Port& port);
    bool HasCounted(const Port& port, const Look& look) const;
    void SayBack(Port& port, const Look& look);

    SessionState& Session;
    CMessageSink& Messages;
    std::vector<Port> Ports GUARDED_BY(Session.PortsLock);
};

} // namespace qor
