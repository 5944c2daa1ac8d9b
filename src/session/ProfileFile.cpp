// SPDX-License-Identifier: GPL-3.0-or-later
//
// The settings file. Bytes that would end a line or a name early stand as "%XX"; lines that make no
// sense are passed over, for the file may have been edited by hand.
#include "session/ProfileFile.h"

#include "base/Text.h"
#include "platform/WholeFile.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t LargestProfile = 8U << 20;
constexpr std::string_view ReservedInSection = "[]";
constexpr std::string_view ReservedInKey = "=[;#";

} // namespace

FileCause CFileProfileStore::Load(const std::string& path) {
    Path = path;
    Values.clear();
    std::string text;
    FileCause cause = ReadWholeFile(path, LargestProfile, text);
    if (cause == FileCause::FileNotFound || cause == FileCause::BadPath)
        cause = FileCause::None;
    if (cause == FileCause::None)
        Parse(text);
    return Loaded(cause);
}

FileCause CFileProfileStore::Save(const Places&) {
    return WriteWholeFile(Path, Compose());
}

void CFileProfileStore::Parse(std::string_view text) {
    std::string section;
    text = WithoutByteOrderMark(text);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = Trim(text.substr(at, end - at));
        at = end + 1;
        if (line.empty() || line.front() == ';' || line.front() == '#')
            continue;
        if (line.front() == '[') {
            section = UnescapeProfileText(line.substr(1, line.find(']') - 1));
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos)
            Values[{section, UnescapeProfileText(Trim(line.substr(0, equals)))}] =
                UnescapeProfileText(Trim(line.substr(equals + 1)));
    }
}

std::string CFileProfileStore::Compose() const {
    std::string text;
    const std::string* section = nullptr;
    for (const auto& [place, value] : Values) {
        if (!section || *section != place.first)
            text += '[' + EscapeProfileText(place.first, ReservedInSection) + "]\n";
        section = &place.first;
        text += EscapeProfileText(place.second, ReservedInKey) + '=' +
                EscapeProfileText(value, {}) + '\n';
    }
    return text;
}

} // namespace qor
