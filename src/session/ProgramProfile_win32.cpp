// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SettingsFolder.h"
#include "session/ProfileFile.h"
#include "session/ProfileRegistry_win32.h"

namespace qor {

std::unique_ptr<CKeptProfileStore> OpenProgramProfile() {
    if (SettingsInFile()) {
        auto file = std::make_unique<CFileProfileStore>();
        [[maybe_unused]] const FileCause asked = file->Load(SettingsFolder() + "qorview.ini");
        return file;
    }
    auto registry = std::make_unique<CRegistryProfileStore>();
    [[maybe_unused]] const FileCause asked = registry->Load("Software\\QorView");
    return registry;
}

} // namespace qor
