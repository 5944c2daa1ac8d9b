// SPDX-License-Identifier: GPL-3.0-or-later
//
// Units of definitions in the spelling of UDUNITS, and the quantities that they tell apart.
#include "export/StandardNames.h"
#include "export/UnitText.h"

#include "fakes/DefinedInstrument.h"

namespace qor {
namespace {

TEST(UnitText, IsSpelledForOtherPrograms) {
    const struct {
        std::string_view units, text;
    } cases[] = {
        {"uW/cm^2/nm", "uW cm-2 nm-1"},
        {"uW/cm^2/nm/sr", "uW cm-2 nm-1 sr-1"},
        {"uW/(cm^2 nm sr)", "uW cm-2 nm-1 sr-1"},
        {"1/(m/s)", "m-1 s"},
        {"W m-2 nm-1", "W m-2 nm-1"},
        {"\xB5W/cm2", "uW cm-2"},
        {"\xC2\xB5mol/m^2/s", "umol m-2 s-1"},
        {"uE/m^2/s", "umol m-2 s-1"},
        {"uMolar", "umol L-1"},
        {"1/m", "m-1"},
        {"uMolar/s", "umol L-1 s-1"},
        {"1/uMolar", "(umol L-1)-1"},
        {"\xB0 C", "degree_Celsius"},
        {"Deg C", "degree_Celsius"},
        {"C", "degree_Celsius"},
        {" db ", "dbar"},
        {"mS/cm", "mS cm-1"},
        {"MPa", "MPa"},
        {"mPa", "mPa"},
        {"uM", "umol L-1"},
        {"\xC2\xB5M", "umol L-1"},
        {"UW/CM^2/NM", "uW cm-2 nm-1"},
        {"PSU", "1"},
        {"1", "1"},
        {"%", "percent"},
    };
    for (const auto& row : cases) {
        const std::optional<UnitText> units = ReadUnits(row.units);
        ASSERT_TRUE(units) << row.units;
        EXPECT_EQ(units->text, row.text);
    }
}

TEST(UnitText, IsNoneWhereAPartIsUnknown) {
    constexpr std::string_view cases[] = {
        "",     " ",     "furlong", "m/",      "m^", "m^0", "m^12",  "m-", "m/s/fortnight",
        "(m",   "m)",    "((m))",   "1/",      "/",  "2 m", "ratio", "^2", "none",
        "\xFF", "MS/CM", "UM",      {"m\0", 2}};
    for (std::string_view units : cases)
        EXPECT_FALSE(ReadUnits(units)) << units;
    EXPECT_FALSE(ReadUnits("m" + std::string(64, ' ') + "/s"));
}

TEST(UnitText, KnowsWhatCanBeTurnedIntoWhat) {
    const auto dimension = [](std::string_view units) {
        return ReadUnits(units).value_or(UnitText{}).dimension;
    };
    const struct {
        std::string_view one, other;
        bool same;
    } cases[] = {{"uW/cm^2/nm", "W m-2 m-1", true},
                 {"uW/cm^2/nm", "W m-2 m-1 sr-1", false},
                 {"psi", "dbar", true},
                 {"kn", "m/s", true},
                 {"mS/cm", "S/m", true},
                 {"ug/l", "kg/m^3", true},
                 {"uMolar", "mol/m^3", true},
                 {"W", "V A", true},
                 {"Hz", "1/s", true},
                 {"m", "s", false},
                 {"degF", "K", true},
                 {"S", "s", false},
                 {"umol/m^2/s", "uE / m^2 / s", true},
                 {"1/(m sr)", "1/m/sr", true}};
    for (const auto& row : cases)
        EXPECT_EQ(dimension(row.one) == dimension(row.other), row.same) << row.one << row.other;
}

std::string_view NameOf(const std::string& line, bool immersed) {
    const auto instrument = DefineFixed(line + " 2 BU 1 POLYU\n0 1\n");
    const CSensor& sensor = instrument->Sensors().back();
    return NameOfSensor(sensor, ReadUnits(sensor.Units), immersed).standardName;
}

TEST(StandardNames, FollowTypeIdUnitsAndWhereTheInstrumentIs) {
    const struct {
        const char *line, *dry, *wet;
    } cases[] = {
        {"ED 412.5 'uW/cm^2/nm'", "downwelling_radiative_flux_per_unit_wavelength_in_air",
         "downwelling_radiative_flux_per_unit_wavelength_in_sea_water"},
        {"ED 412.5 'uW/cm^2'", "", ""},
        {"ED 412.5 ''", "", ""},
        {"LU 412.5 'uW/cm^2/nm/sr'", "upwelling_radiance_per_unit_wavelength_in_air", ""},
        {"LU 412.5 'uW/cm^2/nm'", "", ""},
        {"temp NONE 'C'", "sea_water_temperature", "sea_water_temperature"},
        {"TEMP AIR 'C'", "air_temperature", "air_temperature"},
        {"TEMP BOARD 'C'", "", ""},
        {"TEMP NONE 'V'", "", ""},
        {"PRES NONE 'psi'", "sea_water_pressure_due_to_sea_water",
         "sea_water_pressure_due_to_sea_water"},
        {"TILT X 'deg'", "", ""},
        {"TILT PITCH 'deg'", "platform_pitch", "platform_pitch"},
        {"WIND TRUE 'kn'", "wind_speed", "wind_speed"},
        {"WIND TRUE 'deg'", "wind_from_direction", "wind_from_direction"},
        {"WIND REL 'kn'", "", ""},
        {"NITRATE NONE 'uMolar'", "mole_concentration_of_nitrate_in_sea_water",
         "mole_concentration_of_nitrate_in_sea_water"},
        {"NITRATE NONE 'umol/kg'", "", ""},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(NameOf(row.line, false), row.dry) << row.line;
        EXPECT_EQ(NameOf(row.line, true), row.wet) << row.line;
    }
}

TEST(StandardNames, OfProductsHoldForTheirUnits) {
    EXPECT_EQ(NameOfProduct(ANCDATATYPE::ParZ, ReadUnits("umol/m^2/s")).standardName,
              "downwelling_photosynthetic_photon_flux_in_sea_water");
    EXPECT_EQ(NameOfProduct(ANCDATATYPE::ParZ, ReadUnits("uW/cm^2")).standardName, "");
    EXPECT_EQ(NameOfProduct(ANCDATATYPE::Tilt, ReadUnits("deg")).standardName, "");
    EXPECT_EQ(NameOfProduct(ANCDATATYPE::Salinity, ReadUnits("PSU")).canonical, "1");
}

} // namespace
} // namespace qor
