// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/Json.h"

#include "base/Text.h"

#include <cmath>

namespace qor {

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

void CJsonWriter::Name(std::string_view bytes) {
    Text(bytes);
    Out.Char(':');
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
