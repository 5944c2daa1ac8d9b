// SPDX-License-Identifier: GPL-3.0-or-later
//
// The log that is replayed, and the bar that drives it. The session that it stands in is the
// session desk's. User-interface thread.
#pragma once

#include "app/desk/DeskParts.h"
#include "session/SessionSetup.h"

#include <QObject>

#include <memory>
#include <string>

namespace qor {

class CReplayDesk : public QObject {
    Q_OBJECT

  public:
    CReplayDesk(const DeskParts& parts, QObject* parent);
    ~CReplayDesk() override;

    /// Puts a log and its instruments into the session, which is empty. False, and said, when it
    /// cannot be played.
    bool Load(const std::string& path, const InstrumentSelection& selection);
    /// Plays what was loaded, at once and at the speed of the recording.
    void Begin();
    /// Before the session goes.
    void End();

    void PlayOrPause();
    /// Forward, or with fewer than no seconds back.
    void Skip(double seconds);
    /// The bar as it is now.
    void Refresh();

  signals:
    /// No instrument of the log is known: the operator wants to name some.
    void InstrumentsAsked();

  private:
    struct Outlining;

    ResourceId Played() const;
    void SeekTo(const ResourceStatus& file, double place);

    const DeskParts Parts;
    std::string Path;
    std::unique_ptr<Outlining> Outline; ///< of the log, for casts and times
};

} // namespace qor
