// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/SourceDesk.h"

#include "app/ShownText.h"
#include "app/dialogs/FileDialogs.h"
#include "app/windows/MenuPopup.h"
#include "session/SessionSetup.h"
#include "telemetry/CommResult.h"
#include "views/SessionForms.h"
#include "views/Windows.h"

namespace qor {

namespace {

std::string Of(const QString& text) {
    return text.toStdString();
}

bool AllConnected(const SessionSnapshot& snapshot) {
    bool any = false;
    for (const ResourceStatus& resource : snapshot.resources) {
        if (!resource.isFile && !resource.figures.connected)
            return false;
        any = any || !resource.isFile;
    }
    return any;
}

bool AllStarted(const SessionSnapshot& snapshot) {
    for (const ResourceStatus& resource : snapshot.resources)
        for (const InstrumentFigures& instrument : resource.instruments)
            if (!instrument.acquired)
                return false;
    return true;
}

/// What a handle of earlier has become: moved, the instrument has another one. None: it has gone.
InstrumentId HandleNow(const CQorViewDoc& doc, InstrumentId instrument, const std::string& name) {
    const SessionSnapshot snapshot = doc.Snapshot();
    if (snapshot.Find(instrument))
        return instrument;
    for (const ResourceStatus& resource : snapshot.resources)
        for (const InstrumentFigures& figures : resource.instruments)
            if (figures.name == name)
                return figures.id;
    return InstrumentId::None;
}

} // namespace

CSourceDesk::CSourceDesk(const DeskParts& parts, QObject* parent) : QObject(parent), Parts(parts) {
    CSessionTree& tree = Parts.Window.Tree();
    connect(&tree, &CSessionTree::MenuAsked, this, [this](quint64 row, const QPoint& place) {
        OpenMenu(MenuOf(TargetOf(row)), place, &Parts.Window);
    });
    connect(&tree, &CSessionTree::RowActivated, this,
            [this](quint64 row) { OpenPropertiesOf(TargetOf(row)); });
}

/// Rows stand until the port's turn comes, so what is asked for twice may be done already.
void CSourceDesk::Remove(const std::string& name, std::function<CommResult()> removal) {
    const std::string refusal =
        Of(tr("%1 could not be removed; the session log says why.").arg(Shown(name)));
    Parts.Try(name, [removal = std::move(removal), refusal] {
        return removal() == CommResult::Success ? std::string() : refusal;
    });
}

void CSourceDesk::Connect(ResourceId resource, const std::string& name) {
    CQorViewDoc& doc = Parts.Doc();
    Parts.Try(name, [&doc, resource] { return doc.Sources.ResetAndConnect(resource); });
}

void CSourceDesk::AddPort(const QStringList& files) {
    PortChoices choices;
    for (const QString& file : files)
        choices.files.push_back(Of(file));
    choices.changeFirstLog = [this] { emit FirstLogAsked(); };
    OpenPort(Parts.Form(), choices, [this](ResourceId added, bool connect) {
        const SessionSnapshot snapshot = Parts.Doc().Snapshot();
        const ResourceStatus* port = snapshot.Find(added);
        if (!port || !connect)
            return;
        if (snapshot.resources.size() == 1)
            Parts.Doc().RawLog.AcceptShown(); // the form named the first log
        Connect(added, port->name);
    });
}

void CSourceDesk::AskFiles(const QString& title, const QString& filter) {
    AskOpenFiles(Parts.Theme, &Parts.Window, title, {filter, tr("All files (*)")}, true,
                 [this](const QStringList& paths) { AddFiles(paths); });
}

void CSourceDesk::AddFiles(const QStringList& files) {
    const SessionSnapshot snapshot = Parts.Doc().Snapshot();
    const TreeTarget chosen = TargetOf(Parts.Window.Tree().ChosenRow());
    if (files.isEmpty())
        return;
    if (snapshot.resources.size() == 1)
        AddFilesTo(snapshot.resources.front().id, files);
    else if (snapshot.Find(chosen.resource))
        AddFilesTo(chosen.resource, files);
    else
        AddPort(files);
}

void CSourceDesk::AddFilesTo(ResourceId resource, const QStringList& files) {
    CSessionSetup setup(Parts.Doc());
    for (const QString& file : files)
        setup.AddAll({.definitions = {Of(file)}}, resource);
    Parts.SayAll(Sign::Error, setup.Refusals());
    Parts.SayAll(Sign::Warning, setup.Warnings());
}

void CSourceDesk::ConnectAll(bool on) {
    if (!on) {
        Parts.Engine.WorkOnPorts([this] { Parts.Doc().DisconnectAll(); });
        return;
    }
    for (const ResourceStatus& resource : Parts.Doc().Snapshot().resources)
        if (!resource.isFile && !resource.figures.connected)
            Connect(resource.id, resource.name);
}

void CSourceDesk::StartAll(bool on) {
    CQorViewDoc& doc = Parts.Doc();
    for (const ResourceStatus& resource : doc.Snapshot().resources)
        for (const InstrumentFigures& instrument : resource.instruments)
            Parts.SayFault(instrument.name, doc.Instruments.SetAcquisition(instrument.id, on));
}

void CSourceDesk::OpenRoles() {
    qor::OpenRoles(Parts.Form(), {});
}

void CSourceDesk::OpenProperties() {
    OpenPropertiesOf(TargetOf(Parts.Window.Tree().ChosenRow()));
}

void CSourceDesk::OpenPropertiesOf(const TreeTarget& target) {
    if (target.instrument != InstrumentId::None)
        OpenInstrumentProperties(Parts.Form(), target.instrument, {});
    else if (target.package != PackageId::None)
        OpenPackageProperties(Parts.Form(), target.package, {});
    else if (target.resource != ResourceId::None)
        OpenPortProperties(Parts.Form(), target.resource, {});
}

Menu CSourceDesk::MenuOf(const TreeTarget& target) {
    const SessionSnapshot snapshot = Parts.Doc().Snapshot();
    if (const ResourceStatus* resource = snapshot.Find(target.resource))
        return ResourceMenu(*resource);
    if (target.instrument != InstrumentId::None)
        return InstrumentMenu(target.instrument);
    if (target.package != PackageId::None)
        return PackageMenu(target.package);
    return {{Of(tr("Add port ...")), [this] { AddPort(); }},
            {Of(tr("Connect all")), [this] { ConnectAll(true); }}};
}

Menu CSourceDesk::ResourceMenu(const ResourceStatus& resource) {
    CQorViewDoc& doc = Parts.Doc();
    const ResourceId id = resource.id;
    const std::string name = resource.name;
    Menu menu;
    if (resource.isFile) {
        menu.push_back({Of(resource.playing ? tr("Pause") : tr("Play")),
                        [this, &doc, id, name, playing = resource.playing] {
                            Parts.SayFault(name,
                                           playing ? doc.Sources.Pause(id) : doc.Sources.Play(id));
                        }});
    } else if (resource.figures.connected) {
        menu.push_back({Of(tr("Disconnect")), [this, &doc, id, name] {
                            Parts.Try(name, [&doc, id, name] {
                                return doc.DisconnectResource(id) == CommResult::Success
                                           ? std::string()
                                           : name + " could not be disconnected; the session log "
                                                    "says why.";
                            });
                        }});
    } else {
        menu.push_back({Of(tr("Connect")), [this, id, name] { Connect(id, name); }});
    }
    if (!resource.isFile)
        menu.push_back({Of(tr("Try again when lost")),
                        [&doc, id, on = !resource.reconnects] { doc.SetReconnect(id, on); }, true,
                        resource.reconnects});
    menu.push_back(
        {Of(tr("Add instruments ...")), [this, id] {
             AskOpenFiles(Parts.Theme, &Parts.Window, tr("Add instruments"),
                          {tr("Definitions and packages (*.cal *.tdf *.sip)"), tr("All files (*)")},
                          true, [this, id](const QStringList& paths) { AddFilesTo(id, paths); });
         }});
    menu.push_back({Of(tr("Reset counts")),
                    [this, &doc, id, name] { Parts.SayFault(name, doc.Sources.ResetCounts(id)); }});
    menu.push_back({});
    menu.push_back({Of(tr("Properties ...")), [this, id] { OpenPropertiesOf({.resource = id}); }});
    menu.push_back({Of(tr("Remove")), [this, &doc, id, name] {
                        Remove(name, [&doc, id] {
                            return doc.Snapshot().Find(id) ? doc.RemoveResource(id)
                                                           : CommResult::Success;
                        });
                    }});
    return menu;
}

Menu CSourceDesk::InstrumentMenu(InstrumentId instrument) {
    CQorViewDoc& doc = Parts.Doc();
    const SessionSnapshot snapshot = doc.Snapshot();
    const InstrumentFigures* figures = snapshot.Find(instrument);
    if (!figures)
        return {};
    const std::string name = figures->name;
    const bool immersed = figures->immersed, acquired = figures->acquired;
    const bool inPackage = IsInPackage(doc, instrument);
    Menu menu, windows;
    for (const WindowKind& kind : WindowKinds())
        windows.push_back({std::string(kind.title), [this, &kind, name] {
                               emit WindowAsked(Shown(std::string(kind.name)), Shown(name));
                           }});
    menu.push_back({Of(tr("New window")), {}, false, false, {}, std::move(windows)});
    menu.push_back({Of(tr("Immersed (Wet)")),
                    [this, &doc, instrument, name, immersed] {
                        InstrumentDefaults settings = doc.Instruments.Settings(instrument);
                        settings.Immersed = !immersed;
                        Parts.SayFault(name, doc.Instruments.ChangeSettings(instrument, settings));
                    },
                    true, immersed});
    menu.push_back({Of(tr("Acquire")),
                    [this, &doc, instrument, name, acquired] {
                        Parts.SayFault(name, doc.Instruments.SetAcquisition(instrument, !acquired));
                    },
                    true, acquired});
    menu.push_back({Of(tr("Reset counts")), [this, &doc, instrument, name] {
                        Parts.SayFault(name, doc.Instruments.ResetCounts(instrument));
                    }});
    menu.push_back({Of(tr("Keep its settings as default")), [this, &doc, instrument, name] {
                        Parts.SayFault(name, doc.Instruments.UseAsDefault(instrument));
                    }});
    menu.push_back({Of(tr("Move to")), {}, false, false, {}, MoveMenu(*figures)});
    menu.push_back({});
    menu.push_back({Of(tr("Roles ...")), [this] { OpenRoles(); }});
    menu.push_back({Of(tr("Properties ...")),
                    [this, instrument] { OpenPropertiesOf({.instrument = instrument}); }});
    menu.push_back({Of(tr("Remove")),
                    [this, &doc, instrument, name] {
                        Remove(name, [&doc, instrument, name] {
                            const InstrumentId now = HandleNow(doc, instrument, name);
                            return now == InstrumentId::None ? CommResult::Success
                                                             : doc.RemoveInstrument(now);
                        });
                    },
                    false, false, inPackage ? Of(tr("It goes with its package.")) : std::string()});
    return menu;
}

Menu CSourceDesk::MoveMenu(const InstrumentFigures& instrument) {
    CQorViewDoc& doc = Parts.Doc();
    Menu menu;
    for (const ResourceStatus& resource : doc.Snapshot().resources)
        menu.push_back({resource.name, [this, &doc, handle = instrument.id, name = instrument.name,
                                        id = resource.id] {
                            Parts.Try("move", [&doc, handle, name, id] {
                                InstrumentId moved = HandleNow(doc, handle, name);
                                return doc.Instruments.MoveInstrument(moved, id);
                            });
                        }});
    return menu;
}

Menu CSourceDesk::PackageMenu(PackageId package) {
    CQorViewDoc& doc = Parts.Doc();
    return {{Of(tr("Properties ...")), [this, package] { OpenPropertiesOf({.package = package}); }},
            {Of(tr("Remove")), [this, &doc, package] { // asks, and may wait for a log's disk
                 Parts.Engine.WorkOnPorts([&doc, package] { doc.Packages.RemovePackage(package); });
             }}};
}

void CSourceDesk::Refresh(const std::set<std::string>& alarmed) {
    CQorViewDoc& doc = Parts.Doc();
    Parts.Window.Tree().ShowPage(MakeTreePage(doc, Parts.Engine.Rates(), alarmed));
    CActions& actions = Parts.Window.Actions();
    const SessionSnapshot snapshot = doc.Snapshot();
    actions[Do::ConnectAll]->setChecked(AllConnected(snapshot));
    actions[Do::StartAll]->setChecked(AllStarted(snapshot));
}

} // namespace qor
