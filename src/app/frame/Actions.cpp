// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/Actions.h"

#include "app/look/Icons.h"
#include "app/plots/PlotHands.h"
#include "app/windows/PageGrid.h"

#include <QCoreApplication>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace qor {

namespace {

// Marks a text of the table for the catalogues; script/translate tells their maker so.
#define T(text) text

// clang-format off
constexpr ActionRow Table[] = {
    {Do::NewSession, InMenu::Session, T("&New ..."), "new", "Ctrl+N",
     T("Begin a session: a port, its instruments, a log.")},
    {Do::OpenSession, InMenu::Session, T("&Open ..."), "open", "Ctrl+O", T("Open a kept session.")},
    {Do::SaveSession, InMenu::Session, T("&Save"), "save", "Ctrl+S", T("Keep the session in its file.")},
    {Do::SaveSessionAs, InMenu::Session, T("Save &as ..."), "save", "Ctrl+Shift+S",
     T("Keep the session in another file.")},
    {Do::ReplayLog, InMenu::Session, T("&Replay a raw log ..."), "replay", "Ctrl+R",
     T("Play a raw log as if its instruments were here."), false, true},
    {Do::Practice, InMenu::Session, T("&Practice"), "practice", "Ctrl+Shift+P",
     T("Simulated instruments, no hardware needed.")},
    {Do::DamagedFrames, InMenu::Practice, T("&Damaged frames"), "warning", "Ctrl+Alt+F",
     T("Practice: frames are lost and damaged on the way."), true},
    {Do::LostPort, InMenu::Practice, T("&Lost port"), "disconnect", "Ctrl+Alt+P",
     T("Practice: the first port is unplugged until this is switched off."), true},
    {Do::SlowDisk, InMenu::Practice, T("&Slow disk"), "save", "Ctrl+Alt+S",
     T("Practice: the disk takes its time with every write."), true},
    {Do::CloseSession, InMenu::Session, T("&Close session"), "close", "Ctrl+Shift+W",
     T("End this session and go to the start page."), false, true},
    {Do::Settings, InMenu::Session, T("Se&ttings ..."), "settings", "Ctrl+,",
     T("Settings of the program."), false, true},
    {Do::Quit, InMenu::Session, T("&Quit"), "disconnect", "Ctrl+Q", T("End the program."), false, true},

    {Do::AddPort, InMenu::Instruments, T("Add &port ..."), "port", "Ctrl+P",
     T("Add a serial port with its instruments.")},
    {Do::AddInstrument, InMenu::Instruments, T("Add &instrument ..."), "instrument", "Ctrl+I",
     T("Add an instrument from its definition file.")},
    {Do::AddPackage, InMenu::Instruments, T("Add pac&kage ..."), "package", "Ctrl+Shift+I",
     T("Add the instruments of a package file.")},
    {Do::FindInstruments, InMenu::Instruments, T("&Find instruments ..."), "find", "Ctrl+F",
     T("Listen on the free ports and tell what is there.")},
    {Do::ConnectAll, InMenu::Instruments, T("&Connect all"), "connect", "Ctrl+K",
     T("Connect every port."), true, true},
    {Do::StartAll, InMenu::Instruments, T("&Start"), "start", "F5",
     T("Start telemetry on every connected port."), true},
    {Do::Roles, InMenu::Instruments, T("&Roles ..."), "role", "Ctrl+Shift+R",
     T("Which instrument is profiler, reference, GPS and so on."), false, true},
    {Do::Properties, InMenu::Instruments, T("Prop&erties ..."), "settings", "Alt+Return",
     T("Properties of what is chosen in the session tree.")},

    {Do::StartLog, InMenu::Log, T("Start &log"), "log", "Ctrl+L", T("Begin to log.")},
    {Do::StopLog, InMenu::Log, T("S&top log"), "log-stop", "Ctrl+Shift+L", T("End the log.")},
    {Do::LogOptions, InMenu::Log, T("&Options ..."), "settings", "Ctrl+Shift+O",
     T("How raw logs are written and when they end."), false, true},
    {Do::Naming, InMenu::Log, T("&Naming ..."), "comment", "Ctrl+Shift+N",
     T("How log files are named and where they go.")},
    {Do::Station, InMenu::Log, T("&Station ..."), "station", "F4",
     T("Cruise, station, cast and position of the next log.")},
    {Do::OpenLogFolder, InMenu::Log, T("Open &folder"), "open", "Ctrl+Shift+F",
     T("Show the folder of the logs."), false, true},
    {Do::LogStatus, InMenu::Log, T("Stat&us"), "status", "Ctrl+Shift+U",
     T("File, frames, disk: all about the open log.")},

    {Do::Tare, InMenu::Cast, T("&Tare"), "tare", "Ctrl+T",
     T("Take the present pressure as that of the surface.")},
    {Do::ClearTare, InMenu::Cast, T("&Clear tare"), "fit", "Ctrl+Shift+T", T("Measure depth without a tare.")},
    {Do::CastBegins, InMenu::Cast, T("Cast &begins now"), "cast", "Ctrl+B",
     T("The profile begins anew at this moment."), false, true},
    {Do::NextCast, InMenu::Cast, T("&Next cast"), "station", "Ctrl+J",
     T("Move the name of the next log on to the next cast.")},
    {Do::Comment, InMenu::Cast, T("Co&mment ..."), "comment", "Ctrl+M",
     T("Write a comment, stamped with the moment of this key."), false, true},

    {Do::LightLook, InMenu::Palette, T("&Light"), "practice", "Ctrl+F8", T("Light palette."), true},
    {Do::DarkLook, InMenu::Palette, T("&Dark"), "watch", "Shift+F8", T("Dark palette."), true},
    {Do::NightLook, InMenu::Palette, T("&Night"), "night", "F8",
     T("Red on black, and back: the eye stays used to the dark."), true},
    {Do::LargerText, InMenu::TextSize, T("&Larger"), "find", "Ctrl++", T("Larger text.")},
    {Do::SmallerText, InMenu::TextSize, T("&Smaller"), "off", "Ctrl+-", T("Smaller text.")},
    {Do::NormalText, InMenu::TextSize, T("&Normal"), "ok", "Ctrl+0", T("Text at its normal size.")},
    {Do::LargeTargets, InMenu::View, T("Large tar&gets"), "role", "Ctrl+Shift+G",
     T("Larger buttons, for gloves and a rolling deck."), true},
    {Do::WatchMode, InMenu::View, T("&Watch mode"), "watch", "F11",
     T("The state of logging and the windows on the whole screen."), true},
    {Do::AlarmSound, InMenu::View, T("&Ancillary Data Alarms"), "sound", "Ctrl+Shift+A",
     T("Sound when a watched value is in its alarm range."), true, true},
    {Do::Silence, InMenu::View, T("&Silence for 2 min"), "mute", "Ctrl+Shift+K",
     T("No alarm sound for two minutes; it comes back by itself.")},
    {Do::NextArea, InMenu::View, T("Ne&xt area"), "cursor", "F6",
     T("Move on to tool row, messages, tree or windows."), false, true},
    {Do::TreeDock, InMenu::Docks, T("&Session tree"), "instrument", "Alt+1",
     T("Ports and instruments with their state."), true},
    {Do::LogDock, InMenu::Docks, T("Session &log"), "comment", "Alt+2", T("What happened, line by line."), true},
    {Do::CommentDock, InMenu::Docks, T("&Comments"), "comment", "Alt+3", T("The comments of this session."), true},
    {Do::MonitorDock, InMenu::Docks, T("Telemetry &monitor"), "monitor", "Alt+4",
     T("Frames as they come, byte by byte."), true},

    {Do::NewSpectrum, InMenu::NewWindow, T("&Spectrum"), "spectrum", "Ctrl+Alt+1", T("Spectra of an instrument.")},
    {Do::NewProfile, InMenu::NewWindow, T("&Depth profile"), "profile", "Ctrl+Alt+2", T("Sensors against depth.")},
    {Do::NewSeries, InMenu::NewWindow, T("&Time series"), "series", "Ctrl+Alt+3", T("Sensors against time.")},
    {Do::NewGps, InMenu::NewWindow, T("&GPS station"), "gps", "Ctrl+Alt+4", T("Position, fix and track.")},
    {Do::NewWeather, InMenu::NewWindow, T("&Weather station"), "wind", "Ctrl+Alt+5", T("Wind, air and pressure.")},
    {Do::NewAncillary, InMenu::NewWindow, T("&Ancillary"), "status", "Ctrl+Alt+6",
     T("Sensors and derived values as figures.")},
    {Do::NewRealityCheck, InMenu::NewWindow, T("Optical &reality check"), "find", "Ctrl+Alt+7",
     T("An instrument against the reference.")},
    {Do::NewStatus, InMenu::NewWindow, T("Instrument stat&us"), "status", "Ctrl+Alt+8",
     T("Rates, losses and errors, the worst first.")},
    {Do::NextWindow, InMenu::Window, T("Ne&xt window"), "series", "Ctrl+Tab", T("Go to the next window.")},
    {Do::CloseWindow, InMenu::Window, T("&Close window"), "close", "Ctrl+W", T("Close the window with the focus.")},
    {Do::ToOtherScreen, InMenu::Window, T("To &other screen"), "float", "Shift+F7",
     T("Move the window to the next screen."), false, true},
    {Do::Tile, InMenu::Window, T("&Tile"), "package", "F7", T("Give all windows the same room.")},
    {Do::KeepLayout, InMenu::Layouts, T("&Keep this layout"), "save", "Ctrl+Alt+K",
     T("Keep the places of the windows for this set of screens.")},
    {Do::DefaultLayout, InMenu::Layouts, T("&Default layout"), "fit", "Ctrl+Alt+D",
     T("Put the windows where they were at first.")},

    {Do::ReplayPlay, InMenu::Replay, T("&Play or pause"), "play", "Ctrl+Space", T("Play the replay on, or hold it.")},
    {Do::ReplayBack, InMenu::Replay, T("&Back 10 s"), "rewind", "Ctrl+Left", T("Go back ten seconds in the replay.")},
    {Do::ReplayForward, InMenu::Replay, T("&Forward 10 s"), "start", "Ctrl+Right",
     T("Go on ten seconds in the replay.")},

    {Do::Guide, InMenu::Help, T("&Guide"), "help", "F1", T("The user's guide.")},
    {Do::Keys, InMenu::Help, T("&Keys"), "menu", "Ctrl+F1", T("All keys of the program.")},
    {Do::About, InMenu::Help, T("&About"), "app", "Shift+F1", T("Version, licence and what the program stands on.")},
};

struct MenuRow {
    InMenu menu, parent; ///< a menu of the bar is its own parent
    const char* title;
    std::optional<Do> behind = {}; ///< its place in the parent; else at its top
};

constexpr MenuRow MenuRows[] = {
    {InMenu::Session, InMenu::Session, T("&Session")},
    {InMenu::Instruments, InMenu::Instruments, T("&Instruments")},
    {InMenu::Log, InMenu::Log, T("&Log")},
    {InMenu::Cast, InMenu::Cast, T("&Cast")},
    {InMenu::View, InMenu::View, T("&View")},
    {InMenu::Palette, InMenu::View, T("&Palette")},
    {InMenu::TextSize, InMenu::View, T("Text si&ze")},
    {InMenu::Docks, InMenu::View, T("&Docks"), Do::Silence},
    {InMenu::Window, InMenu::Window, T("&Window")},
    {InMenu::NewWindow, InMenu::Window, T("&New")},
    {InMenu::Layouts, InMenu::Window, T("&Layouts")},
    {InMenu::Replay, InMenu::Session, T("Re&play bar"), Do::ReplayLog},
    {InMenu::Practice, InMenu::Session, T("Practice &faults"), Do::Practice},
    {InMenu::Help, InMenu::Help, T("&Help")},
};
// clang-format on

#undef T

bool NeedsSession(const ActionRow& row) {
    switch (row.menu) {
    case InMenu::Instruments:
        return row.action != Do::FindInstruments;
    case InMenu::Log:
    case InMenu::Cast:
    case InMenu::Docks:
    case InMenu::Window:
    case InMenu::NewWindow:
    case InMenu::Layouts:
        return true;
    case InMenu::Session:
        return row.action == Do::SaveSession || row.action == Do::SaveSessionAs ||
               row.action == Do::CloseSession;
    case InMenu::View:
        return row.action == Do::WatchMode || row.action == Do::Silence;
    case InMenu::Palette:
    case InMenu::TextSize:
    case InMenu::Replay:
    case InMenu::Practice:
    case InMenu::Help:
        return false;
    }
    return false;
}

QString Translated(const char* text) {
    return QCoreApplication::translate("qor", text);
}

QString Plain(const char* text) {
    return Translated(text).remove(QLatin1Char('&')).remove(QStringLiteral(" ..."));
}

std::string KeyText(const char* keys) {
    return QKeySequence(QString::fromLatin1(keys)).toString(QKeySequence::NativeText).toStdString();
}

} // namespace

