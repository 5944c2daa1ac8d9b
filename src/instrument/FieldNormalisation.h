// SPDX-License-Identifier: GPL-3.0-or-later
//
// Repairs a sensor whose parameters do not fit together, so that every sensor of a loaded
// instrument can be extracted and converted.
#pragma once

#include "instrument/DefinitionLog.h"
#include "instrument/Instrument.h"

namespace qor {

/// Changes data type, gain-range count, fit type and field length to what the sensor's fit and data
/// type allow; each change is a diagnostic.
void NormaliseField(CSensor& sensor, FrameType frame, CDefinitionLog& log);

} // namespace qor
