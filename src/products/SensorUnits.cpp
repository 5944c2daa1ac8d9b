// SPDX-License-Identifier: GPL-3.0-or-later
//
// Spellings of units and what they are worth. Blanks, dots, underlines and brackets do not count.
#include "products/SensorUnits.h"

#include <span>
#include <string>

namespace qor {

namespace {

constexpr std::size_t LongestUnits = 32; ///< longer than any spelling; the text comes from a file

/// In a spelling a capital stands for itself, everything else for either case: mPa is not MPa, but
/// nobody measures in megabars.
struct Spelling {
    std::string_view text;
    UnitScale scale;
};

constexpr double PsiInDbar = 0.6894757293168361; // 4.4482216152605 N over 6.4516 cm^2
constexpr double AtmosphereInPsi = 14.695948775513449;

constexpr UnitScale KnotsToMps{0, 1852, 3600};

constexpr Spelling PressureUnits[] = {
    {"dbar", {}},
    {"dbars", {}},
    {"decibar", {}},
    {"decibars", {}},
    {"db", {}},
    {"bar", {0, 10, 1}},
    {"bars", {0, 10, 1}},
    {"barg", {0, 10, 1}},
    {"bara", {1.01325, 10, 1}},
    {"mbar", {0, 1, 100}},
    {"mbars", {0, 1, 100}},
    {"millibar", {0, 1, 100}},
    {"millibars", {0, 1, 100}},
    {"mb", {0, 1, 100}},
    {"hpa", {0, 1, 100}},
    {"pa", {0, 1, 10000}},
    {"kpa", {0, 1, 10}},
    {"Mpa", {0, 100, 1}},
    {"atm", {0, 10.1325, 1}},
    {"psi", {0, PsiInDbar, 1}},
    {"psig", {0, PsiInDbar, 1}},
    {"psia", {AtmosphereInPsi, PsiInDbar, 1}},
    {"lb/in^2", {0, PsiInDbar, 1}},
    {"kg/cm^2", {0, 9.80665, 1}},
    {"kgf/cm^2", {0, 9.80665, 1}},
    {"m", {}},
    {"msw", {}},
    {"meter", {}},
    {"meters", {}},
    {"metre", {}},
    {"metres", {}},
    {"mh2o", {0, 0.980665, 1}},
    {"ft", {0, 0.3048, 1}},
    {"feet", {0, 0.3048, 1}},
};

constexpr Spelling TemperatureUnits[] = {
    {"c", {}},
    {"celsius", {}},
    {"centigrade", {}},
    {"k", {273.15, 1, 1}},
    {"kelvin", {273.15, 1, 1}},
    {"f", {32, 5, 9}},
    {"fahrenheit", {32, 5, 9}},
};

constexpr Spelling SpeedUnits[] = {
    {"m/s", {}},
    {"ms-1", {}},
    {"ms^-1", {}},
    {"mps", {}},
    {"kn", KnotsToMps},
    {"kt", KnotsToMps},
    {"kts", KnotsToMps},
    {"knot", KnotsToMps},
    {"knots", KnotsToMps},
    {"n", KnotsToMps},
    {"km/h", {0, 1, 3.6}},
    {"kmh", {0, 1, 3.6}},
    {"kmh-1", {0, 1, 3.6}},
    {"kph", {0, 1, 3.6}},
    {"k", {0, 1, 3.6}},
    {"m", {}},
    {"mph", {0, 1609.344, 3600}},
};

constexpr Spelling AirPressureUnits[] = {
    {"hpa", {}},
    {"mbar", {}},
    {"mb", {}},
    {"mbars", {}},
    {"millibar", {}},
    {"millibars", {}},
    {"kpa", {0, 10, 1}},
    {"pa", {0, 1, 100}},
    {"bar", {0, 1000, 1}},
    {"bars", {0, 1000, 1}},
    {"b", {0, 1000, 1}},
    {"dbar", {0, 100, 1}},
    {"inhg", {0, 33.86389, 1}},
    {"mmhg", {0, 1.33322387415, 1}},
    {"torr", {0, 1013.25, 760}},
    {"atm", {0, 1013.25, 1}},
};

constexpr Spelling ConductivityUnits[] = {
    {"ms/cm", {}},           {"ds/m", {}},          {"s/m", {0, 10, 1}}, {"s/cm", {0, 1000, 1}},
    {"us/cm", {0, 1, 1000}}, {"ms/m", {0, 1, 100}},
};

constexpr double MicromolesInMillilitre = 44.6596; // of the real gas at 0 degrees C and 1 atm
constexpr double MicromolesInMilligram = 1000.0 / 31.9988;

constexpr Spelling OxygenUnits[] = {
    {"umol/l", {}},
    {"um", {}},
    {"mmol/m^3", {}},
    {"mmol/m3", {}},
    {"ml/l", {0, MicromolesInMillilitre, 1}},
    {"mg/l", {0, MicromolesInMilligram, 1}},
};

struct Replacement {
    std::string_view from, to;
};

/// Signs for degree and micro as UTF-8, Latin-1 (with the ordinal sign that is mistaken for the
/// degree's) and code page 437 have them.
constexpr Replacement Signs[] = {
    {"\xC2\xB0", ""},  {"\xC2\xBA", ""},  {"\xB0", ""},  {"\xBA", ""},  {"\xF8", ""},
    {"\xCE\xBC", "u"}, {"\xC2\xB5", "u"}, {"\xB5", "u"}, {"\xE6", "u"},
};
constexpr Replacement ConductivityWords[] = {
    {"siemens", "s"}, {"mhos", "s"},   {"mho", "s"},   {"milli", "m"}, {"micro", "u"},
    {"cm^-1", "/cm"}, {"cm-1", "/cm"}, {"m^-1", "/m"}, {"m-1", "/m"},
};

constexpr char Small(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool SameLetter(char spelling, char c) {
    return spelling == c || spelling == Small(c);
}

bool MatchesAt(std::string_view text, std::size_t at, std::string_view spelling) {
    if (text.size() - at < spelling.size())
        return false;
    for (std::size_t i = 0; i < spelling.size(); ++i)
        if (!SameLetter(spelling[i], text[at + i]))
            return false;
    return true;
}

std::string Replaced(std::string_view text, std::span<const Replacement> replacements) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const Replacement* found = nullptr;
        for (const Replacement& one : replacements)
            if (!found && MatchesAt(text, at, one.from))
                found = &one;
        result += found ? found->to : text.substr(at, 1);
        at += found ? found->from.size() : 1;
    }
    return result;
}

/// The units without signs and without what does not count; empty when they are too long.
std::string Plain(std::string_view units) {
    if (units.size() > LongestUnits)
        return {};
    std::string text = Replaced(units, Signs);
    std::erase_if(text, [](char c) {
        return std::string_view(" \t._()[]").find(c) != std::string_view::npos;
    });
    return text;
}

std::optional<UnitScale> Find(std::string_view text, std::span<const Spelling> spellings) {
    for (const Spelling& one : spellings)
        if (text.size() == one.text.size() && MatchesAt(text, 0, one.text))
            return one.scale;
    return std::nullopt;
}

} // namespace

