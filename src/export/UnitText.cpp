// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/UnitText.h"

#include "base/Text.h"

namespace qor {

namespace {

constexpr std::size_t LongestUnits = 64; ///< the text comes from a file

struct Symbol {
    std::string_view spelling;
    std::string_view text; ///< of UDUNITS
    UnitDimension dimension;
};

constexpr UnitDimension Plain{};
constexpr UnitDimension Length{1};
constexpr UnitDimension Volume{3};
constexpr UnitDimension Mass{0, 1};
constexpr UnitDimension Time{0, 0, 1};
constexpr UnitDimension Frequency{0, 0, -1};
constexpr UnitDimension Current{0, 0, 0, 1};
constexpr UnitDimension Heat{0, 0, 0, 0, 1};
constexpr UnitDimension Amount{0, 0, 0, 0, 0, 1};
constexpr UnitDimension Molar{-3, 0, 0, 0, 0, 1};
constexpr UnitDimension Angle{0, 0, 0, 0, 0, 0, 1};
constexpr UnitDimension SolidAngle{0, 0, 0, 0, 0, 0, 2};
constexpr UnitDimension Speed{1, 0, -1};
constexpr UnitDimension Pressure{-1, 1, -2};
constexpr UnitDimension Power{2, 1, -3};
constexpr UnitDimension Voltage{2, 1, -3, -1};
constexpr UnitDimension Conductance{-2, -1, 3, 2};

/// Of spellings that differ in case alone the exact one is taken; where none is, the unit is not
/// known: "MS" may be milliseconds or millisiemens. Nanometres and megapascals are also written in
/// capitals.
constexpr Symbol Symbols[] = {
    {"m", "m", Length},
    {"meter", "m", Length},
    {"meters", "m", Length},
    {"metre", "m", Length},
    {"metres", "m", Length},
    {"nm", "nm", Length},
    {"NM", "nm", Length},
    {"um", "um", Length},
    {"mm", "mm", Length},
    {"cm", "cm", Length},
    {"km", "km", Length},
    {"ft", "ft", Length},
    {"feet", "ft", Length},
    {"l", "L", Volume},
    {"liter", "L", Volume},
    {"litre", "L", Volume},
    {"ml", "mL", Volume},
    {"g", "g", Mass},
    {"kg", "kg", Mass},
    {"mg", "mg", Mass},
    {"ug", "ug", Mass},
    {"ng", "ng", Mass},
    {"s", "s", Time},
    {"sec", "s", Time},
    {"secs", "s", Time},
    {"second", "s", Time},
    {"seconds", "s", Time},
    {"ms", "ms", Time},
    {"msec", "ms", Time},
    {"us", "us", Time},
    {"usec", "us", Time},
    {"min", "min", Time},
    {"h", "h", Time},
    {"hr", "h", Time},
    {"hz", "Hz", Frequency},
    {"khz", "kHz", Frequency},
    {"a", "A", Current},
    {"amp", "A", Current},
    {"ma", "mA", Current},
    {"ua", "uA", Current},
    {"k", "K", Heat},
    {"kelvin", "K", Heat},
    {"c", "degree_Celsius", Heat},
    {"celsius", "degree_Celsius", Heat},
    {"degc", "degree_Celsius", Heat},
    {"deg c", "degree_Celsius", Heat},
    {"degf", "degree_Fahrenheit", Heat},
    {"deg f", "degree_Fahrenheit", Heat},
    {"f", "degree_Fahrenheit", Heat},
    {"mol", "mol", Amount},
    {"mmol", "mmol", Amount},
    {"umol", "umol", Amount},
    {"nmol", "nmol", Amount},
    {"ue", "umol", Amount}, // einsteins of photons
    {"uein", "umol", Amount},
    {"umolar", "umol L-1", Molar},
    {"mM", "mmol L-1", Molar},
    {"uM", "umol L-1", Molar},
    {"nM", "nmol L-1", Molar},
    {"deg", "degree", Angle},
    {"degree", "degree", Angle},
    {"degrees", "degree", Angle},
    {"rad", "rad", Angle},
    {"sr", "sr", SolidAngle},
    {"kn", "knot", Speed},
    {"kt", "knot", Speed},
    {"kts", "knot", Speed},
    {"knot", "knot", Speed},
    {"knots", "knot", Speed},
    {"pa", "Pa", Pressure},
    {"hpa", "hPa", Pressure},
    {"kpa", "kPa", Pressure},
    {"MPa", "MPa", Pressure},
    {"MPA", "MPa", Pressure},
    {"mPa", "mPa", Pressure},
    {"bar", "bar", Pressure},
    {"dbar", "dbar", Pressure},
    {"dbars", "dbar", Pressure},
    {"decibar", "dbar", Pressure},
    {"decibars", "dbar", Pressure},
    {"db", "dbar", Pressure},
    {"mbar", "mbar", Pressure},
    {"mb", "mbar", Pressure},
    {"atm", "atm", Pressure},
    {"psi", "psi", Pressure},
    {"psia", "psi", Pressure},
    {"psig", "psi", Pressure},
    {"inhg", "inHg", Pressure},
    {"mmhg", "mmHg", Pressure},
    {"w", "W", Power},
    {"mw", "mW", Power},
    {"uw", "uW", Power},
    {"v", "V", Voltage},
    {"volt", "V", Voltage},
    {"volts", "V", Voltage},
    {"mv", "mV", Voltage},
    {"S", "S", Conductance},
    {"mS", "mS", Conductance},
    {"mmho", "mS", Conductance},
    {"uS", "uS", Conductance},
    {"%", "percent", Plain},
    {"percent", "percent", Plain},
    {"ppm", "ppm", Plain},
    {"ppb", "ppb", Plain},
    {"psu", "1", Plain},
    {"count", "count", Plain},
    {"counts", "count", Plain},
};

const Symbol* FindSymbol(std::string_view name) {
    const Symbol* found = nullptr;
    bool several = false;
    for (const Symbol& one : Symbols) {
        if (one.spelling == name)
            return &one;
        if (!EqualsNoCase(one.spelling, name))
            continue;
        several = several || (found && found->text != one.text);
        found = &one;
    }
    return several ? nullptr : found;
}

/// A reader of products: symbols with powers, between them blanks, dots, stars or strokes; in
/// brackets a stroke holds for all, outside for what follows it.
class CUnitReader {
  public:
    explicit CUnitReader(std::string_view units) : Rest(units) {}

