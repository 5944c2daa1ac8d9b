// SPDX-License-Identifier: GPL-3.0-or-later
//
// One function a mistake, in two tables: what a line of the text shows, and what a sensor of the
// loaded instrument shows. Lines are cut as the definition reader cuts them.
#include "instrument/DefinitionHints.h"

#include "instrument/DefinitionLines.h"
#include "instrument/FitTypes.h"
#include "instrument/FrameChecks.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace qor {

namespace {

constexpr std::size_t MostHints = 100;

struct DefinitionLine {
    std::string_view type, id, units, length, fit;
    bool variableFrame; ///< the file's frames are delimited
    bool fieldPending;  ///< a FIELD line waits for its sensor
    bool headerClosed;  ///< a field came, behind which header lines are sensors
};

bool IsSeparator(const DefinitionLine& line) {
    return EqualsNoCase(line.type, "FIELD") || EqualsNoCase(line.type, "TERMINATOR");
}

const char* MissingField(const DefinitionLine& line) {
    return line.variableFrame && EqualsNoCase(line.length, "V") && !line.fieldPending
               ? "No FIELD line stands before this variable-length sensor, so it is read from "
                 "another sensor's field."
               : nullptr;
}

const char* MissingFit(const DefinitionLine& line) {
    if (!IsSeparator(line))
        return nullptr;
    if (!line.variableFrame)
        return "FIELD and TERMINATOR lines belong to delimited frames, which begin with "
               "VLF_INSTRUMENT.";
    return !EqualsNoCase(line.fit, "DELIMITER")
               ? "A FIELD or TERMINATOR line needs the fit type DELIMITER."
               : nullptr;
}

bool IsHeaderText(const DefinitionLine& line) {
    if (line.headerClosed)
        return false;
    constexpr std::string_view Fixed[] = {"INSTRUMENT", "SN"};
    constexpr std::string_view Variable[] = {"VLF_INSTRUMENT", "VLF_SN"};
    const auto& names = line.variableFrame ? Variable : Fixed;
    return EqualsNoCase(line.type, names[0]) || EqualsNoCase(line.type, names[1]);
}

const char* HeaderEscape(const DefinitionLine& line) {
    return IsHeaderText(line) && line.id.find('\\') != std::string_view::npos
               ? "The text of a header line stands as it is: a backslash in it is sent as a "
                 "backslash."
               : nullptr;
}

const char* HeaderLength(const DefinitionLine& line) {
    const std::size_t length = EqualsNoCase(line.id, "NONE") ? 0 : line.id.size();
    return IsHeaderText(line) && WholeCount(line.length) && *WholeCount(line.length) != length
               ? "The length of a header line must be the number of characters of its text, the "
                 "second word (0 for NONE)."
               : nullptr;
}

const char* ForeignEscape(const DefinitionLine& line) {
    const bool holdsBytes = IsSeparator(line) || EqualsNoCase(line.type, "SPECIAL");
    for (std::size_t at = 0; holdsBytes && at + 1 < line.units.size(); ++at)
        if (line.units[at] == '\\' && line.units[at + 1] != 'x')
            return "A backslash stands for a byte only as \\xHH: write \\x0D for CR, \\x0A for LF, "
                   "\\x09 for TAB.";
    return nullptr;
}

const char* OtherSerialNumber(const DefinitionLine& line) {
    if (line.variableFrame)
        return EqualsNoCase(line.type, "SN")
                   ? "Behind VLF_INSTRUMENT the serial number is VLF_SN; SN is a sensor."
                   : nullptr;
    return EqualsNoCase(line.type, "VLF_SN")
               ? "Behind INSTRUMENT the serial number is SN; VLF_SN is a sensor."
               : nullptr;
}

constexpr const char* (*LineRules[])(const DefinitionLine&) = {
    MissingField, MissingFit, HeaderEscape, HeaderLength, ForeignEscape, OtherSerialNumber};

/// Letters alone, in lower case: "Frame_Cnt" and "FRAME CNT" are alike.
std::string LettersOf(const CSensor& sensor) {
    std::string letters = ToLower(sensor.Type + sensor.Id);
    std::erase_if(letters, [](char c) { return c < 'a' || c > 'z'; });
    return letters;
}

bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// The instrument's sensors in the two roles, or -1.
struct Roles {
    std::int32_t counter, sum;
};

const char* NumberWithoutFit(const CSensor& sensor, Roles) {
    const bool holdsNumber =
        sensor.Data != DataType::AS && (sensor.FieldLength > 0 || sensor.VariableLength);
    return holdsNumber && sensor.Fit == FitType::NONE
               ? "A number with the fit type NONE gives no value; COUNT gives it as it is."
               : nullptr;
}

const char* UncheckedCounter(const CSensor& sensor, Roles roles) {
    if (roles.counter >= 0)
        return nullptr;
    if (IsNamedFrameCounter(sensor))
        return "This frame counter is not checked: it must be BU of one byte, or AI, with the fit "
               "type COUNT.";
    return IsOneOf(LettersOf(sensor), {"framecounter", "framecount", "framecnt", "framectr",
                                       "framenumber", "framenum", "frameno", "counter"})
               ? "This is not checked as a frame counter: its name must be FRAME COUNTER."
               : nullptr;
}

const char* UncheckedSum(const CSensor& sensor, Roles roles) {
    if (roles.sum >= 0)
        return nullptr;
    if (IsNamedChecksum(sensor))
        return "This check sum is not checked: it must be BU of one byte, or AI, with the fit type "
               "COUNT.";
    return IsOneOf(LettersOf(sensor), {"checksum", "chksum", "cksum", "csum", "check", "sum"})
               ? "This is not checked as a check sum: its name must be CHECK SUM."
               : nullptr;
}

const char* DelimitedSum(const CSensor& sensor, Roles roles) {
    return sensor.Index == roles.sum && sensor.VariableLength
               ? "A check sum in a delimited frame is summed up to a place by the declared "
                 "lengths, "
                 "not up to this field; hardly any frame passes."
               : nullptr;
}

constexpr const char* (*SensorRules[])(const CSensor&, Roles) = {NumberWithoutFit, UncheckedCounter,
                                                                 UncheckedSum, DelimitedSum};

/// Goes through the text as the reader does and collects what its lines show.
class CLineHints {
  public:
    CLineHints(const CInstrument& instrument, std::vector<DefinitionHint>& hints) : Hints(hints) {
        for (const CSensor& sensor : instrument.Sensors())
            Gains.emplace(sensor.LineNumber, sensor.GainRanges);
    }

