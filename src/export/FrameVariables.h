// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a table of an instrument's frames is made of: its variables, their names, dimensions and
// attributes by the conventions CF-1.8 and ACDD-1.3, before the first frame. Files are written
// after it, and other programs read frames by it, so that both show the same. It holds no values.
// Pure but for the definition file, which it reads; any thread.
#pragma once

#include "export/LogSource.h"

#include <set>
#include <string>
#include <variant>
#include <vector>

namespace qor {

/// The codes of a status are those of the conversion, and this one beside them.
constexpr signed char NoValueYet = 9;
constexpr signed char NotChecked = 2; ///< of a flag, beside no and yes

struct FrameAttribute {
    std::string name;
    std::variant<std::string, std::vector<signed char>> value;
};
using FrameAttributes = std::vector<FrameAttribute>;

/// A variable with a number a frame that every instrument has.
struct FramePlain {
    std::string name;
    FrameAttributes attributes = {};
};

/// Where the values of a variable come from.
enum class FrameOrigin : std::uint8_t { Sensors, Product, Degrees, Text };

/// A variable over time, over wavelength too, with its status.
struct FrameVariable {
    std::string name, statusName = {};
    FrameOrigin origin = FrameOrigin::Sensors;
    std::vector<int> indexes;        ///< of sensors, one a channel, or of the product
    int grid = -1;                   ///< of wavelengths; -1: it is over time alone
    std::size_t width = 0;           ///< bytes of a text; 0: it may be as long as it likes
    std::string widthDimension = {}; ///< its name
    FrameAttributes attributes = {}, statusAttributes = {};
    std::string qcName = {}; ///< empty: it is not checked
    FrameAttributes qcAttributes = {};
};

struct WavelengthGrid {
    std::string name;
    std::vector<double> wavelengths;
};

struct FrameLayout {
    FramePlain time, frame, log;   ///< the log's without a name where there is one log
    FramePlain timeQc = {};        ///< without a name where values are not checked
    std::vector<FramePlain> flags; ///< as FlagsOf has them
    std::vector<WavelengthGrid> grids;
    FrameAttributes gridAttributes;
    std::vector<FrameVariable> variables;
    FrameAttributes global;
    std::set<std::string> names = {}; ///< of variables and dimensions, in lower case

    /// Takes a name for what the text says: letters, digits and underscores, which every program
    /// takes, different ones also for those to which case is nothing.
    std::string NameFor(std::string_view text);
};

/// `names` are those that variables of sensors and products must leave free.
FrameLayout LayoutOfFrames(const LogSource& source, const ExportedInstrument& instrument,
                           const FrameStyle& style, std::set<std::string> names = {});

/// The attribute's text; empty where there is none.
std::string TextOf(const FrameAttributes& attributes, std::string_view name);
/// The attribute's text is this one from now on.
void SetText(FrameAttributes& attributes, std::string_view name, const std::string& text);

/// What the times of the first and the last frame add to a file's attributes.
FrameAttributes CoverageOf(double firstSeconds, double lastSeconds, bool utc);

} // namespace qor
