// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the document keeps of a session file beside what runs: what the file said and in which
// words, what nobody here knows, and what could not be opened, so that saving loses none of it.
// Plain records; filled by the opener, read when the session is described.
#pragma once

#include "session/Handles.h"
#include "session/SessionRecord.h"

#include <map>
#include <string>
#include <vector>

namespace qor {

struct KeptResource {
    /// As the file has it; of its instruments and packages those that could not be opened.
    ResourceRecord said;
    /// With which it was opened: as long as these hold, the file's words do.
    std::uint32_t baud = 0;
    LineFormat format;
};

struct KeptSession {
    std::string title;
    JsonValue windows = JsonValue::Array();
    JsonValue unknown = JsonValue::Object();
    JsonValue unknownOfStation = JsonValue::Object();
    LogRecord log;
    std::string sessionLogDirectory; ///< that was opened with it

    std::map<ResourceId, KeptResource> resources;
    std::map<PackageId, PackageRecord> packages;         ///< with members that are not there
    std::map<std::string, InstrumentRecord> instruments; ///< by the instrument's name
    std::vector<ResourceRecord> unopened;
};

} // namespace qor
