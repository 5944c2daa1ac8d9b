// SPDX-License-Identifier: GPL-3.0-or-later
//
// What other programs call what our sensors and products measure: the standard names of the CF
// conventions (cfconventions.org, standard name table) and the fields of SeaBASS
// (seabass.gsfc.nasa.gov), by a sensor's type, id and units or by a product's kind. One table each;
// a further quantity is a row. Pure; any thread.
#pragma once

#include "export/UnitText.h"
#include "instrument/Sensor.h"
#include "products/DerivedRows.h"

namespace qor {

/// What is known of a quantity.
struct QuantityName {
    std::string_view standardName; ///< empty: it has none
    std::string_view canonical;    ///< units that its own can be turned into
    std::string_view field = {};   ///< of SeaBASS; empty: it has none
};

/// Empty names where the type is unknown, or its units are not such as the quantity has. `units`:
/// as ReadUnits gives them.
QuantityName NameOfSensor(const CSensor& sensor, const std::optional<UnitText>& units,
                          bool immersed);
QuantityName NameOfProduct(ANCDATATYPE kind, const std::optional<UnitText>& units);

/// The units of a field as SeaBASS writes them; empty where the sensor's are others, so that its
/// values are not those of the field.
std::string_view UnitsOfField(std::string_view field, const std::optional<UnitText>& units);

} // namespace qor
