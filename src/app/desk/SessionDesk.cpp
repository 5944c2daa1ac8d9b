// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/SessionDesk.h"

#include "app/ShownText.h"
#include "app/dialogs/FileDialogs.h"
#include "base/Text.h"
#include "platform/SettingsFolder.h"
#include "platform/WholeFile.h"
#include "session/FileKind.h"
#include "session/RecentSessions.h"
#include "session/ReplaySources.h"
#include "session/SessionFile.h"
#include "session/SessionPath.h"
#include "views/NumberText.h"

#include <QDir>
#include <QMenu>
#include <QPointer>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr int SlowDiskMilliseconds = 6000;
constexpr unsigned KeepEvery = 10; ///< refreshes: five seconds

/// The copy of the session that is open, for the case of a crash.
std::string CopyPath() {
    return SettingsFolder() + "unfinished.qor";
}

/// What the copy was when the program began, after a crash: what can be restored.
std::string LeftCopyPath() {
    return SettingsFolder() + "restore.qor";
}

QString DocumentsFolder(const QString& below) {
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
           QStringLiteral("/QorView/") + below;
}

/// A folder of the program's in the operator's documents, made when it is not there. That it could
/// not be made is said by the first log.
std::string MadeFolder(const QString& name) {
    const QString folder = DocumentsFolder(name);
    QDir().mkpath(folder);
    return folder.toStdString();
}

std::string NameOf(const std::string& path, const std::string& title) {
    return title.empty() ? StemOf(path) : title;
}

} // namespace

CSessionDesk::CSessionDesk(const DeskParts& parts, CReplayDesk& player, QObject* parent)
    : QObject(parent), Parts(parts), Player(player),
      Alone(qor::Shown(SettingsFolder() + "qorview.lock")) {
    CMainWindow& window = Parts.Window;
    connect(&Parts.Engine, &CEngine::Changed, this, [this] {
        Parts.Doc().TakeChange();
        Touched = true;
    });
    connect(&window, &CMainWindow::FilesDropped, this, &CSessionDesk::DropFiles);
    connect(&window.Start(), &CStartPage::OpenAsked, this,
            [this](const QString& path) { AfterAsking([this, path] { Open(path); }); });
    connect(&window.Start(), &CStartPage::RestoreAsked, this, &CSessionDesk::Restore);
    connect(&Player, &CReplayDesk::InstrumentsAsked, this, [this] { emit FilesForSession({}); });
    FindLeftSession();
    FillRecent();
    ReadySwitches();
}

/// Another program that runs beside this one has a session of its own, and has not crashed.
void CSessionDesk::FindLeftSession() {
    Alone.setStaleLockTime(0);
    if (!Alone.tryLock())
        return;
    Left = LeftSessionMark(Parts.Profile);
    ClearSessionMark(Parts.Profile);
    if (Left && RenameFile(CopyPath(), LeftCopyPath()) != FileCause::None)
        Left.reset(); // nothing was kept
}

CSessionDesk::~CSessionDesk() = default;

RunKind CSessionDesk::Run() const {
    return Kind == Shown::Practice ? RunKind::Practice
           : Kind == Shown::Replay ? RunKind::Replay
                                   : RunKind::Live;
}

void CSessionDesk::AfterAsking(std::function<void()> then) {
    CQorViewDoc& doc = Parts.Doc();
    QString question;
    if (doc.RawLog.Status().loggingActive)
        question = tr("A log is open. End it and close the session?");
    else if (Kind == Shown::Live && doc.Session.Changed() && !doc.Snapshot().resources.empty())
        question = tr("The session was changed and not saved. Close it without saving?");
    if (question.isEmpty()) {
        then();
        return;
    }
    Parts.Window.Boxes().Ask(question, [then = std::move(then)](bool yes) {
        if (yes)
            then();
    });
}

