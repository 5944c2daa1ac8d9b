// SPDX-License-Identifier: GPL-3.0-or-later
//
// The course of a load: pieces of text to lines, lines to sensors and coefficients, and at the end
// the report. Memory stays within about ten times the text, time linear in it.
#include "instrument/DefinitionReader.h"

#include "instrument/FieldNormalisation.h"
#include "instrument/FitTypes.h"
#include "platform/FileErrorText.h"

#include <cmath>
#include <limits>
#include <span>

namespace qor {

namespace {

constexpr std::int32_t BadLineLimit = 10;

/// A count or length of a definition line: a plain decimal number. 4294967295 is not one, since it
/// is what out-of-range numbers read as on some systems.
std::optional<std::uint32_t> CountOf(std::string_view token) {
    const std::optional<std::uint32_t> count = WholeCount(token);
    return count == std::numeric_limits<std::uint32_t>::max() ? std::nullopt : count;
}

/// The text between the quotes, or empty when the token is not quoted from end to end.
std::optional<std::string_view> UnitsOf(std::string_view token) {
    if (!token.starts_with('\''))
        return std::nullopt;
    token.remove_prefix(1);
    if (token.empty() || token.find('\'') != token.size() - 1)
        return std::nullopt;
    return token.substr(0, token.size() - 1);
}

/// The line's tokens and their number, which counts no further than one more than there is place.
std::size_t Split(std::string_view text, std::span<std::string_view> tokens) {
    std::size_t count = 0;
    for (std::string_view token = NextToken(text); !token.empty(); token = NextToken(text)) {
        if (count == tokens.size())
            return count + 1;
        tokens[count++] = token;
    }
    return count;
}

const char* FileKindOf(std::string_view path) {
    const std::string_view ending = path.substr(path.size() < 3 ? 0 : path.size() - 3);
    if (EqualsNoCase(ending, "cal"))
        return "Calibration File";
    return EqualsNoCase(ending, "tdf") ? "Telemetry Definition File" : "Instrument File";
}

} // namespace

DefinitionStatus CDefinitionReader::LoadFile(const CInstrument::LoadProgress& goOn) {
    if (!Target.Path.empty())
        return Fail("Unable to reload instrument.\r\n", DefinitionStatus::AlreadyDefined);
    if (Path.empty())
        return Fail("Unable to load instrument.\r\n", DefinitionStatus::FileNotSpecified);
    Target.Kind = FileKindOf(Path);

    CFile file;
    if (const FileCause cause = file.OpenForReading(Path); cause != FileCause::None)
        return Fail(ReadingMessage("opening"), DefinitionStatus::OpenFailed,
                    DefinitionFileErrorText(cause));
    Begin(file.FullPath());

    std::array<std::uint8_t, 16384> buffer;
    std::uint64_t total = 0;
    std::size_t got = 0;
    do {
        FileCause cause = file.Read(buffer, got);
        total += got;
        if (cause == FileCause::None && goOn && !goOn(total))
            cause = FileCause::Generic;
        if (cause != FileCause::None) {
            Target.ReadFailed = true;
            return Fail(ReadingMessage("reading"), DefinitionStatus::ReadFailed,
                        DefinitionFileErrorText(cause));
        }
    } while (got > 0 && Feed(AsText({buffer.data(), got})));
    return Finish();
}

void CDefinitionReader::Begin(const std::string& fullPath) {
    Target.Kind = FileKindOf(Path);
    Target.Path = fullPath;
}

bool CDefinitionReader::Feed(std::string_view piece) {
    return Fatal == DefinitionStatus::NoError &&
           Bytes.Feed(piece, [this](std::string_view text) { return TakeText(text); });
}

bool CDefinitionReader::TakeText(std::string_view text) {
    return Lines.Feed(text, [this](std::string_view line) { return TakeLine(line); });
}

DefinitionStatus CDefinitionReader::Finish() {
    if (Fatal == DefinitionStatus::NoError &&
        Bytes.Finish([this](std::string_view text) { return TakeText(text); }))
        Lines.Finish([this](std::string_view line) { return TakeLine(line); });
    Target.FileEncoding = Bytes.Encoding();
    if (Fatal != DefinitionStatus::NoError)
        return Fatal;
    if (Waiting)
        Log.Diagnostic(DefinitionStatus::GainRangesMissing, CorrectiveAction::SensorIgnored);
    if (Target.Frame == FrameType::Variable && !TerminatorSeen)
        return Fail(ReadingMessage("reading"), DefinitionStatus::TerminatorNotFound);
    return Succeed();
}

/// One physical line; false when a fatal fault ends the load.
bool CDefinitionReader::TakeLine(std::string_view text) {
    if (Target.Lines < std::numeric_limits<std::int32_t>::max())
        ++Target.Lines;
    Log.SetLine(Target.Lines);
    if (text.empty())
        return true;
    if (LinesToSkip > 0)
        --LinesToSkip;
    else if (Waiting)
        ReadCoefficients(text);
    else
        Fatal = ReadDefinition(text);
    return Fatal == DefinitionStatus::NoError;
}

DefinitionStatus CDefinitionReader::ReadDefinition(std::string_view text) {
    Tokens tokens;
    const std::size_t count = Split(text, tokens);
    if (count != tokens.size() && ++Target.BadLines == BadLineLimit)
        return Fail(ReadingMessage("reading"), DefinitionStatus::FileCorrupted);
    if (count < tokens.size()) {
        Drop(DefinitionStatus::LineFormat);
        return DefinitionStatus::NoError;
    }
    if (count > tokens.size())
        Log.Diagnostic(DefinitionStatus::LineFormat, CorrectiveAction::ExtraParametersIgnored);

    CSensor sensor;
    if (!ReadTokens(tokens, sensor))
        return DefinitionStatus::NoError;
    const DefinitionStatus status = CheckHeader(sensor);
    if (status != DefinitionStatus::NotHeaderLine)
        return status;
    if (!AcceptSensor(sensor))
        return DefinitionStatus::NoError;
    if (sensor.GainRanges == 0)
        Append(std::move(sensor));
    else
        Waiting = std::move(sensor);
    return DefinitionStatus::NoError;
}

/// Adds the sensor's field to the frame and repairs the sensor; false when it is not kept.
bool CDefinitionReader::AcceptSensor(CSensor& sensor) {
    if (sensor.Fit == FitType::OPTIC3 && !FindIntegrationTime(sensor))
        return DropKeepingSpace(DefinitionStatus::NoIntegrationTime, sensor.FieldLength);
    // Decided: a field that no frame size can hold has an invalid length.
    if (!Grow(sensor.FieldLength))
        return Drop(DefinitionStatus::FieldLength);
    // Kept: the frame grows by the length as written, also when the sensor's length is repaired.
    NormaliseField(sensor, Target.Frame, Log);
    const bool keep = ApplyDelimiterRules(sensor);
    LinesToSkip = keep ? 0 : sensor.GainRanges;
    return keep;
}

/// Fills the sensor from the tokens of its line; false when the line is dropped.
bool CDefinitionReader::ReadTokens(const Tokens& tokens, CSensor& sensor) {
    const auto& [type, id, units, fieldLength, dataType, gainRanges, fitType] = tokens;
    // The coefficient lines of a dropped line are known by their place and go with it.
    const std::optional<std::uint32_t> gains = CountOf(gainRanges);
    LinesToSkip = gains.value_or(0);

    if (const auto text = UnitsOf(units))
        sensor.Units = *text;
    else
        Log.Diagnostic(DefinitionStatus::UnitsFormat, CorrectiveAction::UnitsIgnored);

    sensor.VariableLength = EqualsNoCase(fieldLength, "V");
    if (sensor.VariableLength && Target.Frame == FrameType::Fixed)
        return Drop(DefinitionStatus::VariableInFixed);
    const auto length =
        sensor.VariableLength ? std::optional<std::uint32_t>(0) : CountOf(fieldLength);
    if (!length)
        return Drop(DefinitionStatus::FieldLength);
    if (!gains)
        return DropKeepingSpace(DefinitionStatus::GainRange, *length);
    const auto data = DataTypeOf(dataType);
    if (!data)
        return DropKeepingSpace(DefinitionStatus::DataTypeInvalid, *length);
    const auto fit = FitTypeOf(fitType);
    if (!fit)
        return DropKeepingSpace(DefinitionStatus::FitTypeInvalid, *length);

    sensor.Instrument = &Target;
    sensor.Type = type;
    if (!EqualsNoCase(id, "NONE"))
        sensor.Id = id;
    sensor.FieldLength = *length;
    sensor.GainRanges = *gains;
    sensor.Data = *data;
    sensor.Fit = *fit;
    sensor.ByteOffset = static_cast<std::uint32_t>(Target.Size);
    sensor.LineNumber = Target.Lines;
    return true;
}

/// One coefficient line of the waiting sensor.
void CDefinitionReader::ReadCoefficients(std::string_view text) {
    constexpr std::size_t WorthMoving = 64;
    const FitRow& row = RowOf(Waiting->Fit);
    std::size_t valid = 0;
    Numbers.clear();
    for (std::string_view token = NextToken(text); !token.empty(); token = NextToken(text)) {
        const std::optional<double> number = WholeNumber(token);
        if (!number || !std::isfinite(*number))
            Log.Diagnostic(DefinitionStatus::CoefficientInvalid,
                           CorrectiveAction::CoefficientIgnored);
        else if (++valid <= row.mostCoefficients)
            Numbers.push_back(*number);
    }
    ++Waiting->CoefficientLines;
    if (valid < row.fewestCoefficients) {
        Log.Diagnostic(DefinitionStatus::CoefficientCount, CorrectiveAction::SensorIgnored);
        LinesToSkip = Waiting->GainRanges - Waiting->CoefficientLines;
        Waiting.reset();
        return;
    }
    if (valid > row.mostCoefficients)
        Log.Diagnostic(DefinitionStatus::CoefficientCount,
                       CorrectiveAction::ExtraCoefficientsIgnored);
    // Few numbers are copied, so that the set takes no more memory than they need.
    Waiting->Coefficients.reserve(Waiting->GainRanges);
    if (Numbers.size() < WorthMoving)
        Waiting->Coefficients.emplace_back(Numbers.begin(), Numbers.end());
    else
        Waiting->Coefficients.push_back(std::move(Numbers));
    if (Waiting->CoefficientLines == Waiting->GainRanges) {
        Append(std::move(*Waiting));
        Waiting.reset();
    }
}

void CDefinitionReader::Append(CSensor&& sensor) {
    sensor.Index = Target.SensorCount();
    Target.SensorList.push_back(std::move(sensor));
    NoteIntegrationTime(Target.SensorList.back());
}

bool CDefinitionReader::Drop(DefinitionStatus fault) {
    Log.Diagnostic(fault, CorrectiveAction::SensorIgnored);
    return false;
}

/// Drops a line whose field the instrument sends all the same.
bool CDefinitionReader::DropKeepingSpace(DefinitionStatus fault, std::uint32_t fieldLength) {
    Grow(fieldLength);
    return Drop(fault);
}

/// Adds a field to the frame; false, and nothing is added, when the size would not be a 32-bit
/// number any more.
bool CDefinitionReader::Grow(std::uint32_t fieldLength) {
    const std::int64_t size = std::int64_t{Target.Size} + fieldLength;
    if (size > std::numeric_limits<std::int32_t>::max())
        return false;
    Target.Size = static_cast<std::int32_t>(size);
    return true;
}

/// A message whose second line names the file.
std::string CDefinitionReader::FaultMessage(const std::string& firstLine) const {
    return firstLine + "\r\n\t" + Target.Kind + " Name: \"" + Path + "\".\r\n";
}

std::string CDefinitionReader::ReadingMessage(const char* verb) const {
    // Kept: "occured" is part of the text.
    return FaultMessage(Format("An error occured %s the %s.", verb, Target.Kind.c_str()));
}

DefinitionStatus CDefinitionReader::Fail(std::string message, DefinitionStatus status,
                                         std::string_view detail) {
    Waiting.reset();
    Target.Diagnostics += Log.Count(); // a refused second load adds none
    Target.FirstFault += Log.First();
    Target.Log = std::move(message);
    if (!detail.empty())
        Target.Log.append("\t").append(detail);
    Target.Log += ReportText(status);
    return status;
}

DefinitionStatus CDefinitionReader::Succeed() {
    const bool fixed = Target.Frame == FrameType::Fixed;
    Target.Diagnostics = Log.Count();
    Target.FirstFault = Log.First();
    std::string& log = Target.Log;
    log = Target.Kind + " read successfully.\r\n";
    log += "\tFile name: \"" + Path + "\"\r\n";
    log += "\tLines read: " + std::to_string(Target.Lines) + "\r\n";
    log += "\tNumber of sensors: " + std::to_string(Target.SensorCount()) + "\r\n";
    log += std::string("\tFrame type: ") + (fixed ? "Fixed" : "Variable") + "\r\n";
    if (fixed)
        log += "\tFrame size: " + std::to_string(Target.Size) + " bytes\r\n";
    log += "\r\n\t" + Target.InstrumentName + " - " + std::to_string(Target.Diagnostics) +
           " error(s)\r\n";
    if (Target.Diagnostics > 0)
        log += "\r\n" + Log.Text();
    return DefinitionStatus::Success;
}

} // namespace qor
