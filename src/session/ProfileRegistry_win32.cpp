// SPDX-License-Identifier: GPL-3.0-or-later
//
// The registry takes any text but no bytes that are none: those stand as "%XX", and so do
// backslashes that would leave a key without a name.
#include "session/ProfileRegistry_win32.h"

#include "base/Text.h"
#include "platform/Registry_win32.h"

#include <algorithm>

namespace qor {

namespace {

std::string BytesBeyondAscii() {
    std::string bytes;
    for (int byte = 0x80; byte <= 0xff; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

/// Text as it is, other bytes each by itself.
std::string Stored(std::string_view text) {
    return EscapeProfileText(text, IsUtf8(text) ? std::string() : BytesBeyondAscii());
}

std::string KeyOf(std::string_view section) {
    const bool unnamed = section.starts_with('\\') || section.ends_with('\\') ||
                         section.find("\\\\") != std::string_view::npos;
    if (!unnamed)
        return Stored(section);
    return EscapeProfileText(section,
                             "\\" + (IsUtf8(section) ? std::string() : BytesBeyondAscii()));
}

} // namespace

FileCause CRegistryProfileStore::Load(const std::string& root) {
    Root = root;
    Values.clear();
    std::vector<RegistryText> texts;
    const FileCause cause = ReadRegistry(Root, texts);
    for (const RegistryText& text : texts)
        Values[{UnescapeProfileText(text.key), UnescapeProfileText(text.name)}] =
            UnescapeProfileText(text.text);
    return Loaded(cause);
}

FileCause CRegistryProfileStore::Save(const Places& changed) {
    FileCause first = FileCause::None;
    for (const auto& [section, key] : changed) {
        const std::string place = section.empty() ? Root : Root + '\\' + KeyOf(section);
        const FileCause cause = WriteRegistry(place, Stored(key), Stored(ReadText(section, key)));
        first = first == FileCause::None ? cause : first;
    }
    return first;
}

} // namespace qor
