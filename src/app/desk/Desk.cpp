// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/Desk.h"

#include "app/Application.h"
#include "app/ShownText.h"

#include <QAction>
#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QUrl>

#include <utility>

namespace qor {

namespace {

constexpr int TurnMilliseconds = 1000 / CViewWindow::TicksASecond;
constexpr unsigned SlowTurns = CViewWindow::TicksASecond / 2; ///< tree and banner: twice a second
constexpr const char* AlarmSection = "Alarms";
constexpr const char* AlarmKey = "Sound";
constexpr double SkippedSeconds = 10.0;

} // namespace

CDesk::CDesk(CTheme& theme, CMainWindow& window, CKeptProfileStore& profile)
    : Theme(theme), Window(window), Profile(profile),
      Under(profile), Parts{theme, window, Under, profile}, Messages(Parts, this), Log(Parts, this),
      Sources(Parts, this), Player(Parts, this), Sessions(Parts, Player, this),
      Displays(Parts, this) {
    Window.LoadLook(Profile);
    Under.Doc().LoadSettings();
    ConnectRooms();
    Window.MayClose = [this] { return MayClose(); };
    const bool sound = Profile.ReadInteger(AlarmSection, AlarmKey, 1) != 0;
    Window.Actions()[Do::AlarmSound]->setChecked(sound);
    Displays.SetAlarmSound(sound);
    Window.Actions().SetWhyNot(Do::FindInstruments, tr("Finding is not part of this version."));
    if (Profile.LoadCause() != FileCause::None)
        Parts.Say(Sign::Warning, "settings",
                  tr("The settings could not be read; none will be kept."));
    Parts.SayFault("start", Under.Start());
    connect(&Turns, &QTimer::timeout, this, &CDesk::Tick);
    Turns.start(TurnMilliseconds);
}

CDesk::~CDesk() {
    Turns.stop();
    Under.FinishWork(); // what is at work belongs to the rooms
    Window.MayClose = {};
}

void CDesk::ConnectRooms() {
    connect(&Window, &CMainWindow::Asked, this, &CDesk::DoIt);
    connect(&Under.Operator(), &COperator::CloseAsked, this, &CDesk::End);
    // Log-off and shutdown, once nobody has refused them: so Windows tells it, X11 as a Quit.
    connect(qGuiApp, &QGuiApplication::aboutToQuit, this, &CDesk::End, Qt::DirectConnection);
    qGuiApp->installEventFilter(this);
    connect(&Messages, &CMessages::NamingAsked, &Log, &CLogDesk::OpenNaming);
    connect(&Sources, &CSourceDesk::FirstLogAsked, &Log, &CLogDesk::OpenNaming);
    connect(&Sources, &CSourceDesk::WindowAsked, this,
            [this](const QString& kind, const QString& instrument) {
                Displays.OpenWindow(kind.toLatin1().constData(), instrument.toStdString());
            });
    Sessions.DescribeWindows = [this] { return Displays.Describe(); };
    connect(&Sessions, &CSessionDesk::Opened, this, [this] {
        Displays.OpenAll();
        if (!std::exchange(Arranged, true))
            Window.ArrangeDocks();
    });
    connect(&Sessions, &CSessionDesk::Closed, &Displays, &CWindowDesk::CloseAll);
    connect(&Sessions, &CSessionDesk::Closed, &Log, &CLogDesk::EndSession);
    connect(&Sessions, &CSessionDesk::FirstPortAsked, this, [this] { Sources.AddPort(); });
    connect(&Sessions, &CSessionDesk::ConnectionAsked, this, [this] { Sources.ConnectAll(true); });
    connect(&Sessions, &CSessionDesk::FilesForSession, this, [this](const QStringList& files) {
        if (files.isEmpty())
            DoIt(Do::AddInstrument);
        else
            Sources.AddFiles(files);
    });
    connect(&Displays, &CWindowDesk::AlarmSounds, &Messages, &CMessages::SoundAlarm);
    connect(&Displays, &CWindowDesk::SilenceAsked, &Messages, &CMessages::SilenceAlarms);
    connect(&Displays, &CWindowDesk::RemedyAsked, this, &CDesk::Remedy);
}

void CDesk::Begin(const DesktopCommand& command) {
    Arranged = Window.RestoreLayout(Profile);
    CQorViewDoc& doc = Under.Doc();
    doc.Starter.SetExitIfDone(command.exitIfDone);
    if (command.practice)
        Sessions.BeginPractice();
    else if (!command.file.empty())
        Sessions.Begin(Shown(command.file));
    if (!command.logNow)
        return;
    const std::string fault = doc.Starter.LogNow();
    Parts.SayFault("log now", fault);
    DeskParts::TellRefusal(fault);
}

int CDesk::ExitStatus() {
    return Under.Doc().RawLog.Status().runFailed ? 1 : 0;
}

void CDesk::End() {
    if (std::exchange(Closing, true))
        return;
    Window.SaveLook(Profile);
    Window.SaveLayout(Profile);
    Sessions.End();
    static_cast<void>(Profile.Flush()); // nothing is left to say it on
    QMetaObject::invokeMethod(&Window, &QWidget::close, Qt::QueuedConnection);
}

void CDesk::Tick() {
    if (EndAsked && EndAsked())
        return End();
    if (Sessions.IsOpen())
        Displays.Tick();
    if (++Turn % SlowTurns != 0)
        return;
    if (Sessions.IsOpen()) {
        Log.Refresh(Sessions.Run());
        Sources.Refresh(Displays.Alarmed());
        Displays.OpenFirst();
    }
    Sessions.Refresh();
}

bool CDesk::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qGuiApp && event->type() == QEvent::Quit)
        End(); // before the windows are closed for it, which would ask
    return QObject::eventFilter(watched, event);
}

