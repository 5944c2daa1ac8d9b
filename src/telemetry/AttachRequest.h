// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a resource needs to know of an instrument, and how that is read off the definition. Used by
// the controller when it attaches an instrument; holds no state.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qor {

class CInstrument;

/// What the controller passes when an instrument is attached to a resource.
struct AttachRequest {
    std::string instrumentName;
    std::string syncHeader;
    std::int32_t frameSize = 0;
    std::string terminator; ///< empty for fixed-length frames
    bool noSync = false;
    std::string typeName;
    std::vector<std::uint8_t> syncBytes; ///< BSI: the synchronisation pairs
};

/// The attach request of an instrument. Its SPECIAL sensor line, if there is one, names the types
/// whose telemetry carries no sync header; every other instrument is a generic one.
AttachRequest MakeAttachRequest(const CInstrument& instrument);

} // namespace qor
