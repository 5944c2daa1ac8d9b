// SPDX-License-Identifier: GPL-3.0-or-later
//
// Kinds of files by their extension, as the operator knows them, and by their content for those
// that were renamed on their way.
#include "session/FileKind.h"

#include "base/Text.h"
#include "platform/File.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <vector>

namespace qor {

namespace {

constexpr struct {
    std::string_view extension;
    FileKind kind;
} Extensions[] = {
    {"sip", FileKind::Package}, {"cal", FileKind::Definition}, {"tdf", FileKind::Definition},
    {"qor", FileKind::Session}, {"raw", FileKind::RawLog},
};

/// Comments may stand before a definition's header line and other members before a session's.
constexpr std::size_t BeginBytes = 65536;

bool HasHeaderLine(std::string_view text) {
    while (!text.empty()) {
        std::string_view line = TrimLeft(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
        line = line.substr(0, line.find_first_of(" \t\r"));
        if (EqualsNoCase(line, "INSTRUMENT") || EqualsNoCase(line, "VLF_INSTRUMENT"))
            return true;
    }
    return false;
}

} // namespace

std::string FolderPartOf(std::string_view path) {
    return std::string(path.substr(0, path.size() - LastPartOf(path).size()));
}

std::string_view LastPartOf(std::string_view path) {
    return path.substr(path.find_last_of("/\\") + 1); // all of it where there is none
}

std::string ExtensionOf(std::string_view path) {
    path = LastPartOf(path);
    const std::size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? std::string() : ToLower(path.substr(dot + 1));
}

std::string StemOf(std::string_view path) {
    path = LastPartOf(path);
    return std::string(path.substr(0, path.rfind('.')));
}

FileKind KindByName(std::string_view path) {
    std::string extension = ExtensionOf(path);
    if (extension == "gz" || extension == "zst") {
        path.remove_suffix(extension.size() + 1);
        return ExtensionOf(path) == "raw" ? FileKind::RawLog : FileKind::Other;
    }
    for (const auto& known : Extensions)
        if (known.extension == extension)
            return known.kind;
    return FileKind::Other;
}

FileKind KindByContent(ByteSpan begin) {
    if (BeginsWith(begin, "PK\3\4") || BeginsWith(begin, "PK\5\6"))
        return FileKind::Package;
    if (BeginsHeaderRecord(begin))
        return FileKind::RawLog;
    std::string_view text = WithoutByteOrderMark(AsText(begin));
    if (TrimLeft(text).starts_with('{') && text.find("\"qorview-session\"") != text.npos)
        return FileKind::Session;
    const bool isText = text.find('\0') == text.npos;
    return isText && HasHeaderLine(text) ? FileKind::Definition : FileKind::Other;
}

FileKind KindOfFile(const std::string& path) {
    CFile file;
    std::vector<std::uint8_t> begin(BeginBytes);
    std::size_t got = 0;
    const FileKind named = KindByName(path);
    if (named != FileKind::Other || IsDevice(path) ||
        file.OpenForReading(path) != FileCause::None || file.Read(begin, got) != FileCause::None)
        return named;
    return KindByContent(ByteSpan(begin).first(got));
}

bool MayBeInstrumentFile(std::string_view path) {
    const FileKind kind = KindByName(path);
    return kind == FileKind::Package || kind == FileKind::Definition ||
           (kind == FileKind::Other && ExtensionOf(path).empty());
}

std::string NotInstrumentFile(const std::string& path) {
    return "The file extension for " + path + " \r\nis not a Package/Calibration/TDF file.";
}

} // namespace qor
