// SPDX-License-Identifier: GPL-3.0-or-later
//
// The settings file. Bytes that would end a line or a name early stand as "%XX"; lines that make no
// sense are passed over, for the file may have been edited by hand.
#include "session/ProfileFile.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <vector>

namespace qor {

namespace {

constexpr std::uint64_t LargestFile = 8U << 20;

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

/// Puts the written file in the place of the old one in one step.
FileCause RenameOver(const std::string& from, const std::string& to) {
    const auto pathOf = [](const std::string& text) {
        return std::filesystem::path(std::u8string(text.begin(), text.end()));
    };
    std::error_code error;
    std::filesystem::rename(pathOf(from), pathOf(to), error);
    if (!error)
        return FileCause::None;
    return error == std::errc::permission_denied ? FileCause::AccessDenied : FileCause::Generic;
}

FileCause ReadWhole(const std::string& path, std::string& text) {
    CFile file;
    std::uint64_t size = 0;
    FileCause cause = file.OpenForReading(path);
    if (cause == FileCause::None)
        cause = file.Size(size);
    if (cause != FileCause::None)
        return cause;
    if (size > LargestFile)
        return FileCause::InvalidFile;
    std::array<std::uint8_t, 4096> buffer{};
    std::size_t got = 1;
    while (got > 0 && text.size() <= LargestFile) {
        cause = file.Read(buffer, got);
        if (cause != FileCause::None)
            return cause;
        text += AsText(ByteSpan(buffer).first(got));
    }
    return FileCause::None;
}

} // namespace

FileCause CFileProfileStore::Load(const std::string& path) {
    Path = path;
    Values.clear();
    Changed = false;
    std::string text;
    LoadCause = ReadWhole(path, text);
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
    const std::string temporary = Path + ".new";
    CFile file;
    FileCause cause = file.CreateExclusive(temporary);
    if (cause != FileCause::None)
        return cause;
    cause = file.Write(AsBytes(Compose()));
    if (cause == FileCause::None)
        cause = file.Sync();
    file.Close();
    if (cause == FileCause::None)
        cause = RenameOver(temporary, Path);
    if (cause == FileCause::None)
        Changed = false;
    else
        static_cast<void>(RemoveFile(temporary));
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
