// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desk's part for what telemetry comes from: ports, files, instruments, packages, roles; the
// session's tree and its menus; connecting and starting.
#pragma once

#include "app/desk/DeskParts.h"
#include "views/Menu.h"

#include <set>
#include <string>

namespace qor {

class CSourceDesk : public QObject {
    Q_OBJECT

  public:
    CSourceDesk(const DeskParts& parts, QObject* parent);

    /// The form of a new port, with files that are to be ticked in it.
    void AddPort(const QStringList& files = {});
    void AskFiles(const QString& title, const QString& filter);
    /// Definitions and packages: onto the one port that there is, else onto the chosen one, else
    /// the form of a port.
    void AddFiles(const QStringList& files);
    void ConnectAll(bool on);
    void StartAll(bool on);
    void OpenRoles();
    /// Of the row that is chosen in the tree.
    void OpenProperties();

    /// The tree, and what of the actions is possible now; `alarmed` as MakeTreePage has it.
    void Refresh(const std::set<std::string>& alarmed);

  signals:
    /// A window for an instrument, by the name of its kind.
    void WindowAsked(QString kind, QString instrument);
    void FirstLogAsked();

  private:
    void AddFilesTo(ResourceId resource, const QStringList& files);
    Menu MenuOf(const TreeTarget& target);
    Menu ResourceMenu(const ResourceStatus& resource);
    Menu InstrumentMenu(InstrumentId instrument);
    Menu PackageMenu(PackageId package);
    Menu MoveMenu(const InstrumentFigures& instrument);
    void OpenPropertiesOf(const TreeTarget& target);
    void Connect(ResourceId resource, const std::string& name);
    void Remove(const std::string& name, std::function<CommResult()> removal);

    const DeskParts Parts;
};

} // namespace qor
