// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/LogDesk.h"

#include "app/ShownText.h"
#include "app/dialogs/Form.h"
#include "session/PressureTare.h"
#include "views/NumberText.h"

#include <QDesktopServices>
#include <QUrl>

#include <utility>

namespace qor {

CLogDesk::CLogDesk(const DeskParts& parts, QObject* parent) : QObject(parent), Parts(parts) {
    connect(&Parts.Engine, &CEngine::Happened, this, [this](const std::vector<Event>& events) {
        for (const Event& event : events)
            Facts.Note(event);
    });
    connect(&Parts.Engine.Operator(), &COperator::LogShown, this, &CLogDesk::AskBefore);
    connect(&Parts.Engine.Operator(), &COperator::TakenBack, this, [this] {
        if (Question)
            Question->reject();
    });
}

void CLogDesk::StartLog() {
    if (std::exchange(Beginning, true)) {
        QWidget* question = Question ? Question.data() : Parts.Window.Boxes().Current();
        if (question) {
            question->raise();
            question->activateWindow();
        }
        return;
    }
    Parts.Engine.WorkOnLog([this] {
        Parts.Doc().RawLog.BeginLogFile();
        QMetaObject::invokeMethod(this, [this] { Beginning = false; });
    });
}

void CLogDesk::StopLog() {
    Parts.Engine.WorkOnLog([this] { Parts.Doc().RawLog.EndLogFile(true); });
}

void CLogDesk::AskBefore(quint64 question, const LogQuestion& shown) {
    Question = OpenOverride(Parts.Form(), shown, [this, question](LogAnswer answer) {
        Parts.Engine.Operator().Answer(question, answer);
        if (answer == LogAnswer::ChangeFirst)
            OpenStation();
    });
}

void CLogDesk::OpenFolder() {
    const QString folder = Shown(LogFolder(Parts.Doc()));
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        Parts.Say(Sign::Warning, "folder",
                  tr("Nothing here shows folders; the logs are in %1.").arg(folder));
}

/// All about the open log, in the strip: where it is and what is in it.
void CLogDesk::ShowStatus() {
    Facts.MarkSeen();
    const std::string text = LogStatusText(Parts.Doc());
    Parts.Say(Page.state == LogState::Failed ? Sign::Error : Sign::None, "log status", Shown(text),
              {{tr("Open folder").toStdString(), [this] { OpenFolder(); }}});
}

void CLogDesk::Tare() {
    const std::string fault = TakePressureTare(Parts.Doc());
    if (!fault.empty()) {
        Parts.Say(Sign::Error, "tare", Shown(fault),
                  {{tr("By hand").toStdString(), [this] { OpenTare(Parts.Form(), {}); }}});
        return;
    }
    Parts.Say(Sign::Ok, "tare", Shown(TareText(Parts.Doc())),
              {{tr("Undo").toStdString(), [this] { ClearTare(); }}});
}

void CLogDesk::ClearTare() {
    qor::ClearTare(Parts.Doc());
    Parts.Say(Sign::Ok, "tare", tr("Depth is measured without a tare."));
}

void CLogDesk::BeginCast() {
    if (!Parts.Doc().History.BeginCast({}))
        Parts.Say(Sign::Warning, "cast",
                  tr("No depth has come yet, or no window shows a profile."));
}

void CLogDesk::NextCast() {
    const std::string fault = Parts.Doc().RawLog.MoveNameOn();
    Parts.SayFault("cast", fault);
    if (fault.empty())
        Parts.Say(Sign::Ok, "cast", tr("The next log is %1.").arg(Shown(NextLogName(Parts.Doc()))));
}

void CLogDesk::OpenOptions() {
    OpenLogOptions(Parts.Form(), {});
}

void CLogDesk::OpenNaming() {
    qor::OpenNaming(Parts.Form(), {});
}

void CLogDesk::OpenStation() {
    qor::OpenStation(Parts.Form(), {});
}

void CLogDesk::OpenComment() {
    qor::OpenComment(Parts.Form(), Shown(DayAndTimeText(Parts.Doc().Clock.Now())), {});
}

void CLogDesk::EndSession() {
    for (const char* topic : {"tare", "cast", "disk", "nagging", "log status"})
        Parts.Window.Strip().Close(topic);
}

void CLogDesk::Refresh(RunKind run) {
    CQorViewDoc& doc = Parts.Doc();
    doc.Room.Watch(LogFolder(doc));
    const LogPage page = Facts.Page(doc, run, doc.Room.FreeBytes());
    SayRemaining(page);
    Page = page;
    Parts.Window.ShowLog(page);
    CActions& actions = Parts.Window.Actions();
    const bool logging = page.state == LogState::Open || page.state == LogState::Between;
    actions.SetWhyNot(Do::StartLog, logging ? tr("A log is open already.") : QString());
    actions.SetWhyNot(Do::StopLog, logging ? QString() : tr("No log is open."));
}

/// Once when the disk gets short or nothing is logged, not at every look.
void CLogDesk::SayRemaining(const LogPage& page) {
    if (page.leftSign != Page.leftSign && page.leftSign != Sign::None)
        Parts.Say(page.leftSign, "disk", tr("The disk has %1.").arg(Shown(page.left)),
                  {{tr("Change folder").toStdString(), [this] { OpenNaming(); }}});
    if (page.nagging && !Page.nagging)
        Parts.Say(Sign::Warning, "nagging", tr("Not logging, though frames have come for 1 min."),
                  {{tr("Start log").toStdString(), [this] { StartLog(); }}});
}

} // namespace qor
