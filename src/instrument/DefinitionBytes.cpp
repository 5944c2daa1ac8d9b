// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the first bytes of a definition file tell of its characters.
#include "instrument/DefinitionBytes.h"

namespace qor {

namespace {

/// Without a mark: definition files begin with characters whose other byte is NUL.
bool HasEmptyHalves(std::string_view text) {
    const auto empty = [text](std::size_t at) { return text[at] == '\0'; };
    return text.size() >= 4 && empty(0) == empty(2) && empty(1) == empty(3) && empty(0) != empty(1);
}

} // namespace

TextEncoding EncodingOf(std::string_view text) {
    if (text.starts_with(Utf8Mark))
        return TextEncoding::MarkedUtf8;
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") || HasEmptyHalves(text))
        return TextEncoding::Utf16;
    return TextEncoding::Bytes;
}

} // namespace qor
