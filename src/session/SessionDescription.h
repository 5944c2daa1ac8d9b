// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document as a session's records: what is saved. What its file said stays said, flags that
// differ from Instruments.ini join it, and what could not be opened stands behind what could.
#pragma once

#include "session/KeptSession.h"
#include "session/QorViewDoc.h"

namespace qor {

/// `defaults`: Instruments.ini.
SessionRecord DescribeSession(const CQorViewDoc& doc, const KeptSession& kept,
                              const InstrumentDefaultsReading& defaults);

} // namespace qor
