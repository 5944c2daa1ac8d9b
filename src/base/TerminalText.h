// SPDX-License-Identifier: GPL-3.0-or-later
//
// Text of instruments, files and names as a terminal may see it. A terminal obeys control bytes: a
// header record could clear the screen, retitle the window or turn what follows around. For whoever
// writes to one (platform/Console.h); any thread. Pipes and files get their bytes unchanged.
#pragma once

#include <string>
#include <string_view>

namespace qor {

/// Which control bytes are ours: line ends (LF, CR LF) and TAB, or none, for what is to stay in its
/// line.
enum class TerminalLayout { Lines, OneLine };

/// The text with every other control character (C0, DEL, C1 as one byte or as UTF-8), every
/// override of the writing direction and every byte that is no UTF-8 as "\x1b", a byte each: what
/// is none could become a control character with the bytes behind it.
std::string TerminalText(std::string_view text, TerminalLayout layout);

/// Whether a text that is to be one line, and steer no terminal, has a control character of UTF-8:
/// U+0000 to U+001F, U+007F to U+009F.
bool HasControlCharacter(std::string_view text);

} // namespace qor
