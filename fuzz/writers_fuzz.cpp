// SPDX-License-Identifier: GPL-3.0-or-later
//
// What is written as CSV and as JSON, read back by other readers: a definition's text up to a line
// "--", then a frame. Every name, text and number is what went in.
#include "Require.h"

#include "base/Text.h"
#include "export/FrameText.h"
#include "instrument/Calibration.h"
#include "instrument/DefinitionReader.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>

namespace {

using namespace qor;

/// RFC 4180 to the letter: CR LF behind every row, quotes only around a whole field.
std::vector<std::vector<std::string>> ReadCsv(std::string_view text) {
    std::vector<std::vector<std::string>> rows;
    while (!text.empty()) {
        std::vector<std::string>& row = rows.emplace_back(1);
        for (bool ended = false; !ended;) {
            if (text.starts_with('"')) {
                for (text.remove_prefix(1); !text.starts_with('"') || text.starts_with("\"\"");) {
                    Require(!text.empty());
                    row.back() += text[0];
                    text.remove_prefix(text[0] == '"' ? 2 : 1);
                }
                text.remove_prefix(1);
            } else {
                const std::size_t end = text.find_first_of(",\"\r\n");
                Require(end != std::string_view::npos);
                row.back() = text.substr(0, end);
                text.remove_prefix(end);
            }
            ended = text.starts_with("\r\n");
            Require(ended || text.starts_with(','));
            text.remove_prefix(ended ? 2 : 1);
            if (!ended)
                row.emplace_back();
        }
    }
    return rows;
}

/// Each byte as the code point of its number.
std::string CodePoints(std::string_view bytes) {
    std::string text;
    for (const std::uint8_t byte : AsBytes(bytes))
        if (byte < 0x80)
            text += static_cast<char>(byte);
        else
            text.append(
                {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 63))});
    return text;
}

std::string Utf8(std::string_view bytes) {
    return IsUtf8(bytes) ? std::string(bytes) : CodePoints(bytes);
}

COutput::TextTaker Into(std::string& all) {
    return [&all](std::string_view text) { return all.append(text), true; };
}

/// A sensor's cell of the table and its value of the line.
void CompareValue(const CSensor& sensor, const CLiveInstrument& live, const std::string& cell,
                  const nlohmann::json& value) {
    std::string text;
    double number = 0.0;
    const ByteSpan frame = live.CurrentFrame()->Span();
    const bool isText = KindOfValue(sensor) == ValueKind::Text;
    const ConversionStatus status =
        isText ? ValueText(sensor, frame, text) : CalibratedValue(sensor, frame, false, number);
    if (status != ConversionStatus::Good)
        return Require(cell.empty() && value.is_null());
    if (isText)
        return Require(cell == Utf8(text) && value == CodePoints(text));
    double read = 0.0;
    const auto end = std::from_chars(cell.data(), cell.data() + cell.size(), read);
    Require(end.ec == std::errc() && end.ptr == cell.data() + cell.size());
    Require(std::bit_cast<std::uint64_t>(read) == std::bit_cast<std::uint64_t>(number));
    Require(value.is_number() && value.get<double>() == number);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::string_view Mark = "\n--\n";
    const std::string_view input = AsText({data, size});
    const std::size_t end = std::min(input.find(Mark), size);
    CInstrument instrument;
    CDefinitionReader reader(instrument, "writers.cal");
    reader.Begin("writers.cal");
    reader.Feed(input.substr(0, end));
    if (reader.Finish() != DefinitionStatus::Success)
        return 0;
    CFrameData frame;
    const ByteSpan bytes = AsBytes(input.substr(std::min(end + Mark.size(), size)));
    frame.Bytes.assign(bytes.begin(), bytes.end());
    CLiveInstrument live(instrument);
    live.Take(frame);

    std::string csv, json;
    const std::string file(AsText(bytes));
    {
        COutput table(Into(csv));
        CFrameCsv rows(table, instrument, file, {.files = true});
        rows.WriteHeader({});
        rows.WriteFrame(live, {}, {});
        COutput lines(Into(json));
        CFrameJson(lines, file, {}).WriteFrame(live, {}, {});
        Require(table.Flush() && lines.Flush());
    }
    const auto rows = ReadCsv(csv);
    const nlohmann::json line = nlohmann::json::parse(json, nullptr, false);
    Require(rows.size() == 2 && rows[0].size() == rows[1].size() && line.is_object());
    Require(rows[1][0] == Utf8(file) && line["file"] == Utf8(file));
    Require(line["instrument"] == CodePoints(instrument.Name()));
    Require(line["values"].size() == instrument.Sensors().size());
    std::size_t column = 3; // behind file, time and frame
    for (const CSensor& sensor : instrument.Sensors()) {
        const nlohmann::json& value = line["values"][static_cast<std::size_t>(sensor.Index)];
        if (KindOfValue(sensor) == ValueKind::None) {
            Require(value.is_null());
            continue;
        }
        Require(column < rows[0].size());
        Require(rows[0][column] ==
                Utf8(sensor.Type + "(" + sensor.Id + ") [" + sensor.Units + "]"));
        CompareValue(sensor, live, rows[1][column++], value);
    }
    Require(column == rows[0].size());
    return 0;
}
