// SPDX-License-Identifier: GPL-3.0-or-later
//
// First what people read, then the JSON.
#include "export/TrialText.h"

#include "base/Text.h"
#include "export/Json.h"
#include "instrument/Calibration.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t ShownBytes = 8;
constexpr int ShownDigits = 12; // fewer than a double has: 12.395, not 12.395000000000001

std::string HexOf(std::string_view bytes, const char* between) {
    std::string text;
    for (char c : bytes)
        text += Format("%s%02x", text.empty() ? "" : between,
                       static_cast<unsigned>(static_cast<std::uint8_t>(c)));
    return text;
}

std::string ShortHex(std::string_view bytes) {
    return HexOf(bytes.substr(0, ShownBytes), " ") + (bytes.size() > ShownBytes ? " ..." : "");
}

std::string Counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

bool HoldsText(const CSensor& sensor) {
    return RowOf(sensor.Data).characters;
}

/// The field before its fit: a text where the bytes are one, else the number.
std::string RawCell(const TriedField& field) {
    if (!field.located)
        return "";
    if (HoldsText(*field.sensor))
        return "\"" + Printable(std::string_view(field.bytes).substr(0, 24)) + "\"";
    return field.raw ? ShortestNumber(*field.raw) : "";
}

std::string ValueCell(const TriedField& field) {
    const std::string units =
        field.sensor->Units.empty() ? "" : " " + Printable(field.sensor->Units);
    if (field.number)
        return GeneralNumber(*field.number, ShownDigits) + units;
    if (field.text)
        return "\"" + Printable(*field.text) + "\"" + units;
    if (field.located && KindOfValue(*field.sensor) == ValueKind::None)
        return "(none: " + std::string(KeywordOf(field.sensor->Fit)) + ")";
    return std::string(ConversionStatusText(field.status));
}

std::string FieldLine(const TriedField& field) {
    const std::string name = Printable(field.sensor->Type + "(" + field.sensor->Id + ")");
    const std::string offset = field.located ? std::to_string(field.offset) : "-";
    std::string line =
        Format("  %6s %4zu  %-16s %-27s  %-14s  ", offset.c_str(), field.bytes.size(), name.c_str(),
               ShortHex(field.bytes).c_str(), RawCell(field).c_str()) +
        ValueCell(field);
    return line + "\n";
}

/// The header as the first line of the fields.
std::string HeaderLine(const CInstrument& instrument) {
    const std::string& header = instrument.SyncHeader();
    return header.empty() ? ""
                          : Format("  %6d %4zu  %-16s %-27s  \"", 0, header.size(), "(sync header)",
                                   ShortHex(header).c_str()) +
                                Printable(header) + "\"\n";
}

std::string CheckLine(std::optional<std::uint64_t> errors, bool exists, const char* role,
                      const char* one, const char* many) {
    if (errors)
        return *errors == 0 ? "well" : Counted(*errors, one, many);
    return exists ? "not checked: one frame alone tells nothing"
                  : std::string("not checked: no sensor ") + role;
}

void WriteFrames(COutput& output, const CInstrument& instrument, const FrameTrialResult& result) {
    const bool counter = FrameCounterIndex(instrument) >= 0;
    output.Text("Frames found:  " + std::to_string(result.frames) + " of " +
                Printable(instrument.ShownName()));
    output.Text(result.shortest == result.longest
                    ? Format(", %zu bytes each\n", result.longest)
                    : Format(", %zu to %zu bytes\n", result.shortest, result.longest));
    output.Text("In no frame:   " + Counted(result.discarded, "byte", "bytes") + "\n");
    output.Text("Frame counter: " +
                CheckLine(result.dropped, counter, "FRAME COUNTER", "gap", "gaps") + "\n");
    output.Text("Check sum:     " +
                CheckLine(result.checksumErrors, false, "CHECK SUM", "error", "errors") + "\n");
    if (result.unreadable > 0)
        output.Text("Checks:        " + Counted(result.unreadable, "frame", "frames") +
                    " in which a counter or sum could not be read\n");
    if (result.unconverted > 0)
        output.Text("Values:        missing in " + Counted(result.unconverted, "frame", "frames") +
                    "\n");
    if (!result.doubt.empty())
        output.Text("Doubt:         " + result.doubt + "\n");
    output.Text(Format("\nThe first frame, at byte %llu, %zu bytes:\n",
                       static_cast<unsigned long long>(result.first->offset),
                       result.first->bytes.size()));
    output.Text(Format("  %6s %4s  %-16s %-27s  %-14s  %s\n", "offset", "size", "field", "bytes",
                       "text or raw", "value"));
    output.Text(HeaderLine(instrument));
    for (const TriedField& field : result.first->fields)
        output.Text(FieldLine(field));
}

