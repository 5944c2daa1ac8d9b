// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SettingsFolder.h"
#include "session/ProfileFile.h"

namespace qor {

std::unique_ptr<CKeptProfileStore> OpenProgramProfile() {
    auto store = std::make_unique<CFileProfileStore>();
    [[maybe_unused]] const FileCause asked = store->Load(SettingsFolder() + "qorview.ini");
    return store;
}

} // namespace qor