bool CDesk::IsOn(Do action) const {
    return Window.Actions()[action]->isChecked();
}

void CDesk::Remedy(const QString& remedy) {
    if (remedy == QLatin1String("Roles"))
        Sources.OpenRoles();
    else
        DoIt(Do::AddInstrument);
}

void CDesk::OpenGuide() {
    const QString guide = InstalledFile(QStringLiteral("docs/user-guide.md"));
    if (guide.isEmpty() || !QDesktopServices::openUrl(QUrl::fromLocalFile(guide)))
        Parts.Say(Sign::Warning, "guide", tr("The guide could not be shown: %1").arg(guide));
}

bool CDesk::MayClose() {
    if (Closing)
        return true;
    Sessions.AfterAsking([this] { End(); });
    return false;
}

void CDesk::DoIt(Do action) {
    switch (action) {
    case Do::NewSession:
        return Sessions.NewSession();
    case Do::OpenSession:
        return Sessions.AskOpen();
    case Do::SaveSession:
        return Sessions.Save();
    case Do::SaveSessionAs:
        return Sessions.AskSaveAs();
    case Do::ReplayLog:
        return Sessions.AskReplay();
    case Do::Practice:
        return Sessions.BeginPractice();
    case Do::DamagedFrames:
    case Do::LostPort:
    case Do::SlowDisk:
        return Sessions.SetPracticeFault(action, IsOn(action));
    case Do::CloseSession:
        return Sessions.CloseSession();
    case Do::AddPort:
        return Sources.AddPort();
    case Do::AddInstrument:
        return Sources.AskFiles(tr("Add an instrument"), tr("Definitions (*.cal *.tdf)"));
    case Do::AddPackage:
        return Sources.AskFiles(tr("Add a package"), tr("Packages (*.sip)"));
    case Do::FindInstruments:
        return; // grey, and says why
    case Do::ConnectAll:
        return Sources.ConnectAll(IsOn(action));
    case Do::StartAll:
        return Sources.StartAll(IsOn(action));
    case Do::Roles:
        return Sources.OpenRoles();
    case Do::Properties:
        return Sources.OpenProperties();
    case Do::StartLog:
        return Log.StartLog();
    case Do::StopLog:
        return Log.StopLog();
    case Do::LogOptions:
        return Log.OpenOptions();
    case Do::Naming:
        return Log.OpenNaming();
    case Do::Station:
        return Log.OpenStation();
    case Do::OpenLogFolder:
        return Log.OpenFolder();
    case Do::LogStatus:
        return Log.ShowStatus();
    case Do::Tare:
        return Log.Tare();
    case Do::ClearTare:
        return Log.ClearTare();
    case Do::CastBegins:
        return Log.BeginCast();
    case Do::NextCast:
        return Log.NextCast();
    case Do::Comment:
        return Log.OpenComment();
    case Do::AlarmSound:
        Profile.WriteInteger(AlarmSection, AlarmKey, IsOn(action) ? 1 : 0);
        return Displays.SetAlarmSound(IsOn(action));
    case Do::Silence:
        return Messages.SilenceAlarms();
    case Do::ReplayPlay:
        return Player.PlayOrPause();
    case Do::ReplayBack:
        return Player.Skip(-SkippedSeconds);
    case Do::ReplayForward:
        return Player.Skip(SkippedSeconds);
    case Do::Guide:
        return OpenGuide();
    case Do::Settings:
        OpenSettings(Parts.Form(), Theme, [this] { Window.SaveLook(Profile); });
        return;
    case Do::About:
        OpenAbout(Theme, &Window);
        return;
    case Do::NewSpectrum:
    case Do::NewProfile:
    case Do::NewSeries:
    case Do::NewGps:
    case Do::NewWeather:
    case Do::NewAncillary:
    case Do::NewRealityCheck:
    case Do::NewStatus:
    case Do::KeepLayout:
    case Do::DefaultLayout:
        return DoWindow(action);
    case Do::Quit:
    case Do::LightLook:
    case Do::DarkLook:
    case Do::NightLook:
    case Do::LargerText:
    case Do::SmallerText:
    case Do::NormalText:
    case Do::LargeTargets:
    case Do::WatchMode:
    case Do::TreeDock:
    case Do::LogDock:
    case Do::CommentDock:
    case Do::MonitorDock:
    case Do::NextArea:
    case Do::NextWindow:
    case Do::CloseWindow:
    case Do::ToOtherScreen:
    case Do::Tile:
    case Do::Keys:
        return; // the main window does these by itself
    }
}

void CDesk::DoWindow(Do action) {
    struct Row {
        Do action;
        const char* kind;
    };
    constexpr Row Rows[] = {
        {Do::NewSpectrum, "spectral"}, {Do::NewProfile, "profile"}, {Do::NewSeries, "time-series"},
        {Do::NewGps, "gps"},           {Do::NewWeather, "weather"}, {Do::NewAncillary, "ancillary"},
        {Do::NewStatus, "status"},
    };
    for (const Row& row : Rows)
        if (row.action == action)
            Displays.OpenWindow(row.kind);
    if (action == Do::NewRealityCheck)
        Displays.OpenRealityCheck();
    if (action == Do::DefaultLayout)
        Displays.OpenDefault();
    if (action == Do::KeepLayout)
        Window.SaveLayout(Profile);
}

} // namespace qor
