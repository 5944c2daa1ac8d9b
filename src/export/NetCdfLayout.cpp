// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a file of frames is made of: dimensions, variables and their attributes, before the first
// frame. The conventions are CF-1.8 and ACDD-1.3.
#include "export/NetCdfTable.h"

#include "base/Sha256.h"
#include "base/Text.h"
#include "instrument/Calibration.h"
#include "platform/WholeFile.h"
#include "products/GpsSentence.h"
#include "products/Spectrum.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t BlockBytes = 8 << 20; ///< of frames that wait to be written
constexpr std::size_t FewestFrames = 64, MostFrames = 4096;
constexpr std::size_t LongestName = 100;
constexpr std::size_t LargestDefinition = 64 << 20;

constexpr const char* FlagNames[] = {"dropped", "checksum_error", "value_error"};
constexpr const char* FlagTitles[] = {"frames are missing before this one, by the frame counter",
                                      "the checksum is wrong",
                                      "the frame counter or the checksum could not be read"};
constexpr const char* FlagMeanings = "no yes not_checked";
constexpr signed char FlagValuesOf[] = {0, 1, 2};
constexpr ConversionStatus Statuses[] = {
    ConversionStatus::Good,          ConversionStatus::WrongDataType,
    ConversionStatus::FrameTooShort, ConversionStatus::GainOutOfRange,
    ConversionStatus::NotUsable,     ConversionStatus::MissingArgument,
    ConversionStatus::NoNumber,      ConversionStatus::NotFinite,
    ConversionStatus::FieldNotFound,
};
constexpr signed char StatusValues[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

std::string StatusMeanings() {
    std::string meanings;
    for (ConversionStatus status : Statuses) {
        std::string word = ToLower(ConversionStatusText(status));
        std::ranges::replace(word, ' ', '_');
        meanings += word + " ";
    }
    return meanings + "nothing_to_compute_from_yet";
}

std::string Utf8Text(const std::string& bytes) {
    return IsUtf8(bytes) ? bytes : Utf8Of(bytes);
}

/// What of a frame has a value of its own, and whether that is a text.
bool HasVariable(const CSensor& sensor, ValueView view) {
    const bool raw = view != ValueView::Calibrated && (sensor.VariableLength || sensor.FieldLength);
    return KindOfValue(sensor) != ValueKind::None || raw;
}
bool IsText(const CSensor& sensor, ValueView view) {
    const bool text = KindOfValue(sensor) == ValueKind::Text;
    return view == ValueView::HexCounts ||
           (text && (view == ValueView::Calibrated || sensor.Data == DataType::AS));
}

/// The bytes that a text of the sensor takes at most; 0 where that is not known.
std::size_t WidthOf(const CSensor& sensor, ValueView view) {
    constexpr std::size_t OfFits = 32;      // instrument/TimeText.cpp
    constexpr std::size_t BytesOfAByte = 3; // a NUL, see NetCdfTable.cpp
    constexpr std::size_t WidestField = 64;
    if (view == ValueView::HexCounts)
        return 0;
    if (sensor.Data != DataType::AS)
        return OfFits;
    const bool bounded = !sensor.VariableLength && sensor.FieldLength <= WidestField;
    return bounded ? sensor.FieldLength * BytesOfAByte : 0;
}

} // namespace

/// Letters, digits and underscores, which every program takes; different ones also for those to
/// which case is nothing.
std::string CNetCdfTable::NameFor(std::string_view text) {
    std::string stem;
    for (char c : text.substr(0, LongestName)) {
        const char small = ToLower({&c, 1})[0];
        if (IsDigit(c) || (small >= 'a' && small <= 'z'))
            stem += c;
        else if (!stem.empty() && stem.back() != '_')
            stem += '_';
    }
    while (stem.ends_with('_'))
        stem.pop_back();
    if (stem.empty() || IsDigit(stem[0]))
        stem.insert(0, "v_");
    std::string name = stem;
    for (int number = 2; !Names.insert(ToLower(name)).second; ++number)
        name = stem + "_" + std::to_string(number);
    return name;
}

