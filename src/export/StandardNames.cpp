// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/StandardNames.h"

#include "base/Text.h"

namespace qor {

namespace {

/// Where a sensor of a type has to be to be meant.
enum class Place : std::uint8_t { Any, Water, Air };

constexpr std::string_view AnyId = "*";
/// Of a sensor that says it is in the water, or says nothing.
constexpr std::string_view InWater = "|NONE|W|WATER|SEA";
constexpr std::string_view InAir = "AIR|A";
constexpr std::string_view OfAir = "|NONE|AIR|A";

struct SensorRow {
    std::string_view types; ///< one, or several with "|"
    std::string_view ids;
    Place place;
    std::string_view name, canonical;
    std::string_view field = {};
};

constexpr std::string_view IrradianceUnits = "W m-2 nm-1";
constexpr std::string_view RadianceUnits = "W m-2 nm-1 sr-1";

/// The first row that fits is taken. The published table has no name for radiance that goes up in
/// the water. Decided: which of a tilt's axes X and Y is roll and which is pitch only the mounting
/// says, so they have no name; nor has the wind that blows at the ship.
constexpr SensorRow SensorRows[] = {
    {"PRES|PRESSURE", InWater, Place::Any, "sea_water_pressure_due_to_sea_water", "dbar",
     "pressure"},
    {"TEMP|TEMPERATURE", InWater, Place::Any, "sea_water_temperature", "K", "Wt"},
    {"TEMP|TEMPERATURE", InAir, Place::Any, "air_temperature", "K", "at"},
    {"AIRTEMP", AnyId, Place::Any, "air_temperature", "K", "at"},
    {"COND|CONDUCTIVITY", InWater, Place::Any, "sea_water_electrical_conductivity", "S m-1",
     "cond"},
    {"SAL|SALINITY", InWater, Place::Any, "sea_water_practical_salinity", "1", "sal"},
    {"DEPTH", AnyId, Place::Any, "depth", "m", "depth"},
    {"ES", AnyId, Place::Any, "surface_downwelling_radiative_flux_per_unit_wavelength_in_air",
     IrradianceUnits, "Es"},
    {"ED", AnyId, Place::Water, "downwelling_radiative_flux_per_unit_wavelength_in_sea_water",
     IrradianceUnits, "Ed"},
    {"ED", AnyId, Place::Air, "downwelling_radiative_flux_per_unit_wavelength_in_air",
     IrradianceUnits, "Ed"},
    {"EU", AnyId, Place::Water, "upwelling_radiative_flux_per_unit_wavelength_in_sea_water",
     IrradianceUnits, "Eu"},
    {"EU", AnyId, Place::Air, "upwelling_radiative_flux_per_unit_wavelength_in_air",
     IrradianceUnits, "Eu"},
    {"LU", AnyId, Place::Air, "upwelling_radiance_per_unit_wavelength_in_air", RadianceUnits, "Lu"},
    {"LT", AnyId, Place::Air, "upwelling_radiance_per_unit_wavelength_in_air", RadianceUnits, "Lt"},
    {"LU", AnyId, Place::Water, "", RadianceUnits, "Lu"},
    {"LI|LS", AnyId, Place::Air, "downwelling_radiance_per_unit_wavelength_in_air", RadianceUnits,
     "Lsky"},
    {"CHL|CHLA|FCHL", AnyId, Place::Any, "mass_concentration_of_chlorophyll_in_sea_water", "kg m-3",
     "Chl_stimf"},
    {"NITRATE|NO3", AnyId, Place::Any, "mole_concentration_of_nitrate_in_sea_water", "mol m-3",
     "NO3"},
    {"OXY|OXYGEN|DO|O2", AnyId, Place::Any,
     "mole_concentration_of_dissolved_molecular_oxygen_in_sea_water", "mol m-3"},
    {"OXY|OXYGEN|DO|O2", AnyId, Place::Any, "moles_of_oxygen_per_unit_mass_in_sea_water",
     "mol kg-1", "oxygen_kg"},
    {"BETA|VSF", AnyId, Place::Any, "volume_scattering_function_of_radiative_flux_in_sea_water",
     "m-1 sr-1"},
    {"HEADING", AnyId, Place::Any, "platform_orientation", "degree", "heading"},
    {"PITCH", AnyId, Place::Any, "platform_pitch", "degree", "pitch"},
    {"ROLL", AnyId, Place::Any, "platform_roll", "degree", "roll"},
    {"TILT", "PITCH", Place::Any, "platform_pitch", "degree", "pitch"},
    {"TILT", "ROLL", Place::Any, "platform_roll", "degree", "roll"},
    {"LATITUDE|LAT", AnyId, Place::Any, "latitude", "degree", "lat"},
    {"LONGITUDE|LON", AnyId, Place::Any, "longitude", "degree", "lon"},
    {"SPEED", AnyId, Place::Any, "platform_speed_wrt_ground", "m s-1"},
    {"COURSE", AnyId, Place::Any, "platform_course", "degree"},
    {"WIND", "TRUE|TRUESPEED", Place::Any, "wind_speed", "m s-1", "wind"},
    {"WIND", "TRUE|TRUEDIR|TRUEDIRECTION", Place::Any, "wind_from_direction", "degree", "wdir"},
    {"BARO|BAROMETER", AnyId, Place::Any, "air_pressure", "Pa", "pressure_atm"},
    {"PRES|PRESSURE", InAir, Place::Any, "air_pressure", "Pa", "pressure_atm"},
    {"HUMIDITY|RH", OfAir, Place::Any, "relative_humidity", "1"},
};

struct ProductRow {
    ANCDATATYPE kind;
    QuantityName name;
};

constexpr ProductRow ProductRows[] = {
    {ANCDATATYPE::Tilt, {"", "degree", "tilt"}},
    {ANCDATATYPE::Depth, {"sea_water_pressure_due_to_sea_water", "dbar", "pressure"}},
    {ANCDATATYPE::WaterTemperature, {"sea_water_temperature", "K", "Wt"}},
    {ANCDATATYPE::Salinity, {"sea_water_practical_salinity", "1", "sal"}},
    {ANCDATATYPE::Nitrate, {"mole_concentration_of_nitrate_in_sea_water", "mol m-3", "NO3"}},
    {ANCDATATYPE::ParZ, {"downwelling_photosynthetic_photon_flux_in_sea_water", "mol m-2 s-1"}},
    {ANCDATATYPE::Par0, {"surface_downwelling_photosynthetic_photon_flux_in_air", "mol m-2 s-1"}},
    {ANCDATATYPE::AbsoluteSalinity, {"sea_water_absolute_salinity", "g kg-1"}},
    {ANCDATATYPE::ConservativeTemperature, {"sea_water_conservative_temperature", "K"}},
    {ANCDATATYPE::SigmaTheta, {"sea_water_sigma_theta", "kg m-3", "sigma_theta"}},
    {ANCDATATYPE::SoundSpeed, {"speed_of_sound_in_sea_water", "m s-1"}},
    {ANCDATATYPE::DepthInMetres, {"depth", "m", "depth"}},
};

struct FieldRow {
    std::string_view field;
    std::string_view units; ///< as ReadUnits gives them: values are taken as they are
    std::string_view text;  ///< as the archive writes them
};

constexpr FieldRow FieldRows[] = {
    {"Lu", "uW cm-2 nm-1 sr-1", "uW/cm^2/nm/sr"},
    {"Lt", "uW cm-2 nm-1 sr-1", "uW/cm^2/nm/sr"},
    {"Lsky", "uW cm-2 nm-1 sr-1", "uW/cm^2/nm/sr"},
    {"Ed", "uW cm-2 nm-1", "uW/cm^2/nm"},
    {"Eu", "uW cm-2 nm-1", "uW/cm^2/nm"},
    {"Es", "uW cm-2 nm-1", "uW/cm^2/nm"},
    {"pressure", "dbar", "dbar"},
    {"depth", "m", "m"},
    {"Wt", "degree_Celsius", "degreesC"},
    {"at", "degree_Celsius", "degreesC"},
    {"cond", "mS cm-1", "mmho/cm"},
    {"sal", "1", "PSU"},
    {"Chl_stimf", "mg m-3", "mg/m^3"},
    {"Chl_stimf", "ug L-1", "mg/m^3"},
    {"NO3", "umol L-1", "mmol/m^3"},
    {"oxygen_kg", "umol kg-1", "umol/kg"},
    {"sigma_theta", "kg m-3", "kg/m^3"},
    {"heading", "degree", "degrees"},
    {"pitch", "degree", "degrees"},
    {"roll", "degree", "degrees"},
    {"tilt", "degree", "degrees"},
    {"lat", "degree", "degrees"},
    {"lon", "degree", "degrees"},
    {"wind", "m s-1", "m/s"},
    {"wdir", "degree", "degrees"},
    {"pressure_atm", "mbar", "mbar"},
    {"pressure_atm", "hPa", "mbar"},
};

bool IsAmong(std::string_view word, std::string_view list) {
    if (list == AnyId)
        return true;
    for (;;) {
        const std::size_t end = list.find('|');
        if (EqualsNoCase(list.substr(0, end), word))
            return true;
        if (end == list.npos)
            return false;
        list.remove_prefix(end + 1);
    }
}

bool IsThere(Place place, bool immersed) {
    return place == Place::Any || (place == Place::Water) == immersed;
}

bool HasDimension(const std::optional<UnitText>& units, std::string_view canonical) {
    if (!units)
        return false;
    const std::optional<UnitText> known = ReadUnits(canonical);
    const UnitDimension plain{};
    return units->dimension == (known ? known->dimension : plain);
}

} // namespace

QuantityName NameOfSensor(const CSensor& sensor, const std::optional<UnitText>& units,
                          bool immersed) {
    for (const SensorRow& row : SensorRows)
        if (IsAmong(sensor.Type, row.types) && IsAmong(sensor.Id, row.ids) &&
            IsThere(row.place, immersed) && HasDimension(units, row.canonical))
            return {row.name, row.canonical, row.field};
    return {};
}

QuantityName NameOfProduct(ANCDATATYPE kind, const std::optional<UnitText>& units) {
    for (const ProductRow& row : ProductRows)
        if (row.kind == kind && HasDimension(units, row.name.canonical))
            return row.name;
    return {};
}

std::string_view UnitsOfField(std::string_view field, const std::optional<UnitText>& units) {
    for (const FieldRow& row : FieldRows)
        if (row.field == field && units && row.units == units->text)
            return row.text;
    return {};
}

} // namespace qor
