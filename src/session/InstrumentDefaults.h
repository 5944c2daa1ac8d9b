// SPDX-License-Identifier: GPL-3.0-or-later
//
// "Instruments.ini": what the operator wants an instrument to be when it is added to a session. One
// section an instrument, by its name, which people may edit by hand; what this room does not know
// stays as it is when a section is written. Reading and writing are functions of the text; the
// file's own functions are called by the faces' thread. No state.
//
// Names are bytes (Latin-1). In the file "[", "]", "%", control characters, outer blanks and bytes
// from 0x80 on stand as "%XX", which gives plain ASCII; a hand-written name may also have brackets
// inside, and characters up to U+00FF in UTF-8 or Latin-1.
#pragma once

#include "session/SessionRecord.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct InstrumentDefaults {
    bool Immersed = false;
    bool LogEnabled = true;
    bool AcquisitionEnabled = true;
    bool ErrorChecking = true;
    bool CounterCheck = true;
    bool ChecksumCheck = true;
    bool BeepOnError = false;
    std::string Title; ///< UTF-8, one line; empty: none

    bool operator==(const InstrumentDefaults&) const = default;
};

struct InstrumentDefaultsReading {
    std::map<std::string, InstrumentDefaults> instruments; ///< by name
    std::vector<std::string> warnings;                     ///< a line each

    /// The built-in ones for an instrument without a section.
    InstrumentDefaults Of(const std::string& name) const;
};

/// Takes what makes sense; a damaged line is reported by its number and passed over. `path` is for
/// the messages.
InstrumentDefaultsReading ReadInstrumentDefaults(std::string_view text, const std::string& path);

/// The text with that instrument's section set; comments, other sections, unknown keys and line
/// ends stay.
std::string WithInstrumentDefaults(std::string_view text, const std::string& name,
                                   const InstrumentDefaults& defaults);

/// The file's place in the settings folder; empty when there is no such folder.
std::string InstrumentDefaultsPath();
/// A missing file, and an empty path, is no fault.
InstrumentDefaultsReading LoadInstrumentDefaults(const std::string& path);
/// Writes beside and renames, and makes the folder. Empty, or one line that says why not; a file
/// that cannot be read is not replaced.
std::string SaveInstrumentDefaults(const std::string& path, const std::string& name,
                                   const InstrumentDefaults& defaults);

/// The settings of an instrument in a session: what the session says, else the stored defaults.
InstrumentDefaults SettingsOf(const InstrumentRecord& record, InstrumentDefaults defaults);

/// What a session has to say of an instrument: all that it said before, and what differs from the
/// stored defaults.
InstrumentRecord RecordOf(const InstrumentDefaults& settings, const InstrumentDefaults& defaults,
                          InstrumentRecord said);

} // namespace qor
