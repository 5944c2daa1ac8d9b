// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FrameText.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/FieldText.h"
#include "products/GpsSentence.h"

#include <array>
#include <charconv>

namespace qor {

namespace {

void PutDigits(char* place, int digits, int value) {
    for (int i = digits; i-- > 0; value /= 10)
        place[i] = static_cast<char>('0' + value % 10);
}

} // namespace

ShownValue ValueOf(const CLiveInstrument& instrument, const CSensor& sensor, ValueView view,
                   std::string& text) {
    ByteSpan frame = instrument.CurrentFrame()->Span();
    ShownValue value;
    if (view == ValueView::HexCounts) {
        value.isText = true;
        value.status =
            FormatField(sensor, frame, instrument.Immersed, FieldView::HexCounts, 0, text);
    } else if (view == ValueView::RawCounts && sensor.Data != DataType::AS) {
        value.status = RawNumber(sensor, frame, value.number);
    } else if (KindOfValue(sensor) == ValueKind::Text) {
        value.isText = true;
        value.status = ValueText(sensor, frame, text);
    } else {
        auto index = static_cast<std::size_t>(sensor.Index);
        value.status = instrument.Values().statuses[index];
        value.number = instrument.Values().numbers[index];
    }
    return value;
}

std::array<FrameFlag, 3> FlagsOf(const FrameCheckResult& checks) {
    const auto found = [](bool checked, bool value) {
        return checked ? std::optional(value) : std::nullopt;
    };
    return {{{"dropped", found(checks.checksCounter, checks.dropped)},
             {"checksum_error", found(checks.checksSum, checks.checksumError)},
             {"value_error", found(checks.checksCounter || checks.checksSum, checks.valueError)}}};
}

double Rounded(double value, int digits) {
    if (digits == 0)
        return value;
    std::array<char, 40> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::scientific, digits - 1)
                         .ptr;
    double rounded = value; // stays where rounding up left the range of doubles
    std::from_chars(text.data(), end, rounded);
    return rounded;
}

std::optional<double> ShownSeconds(const FrameTime& time, std::optional<int> utcOffset) {
    if (!time.known)
        return std::nullopt;
    const std::int64_t local = time.seconds + std::int64_t{time.utcOffsetMinutes} * 60;
    const std::int64_t shown = local - std::int64_t{utcOffset.value_or(0)} * 60;
    // One rounding, so that the nearest millisecond is the one that was sent.
    return static_cast<double>(shown * 1000 + time.milliseconds) / 1000.0;
}

void WriteTime(COutput& output, const FrameTime& time) {
    if (!time.known)
        return;
    CalendarTime local = LocalCalendar(time);
    char text[] = "0000-00-00T00:00:00.000";
    PutDigits(text, 4, local.year);
    PutDigits(text + 5, 2, local.month);
    PutDigits(text + 8, 2, local.day);
    PutDigits(text + 11, 2, local.hour);
    PutDigits(text + 14, 2, local.minute);
    PutDigits(text + 17, 2, local.second);
    PutDigits(text + 20, 3, time.milliseconds);
    output.Text({text, sizeof text - 1});
}

void WriteTime(COutput& output, const FrameTime& time, std::optional<int> utcOffset) {
    if (!utcOffset || !time.known)
        return WriteTime(output, time);
    FrameTime utc = time;
    utc.seconds += (time.utcOffsetMinutes - *utcOffset) * 60;
    utc.utcOffsetMinutes = 0;
    WriteTime(output, utc);
    output.Char('Z');
}

void WriteTimeValue(CJsonWriter& json, COutput& output, const FrameTime& time,
                    std::optional<int> utcOffset) {
    if (!time.known)
        return json.Null();
    output.Char('"');
    WriteTime(output, time, utcOffset);
    output.Char('"');
    json.ValueWritten();
}

CFrameCsv::CFrameCsv(COutput& output, const CInstrument& instrument, const std::string& file,
                     const FrameStyle& style)
    : Out(output), File(file), Style(style) {
    for (const CSensor& sensor : instrument.Sensors()) {
        ValueKind kind = KindOfValue(sensor);
        bool raw = Style.view != ValueView::Calibrated &&
                   (sensor.VariableLength || sensor.FieldLength > 0);
        if (kind != ValueKind::None || raw)
            Columns.push_back(
                {&sensor, kind == ValueKind::Text, style.degrees && IsCoordinateText(sensor)});
    }
}

