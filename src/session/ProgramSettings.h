// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the application keeps of its own in the profile store, whatever the open session has: the
// session log that new sessions begin with, and the sounds of logging. Plain functions; no state.
#pragma once

#include <string>

namespace qor {

class CProfileStore;

struct ProgramSettings {
    bool sessionLog = false;
    std::string sessionLogDirectory; ///< with or without a separator at its end
    bool loggingSounds = false;
};

ProgramSettings ReadProgramSettings(const CProfileStore& store);
void WriteProgramSettings(CProfileStore& store, const ProgramSettings& settings);

} // namespace qor
