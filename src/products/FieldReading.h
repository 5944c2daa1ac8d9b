// SPDX-License-Identifier: GPL-3.0-or-later
//
// Fields of an instrument's current frame, found by what definitions call them and read whatever
// they are made of: what GPS and weather sentences have in common. Under the document's lock.
#pragma once

#include "products/LiveInstrument.h"

#include <optional>
#include <string>

namespace qor {

/// A sensor's type and id in capitals, "TEMP AIR".
std::string FieldName(const CSensor& sensor);
/// The field's bytes as text, without blanks around them; a number that is not text as its digits.
std::string FieldAsText(const CLiveInstrument& instrument, const CSensor& sensor);
/// The calibrated number, or the one that the field's text is.
std::optional<double> FieldAsNumber(const CLiveInstrument& instrument, const CSensor& sensor);

} // namespace qor
