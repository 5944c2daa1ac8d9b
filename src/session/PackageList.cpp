// SPDX-License-Identifier: GPL-3.0-or-later
//
// Adding and removing the packages of a session.
#include "session/PackageList.h"

#include "base/Text.h"
#include "session/FileKind.h"

#include <algorithm>

namespace qor {

bool CPackageList::RefuseInCalibrationMode() {
    if (CalibrationMode)
        Doc.User.ShowMessage(
            "The Instrument Package List cannot be modified while in Calibration Mode.");
    return CalibrationMode;
}

CPackage* CPackageList::AddPackage(const std::string& path, int resource) {
    if (RefuseInCalibrationMode())
        return nullptr;
    return AddPackage(LoadPackage(path, Doc.User, Doc), resource);
}

CPackage* CPackageList::AddPackage(LoadedPackage loaded, int resource,
                                   std::vector<RefusedMember>* refused) {
    if (!loaded.ok || RefuseInCalibrationMode())
        return nullptr;
    auto package = std::make_unique<CPackage>();
    package->Name = loaded.name;
    package->BaudRate = loaded.baudRate;
    package->Path = loaded.path;
    for (PackageMember& member : loaded.members) {
        Doc.Report(member.instrument->ParseLog());
        AddedInstrument added = Doc.AddInstrument(std::move(member.instrument), resource);
        if (added.instrument)
            package->Instruments.push_back(added.instrument->Name());
        else if (refused)
            refused->push_back({member.name, std::move(added)});
    }
    if (package->Instruments.empty()) {
        Doc.User.ShowMessage(
            Format("The Instrument Package file: %s \r\ncontains no valid Instruments.",
                   loaded.path.c_str()));
        return nullptr;
    }
    CRecursiveLock lock(Doc.DocLock);
    Packages.push_back(std::move(package));
    return Packages.back().get();
}

bool CPackageList::AddFile(const std::string& path, int resource) {
    if (RefuseInCalibrationMode())
        return false;
    if (KindByName(path) == FileKind::Package)
        return AddPackage(path, resource) != nullptr;
    if (KindByName(path) == FileKind::Definition)
        return Doc.AddInstrument(path, resource).instrument != nullptr;
    Doc.User.ShowMessage(NotInstrumentFile(path));
    return false;
}

bool CPackageList::RemovePackage(const CPackage* package) {
    // Decided: the list is locked for removing as well.
    if (RefuseInCalibrationMode())
        return false;
    const auto isIt = [package](const std::unique_ptr<CPackage>& one) {
        return one.get() == package;
    };
    std::string name;
    {
        CRecursiveLock lock(Doc.DocLock);
        const auto found = std::find_if(Packages.begin(), Packages.end(), isIt);
        if (found == Packages.end()) {
            Doc.Report("Cannot retrieve instrument package for removal.\r\n");
            return false;
        }
        name = (*found)->Name;
    }
    if (!Doc.User.AskYesNo(Format("Are you sure you want to remove the package %s?", name.c_str())))
        return false;

    CRecursiveLock lock(Doc.DocLock);
    const auto found = std::find_if(Packages.begin(), Packages.end(), isIt);
    for (const std::string& instrument : (*found)->Instruments) {
        RoleHolder place;
        if (Doc.FindInstrument(instrument, &place))
            static_cast<void>(Doc.RemoveInstrument(place.resource, place.instrument)); // reported
    }
    Packages.erase(found);
    return true;
}

std::size_t CPackageList::Count() const {
    CRecursiveLock lock(Doc.DocLock);
    return Packages.size();
}

CPackage* CPackageList::Package(std::size_t index) const {
    CRecursiveLock lock(Doc.DocLock);
    return index < Packages.size() ? Packages[index].get() : nullptr;
}

CPackage* CPackageList::PackageOf(std::string_view instrument) const {
    CRecursiveLock lock(Doc.DocLock);
    for (const auto& package : Packages)
        for (const std::string& name : package->Instruments)
            if (name == instrument)
                return package.get();
    return nullptr;
}

std::vector<const CLiveInstrument*> CPackageList::InstrumentsOf(const CPackage& package) const {
    std::vector<const CLiveInstrument*> instruments;
    for (const std::string& name : package.Instruments) {
        const CQorViewIns* instrument = Doc.FindInstrument(name);
        instruments.push_back(instrument ? &instrument->Live : nullptr);
    }
    return instruments;
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
