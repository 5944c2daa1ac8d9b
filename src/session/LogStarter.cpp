// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/LogStarter.h"

#include "session/QorViewDoc.h"

namespace qor {
namespace {

struct PortsNow {
    bool instruments = false; ///< something to log
    bool open = false;
    bool tried = false; ///< one that is not open is tried again
};

PortsNow Look(const CQorViewDoc& doc) {
    PortsNow ports;
    for (const ResourceStatus& resource : doc.Snapshot().resources) {
        ports.instruments = ports.instruments || !resource.instruments.empty();
        ports.open = ports.open || resource.figures.connected;
        ports.tried = ports.tried || resource.reconnects;
    }
    return ports;
}

} // namespace

void CLogStarter::SetExitIfDone(bool on) {
    CRecursiveLock lock(Doc.DocLock);
    Doc.ExitIfDone = on;
}

std::string CLogStarter::LogNow() {
    {
        CRecursiveLock lock(Doc.DocLock);
        Doc.NoDialogs = true;
    }
    if (Doc.RawLog.Status().loggingActive)
        return {};
    if (!Look(Doc).instruments)
        return Abandon("there is no instrument to log");
    Doc.ConnectAll(); // a port that fails was reported
    const PortsNow ports = Look(Doc);
    if (ports.open)
        return Begin();
    Waiting = ports.tried;
    if (Waiting)
        return {};
    return Abandon("no port could be opened, and none is tried again");
}

std::string CLogStarter::Abandon(const char* reason) {
    const std::string text = "Logging has not begun: " + std::string(reason) + '.';
    Doc.ReportMessage(text + "\r\n");
    Doc.RawLog.AbandonRun();
    return text;
}

std::string CLogStarter::Begin() {
    Waiting = false;
    Begun = Doc.RawLog.BeginLogFile();
    if (Begun)
        return {};
    Doc.RawLog.AbandonRun();
    return "Logging has not begun; the session log says why.";
}

void CLogStarter::Tend() {
    if (!Waiting && !Begun)
        return;
    const PortsNow ports = Look(Doc);
    if (Waiting && ports.open)
        static_cast<void>(Begin()); // what was wrong was reported
    if (!Begun)
        return;
    Begun = Doc.RawLog.Status().loggingActive;
    if (Begun && !ports.open && !ports.tried) {
        Begun = false;
        Doc.Ports.Tend(); // the loss that ends the run is told first
        Doc.ReportMessage("No port is connected any more; the run ends.\r\n");
        Doc.RawLog.AbandonRun();
    }
}

} // namespace qor
