// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/TerminalText.h"

#include "base/Text.h"

#include <algorithm>

namespace qor {

namespace {

struct CodeRange {
    char32_t first, last;
};

constexpr CodeRange Obeyed[] = {
    {0x00, 0x1F},     // C0
    {0x7F, 0x9F},     // DEL and C1
    {0x202A, 0x202E}, // embeddings and overrides of the writing direction
    {0x2066, 0x2069}, // isolates
};

bool IsObeyed(char32_t code) {
    return std::ranges::any_of(
        Obeyed, [&](const CodeRange& range) { return range.first <= code && code <= range.last; });
}

/// The well-formed character at the beginning, or empty.
std::string_view FirstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const std::string_view character = text.substr(0, size);
    return character.size() == size && IsUtf8(character) ? character : std::string_view();
}

/// Of a well-formed character.
char32_t CodeOf(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    char32_t code = character.size() == 1 ? lead : lead & (0x7FU >> character.size());
    for (char c : character.substr(1))
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    return code;
}

void Escape(std::string_view bytes, std::string& shown) {
    constexpr std::string_view Digits = "0123456789abcdef";
    for (char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        shown += "\\x";
        shown += Digits[byte >> 4U];
        shown += Digits[byte & 15U];
    }
}

} // namespace

std::string TerminalText(std::string_view text, TerminalLayout layout) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const bool plain = text[0] >= ' ' && text[0] <= '~';
        const bool ours = layout == TerminalLayout::Lines &&
                          (text[0] == '\n' || text[0] == '\t' || text.starts_with("\r\n"));
        const std::string_view character = FirstCharacter(text);
        const std::string_view piece = text.substr(0, std::max<std::size_t>(character.size(), 1));
        if (plain || ours || (!character.empty() && !IsObeyed(CodeOf(character))))
            shown += piece;
        else
            Escape(piece, shown);
        text.remove_prefix(piece.size());
    }
    return shown;
}

bool HasControlCharacter(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        if (byte < 0x20 || byte == 0x7F || (byte == 0xC2 && next < 0xA0))
            return true;
    }
    return false;
}

} // namespace qor
