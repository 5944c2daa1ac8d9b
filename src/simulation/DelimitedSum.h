// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames of delimited text that pass the check of their checksum. The check sums up to a place that
// is not the checksum field's, so what balances is something behind a number in an earlier field.
#pragma once

#include "base/Bytes.h"
#include "instrument/Instrument.h"

#include <cstdint>
#include <vector>

namespace qor {

/// Changes a field so that the frame passes; false, and the frame is as it was, when none can do
/// it: the sum may end before there is room behind a number.
bool BalanceDelimited(const CInstrument& instrument, const CSensor& checksum,
                      std::vector<std::uint8_t>& frame);

} // namespace qor
