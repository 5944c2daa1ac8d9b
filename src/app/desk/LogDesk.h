// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desk's part for logging and casts: begins and ends logs, the question before a run, tare,
// next cast, and the banner.
#pragma once

#include "app/desk/DeskParts.h"
#include "views/LogBanner.h"

#include <QPointer>

namespace qor {

class CLogDesk : public QObject {
    Q_OBJECT

  public:
    CLogDesk(const DeskParts& parts, QObject* parent);

    /// While one is beginning its question comes to the front.
    void StartLog();
    void StopLog();
    void OpenFolder();
    void ShowStatus();
    void Tare();
    void ClearTare();
    void BeginCast();
    void NextCast();
    void OpenOptions();
    void OpenNaming();
    void OpenStation();
    void OpenComment();

    /// The session goes, and with it the next steps that were offered for it.
    void EndSession();
    /// Banner and what of the actions is impossible now.
    void Refresh(RunKind run);

  private:
    void AskBefore(quint64 question, const LogQuestion& shown);
    void SayRemaining(const LogPage& page);

    const DeskParts Parts;
    CLogBanner Facts;
    LogPage Page;
    QPointer<CForm> Question; ///< the form with the question before a run
    bool Beginning = false;
};

} // namespace qor