/// What is open goes; the operator has been asked.
bool CSessionDesk::PutAway() {
    if (Kind == Shown::Nothing)
        return true;
    CQorViewDoc& doc = Parts.Doc();
    CloseForms(&Parts.Window);
    Parts.Engine.FinishWork();
    // Windows may stand elsewhere; a file that has none was not made here and stays as it is.
    if (Kind == Shown::Live && !doc.Session.Path().empty() && !doc.Session.Changed() &&
        doc.Session.Windows() != JsonValue::Array())
        SaveTo(doc.Session.Path());
    Player.End();
    emit Closed();
    doc.RawLog.EndLogFile(true);
    const std::string fault = doc.Session.CloseSession();
    Parts.SayFault("session", fault);
    if (!fault.empty())
        return false;
    Parts.Engine.EndPractice();
    Kind = Shown::Nothing;
    ClearSessionMark(Parts.Profile);
    static_cast<void>(Parts.Profile.Flush()); // tried again when the program ends
    return true;
}

void CSessionDesk::Begun(Shown kind) {
    Kind = kind;
    KeptBytes.clear();
    Parts.Window.ShowStart(false);
    Parts.Window.ShowReplay(kind == Shown::Replay);
    ReadySwitches();
    emit Opened();
}

void CSessionDesk::NewSession() {
    AfterAsking([this] {
        if (BeginNew())
            emit FirstPortAsked();
    });
}

bool CSessionDesk::BeginNew() {
    if (!PutAway())
        return false;
    CQorViewDoc& doc = Parts.Doc();
    Parts.SayFault("session", doc.Session.NewSession());
    Parts.SayFault("naming", doc.RawLog.SetDirectory(MadeFolder(QStringLiteral("logs"))));
    Begun(Shown::Live);
    return true;
}

void CSessionDesk::AskOpen() {
    AskOpenFiles(Parts.Theme, &Parts.Window, tr("Open a session"),
                 {tr("Sessions (*.qor)"), tr("All files (*)")}, false,
                 [this](const QStringList& paths) {
                     AfterAsking([this, path = paths.value(0)] { Open(path); });
                 });
}

void CSessionDesk::Open(const QString& shown) {
    const std::string path = FullPathOf(shown.toStdString());
    // A file that is faulty as a whole leaves everything as it was.
    if (const SessionReading reading = LoadSession(path); !reading.session) {
        Parts.SayFault(path, reading.refusal);
        DeskParts::TellRefusal(reading.refusal);
        return;
    }
    if (!PutAway())
        return;
    const SessionOpening opening = Parts.Doc().Session.OpenSession(path);
    TellOpening(path, opening);
    if (!opening.Opened()) {
        Parts.Window.ShowStart(true);
        return;
    }
    Remember(path);
    Begun(Shown::Live);
}

void CSessionDesk::Remember(const std::string& path) {
    CQorViewDoc& doc = Parts.Doc();
    RememberSession(Parts.Profile, {path, doc.Session.Title(), doc.Clock.Now().seconds});
    if (Parts.Profile.Flush() != FileCause::None)
        Parts.SayFault("settings", "The settings of the program could not be kept.");
    FillRecent();
}

void CSessionDesk::TellOpening(const std::string& path, const SessionOpening& opening) {
    Parts.SayFault(path, opening.refusal);
    DeskParts::TellRefusal(opening.refusal);
    for (const std::string& warning : opening.warnings)
        Parts.Say(Sign::Warning, warning, qor::Shown(warning));
    Parts.SayAll(Sign::Warning, opening.repaired);
    for (const Refusal& refusal : opening.refused) // the strip has them as events
        DeskParts::TellRefusal(refusal.subject + ": " + refusal.reason);
}

void CSessionDesk::Save() {
    const std::string path = Parts.Doc().Session.Path();
    if (path.empty() || Kind != Shown::Live)
        AskSaveAs();
    else
        SaveTo(path);
}

void CSessionDesk::AskSaveAs() {
    const std::string path = Parts.Doc().Session.Path();
    const QString suggestion =
        path.empty() ? DocumentsFolder(QStringLiteral("session.qor")) : qor::Shown(path);
    AskSaveFile(
        Parts.Theme, &Parts.Window, tr("Save the session"), {tr("Sessions (*.qor)")}, suggestion,
        [this](const QStringList& paths) { SaveTo(FullPathOf(paths.value(0).toStdString())); });
}