std::optional<UnitScale> PressureScale(std::string_view units) {
    return Find(Plain(units), PressureUnits);
}

std::optional<UnitScale> TemperatureScale(std::string_view units) {
    const std::string plain = Plain(units);
    std::string_view text = plain;
    for (std::string_view degrees : {"degrees", "degree", "deg", "o"})
        if (MatchesAt(text, 0, degrees)) {
            text.remove_prefix(degrees.size());
            break;
        }
    return Find(text, TemperatureUnits);
}

std::optional<UnitScale> SpeedScale(std::string_view units) {
    return Find(Plain(units), SpeedUnits);
}

std::optional<UnitScale> AirPressureScale(std::string_view units) {
    return Find(Plain(units), AirPressureUnits);
}

std::optional<UnitScale> ConductivityScale(std::string_view units) {
    return Find(Replaced(Plain(units), ConductivityWords), ConductivityUnits);
}

std::optional<OxygenScale> OxygenScaleOf(std::string_view units) {
    const std::string plain = Plain(units);
    if (MatchesAt(plain, 0, "umol/kg") && plain.size() == 7)
        return OxygenScale{{}, true};
    const std::optional<UnitScale> scale = Find(plain, OxygenUnits);
    return scale ? std::optional(OxygenScale{*scale, false}) : std::nullopt;
}

} // namespace qor
