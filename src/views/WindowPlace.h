// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where a display window stands, as every display keeps it among its settings. Read and written on
// the user-interface thread.
#pragma once

#include "session/ProfileStore.h"

#include <string>

namespace qor {

struct WindowPlace {
    int XPosition = -1; ///< -1: never placed
    int YPosition = -1;
    int ShowCmd = 1;

    void SavePlace(CProfileStore& store, const std::string& section) const;
    /// Absent keys leave their fields alone.
    void LoadPlace(const CProfileStore& store, const std::string& section);
};

/// Reads a display's integer; an absent key (or a stored -1) leaves the field alone.
void LoadInteger(const CProfileStore& store, const std::string& section, const std::string& key,
                 int& field);

} // namespace qor