void CSessionDesk::SaveTo(const std::string& path) {
    CQorViewDoc& doc = Parts.Doc();
    if (DescribeWindows)
        doc.Session.SetWindows(DescribeWindows());
    const std::string fault = doc.Session.SaveSession(path);
    Parts.SayFault("save", fault);
    if (!fault.empty())
        return;
    Remember(path);
    Parts.Say(Sign::Ok, "save", tr("The session is kept in %1.").arg(qor::Shown(path)));
}

void CSessionDesk::CloseSession() {
    AfterAsking([this] {
        if (PutAway())
            Parts.Window.ShowStart(true);
    });
}

void CSessionDesk::BeginPractice() {
    AfterAsking([this] {
        const std::string path = PracticeSessionPath();
        if (path.empty()) {
            Parts.Say(Sign::Error, "practice",
                      tr("The practice is not installed; install the program again."));
            return;
        }
        if (!PutAway())
            return;
        const std::string fault =
            Parts.Engine.BeginPractice(path, MadeFolder(QStringLiteral("practice")));
        Parts.SayFault("practice", fault);
        if (!fault.empty()) {
            Parts.Engine.EndPractice();
            Parts.Window.ShowStart(true);
            return;
        }
        Begun(Shown::Practice);
        emit ConnectionAsked();
    });
}

void CSessionDesk::SetPracticeFault(Do fault, bool on) {
    CPractice* practice = Parts.Engine.Practice();
    if (!practice)
        return;
    if (fault == Do::DamagedFrames)
        practice->SetDamaged(on);
    else if (fault == Do::LostPort)
        practice->SetLost(on);
    else
        Parts.Doc().RawLog.SetDiskDelay(on ? SlowDiskMilliseconds : 0);
}

/// The switches are those of a practice, and off when it begins.
void CSessionDesk::ReadySwitches() {
    CActions& actions = Parts.Window.Actions();
    Parts.Doc().RawLog.SetDiskDelay(0);
    for (const Do fault : {Do::DamagedFrames, Do::LostPort, Do::SlowDisk}) {
        actions[fault]->setChecked(false);
        actions.SetWhyNot(fault, Kind == Shown::Practice ? QString() : tr("No practice is open."));
    }
}

void CSessionDesk::AskReplay() {
    AskOpenFiles(Parts.Theme, &Parts.Window, tr("Replay a raw log"),
                 {tr("Raw logs (*.raw)"), tr("All files (*)")}, false,
                 [this](const QStringList& paths) { Replay(paths.value(0)); });
}

void CSessionDesk::Replay(const QString& path, const QStringList& definitions) {
    AfterAsking([this, log = FullPathOf(path.toStdString()), definitions] {
        CQorViewDoc& doc = Parts.Doc();
        std::optional<SessionRecord> session;
        std::vector<std::string> files;
        for (const QString& definition : definitions)
            files.push_back(definition.toStdString());
        if (files.empty() && Kind == Shown::Live && !doc.Snapshot().resources.empty())
            session = doc.Session.Record();
        else if (files.empty())
            files = DefinitionsBeside(log);
        BeginReplay(log, std::move(files), std::move(session));
    });
}

void CSessionDesk::BeginReplay(const std::string& path, std::vector<std::string> definitions,
                               std::optional<SessionRecord> session) {
    if (!PutAway())
        return;
    Parts.SayFault("session", Parts.Doc().Session.NewSession());
    const bool loaded =
        Player.Load(path, {.definitions = std::move(definitions), .session = std::move(session)});
    if (!loaded) {
        Parts.Window.ShowStart(true);
        return;
    }
    Begun(Shown::Replay);
    Player.Begin();
}

void CSessionDesk::Begin(const QString& path) {
    const FileKind kind = KindOfFile(path.toStdString());
    if (kind == FileKind::Session || kind == FileKind::Other)
        Open(path);
    else
        DropFiles({path});
}

