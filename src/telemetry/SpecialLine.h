// SPDX-License-Identifier: GPL-3.0-or-later
//
// From an instrument's definition to what a resource needs to know of it. Used by the controller
// when it attaches an instrument; holds no state.
#pragma once

#include "instrument/Instrument.h"
#include "telemetry/FrameSync.h"

namespace qor {

/// The attach request of an instrument. Its SPECIAL sensor line, if there is one, names the types
/// whose telemetry carries no sync header; every other instrument is a generic one.
AttachRequest MakeAttachRequest(const CInstrument& instrument);

} // namespace qor
