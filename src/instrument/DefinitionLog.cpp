// SPDX-License-Identifier: GPL-3.0-or-later
//
// Writes diagnostics: "\tLine 12: " and the texts of the fault and of the action.
#include "instrument/DefinitionLog.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace qor {

void CDefinitionLog::Diagnostic(DefinitionStatus fault, CorrectiveAction action) {
    // Decided: about 180,000 entries are listed, the rest only counted. Two bytes of a hostile file
    // can earn an entry of ninety, and a log of gigabytes would end the program with the session.
    constexpr std::size_t LargestText = std::size_t{16} << 20;
    if (Entries < std::numeric_limits<std::int32_t>::max())
        ++Entries;
    if (Full)
        return;
    Full = Listed.size() > LargestText;
    if (Full) {
        Listed += "\tFurther errors are counted, not listed.\r\n";
        return;
    }
    Listed += "\tLine ";
    Listed += std::to_string(Line);
    Listed += ": ";
    Listed += DiagnosticText(fault);
    Listed += ActionText(action);
    if (Entries == 1)
        FirstLength = Listed.size();
}

/// Line ends and tabs of the list become blanks.
std::string CDefinitionLog::First() const {
    std::string line;
    for (std::string_view entry(Listed.data(), FirstLength); !entry.empty();) {
        const std::size_t end = std::min(entry.find_first_of("\r\n\t"), entry.size());
        if (end > 0)
            line.append(line.empty() ? "" : " ").append(entry.substr(0, end));
        entry.remove_prefix(std::min(end + 1, entry.size()));
    }
    return line;
}

} // namespace qor
