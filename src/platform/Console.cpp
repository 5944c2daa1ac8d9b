// SPDX-License-Identifier: GPL-3.0-or-later
//
// What of the console is the same on every system.
#include "platform/Console.h"

#include "base/TerminalText.h"

namespace qor {

StreamWrite WriteText(StandardStream stream, std::string_view text) {
    if (!IsTerminal(stream))
        return WriteStream(stream, text);
    return WriteStream(stream, TerminalText(text, TerminalLayout::Lines));
}

} // namespace qor