void CNetCdfTable::Define(const LogSource& source, const ExportedInstrument& instrument) {
    const CLiveInstrument& live = *instrument.live;
    const auto& sensors = live.Definition().Sensors();
    BlockFrames = MostFrames;
    while (BlockFrames > FewestFrames && BlockFrames * (sensors.size() + 1) * 9 > BlockBytes)
        BlockFrames /= 2;
    TimeDimension = File.AddDimension(NameFor("time"), CNetCdfFile::Unlimited);
    DefineFrames(source.utcOffset.has_value());
    Names.insert("wavelength");
    std::vector<bool> taken(sensors.size(), false);
    DefineSeries(live, taken);
    for (const CSensor& sensor : sensors)
        if (!taken[static_cast<std::size_t>(sensor.Index)] && HasVariable(sensor, Style.view))
            DefineSensor(live, sensor);
    if (Style.derived)
        DefineProducts(instrument.derived);
    DescribeFile(source, live);
}

void CNetCdfTable::DefineFrames(bool utc) {
    const int over[] = {TimeDimension};
    const std::size_t chunks[] = {BlockFrames};
    Time = File.AddVariable("time", NetCdfType::Double, over, chunks, true);
    File.FillWithNaN(Time);
    File.SetText(Time, "standard_name", "time");
    File.SetText(Time, "long_name", "arrival of the frame's last byte");
    File.SetText(Time, "units", "seconds since 1970-01-01 00:00:00");
    File.SetText(Time, "calendar", "standard");
    File.SetText(Time, "axis", "T");
    File.SetText(Time, "time_zone", utc ? "UTC" : "local");
    if (!utc)
        File.SetText(Time, "comment",
                     "Local time of the computer that logged; what it was ahead of UTC is not "
                     "known.");
    Frame = File.AddVariable(NameFor("frame"), NetCdfType::Int, over, chunks, true);
    File.SetText(Frame, "long_name", "count of the instrument's frames in its log, from 1");
    if (Style.files) {
        Log = File.AddVariable(NameFor("log"), NetCdfType::Int, over, chunks);
        File.SetText(Log, "long_name", "which of the logs the frame is from, from 1");
    }
    for (std::size_t i = 0; i < std::size(FlagNames); ++i) {
        Flags[i] = File.AddVariable(NameFor(FlagNames[i]), NetCdfType::Byte, over, chunks);
        File.SetText(Flags[i], "standard_name", "status_flag");
        File.SetText(Flags[i], "long_name", FlagTitles[i]);
        File.SetBytes(Flags[i], "flag_values", FlagValuesOf);
        File.SetText(Flags[i], "flag_meanings", FlagMeanings);
        File.SetText(Flags[i], "coverage_content_type", "qualityInformation");
    }
}

/// A coordinate is strictly monotonic: of channels at one wavelength the further ones are variables
/// of their own.
void CNetCdfTable::DefineSeries(const CLiveInstrument& live, std::vector<bool>& taken) {
    if (Style.view == ValueView::HexCounts)
        return;
    for (const OpticalSeries& series : SeriesOf(live.Definition())) {
        Numbers numbers;
        numbers.series = true;
        std::vector<double> wavelengths;
        for (const OpticalSeries::Channel& channel : series.channels) {
            if (!wavelengths.empty() && channel.wavelength == wavelengths.back())
                continue;
            wavelengths.push_back(channel.wavelength);
            numbers.indexes.push_back(channel.sensor);
            taken[static_cast<std::size_t>(channel.sensor)] = true;
        }
        const CSensor& first = *live.Definition().Sensor(numbers.indexes[0]);
        Description description = Describe(live, first, NameFor(series.type));
        description.title = series.type;
        AddNumbers(std::move(numbers), description, DefineWavelengths(wavelengths));
    }
}

int CNetCdfTable::DefineWavelengths(std::span<const double> wavelengths) {
    std::vector<double> grid(wavelengths.begin(), wavelengths.end());
    const auto known = std::ranges::find(Grids, grid);
    if (known != Grids.end())
        return GridDimensions[static_cast<std::size_t>(known - Grids.begin())];
    const std::string name = Grids.empty() ? "wavelength" : NameFor("wavelength");
    const int over[] = {File.AddDimension(name, grid.size())};
    const int variable = File.AddVariable(name, NetCdfType::Double, over, {});
    File.SetText(variable, "standard_name", "radiation_wavelength");
    File.SetText(variable, "long_name", "wavelength of the channel, as its definition names it");
    File.SetText(variable, "units", "nm");
    File.Write(variable, {{0}, {grid.size()}}, grid.data());
    Grids.push_back(std::move(grid));
    GridDimensions.push_back(over[0]);
    return over[0];
}

