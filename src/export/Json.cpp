// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/Json.h"

#include "base/Text.h"

#include <cmath>

namespace qor {

namespace {

/// True when the bytes are well-formed UTF-8 (no overlong forms, surrogates or code points beyond
/// U+10FFFF).
bool IsUtf8(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size();) {
        auto lead = static_cast<unsigned char>(bytes[i++]);
        int more = lead < 0x80                   ? 0
                   : lead >= 0xC2 && lead < 0xE0 ? 1
                   : lead >= 0xE0 && lead < 0xF0 ? 2
                   : lead >= 0xF0 && lead < 0xF5 ? 3
                                                 : -1;
        if (more < 0 || static_cast<std::size_t>(more) > bytes.size() - i)
            return false;
        std::uint32_t code = more == 0 ? lead : lead & (0x3Fu >> more);
        for (int k = 0; k < more; ++k, ++i) {
            auto next = static_cast<unsigned char>(bytes[i]);
            if ((next & 0xC0) != 0x80)
                return false;
            code = code << 6 | (next & 0x3Fu);
        }
        constexpr std::uint32_t least[] = {0, 0x80, 0x800, 0x10000};
        if (code < least[more] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
            return false;
    }
    return true;
}

} // namespace

void CJsonWriter::Separate() {
    if (NeedsComma)
        Out.Char(',');
    NeedsComma = true;
}

void CJsonWriter::Open(char bracket) {
    Separate();
    Out.Char(bracket);
    NeedsComma = false;
}

void CJsonWriter::Close(char bracket) {
    Out.Char(bracket);
    NeedsComma = true;
}

void CJsonWriter::EndLine() {
    Out.Char('\n');
    NeedsComma = false;
}

void CJsonWriter::Key(std::string_view name) {
    Separate();
    Out.Char('"');
    Out.Text(name);
    Out.Text("\":");
    NeedsComma = false;
}

void CJsonWriter::Text(std::string_view bytes) {
    Separate();
    Escaped(bytes, false);
}

void CJsonWriter::Path(std::string_view path) {
    Separate();
    Escaped(path, IsUtf8(path));
}

void CJsonWriter::Escaped(std::string_view bytes, bool utf8) {
    Out.Char('"');
    for (char c : bytes) {
        auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            Out.Char('\\');
            Out.Char(c);
        } else if (byte < 0x20 || byte == 0x7F) {
            Out.Text(c == '\r'   ? "\\r"
                     : c == '\n' ? "\\n"
                     : c == '\t' ? "\\t"
                                 : Format("\\u%04x", byte));
        } else if (byte < 0x80 || utf8) {
            Out.Char(c);
        } else {
            Out.Char(static_cast<char>(0xC0 | byte >> 6));
            Out.Char(static_cast<char>(0x80 | (byte & 0x3F)));
        }
    }
    Out.Char('"');
}

void CJsonWriter::Code(std::uint32_t code) {
    Text(Format("0x%08x", code));
}

void CJsonWriter::NumberOrNull(std::optional<double> value) {
    if (value && std::isfinite(*value))
        Number(*value);
    else
        Null();
}

} // namespace qor
