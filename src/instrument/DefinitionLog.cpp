// SPDX-License-Identifier: GPL-3.0-or-later
//
// Writes diagnostics: "\tLine 12: " and the texts of the fault and of the action.
#include "instrument/DefinitionLog.h"

#include <limits>

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
}

} // namespace qor
