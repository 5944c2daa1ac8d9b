// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/SeaBassTable.h"

#include "base/Text.h"
#include "export/StandardNames.h"
#include "instrument/Calibration.h"
#include "platform/FileErrorText.h"
#include "products/GpsSentence.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr std::string_view MissingText = "-9999";

std::string ShownFileName(std::string_view path) {
    const std::size_t at = path.find_last_of("/\\");
    return SeaBassText(at == path.npos ? path : path.substr(at + 1));
}

void AddOnce(std::vector<std::string>& list, const std::string& text) {
    if (std::find(list.begin(), list.end(), text) == list.end())
        list.push_back(text);
}

std::string Joined(const std::vector<std::string>& list) {
    std::string text;
    for (const std::string& one : list)
        text += (text.empty() ? "" : ",") + one;
    return text;
}

std::string CommentOf(const std::string& name, const std::string& units) {
    return SeaBassText(name) + (units.empty() ? "" : " (" + SeaBassText(units) + ")");
}

} // namespace

CSeaBassTable::CSeaBassTable(std::string path, COutput& out, const ExportSettings& settings)
    : Path(std::move(path)), Out(out), Settings(settings), Rows(settings.report) {}

void CSeaBassTable::RefuseLocalTimes(const std::string& log) {
    Settings.report(log + ": its times are local, those of SeaBASS are GMT; say what they "
                          "are ahead of it with --utc-offset=+HH:MM.");
    IsLocal = true;
}

OutputResult CSeaBassTable::BeginLog(const LogSource& source,
                                     const ExportedInstrument& instrument) {
    if (!source.utcOffset && !source.header.empty()) {
        RefuseLocalTimes(source.log);
        return {OutputState::Failed, Path};
    }
    std::vector<std::string> lacking;
    std::vector<Column> columns = ColumnsOf(instrument, lacking);
    if (Begun && columns != Columns) {
        Settings.report(
            Path + ": the fields of " + source.log +
            " are others than those of the logs before it; decode it into a file of its "
            "own.");
        return {OutputState::Failed, Path};
    }
    if (columns.empty()) {
        Settings.report(Path + ": no sensor of " + instrument.live->Name() +
                        " is a field of SeaBASS; choose another --format for this instrument.");
        return {OutputState::Failed, Path};
    }
    AddOnce(Logs, ShownFileName(source.log));
    AddOnce(Calibrations, ShownFileName(instrument.live->Definition().FilePath()));
    if (std::exchange(Begun, true)) {
        Source.log = source.log, Source.utcOffset = source.utcOffset;
        return {};
    }
    Source = source;
    Columns = std::move(columns);
    Lacking = std::move(lacking);
    OutputRules rules = Settings.rules;
    rules.overwrite = true; // nothing is put in its place
    return Rows.Open(Path + ".rows", rules);
}

std::optional<CSeaBassTable::Column> CSeaBassTable::ColumnOf(const CSensor& sensor,
                                                             bool immersed) const {
    if (IsCoordinateText(sensor) && (IsNamedLatitude(sensor) || IsNamedLongitude(sensor)))
        return Column{IsNamedLatitude(sensor) ? "lat" : "lon", "degrees", sensor.Index, -1, true};
    if (KindOfValue(sensor) != ValueKind::Number)
        return std::nullopt;
    const std::optional<UnitText> units = ReadUnits(sensor.Units);
    const QuantityName quantity = NameOfSensor(sensor, units, immersed);
    Column column{std::string(quantity.field), UnitsOfField(quantity.field, units), sensor.Index};
    if (column.units.empty())
        return std::nullopt;
    // Of optical fields the wavelength is a part of the name.
    const bool optical = column.units.find("/nm") != std::string_view::npos;
    if (optical && !WholeNumber(sensor.Id))
        return std::nullopt;
    column.field += optical ? sensor.Id : "";
    return column;
}

/// Of two sensors that are one field the first is taken.
std::vector<CSeaBassTable::Column>
CSeaBassTable::ColumnsOf(const ExportedInstrument& instrument,
                         std::vector<std::string>& lacking) const {
    std::vector<Column> columns;
    const auto take = [&](std::optional<Column> column, const std::string& name,
                          const std::string& units) {
        const bool taken = column && std::any_of(columns.begin(), columns.end(), [&](auto& other) {
                               return EqualsNoCase(other.field, column->field);
                           });
        if (taken)
            lacking.push_back("another is " + column->field +
                              " already: " + CommentOf(name, units));
        else if (column)
            columns.push_back(std::move(*column));
        else
            lacking.push_back("without a field: " + CommentOf(name, units));
    };
    const CLiveInstrument& live = *instrument.live;
    for (const CSensor& sensor : live.Definition().Sensors())
        if (KindOfValue(sensor) != ValueKind::None)
            take(ColumnOf(sensor, live.Immersed), SensorName(sensor), sensor.Units);
    for (std::size_t i = 0; i < instrument.derived.size(); ++i) {
        const DerivedRow& row = instrument.derived[i];
        const std::optional<UnitText> units = ReadUnits(row.units);
        const std::string_view field = NameOfProduct(row.kind, units).field;
        const std::string_view text = UnitsOfField(field, units);
        const Column column{std::string(field), text, -1, static_cast<int>(i)};
        take(text.empty() ? std::nullopt : std::optional(column), row.label, row.units);
    }
    return columns;
}

