// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/ProgramSettings.h"

#include "session/ProfileStore.h"

namespace qor {
namespace {

constexpr const char* Section = "Settings";
constexpr const char* EnableSessionLogKey = "Enable Session Log File";
constexpr const char* SessionLogDirectoryKey = "Session Log Directory";
constexpr const char* LoggingSoundsKey = "Logging Sounds";

} // namespace

ProgramSettings ReadProgramSettings(const CProfileStore& store) {
    return {store.ReadInteger(Section, EnableSessionLogKey, 0) != 0,
            store.ReadText(Section, SessionLogDirectoryKey),
            store.ReadInteger(Section, LoggingSoundsKey, 0) != 0};
}

void WriteProgramSettings(CProfileStore& store, const ProgramSettings& settings) {
    store.WriteInteger(Section, EnableSessionLogKey, settings.sessionLog);
    store.WriteText(Section, SessionLogDirectoryKey, settings.sessionLogDirectory);
    store.WriteInteger(Section, LoggingSoundsKey, settings.loggingSounds);
}

} // namespace qor