CNetCdfTable::Description CNetCdfTable::Describe(const CLiveInstrument& live, const CSensor& sensor,
                                                 const std::string& name) const {
    Description description{name, SensorName(sensor), sensor.Units, {}, &sensor};
    if (Style.view == ValueView::Calibrated)
        description.quantity = NameOfSensor(sensor, ReadUnits(sensor.Units), live.Immersed);
    return description;
}

void CNetCdfTable::DefineSensor(const CLiveInstrument& live, const CSensor& sensor) {
    const std::string name = NameFor(sensor.Type + "_" + sensor.Id);
    const Description description = Describe(live, sensor, name);
    if (IsText(sensor, Style.view))
        AddTexts(sensor, description);
    else
        AddNumbers({.origin = Origin::Sensors, .indexes = {sensor.Index}}, description, -1);
    if (!Style.degrees || !IsCoordinateText(sensor))
        return;
    const bool north = ToLower(sensor.Type).starts_with("lat");
    Description degrees{
        NameFor(name + "_deg"), description.title + " in degrees", "deg", {}, nullptr};
    degrees.units = north ? "degrees_north" : "degrees_east";
    degrees.quantity = {north ? "latitude" : "longitude", "degree"};
    AddNumbers({.origin = Origin::Degrees, .indexes = {sensor.Index}}, degrees, -1);
}

void CNetCdfTable::DefineProducts(std::span<const DerivedRow> rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const DerivedRow& row = rows[i];
        const Description description{NameFor(row.label), row.label, row.units,
                                      NameOfProduct(row.kind, ReadUnits(row.units)), nullptr};
        AddNumbers({.origin = Origin::Product, .indexes = {static_cast<int>(i)}}, description, -1);
    }
}

/// Decided: a chunk is one channel's course over a block of frames. A channel has few counts, so
/// the same doubles come again and again, which is found faster when they stand together, and as
/// they are: a simulated radiometer takes 0.43 of its bytes so, two thirds when they are shuffled.
/// A reader of spectra, one after another, has the chunks of all channels in its cache.
void CNetCdfTable::AddNumbers(Numbers numbers, const Description& description, int wavelengths) {
    const int over[] = {TimeDimension, wavelengths};
    const std::size_t chunks[] = {BlockFrames, 1};
    const std::size_t dimensions = numbers.series ? 2 : 1;
    const std::size_t channels = numbers.indexes.size();
    numbers.values.resize(BlockFrames * channels);
    numbers.statuses.resize(BlockFrames * channels);
    numbers.variable =
        File.AddVariable(description.name, NetCdfType::Double, std::span(over).first(dimensions),
                         std::span(chunks).first(dimensions));
    File.FillWithNaN(numbers.variable);
    SetDescription(numbers.variable, description);
    numbers.status = AddStatus(description, numbers.variable, wavelengths, channels);
    NumberList.push_back(std::move(numbers));
}

/// Strings of any length are kept one by one and not compressed, which costs much.
int CNetCdfTable::DefineTexts(const std::string& name, std::size_t width) {
    int over[] = {TimeDimension, -1};
    if (width == 0)
        return File.AddVariable(name, NetCdfType::String, std::span(over).first(1),
                                std::span(&BlockFrames, 1));
    const auto [dimension, isNew] = WidthDimensions.try_emplace(width, -1);
    if (isNew)
        dimension->second = File.AddDimension(NameFor("bytes_" + std::to_string(width)), width);
    over[1] = dimension->second;
    const std::size_t chunks[] = {BlockFrames, width};
    const int variable = File.AddVariable(name, NetCdfType::Char, over, chunks);
    File.SetText(variable, "_Encoding", "utf-8");
    return variable;
}

void CNetCdfTable::AddTexts(const CSensor& sensor, const Description& description) {
    Texts texts{.sensor = sensor.Index, .width = WidthOf(sensor, Style.view)};
    texts.variable = DefineTexts(description.name, texts.width);
    Description text = description;
    text.quantity = {};
    SetDescription(texts.variable, text);
    texts.status = AddStatus(description, texts.variable, -1, 1);
    TextList.push_back(std::move(texts));
}

