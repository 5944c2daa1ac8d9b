// SPDX-License-Identifier: GPL-3.0-or-later
//
// Adding and removing the packages of a session.
#include "session/PackageList.h"

#include "base/Text.h"
#include "session/FileKind.h"
#include "session/QorViewDoc.h"
#include "session/SessionFields.h"

#include <algorithm>

namespace qor {

PackageId CPackageList::Named(std::string_view name) const {
    CRecursiveLock lock(Doc.DocLock);
    for (const auto& package : Doc.PackageTable)
        if (package->Name == name)
            return package->Id;
    return PackageId::None;
}

bool CPackageList::RefuseInCalibrationMode() {
    bool refuse;
    {
        CRecursiveLock lock(Doc.DocLock);
        refuse = Doc.CalibrationMode;
    }
    if (refuse)
        Doc.User.ShowMessage(LockedText);
    return refuse;
}

PackageId CPackageList::AddPackage(const std::string& path, ResourceId resource) {
    if (RefuseInCalibrationMode())
        return PackageId::None;
    return AddPackage(LoadPackage(path, Doc.User, Doc), resource);
}

PackageId CPackageList::AddPackage(LoadedPackage loaded, ResourceId resource,
                                   const PackageSettings& settings,
                                   std::vector<RefusedMember>* refused) {
    if (!loaded.ok || RefuseInCalibrationMode())
        return PackageId::None;
    auto package = std::make_unique<CPackage>();
    package->Name = loaded.name;
    package->BaudRate = loaded.baudRate;
    package->Path = loaded.path;
    package->Settings = settings;
    Doc.Manifests.NoteSource(loaded.path);
    for (PackageMember& member : loaded.members) {
        Doc.Report(member.instrument->ParseLog());
        const AddedInstrument added = Doc.AddInstrument(std::move(member.instrument), resource);
        if (added.Added())
            package->Add(member.name, added.name);
        else if (refused)
            refused->push_back({member.name, added.comm});
    }
    if (package->Instruments.empty()) {
        Doc.User.ShowMessage(
            Format("The Instrument Package file: %s \r\ncontains no valid Instruments.",
                   loaded.path.c_str()));
        return PackageId::None;
    }
    const auto id = package->Id = static_cast<PackageId>(++LastPackage);
    CRecursiveLock lock(Doc.DocLock);
    Doc.PackageTable.push_back(std::move(package));
    Doc.RebuildOwners();
    for (const std::string& fault : Doc.Find(id)->Products.UnitFaults())
        Doc.Raise({EventKind::UnitsUnknown, Doc.Find(id)->Name, fault + "\r\n"});
    return id;
}

bool CPackageList::AddFile(const std::string& path, ResourceId resource) {
    if (RefuseInCalibrationMode())
        return false;
    if (KindByName(path) == FileKind::Package)
        return AddPackage(path, resource) != PackageId::None;
    if (KindByName(path) == FileKind::Definition)
        return Doc.AddInstrument(path, resource).Added();
    Doc.User.ShowMessage(NotInstrumentFile(path));
    return false;
}

bool CPackageList::RemovePackage(PackageId package) {
    // Decided: the list is locked for removing as well.
    if (RefuseInCalibrationMode())
        return false;
    std::string name;
    {
        CRecursiveLock lock(Doc.DocLock);
        const CPackage* found = Doc.Find(package);
        if (!found) {
            Doc.Report("Cannot retrieve instrument package for removal.\r\n");
            return false;
        }
        name = found->Name;
    }
    if (!Doc.User.AskYesNo(Format("Are you sure you want to remove the package %s?", name.c_str())))
        return false;

    const CSettledLock lock(Doc.DocLock, Doc.RawLog);
    const CPackage* found = Doc.Find(package); // it may have gone while the operator was asked
    if (!found)
        return false;
    const std::vector<InstrumentId> members = found->Attached;
    std::erase_if(Doc.PackageTable, [package](const auto& one) { return one->Id == package; });
    Doc.RebuildOwners(); // what its instruments have queued is still checked and logged
    for (const InstrumentId member : members)
        if (Doc.Find(member))
            static_cast<void>(Doc.Detach(member)); // reported
    return true;
}

std::string CPackageList::ChangeSettings(PackageId package, const PackageSettings& settings) {
    if (RefuseInCalibrationMode())
        return LockedText;
    struct {
        const char* what;
        double value;
        Range range;
    } const numbers[] = {
        {"default salinity", settings.DefaultSalinity, SalinityRange},
        {"saturation irradiance", settings.SaturationIrradiance, IrradianceRange},
        {"attenuation window", settings.AttenuationWindow, WindowRange},
    };
    for (const auto& [what, value, range] : numbers)
        if (!(value >= range.least && value <= range.greatest))
            return Format("The %s is not in %s to %s.", what, ShortestNumber(range.least).c_str(),
                          ShortestNumber(range.greatest).c_str());
    CRecursiveLock lock(Doc.DocLock);
    CPackage* found = Doc.Find(package);
    if (!found)
        return "There is no such package in the session any more.";
    found->Settings = settings;
    found->Products = CPackageRows(found->Live, settings, Doc.Derived);
    Doc.NoteChange();
    return {};
}

SerialResourceSettings PackagePort(const LoadedPackage& loaded, SerialResourceSettings settings,
                                   CUserService& user) {
    const std::optional<std::uint32_t> baudRate = WholeCount(Trim(loaded.baudRate));
    if (baudRate && *baudRate > 0)
        settings.baudRate = *baudRate;
    else
        user.ShowMessage(Format("The Instrument Package Baud Rate \"%s\" of %s\r\n"
                                "is not a number. The Baud Rate is %u bps.",
                                loaded.baudRate.c_str(), loaded.path.c_str(), settings.baudRate));
    return settings;
}

} // namespace qor
