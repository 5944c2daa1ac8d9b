// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/Messages.h"

#include "app/ShownText.h"
#include "base/Text.h"
#include "session/EventAdvice.h"

#include <QApplication>

namespace qor {

namespace {

constexpr qint64 SilenceMilliseconds = 120'000;

std::string TopicOf(const Event& event) {
    const bool port = event.kind == EventKind::PortLost || event.kind == EventKind::PortBack;
    // That a port is back takes the place of its loss.
    const int kind = port ? static_cast<int>(EventKind::PortLost) : static_cast<int>(event.kind);
    return static_cast<char>('A' + kind) + event.subject;
}

QString TextOf(const Event& event) {
    const EventAdvice* advice = AdviceOf(event.kind);
    return Shown(advice ? EventLine(event, *advice, advice->advice) : OneLine(event.text));
}

} // namespace

CMessages::CMessages(const DeskParts& parts, QObject* parent) : QObject(parent), Parts(parts) {
    connect(&Parts.Engine, &CEngine::Happened, this, [this](const std::vector<Event>& events) {
        for (const Event& event : events)
            Show(event);
    });
    CBoxes& boxes = Parts.Window.Boxes();
    connect(&boxes, &CBoxes::Appears, this,
            [this](const QString& text) { Parts.Say(Sign::Warning, "box", text); });
    COperator& asker = Parts.Engine.Operator();
    connect(&asker, &COperator::Told, this,
            [&boxes](const QString& text) { boxes.Tell(text.trimmed()); });
    connect(&asker, &COperator::Asked, this, [&](quint64 question, const QString& text) {
        boxes.Ask(text.trimmed(), [&asker, question](bool yes) { asker.Answer(question, yes); });
    });
    connect(&asker, &COperator::TakenBack, &boxes, &CBoxes::DropQuestions);
    connect(&asker, &COperator::Beeped, this, [] { QApplication::beep(); });
}

void CMessages::Show(const Event& event) {
    switch (event.kind) {
    case EventKind::Note:
    case EventKind::LogEnded:
        return;
    case EventKind::LogBegun:
        Parts.Window.Strip().Close(TopicOf({EventKind::LogFailed, event.subject, {}}));
        Parts.Window.Strip().Close("nagging");
        return;
    case EventKind::LogFailed:
    case EventKind::LogGoesOn:
    case EventKind::LogNotBegun:
    case EventKind::LogRecovered:
    case EventKind::SpaceLow:
    case EventKind::SpaceShort:
    case EventKind::ClockEarly:
    case EventKind::NameTaken:
    case EventKind::SyncFailed:
    case EventKind::DiskStalled:
    case EventKind::FramesUnstored:
    case EventKind::PortLost:
    case EventKind::PortBack:
    case EventKind::FramesLost:
    case EventKind::BytesLost:
    case EventKind::NoFrames:
    case EventKind::BytesNotKept:
    case EventKind::CaptureFailed:
    case EventKind::ClockStepped:
    case EventKind::PositionKept:
    case EventKind::DefinitionFaulty:
    case EventKind::MemberRefused:
    case EventKind::UnitsUnknown:
    case EventKind::SettingsFaulty:
    case EventKind::NotOpened:
        break;
    }
    const EventAdvice* advice = AdviceOf(event.kind);
    const bool good = event.kind == EventKind::PortBack;
    const bool bad = event.kind == EventKind::PortLost || (advice && advice->fault);
    Parts.Say(good  ? Sign::Ok
              : bad ? Sign::Error
                    : Sign::Warning,
              TopicOf(event), TextOf(event), ButtonsFor(event));
}

std::vector<MessageButton> CMessages::ButtonsFor(const Event& event) {
    if (event.kind == EventKind::LogFailed || event.kind == EventKind::NameTaken)
        return {{tr("Change folder").toStdString(), [this] { emit NamingAsked(); }}};
    if (event.kind != EventKind::PortLost)
        return {};
    const SessionSnapshot snapshot = Parts.Doc().Snapshot();
    for (const ResourceStatus& resource : snapshot.resources)
        if (resource.name == event.subject && !resource.reconnects)
            return {
                {tr("Try again").toStdString(), [this, name = event.subject] { TryAgain(name); }}};
    return {};
}

void CMessages::TryAgain(const std::string& port) {
    Parts.Engine.WorkOnPorts([this, port] {
        CQorViewDoc& doc = Parts.Doc();
        const std::string fault = doc.Sources.ResetAndConnect(doc.FindResource(port));
        QMetaObject::invokeMethod(this, [this, port, fault] { Parts.SayFault(port, fault); });
    });
}

void CMessages::SoundAlarm() {
    if (!Silenced.isValid() || Silenced.hasExpired(SilenceMilliseconds))
        QApplication::beep();
}

void CMessages::SilenceAlarms() {
    Silenced.start();
    Parts.Say(Sign::Off, "silence", tr("Alarms are silent for two minutes."));
}

} // namespace qor