    std::optional<UnitText> Read() {
        bool over = false;
        while (!Rest.empty()) {
            const char c = Rest[0];
            if (c == '/') {
                over = true;
                Rest.remove_prefix(1);
                continue;
            }
            if (c == '(' || c == ')') {
                if ((c == '(') == InBrackets)
                    return std::nullopt;
                InBrackets = c == '(';
                BracketOver = over;
                over = false;
                Rest.remove_prefix(1);
                continue;
            }
            if (c == ' ' || c == '*' || c == '.') {
                Rest.remove_prefix(1);
                continue;
            }
            if (!ReadFactor(over != (InBrackets && BracketOver)))
                return std::nullopt;
            over = false;
        }
        if (InBrackets || over || Result.text.empty())
            return std::nullopt;
        return Result;
    }

  private:
    bool ReadFactor(bool over) {
        if (Rest[0] == '1' && (Rest.size() == 1 || Rest[1] == '/' || Rest[1] == ' ')) {
            Rest.remove_prefix(1);
            return !Rest.empty(); // "1/m", not a bare "1"
        }
        std::size_t end = Rest.find_first_of(" *./()^+-0123456789");
        const Symbol* symbol = FindSymbol(Rest.substr(0, end));
        if (!symbol)
            return false;
        Rest.remove_prefix(end == Rest.npos ? Rest.size() : end);
        const std::optional<int> power = ReadPower();
        if (!power)
            return false;
        Multiply(*symbol, over ? -*power : *power);
        return true;
    }

    std::optional<int> ReadPower() {
        const bool caret = Rest.starts_with('^');
        Rest.remove_prefix(caret ? 1 : 0);
        const bool minus = Rest.starts_with('-');
        Rest.remove_prefix(minus || Rest.starts_with('+') ? 1 : 0);
        if (Rest.empty() || !IsDigit(Rest[0]))
            return caret || minus ? std::nullopt : std::optional(1);
        const int power = Rest[0] - '0';
        Rest.remove_prefix(1);
        if (power == 0 || power > 4 || (!Rest.empty() && IsDigit(Rest[0])))
            return std::nullopt;
        return minus ? -power : power;
    }

    /// What UDUNITS writes as a product itself is spelled out only where it stands alone.
    void Multiply(const Symbol& symbol, int power) {
        Result.text += Result.text.empty() ? "" : " ";
        const bool product = symbol.text.find_first_of(" -") != std::string_view::npos;
        Result.text +=
            product && power != 1 ? "(" + std::string(symbol.text) + ")" : std::string(symbol.text);
        if (power != 1)
            Result.text += std::to_string(power);
        for (std::size_t i = 0; i < Result.dimension.size(); ++i)
            Result.dimension[i] =
                static_cast<std::int8_t>(Result.dimension[i] + power * symbol.dimension[i]);
    }

    std::string_view Rest;
    UnitText Result;
    bool InBrackets = false, BracketOver = false;
};

/// Signs of degree and micro as UTF-8 and Latin-1 have them.
std::string WithoutSigns(std::string_view units) {
    constexpr struct {
        std::string_view from, to;
    } Signs[] = {{"\xC2\xB0", "deg"}, {"\xC2\xBA", "deg"}, {"\xB0", "deg"}, {"\xBA", "deg"},
                 {"\xC2\xB5", "u"},   {"\xCE\xBC", "u"},   {"\xB5", "u"}};
    std::string text(units);
    for (const auto& sign : Signs)
        for (std::size_t at = 0; (at = text.find(sign.from, at)) != text.npos;)
            text.replace(at, sign.from.size(), sign.to);
    return text;
}

} // namespace

std::optional<UnitText> ReadUnits(std::string_view units) {
    units = Trim(units);
    if (units.empty() || units.size() > LongestUnits)
        return std::nullopt;
    if (units == "1")
        return UnitText{"1"};
    const std::string plain = WithoutSigns(units);
    if (const Symbol* whole = FindSymbol(plain))
        return UnitText{std::string(whole->text), whole->dimension};
    return CUnitReader(plain).Read();
}

} // namespace qor
