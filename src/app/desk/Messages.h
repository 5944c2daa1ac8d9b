// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the engine says and asks, brought before the operator: events into the message strip with
// the next step as a button, prescribed texts and questions into boxes, sounds.
#pragma once

#include "app/desk/DeskParts.h"

#include <QElapsedTimer>

namespace qor {

class CMessages : public QObject {
    Q_OBJECT

  public:
    CMessages(const DeskParts& parts, QObject* parent);

    /// Alarms sound, but not while they were silenced.
    void SoundAlarm();
    void SilenceAlarms();

  signals:
    /// The operator wants another folder or name for the logs.
    void NamingAsked();

  private:
    void Show(const Event& event);
    std::vector<MessageButton> ButtonsFor(const Event& event);
    void TryAgain(const std::string& port);

    const DeskParts Parts;
    QElapsedTimer Silenced;
};

} // namespace qor