    bool Take(std::string_view text) {
        ++Number;
        if (text.empty())
            return true;
        if (CoefficientLines > 0) {
            --CoefficientLines;
            TakeCoefficients(text);
        } else
            TakeDefinition(text);
        return Hints.size() < MostHints;
    }

  private:
    void TakeDefinition(std::string_view text) {
        std::array<std::string_view, 7> tokens;
        for (std::string_view& token : tokens)
            token = NextToken(text);
        const auto kept = Gains.find(Number);
        CoefficientLines = kept != Gains.end() ? kept->second : WholeCount(tokens[5]).value_or(0);
        TakeFrameType(tokens[0]);
        const DefinitionLine line{tokens[0], tokens[1], tokens[2], tokens[3],
                                  tokens[6], Variable,  Pending,   HeaderClosed};
        for (const auto& rule : LineRules)
            if (const char* hint = rule(line))
                Hints.push_back({Number, hint});
        HeaderClosed = HeaderClosed || ClosesHeader(line);
        if (EqualsNoCase(line.type, "FIELD"))
            Pending = true;
        else if (EqualsNoCase(line.length, "V"))
            Pending = false;
    }

    bool ClosesHeader(const DefinitionLine& line) const {
        return HeaderSeen && !IsHeaderText(line) && WholeCount(line.length).value_or(0) != 0;
    }

    /// A load that failed may have ended before it knew.
    void TakeFrameType(std::string_view type) {
        const bool variable = EqualsNoCase(type, "VLF_INSTRUMENT");
        if (!HeaderSeen && (variable || EqualsNoCase(type, "INSTRUMENT"))) {
            HeaderSeen = true;
            Variable = variable;
        }
    }

    void TakeCoefficients(std::string_view text) {
        for (std::string_view token = NextToken(text); !token.empty(); token = NextToken(text))
            if (token.find(',') != std::string_view::npos) {
                Hints.push_back({Number, "A coefficient with a comma is ignored: write a decimal "
                                         "point, and blanks between coefficients."});
                return;
            }
    }

    std::vector<DefinitionHint>& Hints;
    std::map<std::int32_t, std::uint32_t> Gains; ///< coefficient lines of the sensor of a line
    bool Variable = false;
    bool HeaderSeen = false;
    bool HeaderClosed = false;
    bool Pending = false;
    std::uint32_t CoefficientLines = 0;
    std::int32_t Number = 0;
};

/// Two sensors that somebody who looks for one cannot tell apart; those without a value do not
/// matter.
void AddTwins(const CInstrument& instrument, std::vector<DefinitionHint>& hints) {
    std::map<std::pair<std::string, std::string>, std::int32_t> lines;
    for (const CSensor& sensor : instrument.Sensors()) {
        const FitRow& row = RowOf(sensor.Fit);
        if ((sensor.Data == DataType::AS ? row.ofText : row.ofNumbers) == ValueKind::None)
            continue;
        const auto [first, added] =
            lines.try_emplace({ToLower(sensor.Type), ToLower(sensor.Id)}, sensor.LineNumber);
        if (!added && hints.size() < 2 * MostHints)
            hints.push_back({sensor.LineNumber, "The sensor of line " +
                                                    std::to_string(first->second) +
                                                    " has the same type and id."});
    }
}

} // namespace

DefinitionHints HintsOf(const CInstrument& instrument, std::string_view text) {
    std::vector<DefinitionHint> hints;
    if (EncodingOf(text) == TextEncoding::Utf16)
        return hints;
    if (EncodingOf(text) == TextEncoding::MarkedUtf8)
        hints.push_back({1, "The file begins with a byte order mark, which other programs may take "
                            "for part of the first line."});
    CLineHints finder(instrument, hints);
    CDefinitionBytes bytes;
    CDefinitionLines lines;
    const auto takeLine = [&finder](std::string_view line) { return finder.Take(line); };
    const auto takeText = [&](std::string_view part) { return lines.Feed(part, takeLine); };
    if (bytes.Feed(text, takeText) && bytes.Finish(takeText))
        lines.Finish(takeLine);

    const Roles roles{FrameCounterIndex(instrument), ChecksumIndexOf(instrument)};
    for (const CSensor& sensor : instrument.Sensors())
        for (const auto& rule : SensorRules)
            if (const char* hint = hints.size() < 2 * MostHints ? rule(sensor, roles) : nullptr)
                hints.push_back({sensor.LineNumber, hint});
    AddTwins(instrument, hints);
    std::stable_sort(hints.begin(), hints.end(),
                     [](const auto& a, const auto& b) { return a.line < b.line; });
    if (hints.size() > MostHints)
        hints.resize(MostHints);
    return hints;
}

} // namespace qor
