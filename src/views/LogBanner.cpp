// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/LogBanner.h"

#include "base/Text.h"
#include "session/FileKind.h"
#include "session/LogName.h"
#include "session/PressureTare.h"
#include "views/NumberText.h"

#include <algorithm>

namespace qor {

void CLogBanner::Note(const Event& event) {
    if (event.kind == EventKind::LogBegun)
        Cause.clear();
    if (event.kind != EventKind::LogFailed && event.kind != EventKind::LogNotBegun)
        return;
    Cause = OneLine(event.text);
    FailureSeen = false;
}

LogPage CLogBanner::Page(const CQorViewDoc& doc, RunKind run,
                         std::optional<std::uint64_t> freeBytes) {
    const SessionSnapshot snapshot = doc.Snapshot();
    LogFacts facts;
    facts.log = snapshot.log;
    facts.log.runFailed = facts.log.runFailed && !FailureSeen;
    facts.nextName = NextLogName(doc);
    facts.freeBytes = freeBytes;
    facts.bytesPerSecond = LogBytesPerSecond(doc);
    facts.run = run;
    facts.flowing = Flow.Since(snapshot, doc.Clock.MonotonicMilliseconds());
    facts.cause = Cause;
    if (run == RunKind::Replay)
        for (const ResourceStatus& resource : snapshot.resources)
            if (resource.isFile)
                facts.speed = MakeReplayPage({.speed = resource.playSpeed}).speed;
    return MakeLogPage(facts);
}

std::string LogFolder(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const LogStatus log = doc.RawLog.Status();
    const std::string folder =
        log.logOpen ? FolderPartOf(log.logFilePath) : doc.Naming.logDirectory;
    return folder.empty() ? "." : folder;
}

std::string LogStatusText(const CQorViewDoc& doc) {
    const LogStatus log = doc.RawLog.Status();
    if (!log.logOpen)
        return "No log is open. The next one is " + NextLogName(doc) + " in " + LogFolder(doc) +
               ".";
    std::string text = log.logFilePath + ": " + CountText(log.framesLogged) + " frames, " +
                       CountText(log.fileSize) + " bytes in the file";
    if (log.waitingBytes > 0)
        text += ", " + CountText(log.waitingBytes) + " bytes wait for the disk";
    if (log.framesUnstored > 0)
        text += ", " + CountText(log.framesUnstored) + " frames could not be kept";
    return text + ".";
}

std::string TareText(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const CQorViewIns* profiler = doc.RoleInstrument(InstrumentRole::Profiler);
    if (!doc.PressureTare || !profiler)
        return "There is no tare.";
    return "Tare " + FixedNumber(TareInDbar(doc, *doc.PressureTare), 2) + " dbar taken from " +
           profiler->ShownName() + ".";
}

std::string NextLogName(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    return doc.Naming.logNameReady ? doc.Naming.logFileDisplayName
                                   : LogDisplayName(doc.Naming, doc.Station);
}

} // namespace qor
