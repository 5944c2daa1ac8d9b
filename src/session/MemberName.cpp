// SPDX-License-Identifier: GPL-3.0-or-later
//
// Archives say whether a name is UTF-8, but not all of them rightly, so the bytes decide.
#include "session/MemberName.h"

#include "base/TerminalText.h"
#include "base/Text.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t LongestName = 255;

/// Code points of the bytes 0x80 to 0xff in code page 437.
constexpr std::uint16_t UpperHalf[] = {
    // clang-format off
    0x00c7, 0x00fc, 0x00e9, 0x00e2, 0x00e4, 0x00e0, 0x00e5, 0x00e7,
    0x00ea, 0x00eb, 0x00e8, 0x00ef, 0x00ee, 0x00ec, 0x00c4, 0x00c5,
    0x00c9, 0x00e6, 0x00c6, 0x00f4, 0x00f6, 0x00f2, 0x00fb, 0x00f9,
    0x00ff, 0x00d6, 0x00dc, 0x00a2, 0x00a3, 0x00a5, 0x20a7, 0x0192,
    0x00e1, 0x00ed, 0x00f3, 0x00fa, 0x00f1, 0x00d1, 0x00aa, 0x00ba,
    0x00bf, 0x2310, 0x00ac, 0x00bd, 0x00bc, 0x00a1, 0x00ab, 0x00bb,
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556,
    0x2555, 0x2563, 0x2551, 0x2557, 0x255d, 0x255c, 0x255b, 0x2510,
    0x2514, 0x2534, 0x252c, 0x251c, 0x2500, 0x253c, 0x255e, 0x255f,
    0x255a, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256c, 0x2567,
    0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256b,
    0x256a, 0x2518, 0x250c, 0x2588, 0x2584, 0x258c, 0x2590, 0x2580,
    0x03b1, 0x00df, 0x0393, 0x03c0, 0x03a3, 0x03c3, 0x00b5, 0x03c4,
    0x03a6, 0x0398, 0x03a9, 0x03b4, 0x221e, 0x03c6, 0x03b5, 0x2229,
    0x2261, 0x00b1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00f7, 0x2248,
    0x00b0, 0x2219, 0x00b7, 0x221a, 0x207f, 0x00b2, 0x25a0, 0x00a0,
    // clang-format on
};

/// A code point from 0x80 to 0xffff.
void AppendUtf8(std::string& text, unsigned code) {
    if (code < 0x800) {
        text += static_cast<char>(0xc0 | code >> 6);
    } else {
        text += static_cast<char>(0xe0 | code >> 12);
        text += static_cast<char>(0x80 | (code >> 6 & 0x3f));
    }
    text += static_cast<char>(0x80 | (code & 0x3f));
}

bool LeadsOutside(std::string_view name) {
    int depth = 0;
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t end = std::min(name.find('/', at), name.size());
        const std::string_view part = name.substr(at, end - at);
        at = end + 1;
        if (part == "..")
            --depth;
        else if (!part.empty() && part != ".")
            ++depth;
        if (depth < 0)
            return true;
    }
    return false;
}

} // namespace

std::string MemberNameOf(std::string_view stored) {
    std::string name;
    const bool utf8 = IsUtf8(stored);
    for (const char c : stored) {
        const auto byte = static_cast<unsigned char>(c);
        if (utf8 || byte < 0x80)
            name += c == '\\' ? '/' : c;
        else
            AppendUtf8(name, UpperHalf[byte - 0x80]);
    }
    return name;
}

bool IsHostileName(std::string_view name) {
    const bool hasDrive = name.size() > 1 && name[1] == ':' && IsLetter(name[0]);
    return name.empty() || name.size() > LongestName || name.front() == '/' || hasDrive ||
           HasControlCharacter(name) || LeadsOutside(name);
}

} // namespace qor
