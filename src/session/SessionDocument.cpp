// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SessionDocument.h"

#include "base/Text.h"
#include "session/SessionDescription.h"
#include "session/SessionFile.h"
#include "session/SessionOpener.h"

namespace qor {

/// Empty when no log is open, or it has been ended with consent.
std::string CSessionDocument::EndLog() {
    const LogStatus log = Doc.RawLog.Status();
    if (!log.loggingActive)
        return {};
    const std::string refusal =
        "The log file \"" + log.logFilePath + "\" is open; end it before the session.";
    bool mayAsk;
    {
        CRecursiveLock lock(Doc.DocLock);
        mayAsk = !Doc.NoDialogs;
    }
    if (!mayAsk || !Doc.User.AskYesNo("The log file \"" + log.logFilePath +
                                      "\"\r\nis open. Do you want to end it and the session?"))
        return refusal;
    Doc.RawLog.EndLogFile(true);
    return Doc.RawLog.Status().loggingActive ? refusal : std::string();
}

/// A worker that does not end keeps its resource, and the session stays as far as it is left.
std::string CSessionDocument::Clear() {
    Doc.DisconnectAll();
    {
        CRecursiveLock lock(Doc.DocLock);
        Doc.CalibrationMode = false;
        Doc.PackageTable.clear();
        Doc.RebuildOwners();
    }
    for (const ResourceStatus& resource : Doc.Snapshot().resources)
        if (Doc.RemoveResource(resource.id) != CommResult::Success)
            return resource.name + ": it could not be removed; the session log says why.";
    Kept = {};
    FilePath.clear();
    CRecursiveLock lock(Doc.DocLock);
    Doc.Station = {};
    Doc.PressureTare.reset();
    Doc.Velocity = {};
    LogOptions options;
    options.loggingSounds = Doc.Options.loggingSounds;
    options.overwriteExisting = Doc.Options.overwriteExisting;
    static_cast<void>(Doc.RawLog.SetLogOptions(options)); // these are what a session begins with
    static_cast<void>(Doc.RawLog.SetNaming({}));
    return {};
}

std::string CSessionDocument::NewSession() {
    if (std::string fault = CloseSession(); !fault.empty())
        return fault;
    Doc.LoadSettings();
    Kept.log.sessionLog = Doc.SessionLog.SessionLogEnabled();
    Kept.sessionLogDirectory = Doc.SessionLog.SessionLogDirectory();
    Doc.BeginSession();
    NoteSaved({});
    return {};
}

std::string CSessionDocument::CloseSession() {
    std::string fault = EndLog();
    if (fault.empty())
        fault = Clear();
    if (fault.empty())
        NoteSaved({});
    return fault;
}

SessionOpening CSessionDocument::OpenSession(const std::string& path) {
    SessionOpening opening;
    const SessionReading reading = LoadSession(path);
    opening.warnings = reading.warnings;
    opening.refusal = reading.refusal;
    if (!reading.session)
        return opening;
    CSessionSetup setup(Doc);
    opening.refusal = OpenSession(*reading.session, path, setup);
    opening.refused = setup.Refusals();
    opening.repaired = setup.Warnings();
    opening.repaired.insert(opening.repaired.end(), setup.Silent().begin(), setup.Silent().end());
    return opening;
}

std::string CSessionDocument::OpenSession(const SessionRecord& session, const std::string& path,
                                          CSessionSetup& setup) {
    std::string fault = SessionFault(session);
    if (fault.empty())
        fault = EndLog();
    if (fault.empty())
        fault = Clear();
    if (!fault.empty())
        return path.empty() ? fault : path + ": " + fault;
    CSessionOpener opener(Doc, setup, Kept);
    opener.ApplySettings(session);
    Doc.BeginSession(path);
    opener.OpenAll(session);
    ReportRefusals(setup);
    NoteSaved(path);
    return {};
}

void CSessionDocument::ReportRefusals(const CSessionSetup& setup) {
    for (const Refusal& refusal : setup.Refusals())
        Doc.Raise({EventKind::NotOpened, refusal.subject,
                   refusal.subject + ": " + refusal.reason + "\r\n"});
}

std::string CSessionDocument::SaveSession(const std::string& path) {
    std::string fault = qor::SaveSession(Record(), path);
    if (fault.empty())
        NoteSaved(path);
    return fault;
}

SessionRecord CSessionDocument::Record() const {
    return DescribeSession(Doc, Kept, LoadInstrumentDefaults(Doc.Instruments.DefaultsPath));
}

void CSessionDocument::NoteSaved(const std::string& path) {
    FilePath = path;
    SavedBytes = WriteSession(Record(), FilePath).bytes;
    Doc.Manifests.NoteSession(path);
    Doc.NoteChange();
}

bool CSessionDocument::Changed() const {
    const SessionWriting now = WriteSession(Record(), FilePath);
    return !now.refusal.empty() || now.bytes != SavedBytes;
}

std::string CSessionDocument::SetTitle(const std::string& title) {
    SessionRecord trial;
    trial.title = title;
    const SessionWriting written = WriteSession(trial, "The session");
    if (written.refusal.empty())
        Kept.title = title;
    Doc.NoteChange();
    return written.refusal;
}

void CSessionDocument::SetWindows(JsonValue windows) {
    Kept.windows = std::move(windows);
    Doc.NoteChange();
}

} // namespace qor
