// SPDX-License-Identifier: GPL-3.0-or-later
//
// The settings file. Bytes that would end a line or a name early stand as "%XX"; lines that make no
// sense are passed over, for the file may have been edited by hand.
#include "session/ProfileFile.h"

#include "base/Text.h"
#include "platform/WholeFile.h"

#include <algorithm>
#include <vector>

namespace qor {

namespace {

constexpr std::size_t LargestFile = 8U << 20;

bool StandsForItself(char c, std::string_view reserved) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte != 0x7f && c != '%' && reserved.find(c) == std::string_view::npos;
}

/// The text with every byte that has a meaning in its place escaped; outer blanks as well, since
/// reading trims.
std::string Escape(std::string_view text, std::string_view reserved) {
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool outerBlank = text[i] == ' ' && (i == 0 || i + 1 == text.size());
        if (StandsForItself(text[i], reserved) && !outerBlank)
            escaped += text[i];
        else
            escaped += Format("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(text[i])));
    }
    return escaped;
}

int HexDigit(char c) {
    constexpr std::string_view Digits = "0123456789abcdef";
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c + ('a' - 'A')) : c;
    const std::size_t place = Digits.find(lower);
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

std::string Unescape(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 &&
                            HexDigit(text[i + 2]) >= 0;
        plain += escape ? static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]))
                        : text[i];
        i += escape ? 2 : 0;
    }
    return plain;
}

constexpr std::string_view ReservedInSection = "[]";
constexpr std::string_view ReservedInKey = "=[;#";

} // namespace

FileCause CFileProfileStore::Load(const std::string& path) {
    Path = path;
    Values.clear();
    Changed = false;
    std::string text;
    LoadCause = ReadWholeFile(path, LargestFile, text);
    if (LoadCause == FileCause::FileNotFound || LoadCause == FileCause::BadPath)
        LoadCause = FileCause::None;
    if (LoadCause == FileCause::None)
        Parse(text);
    return LoadCause;
}

FileCause CFileProfileStore::Flush() {
    if (LoadCause != FileCause::None)
        return LoadCause;
    if (!Changed)
        return FileCause::None;
    const FileCause cause = WriteWholeFile(Path, Compose());
    Changed = cause != FileCause::None;
    return cause;
}

void CFileProfileStore::WriteText(const std::string& section, const std::string& key,
                                  const std::string& value) {
    const auto found = Values.find({section, key});
    if (found != Values.end() && found->second == value)
        return;
    CMemoryProfileStore::WriteText(section, key, value);
    Changed = true;
}

void CFileProfileStore::Parse(std::string_view text) {
    std::string section;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = Trim(text.substr(at, end - at));
        at = end + 1;
        if (line.empty() || line.front() == ';' || line.front() == '#')
            continue;
        if (line.front() == '[') {
            section = Unescape(line.substr(1, line.find(']') - 1));
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos)
            Values[{section, Unescape(Trim(line.substr(0, equals)))}] =
                Unescape(Trim(line.substr(equals + 1)));
    }
}

std::string CFileProfileStore::Compose() const {
    std::string text;
    const std::string* section = nullptr;
    for (const auto& [place, value] : Values) {
        if (!section || *section != place.first)
            text += '[' + Escape(place.first, ReservedInSection) + "]\n";
        section = &place.first;
        text += Escape(place.second, ReservedInKey) + '=' + Escape(value, {}) + '\n';
    }
    return text;
}

} // namespace qor
