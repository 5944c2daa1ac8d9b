// SPDX-License-Identifier: GPL-3.0-or-later
//
// Look-ups of roles and of the owners of frames. See SessionState.h.
#include "session/SessionState.h"

#include <algorithm>
#include <cstdint>

namespace qor {

RoleHolder SessionState::Role(int role) const {
    CRecursiveLock lock(DocLock);
    if (role < 0 || static_cast<std::size_t>(role) >= Roles.size())
        return {};
    return Roles[static_cast<std::size_t>(role)];
}

CQorViewIns* SessionState::RoleInstrument(InstrumentRole role) const {
    RoleHolder holder = Role(role);
    if (holder.resource < 0 || static_cast<std::size_t>(holder.resource) >= Resources.size())
        return nullptr;
    return Resources[static_cast<std::size_t>(holder.resource)]->Instrument(holder.instrument);
}

void SessionState::RebuildOwners() {
    struct Attachment {
        std::uint32_t identity;
        FrameOwner owner;
    };
    std::vector<Attachment> attachments;
    for (std::size_t r = 0; r < Resources.size(); ++r)
        for (std::size_t i = 0; i < Resources[r]->Instruments.size(); ++i) {
            CQorViewIns* instrument = Resources[r]->Instruments[i].get();
            std::uint32_t identity = Resources[r]->Comm.IdentityOf(instrument->Name());
            if (identity != 0)
                attachments.push_back(
                    {identity, {instrument, static_cast<int>(r), static_cast<int>(i)}});
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

} // namespace qor