std::span<const ActionRow> ActionTable() {
    return Table;
}

CActions::CActions(const CTheme& theme, QWidget* window) : QObject(window), Theme(theme) {
    for (const ActionRow& row : Table) {
        auto* action = new QAction(ThemeIcon(Theme, QString::fromLatin1(row.icon)),
                                   Translated(row.text), this);
        action->setShortcut(QKeySequence(QString::fromLatin1(row.keys)));
        // Docks that float are windows of their own and must hear the keys too.
        action->setShortcutContext(Qt::ApplicationShortcut);
        action->setCheckable(row.checkable);
        action->setMenuRole(QAction::NoRole);
        window->addAction(action);
        Made[row.action] = action;
        SetWhyNot(row.action, {});
        connect(action, &QAction::triggered, this, [this, what = row.action] { emit Asked(what); });
    }
}

void CActions::SetWhyNot(Do action, const QString& reason) {
    const auto row =
        std::find_if(std::begin(Table), std::end(Table),
                     [action](const ActionRow& entry) { return entry.action == action; });
    QAction* made = Made.at(action);
    made->setEnabled(reason.isEmpty());
    const QString tip = reason.isEmpty() ? Translated(row->tip) : reason;
    made->setToolTip(
        QStringLiteral("%1 (%2)").arg(tip, made->shortcut().toString(QKeySequence::NativeText)));
    made->setStatusTip(tip);
}

