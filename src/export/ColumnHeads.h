// SPDX-License-Identifier: GPL-3.0-or-later
//
// The heads of CSV columns: how sensors and products are called in them, and the description of a
// table for other programs. Pure but for what it writes; any thread.
#pragma once

#include "export/Output.h"
#include "instrument/Sensor.h"

#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// What the head of a column says, and what a description of the table adds.
struct ColumnHead {
    std::string name, title, units;
    std::string_view dataType;
    bool quantity = false; ///< with units, which stand in its full name
};

/// The head of a sensor's column, named as simple names are; `suffix` as in "sd" tells further
/// columns of the sensor apart.
ColumnHead HeadOfSensor(const CSensor& sensor, std::string_view suffix = {});
/// That of a product's.
ColumnHead HeadOfProduct(const std::string& label, const std::string& units,
                         std::string_view suffix = {});

/// Gives every head its name: "ED(412.5) [units]", or "ED_412.5", different ones also where case is
/// nothing.
void NameColumns(std::vector<ColumnHead>& heads, bool simple);

/// The row of names.
void WriteHeads(COutput& output, const std::vector<ColumnHead>& heads, bool safeTexts);

/// What the columns are, as JSON that describes the table in the file `url`.
void WriteColumnsJson(COutput& output, const std::vector<ColumnHead>& heads, std::string_view url);

/// A text as an RFC 4180 field: in quotes where it needs them. `safe`: one that a spreadsheet would
/// take for a formula gets a ' before it, and quotes.
void WriteCsvField(COutput& output, std::string_view text, bool safe = false);

} // namespace qor
