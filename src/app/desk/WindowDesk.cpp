// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/WindowDesk.h"

#include "app/ShownText.h"
#include "views/NumberText.h"
#include "views/RealityCheck.h"

#include <QPointer>

namespace qor {

namespace {

struct DockRow {
    Do toggle;
    const char* kind;
    Qt::DockWidgetArea side;
};
constexpr DockRow DockRows[] = {
    {Do::LogDock, "session-log", Qt::LeftDockWidgetArea},
    {Do::CommentDock, "comments", Qt::LeftDockWidgetArea},
    {Do::MonitorDock, "monitor", Qt::RightDockWidgetArea},
};

bool HasInstruments(const CQorViewDoc& doc) {
    for (const ResourceStatus& resource : doc.Snapshot().resources)
        if (!resource.instruments.empty())
            return true;
    return false;
}

} // namespace

CWindowDesk::CWindowDesk(const DeskParts& parts, QObject* parent) : QObject(parent), Parts(parts) {
    connect(&Parts.Window.Area(), &CDisplayArea::NewWindowAsked, this, &CWindowDesk::OpenDefault);
    AddDocks();
}

/// The views of the docks go before their document, as those of the windows do.
CWindowDesk::~CWindowDesk() {
    CloseAll();
    // Closed windows delete themselves in the next round of events, which would be too late.
    qDeleteAll(Parts.Window.Area().findChildren<CViewWindow*>());
    qDeleteAll(Docked);
}

void CWindowDesk::AddDocks() {
    for (const DockRow& row : DockRows) {
        auto* dock = new CViewWindow(Parts.Theme, QStringLiteral("dock-") + QLatin1String(row.kind),
                                     *FindWindowKind(row.kind), Parts.Doc());
        dock->setAttribute(Qt::WA_DeleteOnClose, false);
        Parts.Window.AddDock(row.toggle, dock, row.side);
        Docked.push_back(dock);
        Watch(*dock);
    }
    Parts.Window.tabifyDockWidget(Docked[0], Docked[1]);
    Docked[0]->raise();
}

void CWindowDesk::Watch(CViewWindow& window) {
    connect(&window, &CViewWindow::AlarmSounds, this, &CWindowDesk::AlarmSounds);
    connect(&window, &CViewWindow::AlarmBegan, this,
            [this, &window](const QString& text, quint64 row) {
                const QPointer<CViewWindow> shown = &window;
                Parts.Say(Sign::Alarm,
                          "alarm " + window.objectName().toStdString() + " " + CountText(row), text,
                          {{tr("Show").toStdString(),
                            [this, shown] {
                                if (shown)
                                    Parts.Window.Area().Show(shown);
                            }},
                           {tr("Silence 2 min").toStdString(), [this] { emit SilenceAsked(); }}});
            });
    connect(&window, &CViewWindow::RemedyAsked, this, &CWindowDesk::RemedyAsked);
    connect(&window, &CViewWindow::Told, this,
            [this](const QString& text) { Parts.Window.Boxes().Tell(text.trimmed()); });
    connect(&window, &CViewWindow::Failed, this,
            [this](const QString& why) { Parts.Say(Sign::Error, "window", why); });
    connect(&window, &CViewWindow::RangesAsked, this,
            [this, &window](int row) { EditRanges(window, row); });
}

WindowMaker CWindowDesk::Maker() {
    return {Parts.Theme, Parts.Doc(), [this](CViewWindow& window) {
                Watch(window);
                window.View().SetAlarmSound(AlarmSound);
            }};
}

CViewWindow* CWindowDesk::OpenWindow(const char* kind, const std::string& instrument) {
    CDisplayArea& area = Parts.Window.Area();
    return qor::OpenWindow(area, Maker(), *FindWindowKind(kind), instrument, area.Current());
}

void CWindowDesk::OpenRealityCheck() {
    constexpr const char* Kind = "reality-check";
    for (CViewWindow* window : Windows())
        if (window->Kind().name == std::string_view(Kind)) {
            Parts.Window.Area().Show(window);
            return;
        }
    const std::string refusal = WhyNoRealityCheck(Parts.Doc());
    if (refusal.empty())
        OpenWindow(Kind);
    else
        Parts.Doc().User.ShowMessage(refusal);
}

std::vector<CViewWindow*> CWindowDesk::Windows() const {
    std::vector<CViewWindow*> windows;
    for (CDisplayWindow* window : Parts.Window.Area().Windows())
        if (auto* shown = qobject_cast<CViewWindow*>(window))
            windows.push_back(shown);
    return windows;
}

void CWindowDesk::OpenAll() {
    if (OpenWindows(Parts.Window.Area(), Maker(), Parts.Doc().Session.Windows()) == 0)
        OpenDefault();
    AwaitsFirst = !HasInstruments(Parts.Doc());
}

void CWindowDesk::OpenFirst() {
    if (!AwaitsFirst || !HasInstruments(Parts.Doc()))
        return;
    AwaitsFirst = false;
    if (Windows().empty())
        OpenDefault();
}

void CWindowDesk::CloseAll() {
    CloseWindows(Parts.Window.Area());
}

void CWindowDesk::OpenDefault() {
    CloseAll();
    OpenDefaultWindows(Parts.Window.Area(), Maker());
}

JsonValue CWindowDesk::Describe() const {
    return DescribeWindows(Parts.Window.Area(), Parts.Doc().Session.Windows());
}

std::set<std::string> CWindowDesk::Alarmed() const {
    std::set<std::string> names;
    for (const CViewWindow* window : Windows())
        names.insert(window->Alarmed());
    return names;
}

void CWindowDesk::Tick() {
    ++Ticks;
    unsigned turn = 0;
    for (CViewWindow* window : Parts.Window.Area().findChildren<CViewWindow*>())
        window->Tick(Ticks + turn++);
    for (CViewWindow* dock : Docked)
        dock->Tick(Ticks + turn++);
    if (Ticks % CViewWindow::TicksASecond != 0)
        return;
    Parts.Window.Area().RefreshTabs();
    LinkRanges();
}

/// What is set in one window is shaded in the others.
void CWindowDesk::LinkRanges() {
    const std::vector<CViewWindow*> windows = Windows();
    const auto find = [&windows](const std::string& instrument,
                                 ANCDATATYPE kind) -> const WarningRanges* {
        for (CViewWindow* window : windows)
            if (const WarningRanges* ranges = window->View().RangesOf(instrument, kind);
                ranges && ranges->AnyEnabled())
                return ranges;
        return nullptr;
    };
    for (CViewWindow* window : windows)
        window->View().TakeRanges(find);
}

void CWindowDesk::SetAlarmSound(bool on) {
    AlarmSound = on;
    for (CViewWindow* window : Windows())
        window->View().SetAlarmSound(on);
}

void CWindowDesk::EditRanges(CViewWindow& window, int row) {
    WarningRanges* ranges = window.View().RangesOfRow(static_cast<std::size_t>(row));
    if (!ranges)
        return;
    const QPointer<CViewWindow> edited = &window;
    const std::string quantity =
        window.View().Pages().grid->rows[static_cast<std::size_t>(row)].label;
    OpenWarningRanges(Parts.Form(), *ranges, quantity, [edited, row](const WarningRanges& changed) {
        if (!edited)
            return;
        if (WarningRanges* now = edited->View().RangesOfRow(static_cast<std::size_t>(row)))
            *now = changed;
    });
}

} // namespace qor
