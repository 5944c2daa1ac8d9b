// SPDX-License-Identifier: GPL-3.0-or-later
//
// Look-ups of roles, handles and the owners of frames. See SessionState.h.
#include "session/SessionState.h"

#include "session/PressureTare.h"

#include <algorithm>
#include <cstdint>

namespace qor {

InstrumentId SessionState::Role(int role) const {
    CRecursiveLock lock(DocLock);
    if (role < 0 || static_cast<std::size_t>(role) >= Roles.size())
        return InstrumentId::None;
    return Roles[static_cast<std::size_t>(role)];
}

CQorViewIns* SessionState::RoleInstrument(InstrumentRole role) const {
    return Find(Role(role));
}

const SessionState::FrameOwner* SessionState::OwnerNamed(const std::string& name) const {
    for (const auto& resource : Resources)
        if (const CQorViewIns* found = resource->Instrument(name))
            return OwnerOf(found->Id);
    return nullptr;
}

CQorViewIns* SessionState::Find(InstrumentId id) const {
    const FrameOwner* owner = OwnerOf(id);
    return owner ? owner->instrument : nullptr;
}

CQorViewRes* SessionState::Find(ResourceId id) const {
    const auto found = std::ranges::find(Resources, id, [](const auto& one) { return one->Id; });
    return found == Resources.end() ? nullptr : found->get();
}

CPackage* SessionState::Find(PackageId id) const {
    const auto found = std::ranges::find(PackageTable, id, [](const auto& one) { return one->Id; });
    return found == PackageTable.end() ? nullptr : found->get();
}

std::vector<LoggedInstrument> SessionState::LoggedInstruments() const {
    std::vector<LoggedInstrument> logged;
    for (const auto& resource : Resources)
        for (const auto& instrument : resource->Instruments)
            if (instrument->LoggingEnabled)
                logged.push_back({MakeAttachRequest(instrument->Definition()),
                                  Role(InstrumentRole::Gps) != instrument->Id});
    return logged;
}

void SessionState::NoteChange() {
    if (!ChangeRaised.exchange(true) && OnChange)
        OnChange();
}

void SessionState::RebuildOwners() {
    ++OwnersVersion;
    NoteChange();
    struct Attachment {
        std::uint32_t identity;
        FrameOwner owner;
    };
    std::vector<Attachment> attachments;
    for (const auto& resource : Resources)
        for (const auto& instrument : resource->Instruments)
            if (const auto identity = static_cast<std::uint32_t>(instrument->Id); identity != 0)
                attachments.push_back({identity,
                                       {instrument.get(), resource.get(), nullptr,
                                        resource->IsFile() ? &resource->Pace : nullptr}});
    for (const auto& package : PackageTable) {
        std::vector<InstrumentId> attached;
        package->Live.clear();
        for (const std::string& name : package->Instruments) {
            const auto found = std::ranges::find(
                attachments, name, [](const Attachment& a) { return a.owner.instrument->Name(); });
            const bool there = found != attachments.end();
            if (there)
                found->owner.package = package.get();
            attached.push_back(there ? found->owner.instrument->Id : InstrumentId::None);
            package->Live.push_back(there ? &found->owner.instrument->Live : nullptr);
        }
        // Products remember sensors by place: another definition under an old name is another cast.
        for (std::size_t i = 0; i < attached.size(); ++i)
            if (attached[i] != InstrumentId::None &&
                (i >= package->Attached.size() || package->Attached[i] != attached[i])) {
                package->Products = CPackageRows(package->Live, package->Settings, Derived);
                package->Attached = attached;
            }
    }
    Owners.clear();
    FirstIdentity = 0;
    if (attachments.empty())
        return;
    auto [least, greatest] = std::ranges::minmax_element(
        attachments, {}, [](const Attachment& a) { return a.identity; });
    FirstIdentity = least->identity;
    Owners.resize(std::size_t{greatest->identity} - FirstIdentity + 1);
    for (const Attachment& attachment : attachments)
        Owners[attachment.identity - FirstIdentity] = attachment.owner;
}

CPackageRows::Inputs SessionState::InputsOf(const CPackage& package) const {
    return {package.Live, package.Settings, TareIn(*this, package.Products.PressureUnits()),
            Clock.MonotonicMilliseconds()};
}

FrameTime MomentOf(const SessionState& session, const CQorViewIns& instrument) {
    const CFrameData* frame = instrument.Live.CurrentFrame();
    const SessionState::FrameOwner* owner = session.OwnerOf(instrument.Id);
    if (!frame)
        return {};
    return owner ? owner->resource->Moment(frame->Info.time) : frame->Info.time;
}

} // namespace qor
