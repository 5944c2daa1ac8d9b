// SPDX-License-Identifier: GPL-3.0-or-later
//
// Losing and finding ports. See PortKeeper.h.
#include "session/PortKeeper.h"

#include "base/Text.h"

#include <algorithm>

namespace qor {
namespace {

constexpr std::int64_t FirstPause = 1000, LongestPause = 30'000; // milliseconds
/// So long after its return a port's instruments have had time for a frame each.
constexpr std::int64_t CountingTime = 3000;

/// Frames that a counter says are missing; nothing when it cannot say.
std::optional<std::int64_t> MissingBy(const CQorViewIns& instrument, std::int64_t expected,
                                      std::uint64_t framesBefore) {
    const auto since = static_cast<std::int64_t>(instrument.FramesReceived - framesBefore);
    const CSensor* counter = instrument.Definition().Sensor(instrument.Checks.CounterIndex);
    if (!counter || since == 0)
        return std::nullopt;
    std::int64_t missing = instrument.Checks.ExpectedCounter - since - expected;
    const bool binary = counter->Data == DataType::BU || counter->Data == DataType::BS;
    if (missing < 0 && binary && counter->FieldLength > 0 && counter->FieldLength < 4)
        missing += std::int64_t{1} << (8 * counter->FieldLength);
    return missing < 0 ? std::nullopt : std::optional(missing);
}

} // namespace

/// A port at this moment.
struct CPortKeeper::Look {
    std::string name;
    CTelemComm* comm = nullptr;
    std::uint32_t abortCode = 0;
    bool connected = false;
    bool tries = false; ///< is to be tried again
    std::vector<Expected> expected;
    bool allHeard = true; ///< every instrument has sent since it is back
    std::string missing;
};

CPortKeeper::Port& CPortKeeper::PortOf(ResourceId id) {
    const auto found = std::ranges::find(Ports, id, &Port::id);
    return found != Ports.end() ? *found : Ports.emplace_back(Port{.id = id, .expected = {}});
}

void CPortKeeper::Tend() {
    CLock ports(Session.PortsLock); // a port that is tried is not removed meanwhile
    std::vector<std::pair<ResourceId, Look>> looks;
    {
        CRecursiveLock lock(Session.DocLock);
        for (const auto& resource : Session.Resources) {
            if (resource->IsFile())
                continue;
            const ResourceFigures figures = resource->Comm.Figures();
            Look look{.name = resource->Name(),
                      .comm = &resource->Comm,
                      .abortCode = figures.abortCode,
                      .connected = figures.connected,
                      .tries = resource->Reconnect && resource->Wanted,
                      .expected = {},
                      .missing = {}};
            const Port& port = PortOf(resource->Id);
            for (const auto& instrument : resource->Instruments) {
                look.expected.push_back({instrument->Id, instrument->Checks.ExpectedCounter,
                                         instrument->FramesReceived});
                const auto before =
                    std::ranges::find(port.expected, instrument->Id, &Expected::instrument);
                if (!port.counting || before == port.expected.end())
                    continue;
                look.allHeard = look.allHeard && instrument->FramesReceived > before->framesBefore;
                if (const auto missing =
                        MissingBy(*instrument, before->counter, before->framesBefore))
                    look.missing += Format(" %lld of %s", static_cast<long long>(*missing),
                                           instrument->ShownName().c_str());
            }
            looks.emplace_back(resource->Id, std::move(look));
        }
    }
    for (auto& [id, look] : looks) {
        Port& port = PortOf(id);
        if (look.connected && look.abortCode == 0 && port.lost) { // connected by hand
            NoteReturn(port);
            continue;
        }
        if (look.abortCode != 0 && !port.lost)
            NoteLoss(port, look);
        if (!look.connected && look.tries)
            Try(port, look);
        else if (HasCounted(port, look)) // not in the round in which it came back
            SayBack(port, look);
    }
}

bool CPortKeeper::HasCounted(const Port& port, const Look& look) const {
    return port.counting &&
           (look.allHeard || Session.Clock.MonotonicMilliseconds() - port.backAt >= CountingTime);
}

void CPortKeeper::NoteLoss(Port& port, const Look& look) {
    if (port.counting) // what was missing before is not this gap's
        SayBack(port, look);
    port.lost = true;
    port.since = Session.Clock.MonotonicMilliseconds();
    port.pause = FirstPause;
    port.nextTry = port.since + port.pause;
    port.expected = look.expected;
    Messages.Raise(
        {EventKind::PortLost, look.name,
         Format("%s was lost (0x%08x).\r\n\t%s\r\n", look.name.c_str(), look.abortCode,
                look.tries ? "It is tried again until it is back." : "It is not tried again.")});
}

void CPortKeeper::Try(Port& port, const Look& look) {
    const std::int64_t now = Session.Clock.MonotonicMilliseconds();
    if (now < port.nextTry)
        return;
    {
        CRecursiveLock lock(Session.DocLock);
        if (CQorViewRes* resource = Session.Find(port.id))
            resource->BeginConnection(); // before its first frame
    }
    std::uint32_t code = 0;
    // A code that cannot be reset shows as a refusal of the connection.
    [[maybe_unused]] CommResult reset = look.comm->ResetAbortCode(code);
    if (look.comm->Connect(true) != CommResult::Success) {
        port.pause = std::clamp(port.pause * 2, FirstPause, LongestPause);
        port.nextTry = Session.Clock.MonotonicMilliseconds() + port.pause;
        return;
    }
    NoteReturn(port);
}

void CPortKeeper::NoteReturn(Port& port) {
    port.counting = port.lost;
    port.lost = false;
    port.backAt = Session.Clock.MonotonicMilliseconds();
}

void CPortKeeper::SayBack(Port& port, const Look& look) {
    port.counting = false;
    std::string text = Format("%s is back after %lld s.", look.name.c_str(),
                              static_cast<long long>((port.backAt - port.since + 500) / 1000));
    if (!look.missing.empty())
        text += " Frames missing by their counters:" + look.missing + ".";
    Messages.Raise({EventKind::PortBack, look.name, text + "\r\n"});
}

} // namespace qor