int CNetCdfTable::AddStatus(const Description& description, int variable, int wavelengths,
                            std::size_t channels) {
    const bool series = wavelengths >= 0;
    const int over[] = {TimeDimension, wavelengths};
    const std::string name = NameFor(description.name + "_status");
    const std::size_t chunks[] = {BlockFrames, channels}, dimensions = series ? 2 : 1;
    const int status = File.AddVariable(name, NetCdfType::Byte, std::span(over).first(dimensions),
                                        std::span(chunks).first(dimensions));
    File.SetText(status, "standard_name", "status_flag");
    File.SetText(status, "long_name", Utf8Text("why " + description.title + " has no value"));
    File.SetBytes(status, "flag_values", StatusValues);
    File.SetText(status, "flag_meanings", StatusMeanings());
    File.SetText(status, "coverage_content_type", "qualityInformation");
    std::string ancillary = name;
    for (const char* flag : FlagNames)
        ancillary += " " + std::string(flag);
    File.SetText(variable, "ancillary_variables", ancillary);
    return status;
}

void CNetCdfTable::SetDescription(int variable, const Description& description) {
    File.SetText(variable, "long_name", Utf8Text(description.title));
    const bool counts = Style.view != ValueView::Calibrated && description.sensor;
    const bool text = description.sensor && IsText(*description.sensor, Style.view);
    const bool degrees = description.units.starts_with("degrees_");
    const std::optional<UnitText> units = ReadUnits(description.units);
    if (degrees || (units && !counts && !text))
        File.SetText(variable, "units", degrees ? description.units : units->text);
    if (!description.units.empty() && !degrees)
        File.SetText(variable, "original_units", Utf8Text(description.units));
    if (!description.quantity.standardName.empty())
        File.SetText(variable, "standard_name", std::string(description.quantity.standardName));
    File.SetText(variable, "coverage_content_type", "physicalMeasurement");
    if (!description.sensor)
        return;
    File.SetText(variable, "sensor_type", Utf8Text(description.sensor->Type));
    File.SetText(variable, "fit_type", KeywordOf(description.sensor->Fit));
    if (counts)
        File.SetText(variable, "comment",
                     "Raw counts as the instrument sent them, not calibrated.");
}

void CNetCdfTable::DescribeFile(const LogSource& source, const CLiveInstrument& live) {
    const CInstrument& definition = live.Definition();
    const CalendarTime now = CalendarFromSeconds(CSystemClock().Now().seconds);
    const std::string created = Format("%04d-%02d-%02dT%02d:%02d:%02dZ", now.year, now.month,
                                       now.day, now.hour, now.minute, now.second);
    const std::string name = Utf8Text(definition.ShownName());
    SetGlobal("Conventions", "CF-1.8, ACDD-1.3");
    SetGlobal("title", "Telemetry of instrument " + name);
    SetGlobal("summary", "Every frame of instrument " + name +
                             " in its raw log, decoded and calibrated by its definition, with what "
                             "the checks of its frames found.");
    SetGlobal("source", "raw log " + Utf8Text(source.log));
    SetGlobal("instrument", name);
    SetGlobal("instrument_serial_number", Utf8Text(definition.SerialNumber()));
    SetGlobal("history", created + " QorView " QORVIEW_VERSION ": " + Utf8Text(source.call));
    SetGlobal("date_created", created);
    SetGlobal("product_version", "QorView " QORVIEW_VERSION);
    SetGlobal("standard_name_vocabulary", "CF Standard Name Table");
    SetGlobal("qorview_version", QORVIEW_VERSION);
    SetGlobal("qorview_call", Utf8Text(source.call));
    SetGlobal("qorview_immersed", live.Immersed ? "yes" : "no");
    constexpr struct {
        std::string_view tag;
        const char* attribute;
    } Known[] = {{"OPERATOR", "creator_name"}, {"CRUISE-ID", "project"}, {"COMMENT", "comment"}};
    std::string header;
    for (const HeaderRecord& record : source.header) {
        header += Utf8Text(record.tag + ": " + record.value) + "\n";
        for (const auto& known : Known)
            if (record.tag == known.tag && !record.value.empty())
                SetGlobal(known.attribute, Utf8Text(record.value));
    }
    SetGlobal("qorview_header", header);
    std::string text;
    SetGlobal("qorview_definition_file", Utf8Text(definition.FilePath()));
    if (ReadWholeFile(definition.FilePath(), LargestDefinition, text) != FileCause::None)
        return; // a member of an archive is gone once it is loaded
    SetGlobal("qorview_definition", Utf8Text(text));
    SetGlobal("qorview_definition_sha256", Sha256Of(AsBytes(text)));
}

} // namespace qor
