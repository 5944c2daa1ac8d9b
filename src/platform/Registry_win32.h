// SPDX-License-Identifier: GPL-3.0-or-later
//
// Texts in this user's part of the registry (HKEY_CURRENT_USER). Keys are named below it, as
// "Software\QorView"; all texts are UTF-8. Windows only. Any thread; no state.
#pragma once

#include "platform/File.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

struct RegistryText {
    std::string key;  ///< below the one that was read; empty: its own
    std::string name; ///< empty: the key's default value
    std::string text;
};

/// The texts of a key and of all keys below it, to a depth of eight; values of other types are
/// passed over. A key that is missing holds none. `texts` is empty after a failure.
FileCause ReadRegistry(const std::string& key, std::vector<RegistryText>& texts);

/// One text; nothing when there is none.
std::optional<std::string> ReadRegistryText(const std::string& key, const std::string& name);

/// Makes the key when it is missing.
FileCause WriteRegistry(const std::string& key, const std::string& name, const std::string& text);

/// Removes a key with all below it; None when it is missing.
FileCause RemoveRegistryKey(const std::string& key);
FileCause RemoveRegistryText(const std::string& key, const std::string& name);

} // namespace qor