void CSeaBassTable::WriteTimeOf(const FrameTime& time) {
    if (!time.known) {
        Rows.Text(MissingText), Rows.Char(','), Rows.Text(MissingText);
        return;
    }
    const int shift = time.utcOffsetMinutes - Source.utcOffset.value_or(0);
    const std::int64_t seconds = time.seconds + std::int64_t{shift} * 60;
    First = std::min(First.value_or(seconds), seconds);
    Last = std::max(Last.value_or(seconds), seconds);
    Rows.Text(SeaBassDate(seconds)), Rows.Char(','), Rows.Text(SeaBassTime(seconds));
}

std::optional<double> CSeaBassTable::ValueOf(const ExportedFrame& frame,
                                             const Column& column) const {
    if (column.product >= 0) {
        const auto i = static_cast<std::size_t>(column.product);
        return i < frame.derived.size() ? frame.derived[i].value : std::nullopt;
    }
    const CLiveInstrument& live = frame.instrument;
    if (column.degrees)
        return SignedDegrees(live, *live.Definition().Sensor(column.sensor));
    const auto i = static_cast<std::size_t>(column.sensor);
    return live.Values().statuses[i] == ConversionStatus::Good
               ? std::optional(live.Values().numbers[i])
               : std::nullopt;
}

void CSeaBassTable::Extend(const Column& column, double value) {
    const bool north = column.field == "lat";
    if (!north && column.field != "lon")
        return;
    constexpr GeoPosition Start{1e9, 1e9};
    if (!Least)
        Least = Start, Most = GeoPosition{-1e9, -1e9};
    double& least = north ? Least->latitude : Least->longitude;
    double& most = north ? Most->latitude : Most->longitude;
    least = std::min(least, value);
    most = std::max(most, value);
}

/// Whether a log has times only a pipe's first frame tells.
void CSeaBassTable::Write(const ExportedFrame& frame) {
    const FrameTime& time = frame.instrument.CurrentFrame()->Info.time;
    if (time.known && !Source.utcOffset && !IsLocal)
        RefuseLocalTimes(Source.log);
    if (IsLocal)
        return;
    WriteTimeOf(time);
    for (const Column& column : Columns) {
        Rows.Char(',');
        const std::optional<double> value = ValueOf(frame, column);
        if (!value) {
            Rows.Text(MissingText);
            continue;
        }
        Extend(column, *value);
        Rows.Number(Rounded(*value, Settings.style.digits));
    }
    Rows.Char('\n');
}

/// Decided: a track over the 180th meridian has its least longitude in the west, its greatest in
/// the east.
std::string CSeaBassTable::Header(std::vector<std::string>& unknown) const {
    SeaBassValues found{{"data_file_name", ShownFileName(Path)},
                        {"original_file_name", Joined(Logs)},
                        {"calibration_files", Joined(Calibrations)}};
    if (First) {
        found["start_date"] = SeaBassDate(*First), found["end_date"] = SeaBassDate(*Last);
        found["start_time"] = SeaBassTime(*First) + "[GMT]";
        found["end_time"] = SeaBassTime(*Last) + "[GMT]";
    }
    if (Least && Least->latitude <= Most->latitude) {
        found["north_latitude"] = FixedNumber(Most->latitude, 5);
        found["south_latitude"] = FixedNumber(Least->latitude, 5);
    }
    if (Least && Least->longitude <= Most->longitude) {
        found["east_longitude"] = FixedNumber(Most->longitude, 5);
        found["west_longitude"] = FixedNumber(Least->longitude, 5);
    }
    std::string text = SeaBassHeaderLines(Settings.archive, found, Source.header, unknown);
    text += "!\n! Decoded by QorView " QORVIEW_VERSION ".\n";
    for (const std::string& one : Lacking)
        text += "! Not in this file, " + one + "\n";
    text += "!\n/missing=" + std::string(MissingText) + "\n/delimiter=comma\n/fields=date,time";
    for (const Column& column : Columns)
        text += "," + column.field;
    text += "\n/units=yyyymmdd,hh:mm:ss";
    for (const Column& column : Columns)
        text += "," + std::string(column.units);
    return text + "\n/end_header\n";
}

bool CSeaBassTable::CopyRows() {
    CFile file;
    std::vector<std::uint8_t> piece(1 << 16);
    std::size_t got = 0;
    FileCause cause = file.OpenForReading(Rows.HandOver());
    while (cause == FileCause::None && (cause = file.Read(piece, got)) == FileCause::None &&
           got > 0)
        Out.Text(AsText(ByteSpan(piece).first(got)));
    if (cause != FileCause::None)
        Settings.report(Path + ": its rows cannot be read back. " +
                        std::string(GetFileErrorText(cause)));
    return cause == FileCause::None;
}

bool CSeaBassTable::Finish(std::vector<std::string>& unknown) {
    if (IsLocal || !Rows.Flush())
        return false;
    Out.Text(Header(unknown));
    return CopyRows();
}

} // namespace qor
