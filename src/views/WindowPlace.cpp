// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/WindowPlace.h"

namespace qor {

void WindowPlace::SavePlace(CProfileStore& store, const std::string& section) const {
    store.WriteInteger(section, "XPosition", XPosition);
    store.WriteInteger(section, "YPosition", YPosition);
    store.WriteInteger(section, "ShowCmd", ShowCmd);
}

void WindowPlace::LoadPlace(const CProfileStore& store, const std::string& section) {
    LoadInteger(store, section, "XPosition", XPosition);
    LoadInteger(store, section, "YPosition", YPosition);
    LoadInteger(store, section, "ShowCmd", ShowCmd);
}

void LoadInteger(const CProfileStore& store, const std::string& section, const std::string& key,
                 int& field) {
    constexpr int Absent = -1;
    const int stored = store.ReadInteger(section, key, Absent);
    if (stored != Absent)
        field = stored;
}

} // namespace qor