void WriteMiss(COutput& output, const NearestMiss& miss) {
    output.Text("Frames found:  none\n");
    output.Text("Likely cause:  " + miss.cause + "\n");
    output.Text("The bytes:     " + Printable(miss.look.sentence) + "\n");
    const HeaderTrace& header = miss.header;
    if (header.length > 0) {
        output.Text(Format("Sync header:   %zu of its %zu bytes seen", header.seen, header.length));
        if (header.times > 0)
            output.Text(Format(", %zu times, first at byte %zu, before \"%s\"", header.times,
                               header.first, Printable(header.follows).c_str()));
        output.Text("\n");
    }
    if (!header.distances.empty()) {
        output.Text("Distances:    ");
        for (std::size_t distance : header.distances)
            output.Text(" " + std::to_string(distance));
        output.Text("\n");
    }
    output.Text("First bytes:   \"" + miss.sample + "\"\n");
}

} // namespace

namespace {

void WriteField(CJsonWriter& json, const TriedField& field) {
    json.BeginArray();
    json.Text(field.sensor->Type);
    json.Text(field.sensor->Id);
    if (field.located)
        json.Text(HexOf(field.bytes, ""));
    else
        json.Null();
    if (field.raw)
        json.Number(*field.raw);
    else if (field.located && HoldsText(*field.sensor))
        json.Text(field.bytes);
    else
        json.Null();
    if (field.text)
        json.Text(*field.text);
    else
        json.NumberOrNull(field.number);
    json.EndArray();
}

void WriteFirst(CJsonWriter& json, const TriedFrame& frame) {
    json.BeginObject();
    json.Key("offset"), json.Integer(static_cast<std::int64_t>(frame.offset));
    json.Key("length"), json.Integer(static_cast<std::int64_t>(frame.bytes.size()));
    json.Key("fields"), json.BeginArray();
    for (const TriedField& field : frame.fields)
        WriteField(json, field);
    json.EndArray();
    json.Key("status"), json.BeginObject();
    for (const TriedField& field : frame.fields)
        if (field.status != ConversionStatus::Good)
            json.Key(std::to_string(field.sensor->Index)),
                json.Code(static_cast<std::uint32_t>(field.status));
    json.EndObject();
    json.EndObject();
}

void WriteNearest(CJsonWriter& json, const NearestMiss& miss) {
    const HeaderTrace& header = miss.header;
    json.BeginObject();
    json.Key("cause"), json.Text(miss.cause);
    json.Key("look"), json.Text(miss.look.sentence);
    json.Key("header_length"), json.Integer(static_cast<std::int64_t>(header.length));
    json.Key("header_seen"), json.Integer(static_cast<std::int64_t>(header.seen));
    json.Key("times"), json.Integer(static_cast<std::int64_t>(header.times));
    json.Key("offset");
    if (header.times > 0)
        json.Integer(static_cast<std::int64_t>(header.first));
    else
        json.Null();
    json.Key("follows"), json.Text(header.follows);
    json.Key("distances"), json.BeginArray();
    for (std::size_t distance : header.distances)
        json.Integer(static_cast<std::int64_t>(distance));
    json.EndArray();
    json.Key("repeat");
    if (const auto& repeat = miss.look.repeat) {
        json.BeginObject();
        json.Key("bytes"), json.Text(HexOf(repeat->bytes, ""));
        json.Key("distance"), json.Integer(static_cast<std::int64_t>(repeat->distance));
        json.Key("count"), json.Integer(static_cast<std::int64_t>(repeat->count));
        json.EndObject();
    } else {
        json.Null();
    }
    json.Key("sample"), json.Text(miss.sample);
    json.EndObject();
}

} // namespace

void WriteTrialText(COutput& output, std::string_view source, const CInstrument& instrument,
                    const FrameTrialResult& result) {
    output.Text(std::string(source) + ": " + Counted(result.bytes, "byte", "bytes") + "\n");
    if (result.nearest)
        WriteMiss(output, *result.nearest);
    else
        WriteFrames(output, instrument, result);
}

void WriteTrialJson(COutput& output, std::string_view source, std::string_view definition,
                    const FrameTrialResult& result) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("file"), json.Path(source);
    json.Key("definition"), json.Path(definition);
    json.Key("bytes"), json.Integer(static_cast<std::int64_t>(result.bytes));
    json.Key("frames"), json.Integer(static_cast<std::int64_t>(result.frames));
    json.Key("discarded"), json.Integer(static_cast<std::int64_t>(result.discarded));
    json.Key("dropped"), json.CountOrNull(result.dropped);
    json.Key("checksum_errors"), json.CountOrNull(result.checksumErrors);
    json.Key("value_errors"), json.Integer(static_cast<std::int64_t>(result.unreadable));
    json.Key("frames_without_value"), json.Integer(static_cast<std::int64_t>(result.unconverted));
    json.Key("doubt");
    if (result.doubt.empty())
        json.Null();
    else
        json.Text(result.doubt);
    json.Key("first");
    if (result.first)
        WriteFirst(json, *result.first);
    else
        json.Null();
    json.Key("nearest");
    if (result.nearest)
        WriteNearest(json, *result.nearest);
    else
        json.Null();
    json.EndObject();
    json.EndLine();
}

} // namespace qor
