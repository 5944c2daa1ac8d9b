// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desk's part for sessions: new, open, save, close, practice, replay, what was open lately and
// what ended unexpectedly. Nothing that was changed is lost without a question.
#pragma once

#include "app/desk/ReplayDesk.h"
#include "session/RecentSessions.h"

#include <QLockFile>

#include <functional>
#include <memory>

namespace qor {

class CSessionDesk : public QObject {
    Q_OBJECT

  public:
    CSessionDesk(const DeskParts& parts, CReplayDesk& player, QObject* parent);
    ~CSessionDesk() override;

    void NewSession();
    void AskOpen();
    void Open(const QString& path);
    void Save();
    void AskSaveAs();
    void CloseSession();
    void BeginPractice();
    /// One of the instructor's switches.
    void SetPracticeFault(Do fault, bool on);
    void AskReplay();
    /// Plays a log with the instruments of the session that is open, or of definitions that are
    /// named with it or lie beside it.
    void Replay(const QString& path, const QStringList& definitions = {});
    void DropFiles(const QStringList& paths);
    /// The file of the command line: a session is opened, any other kind is taken as if dropped.
    void Begin(const QString& path);
    /// The session that ended unexpectedly.
    void Restore();

    bool IsOpen() const { return Kind != Shown::Nothing; }
    RunKind Run() const;
    /// Asks about what was changed, and then does it. At once when there is nothing to ask.
    void AfterAsking(std::function<void()> then);
    /// Puts everything away before the program ends.
    void End();

    /// Start page and replay bar; twice a second. Notes what a later start must know.
    void Refresh();

    /// How the windows stand, for the session's file.
    std::function<JsonValue()> DescribeWindows;

  signals:
    /// A session was opened, or none is any more.
    void Opened();
    void Closed();
    void FilesForSession(QStringList paths);
    void FirstPortAsked();
    /// The ports of the session are to be connected at once.
    void ConnectionAsked();

  private:
    enum class Shown { Nothing, Live, Practice, Replay };

    bool PutAway();
    bool BeginNew();
    void Remember(const std::string& path);
    void Begun(Shown kind);
    void TellOpening(const std::string& path, const SessionOpening& opening);
    void SaveTo(const std::string& path);
    void BeginReplay(const std::string& path, std::vector<std::string> definitions,
                     std::optional<SessionRecord> session);
    void ReadySwitches();
    void FindLeftSession();
    void FillRecent();
    void KeepForRestore();

    const DeskParts Parts;
    CReplayDesk& Player;
    QLockFile Alone;                 ///< held by the first of several programs with these settings
    std::optional<SessionMark> Left; ///< a session that ended unexpectedly
    Shown Kind = Shown::Nothing;
    unsigned Refreshes = 0;
    bool Touched = false;  ///< the session changed since it was kept
    std::string KeptBytes; ///< of the copy for the next start
    std::string MarkedLog;
};

} // namespace qor
