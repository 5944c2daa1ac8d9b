// SPDX-License-Identifier: GPL-3.0-or-later
//
// The settings folder as the XDG base directory convention has it.
#include "platform/SettingsFolder.h"

#include "platform/File.h"

#include <cstdlib>

namespace qor {

namespace {

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string AsFolder(const std::string& path) {
    return path.ends_with('/') ? path : path + '/';
}

} // namespace

std::string SettingsFolder() {
    if (const std::string own = Variable("QORVIEW_HOME"); !own.empty())
        return AsFolder(FullPathOf(own));
    // A relative folder is to be ignored, says the convention.
    if (const std::string config = Variable("XDG_CONFIG_HOME"); config.starts_with('/'))
        return AsFolder(config) + "qorview/";
    const std::string home = Variable("HOME");
    return home.empty() ? home : AsFolder(home) + ".config/qorview/";
}

bool SettingsInFile() {
    return true;
}

} // namespace qor