void CActions::SetSession(bool open) {
    for (const ActionRow& row : Table)
        if (NeedsSession(row))
            SetWhyNot(row.action,
                      open ? QString() : QCoreApplication::translate("qor", "No session is open."));
}

void CActions::FillMenuBar(QMenuBar& bar) {
    for (const MenuRow& row : MenuRows) {
        auto* menu = new QMenu(Translated(row.title), &bar);
        menu->setToolTipsVisible(true);
        Menus[row.menu] = menu;
    }
    Recent = new QMenu(Translated(QT_TRANSLATE_NOOP("qor", "R&ecent")), &bar);
    for (const MenuRow& row : MenuRows) {
        if (row.menu == row.parent)
            bar.addMenu(Menus[row.menu]);
        else if (!row.behind)
            Menus[row.parent]->addMenu(Menus[row.menu]);
    }
    for (const ActionRow& row : Table) {
        QMenu* menu = Menus[row.menu];
        if (row.lineAbove)
            menu->addSeparator();
        menu->addAction(Made[row.action]);
        if (row.action == Do::OpenSession)
            menu->addMenu(Recent);
        for (const MenuRow& below : MenuRows)
            if (below.behind == row.action)
                menu->addMenu(Menus[below.menu]);
    }
}

void OpenKeys(const CTheme& theme, QWidget* parent) {
    auto* window = new QDialog(parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(QCoreApplication::translate("qor", "Keys"));
    GridPage page;
    page.ownColours = false;
    page.columns = {{QCoreApplication::translate("qor", "What").toStdString()},
                    {QCoreApplication::translate("qor", "Keys").toStdString()},
                    {QCoreApplication::translate("qor", "What for").toStdString()}};
    for (const ActionRow& row : Table)
        page.rows.push_back({Plain(row.text).toStdString(),
                             {},
                             {KeyText(row.keys)},
                             {{Translated(row.tip).toStdString()}}});
    for (const PlotKey& key : PlotKeys)
        page.rows.push_back({QCoreApplication::translate("qor", "In a plot").toStdString(),
                             {},
                             {key.keys},
                             {{QCoreApplication::translate("PlotKeys", key.text).toStdString()}}});
    auto* grid = new CPageGrid(theme);
    grid->ShowPage(page);
    auto* whole = new QVBoxLayout(window);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(grid);
    window->resize(theme.Px(860), theme.Px(560));
    window->show();
}

} // namespace qor
