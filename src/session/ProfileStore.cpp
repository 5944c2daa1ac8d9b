// SPDX-License-Identifier: GPL-3.0-or-later
//
// The profile store in memory. Integers are kept as decimal text, as a settings file keeps them.
#include "session/ProfileStore.h"

#include "base/Text.h"

#include <charconv>

namespace qor {

int CMemoryProfileStore::ReadInteger(const std::string& section, const std::string& key,
                                     int absent) const {
    const auto found = Values.find({section, key});
    if (found == Values.end())
        return absent;
    const std::string_view text = Trim(found->second);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : absent;
}

std::string CMemoryProfileStore::ReadText(const std::string& section,
                                          const std::string& key) const {
    const auto found = Values.find({section, key});
    return found == Values.end() ? std::string() : found->second;
}

void CMemoryProfileStore::WriteInteger(const std::string& section, const std::string& key,
                                       int value) {
    WriteText(section, key, std::to_string(value));
}

void CMemoryProfileStore::WriteText(const std::string& section, const std::string& key,
                                    const std::string& value) {
    Values[{section, key}] = value;
}

} // namespace qor