std::vector<ColumnHead> CFrameCsv::Heads(std::span<const DerivedRow> derived) const {
    std::vector<ColumnHead> heads;
    if (Style.files)
        heads.push_back({"file", "file", "", "string"});
    heads.push_back({"time", "time", "", "datetime"});
    heads.push_back({"frame", "frame", "", "integer"});
    if (Style.flags)
        for (const FrameFlag& flag : FlagsOf({}))
            heads.push_back({std::string(flag.name), std::string(flag.name), "", "boolean"});
    const bool hex = Style.view == ValueView::HexCounts;
    for (const Column& column : Columns) {
        heads.push_back(HeadOfSensor(*column.sensor));
        if (column.text || hex)
            heads.back().dataType = "string";
        if (!column.degrees)
            continue;
        heads.push_back(HeadOfSensor(*column.sensor));
        heads.back().name += "_deg";
        heads.back().units = "deg";
    }
    for (const DerivedRow& row : derived)
        heads.push_back(HeadOfProduct(row.label, row.units));
    if (Style.qc)
        AddQcHeads(heads, derived);
    NameColumns(heads, Style.simpleNames);
    return heads;
}

/// Flags have no units, and a name that begins with what they are.
void CFrameCsv::AddQcHeads(std::vector<ColumnHead>& heads,
                           std::span<const DerivedRow> derived) const {
    const auto add = [&](const ColumnHead& of) {
        heads.push_back({of.name + "_qc", "qc " + of.title, "", "integer"});
    };
    add({"time", "time", "", ""});
    for (const Column& column : Columns)
        if (!column.text)
            add(HeadOfSensor(*column.sensor));
    for (const DerivedRow& row : derived)
        add(HeadOfProduct(row.label, row.units));
}

void CFrameCsv::WriteHeader(std::span<const DerivedRow> derived) {
    WriteHeads(Out, Heads(derived), Style.safeTexts);
}

void CFrameCsv::WriteColumns(COutput& output, std::span<const DerivedRow> derived,
                             std::string_view url) const {
    WriteColumnsJson(output, Heads(derived), url);
}

void CFrameCsv::WriteFrame(const CLiveInstrument& instrument, const FrameCheckResult& checks,
                           std::span<const DerivedRow> derived, const FrameQc* qc) {
    if (Style.files)
        WriteCsvField(Out, File, Style.safeTexts), Out.Char(',');
    WriteTime(Out, instrument.CurrentFrame()->Info.time, Style.utcOffset);
    Out.Char(',');
    Out.Integer(instrument.FrameNumber());
    if (Style.flags)
        for (const FrameFlag& flag : FlagsOf(checks))
            Out.Char(','), Out.Text(!flag.value ? "" : *flag.value ? "true" : "false");
    WriteSensors(instrument);
    for (const DerivedRow& row : derived) {
        Out.Char(',');
        if (row.value)
            Out.Number(Rounded(*row.value, Style.digits));
    }
    if (qc)
        WriteQc(*qc);
    Out.Text("\r\n");
}

void CFrameCsv::WriteQc(const FrameQc& qc) {
    const auto write = [this](QcFlag flag) { Out.Char(','), Out.Integer(static_cast<int>(flag)); };
    write(qc.time);
    for (const Column& column : Columns)
        if (!column.text)
            write(qc.sensors[static_cast<std::size_t>(column.sensor->Index)]);
    for (const QcFlag flag : qc.products)
        write(flag);
}

void CFrameCsv::WriteSensors(const CLiveInstrument& instrument) {
    for (const Column& column : Columns) {
        Out.Char(',');
        WriteValue(instrument, column);
        if (!column.degrees)
            continue;
        Out.Char(',');
        if (const auto degrees = SignedDegrees(instrument, *column.sensor))
            Out.Number(Rounded(*degrees, Style.digits));
    }
}

