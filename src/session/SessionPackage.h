// SPDX-License-Identifier: GPL-3.0-or-later
//
// A package of the session: its name and settings, which instruments it has, and its products,
// which follow the cast frame by frame. Owned by the document and guarded by its lock.
#pragma once

#include "products/PackageRows.h"
#include "session/Handles.h"

#include <string>
#include <utility>
#include <vector>

namespace qor {

struct CPackage {
    PackageId Id = PackageId::None;
    std::string Name;
    std::string BaudRate; ///< as its properties have it
    std::string Path;
    std::vector<std::string> Instruments; ///< names, in archive order
    std::vector<std::string> Members;     ///< the files that they came from, in the same order
    PackageSettings Settings;

    void Add(std::string member, std::string instrument) {
        Members.push_back(std::move(member));
        Instruments.push_back(std::move(instrument));
    }

    CPackageRows Products;
    /// Its instruments as the session has them now, in the order of their names; null for one that
    /// was removed. Kept right by the document.
    std::vector<const CLiveInstrument*> Live;
    std::vector<InstrumentId> Attached; ///< whose products these are
};

} // namespace qor
