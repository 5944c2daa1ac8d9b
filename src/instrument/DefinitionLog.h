// SPDX-License-Identifier: GPL-3.0-or-later
//
// The per-line diagnostics of one load of a definition file, as the parse log shows them. The
// definition reader and its rules write them; the reader puts them behind its summary.
#pragma once

#include "instrument/DefinitionStatus.h"

#include <cstdint>
#include <string>

namespace qor {

class CDefinitionLog {
  public:
    /// The line that the diagnostics to come are about.
    void SetLine(std::int32_t line) { Line = line; }

    /// Adds one entry: what was wrong in the current line, and what was done about it.
    void Diagnostic(DefinitionStatus fault, CorrectiveAction action);

    std::int32_t Count() const { return Entries; }
    const std::string& Text() const { return Listed; }
    /// The first entry as one line without line end; empty when there is none.
    std::string First() const;

  private:
    std::string Listed;
    std::size_t FirstLength = 0; ///< of the first entry in the list
    std::int32_t Line = 0;
    std::int32_t Entries = 0;
    bool Full = false;
};

} // namespace qor