void CSessionDesk::DropFiles(const QStringList& paths) {
    QStringList instruments;
    QString session, log;
    for (const QString& path : paths)
        switch (KindOfFile(path.toStdString())) {
        case FileKind::Session:
            session = path;
            break;
        case FileKind::RawLog:
            log = path;
            break;
        case FileKind::Package:
        case FileKind::Definition:
            instruments.append(path);
            break;
        case FileKind::Other:
            Parts.SayFault(path.toStdString(), NotInstrumentFile(path.toStdString()));
            break;
        }
    if (!session.isEmpty())
        AfterAsking([this, session] { Open(session); });
    else if (!log.isEmpty())
        Replay(log, instruments);
    else if (!instruments.isEmpty() && (IsOpen() || BeginNew()))
        emit FilesForSession(instruments);
}

void CSessionDesk::FillRecent() {
    std::vector<ShownSession> shown;
    QMenu* menu = Parts.Window.Actions().RecentMenu();
    menu->clear();
    for (const RecentSession& recent : RecentSessions(Parts.Profile)) {
        const bool gone = !FileExists(recent.path);
        shown.push_back({recent.path, NameOf(recent.path, recent.title),
                         WhenText(recent.opened, Parts.Doc().Clock.Now()), gone});
        QAction* action = menu->addAction(qor::Shown(NameOf(recent.path, recent.title)));
        action->setToolTip(qor::Shown(recent.path));
        action->setEnabled(!gone);
        connect(action, &QAction::triggered, this, [this, path = qor::Shown(recent.path)] {
            AfterAsking([this, path] { Open(path); });
        });
    }
    menu->setEnabled(!menu->isEmpty());
    std::string unfinished;
    if (Left)
        unfinished = Left->path.empty() ? tr("A session without a name").toStdString()
                                        : NameOf(Left->path, {});
    Parts.Window.Start().ShowSessions(shown, unfinished);
}

void CSessionDesk::Restore() {
    const SessionReading reading = LoadSession(LeftCopyPath());
    if (!reading.session) {
        Parts.Say(Sign::Error, "restore", qor::Shown(reading.refusal));
        return;
    }
    if (!PutAway())
        return;
    CSessionSetup setup(Parts.Doc());
    const std::string path = Left ? Left->path : std::string();
    const std::string fault = Parts.Doc().Session.OpenSession(*reading.session, path, setup);
    Parts.SayFault("restore", fault);
    if (!fault.empty()) {
        Parts.Window.ShowStart(true);
        return;
    }
    Parts.Doc().Session.NoteUnsaved();
    Left.reset();
    FillRecent();
    Begun(Shown::Live);
}

/// A copy of the session as it is, so that a crash costs no work.
void CSessionDesk::KeepForRestore() {
    CQorViewDoc& doc = Parts.Doc();
    const LogStatus log = doc.RawLog.Status();
    const std::string openLog = log.logOpen ? log.logFilePath : std::string();
    SessionRecord record = doc.Session.Record();
    if (DescribeWindows)
        record.windows = DescribeWindows();
    const SessionWriting writing = WriteSession(record, CopyPath());
    if (writing.bytes == KeptBytes && openLog == MarkedLog)
        return;
    KeptBytes = writing.bytes;
    MarkedLog = openLog;
    SetSessionMark(Parts.Profile, {doc.Session.Path(), openLog, doc.Clock.Now().seconds});
    // That a copy could not be kept is said once; the session itself goes on.
    std::string fault = SaveSession(record, CopyPath());
    if (fault.empty() && Parts.Profile.Flush() != FileCause::None)
        fault = "The settings of the program could not be kept.";
    Parts.SayFault("kept", fault);
}

void CSessionDesk::Refresh() {
    const bool due = ++Refreshes % KeepEvery == 0; // windows are moved without a word
    if (Kind == Shown::Live && Alone.isLocked() && (std::exchange(Touched, false) || due))
        KeepForRestore();
    if (Kind == Shown::Replay)
        Player.Refresh();
}

void CSessionDesk::End() {
    PutAway();
}

} // namespace qor