void CFrameCsv::WriteValue(const CLiveInstrument& instrument, const Column& column) {
    const FrameValues& values = instrument.Values();
    const auto index = static_cast<std::size_t>(column.sensor->Index);
    if (Style.view == ValueView::Calibrated && !column.text) {
        if (values.statuses[index] == ConversionStatus::Good)
            Out.Number(Rounded(values.numbers[index], Style.digits));
        return;
    }
    const ShownValue value = ValueOf(instrument, *column.sensor, Style.view, Cell);
    if (value.status != ConversionStatus::Good)
        return;
    if (value.isText)
        WriteCsvField(Out, Cell, Style.safeTexts);
    else
        Out.Number(value.number);
}

void CFrameJson::WriteFrame(const CLiveInstrument& instrument, const FrameCheckResult& checks,
                            std::span<const DerivedRow> derived,
                            std::optional<std::uint64_t> offset, const FrameQc* qc) {
    const CFrameData& frame = *instrument.CurrentFrame();
    Json.BeginObject();
    Json.Key("file"), Json.Path(File);
    Json.Key("instrument"), Json.Text(instrument.Name());
    Json.Key("frame"), Json.Integer(instrument.FrameNumber());
    Json.Key("offset"),
        Json.Integer(static_cast<std::int64_t>(offset.value_or(frame.StreamOffset)));
    Json.Key("length"), Json.Integer(static_cast<std::int64_t>(frame.Bytes.size()));
    Json.Key("time"), WriteTimeValue(Json, Out, frame.Info.time, Style.utcOffset);
    for (const FrameFlag& flag : FlagsOf(checks))
        Json.Key(flag.name), Json.BoolOrNull(flag.value);
    WriteValues(instrument);
    if (Style.degrees)
        WriteDegrees(instrument);
    if (Style.derived)
        WriteDerived(derived);
    if (qc)
        WriteQc(*qc, derived);
    Json.EndObject();
    Json.EndLine();
}

void CFrameJson::WriteValues(const CLiveInstrument& instrument) {
    Failed.clear();
    Json.Key("values"), Json.BeginArray();
    for (const CSensor& sensor : instrument.Definition().Sensors()) {
        ShownValue value = ValueOf(instrument, sensor, Style.view, Text);
        if (value.status != ConversionStatus::Good) {
            Failed.emplace_back(sensor.Index, value.status);
            Json.Null();
        } else if (value.isText) {
            Json.Text(Text);
        } else {
            Json.Number(Style.view == ValueView::Calibrated ? Rounded(value.number, Style.digits)
                                                            : value.number);
        }
    }
    Json.EndArray();
    Json.Key("status"), Json.BeginObject();
    for (const auto& [index, status] : Failed)
        Json.Key(std::to_string(index)), Json.Code(static_cast<std::uint32_t>(status));
    Json.EndObject();
}

void CFrameJson::WriteDegrees(const CLiveInstrument& instrument) {
    Json.Key("degrees"), Json.BeginObject();
    for (const CSensor& sensor : instrument.Definition().Sensors()) {
        if (!IsCoordinateText(sensor))
            continue;
        const auto degrees = SignedDegrees(instrument, sensor);
        Json.Key(std::to_string(sensor.Index));
        Json.NumberOrNull(degrees ? std::optional(Rounded(*degrees, Style.digits)) : std::nullopt);
    }
    Json.EndObject();
}

void CFrameJson::WriteDerived(std::span<const DerivedRow> derived) {
    Json.Key("derived"), Json.BeginArray();
    for (const DerivedRow& row : derived) {
        Json.BeginArray();
        Json.Text(row.label);
        Json.Text(row.units);
        Json.NumberOrNull(row.value ? std::optional(Rounded(*row.value, Style.digits))
                                    : std::nullopt);
        Json.EndArray();
    }
    Json.EndArray();
}

/// Of what is neither good nor unchecked: a sensor by its index, a product by its label.
void CFrameJson::WriteQc(const FrameQc& qc, std::span<const DerivedRow> derived) {
    const auto write = [this](std::string_view name, QcFlag flag) {
        if (flag != QcFlag::Good && flag != QcFlag::NotEvaluated)
            Json.Key(name), Json.Integer(static_cast<int>(flag));
    };
    Json.Key("qc"), Json.BeginObject();
    write("time", qc.time);
    for (std::size_t i = 0; i < qc.sensors.size(); ++i)
        write(std::to_string(i), qc.sensors[i]);
    for (std::size_t i = 0; i < qc.products.size(); ++i)
        write(derived[i].label, qc.products[i]);
    Json.EndObject();
}

} // namespace qor
