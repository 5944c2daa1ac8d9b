// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FrameVariables.h"

#include "base/Sha256.h"
#include "base/Text.h"
#include "export/DefinitionSource.h"
#include "export/StandardNames.h"
#include "instrument/Calibration.h"
#include "products/GpsSentence.h"
#include "products/Spectrum.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace qor {

namespace {

constexpr std::size_t LongestName = 100;

constexpr const char* FlagNames[] = {"dropped", "checksum_error", "value_error"};
constexpr const char* FlagTitles[] = {"frames are missing before this one, by the frame counter",
                                      "the checksum is wrong",
                                      "the frame counter or the checksum could not be read"};
constexpr const char* FlagMeanings = "no yes not_checked";
const std::vector<signed char> FlagValuesOf = {0, 1, NotChecked};
constexpr ConversionStatus Statuses[] = {
    ConversionStatus::Good,          ConversionStatus::WrongDataType,
    ConversionStatus::FrameTooShort, ConversionStatus::GainOutOfRange,
    ConversionStatus::NotUsable,     ConversionStatus::MissingArgument,
    ConversionStatus::NoNumber,      ConversionStatus::NotFinite,
    ConversionStatus::FieldNotFound,
};
const std::vector<signed char> StatusValues = {0, 1, 2, 3, 4, 5, 6, 7, 8, NoValueYet, 10};
const std::vector<signed char> QcValues = {1, 2, 3, 4, 9};
constexpr const char* QcMeanings = "good not_evaluated suspect bad missing";

std::string StatusMeanings() {
    const auto word = [](ConversionStatus status) {
        std::string text = ToLower(ConversionStatusText(status));
        std::ranges::replace(text, ' ', '_');
        return text;
    };
    std::string meanings;
    for (ConversionStatus status : Statuses)
        meanings += word(status) + " ";
    return meanings + "nothing_to_compute_from_yet " + word(ConversionStatus::Rejected);
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
    constexpr std::size_t BytesOfAByte = 3; // a NUL, see FrameCells.cpp
    constexpr std::size_t WidestField = 64;
    if (view == ValueView::HexCounts)
        return 0;
    if (sensor.Data != DataType::AS)
        return OfFits;
    const bool bounded = !sensor.VariableLength && sensor.FieldLength <= WidestField;
    return bounded ? sensor.FieldLength * BytesOfAByte : 0;
}

std::string IsoTime(double seconds, bool utc) {
    const double whole = std::floor(seconds);
    const CalendarTime time = CalendarFromSeconds(static_cast<std::int64_t>(whole));
    const int milliseconds =
        static_cast<int>(std::min(999.0, std::round((seconds - whole) * 1000.0)));
    return Format("%04d-%02d-%02dT%02d:%02d:%02d.%03d", time.year, time.month, time.day, time.hour,
                  time.minute, time.second, milliseconds) +
           (utc ? "Z" : "");
}

/// What a variable's attributes say.
struct Description {
    std::string name, title, units;
    QuantityName quantity = {};
    const CSensor* sensor = nullptr;
};

class CLayout {
  public:
    CLayout(const LogSource& source, const ExportedInstrument& instrument, const FrameStyle& style,
            std::set<std::string> names)
        : Source(source), Instrument(instrument), Live(*instrument.live), Style(style) {
        Layout.names = std::move(names);
    }

    FrameLayout Make();

  private:
    void AddFrames();
    void AddSeries();
    void AddSensor(const CSensor& sensor);
    void AddProducts();
    int GridOf(const std::vector<double>& wavelengths);
    void Add(FrameVariable variable, const Description& description);
    void AddText(const CSensor& sensor, const Description& description);
    static FrameAttributes StatusOf(const std::string& title);
    static FrameAttributes QcOf(const std::string& title);
    Description Describe(const CSensor& sensor, const std::string& name) const;
    FrameAttributes AttributesOf(const Description& description) const;
    void DescribeFile();
    void DescribeLog();
    void SetGlobal(const char* name, const std::string& text) {
        Layout.global.push_back({name, text});
    }
    std::string NameFor(std::string_view text) { return Layout.NameFor(text); }

    const LogSource& Source;
    const ExportedInstrument& Instrument;
    const CLiveInstrument& Live;
    const FrameStyle& Style;
    FrameLayout Layout;
    std::vector<bool> Taken;                   ///< sensors that stand in a series
    std::map<std::size_t, std::string> Widths; ///< of texts, and their dimensions
};

FrameLayout CLayout::Make() {
    const auto& sensors = Live.Definition().Sensors();
    Taken.assign(sensors.size(), false);
    AddFrames();
    Layout.names.insert("wavelength");
    AddSeries();
    for (const CSensor& sensor : sensors)
        if (!Taken[static_cast<std::size_t>(sensor.Index)] && HasVariable(sensor, Style.view))
            AddSensor(sensor);
    if (Style.derived)
        AddProducts();
    DescribeFile();
    DescribeLog();
    return std::move(Layout);
}

void CLayout::AddFrames() {
    const bool utc = Source.utcOffset.has_value();
    Layout.time = {NameFor("time"),
                   {{"standard_name", "time"},
                    {"long_name", "arrival of the frame's last byte"},
                    {"units", "seconds since 1970-01-01 00:00:00"},
                    {"calendar", "standard"},
                    {"axis", "T"},
                    {"time_zone", utc ? "UTC" : "local"}}};
    if (!utc)
        Layout.time.attributes.push_back(
            {"comment", "Local time of the computer that logged; what it was ahead of UTC is not "
                        "known."});
    if (Style.qc) {
        Layout.timeQc = {NameFor("time_qc"),
                         QcOf("quality of time: whether there is a gap before the frame")};
        Layout.time.attributes.push_back({"ancillary_variables", Layout.timeQc.name});
    }
    Layout.frame = {NameFor("frame"),
                    {{"long_name", "count of the instrument's frames in its log, from 1"}}};
    if (Style.files)
        Layout.log = {NameFor("log"),
                      {{"long_name", "which of the logs the frame is from, from 1"}}};
    for (std::size_t i = 0; i < std::size(FlagNames); ++i)
        Layout.flags.push_back({NameFor(FlagNames[i]),
                                {{"standard_name", "status_flag"},
                                 {"long_name", FlagTitles[i]},
                                 {"flag_values", FlagValuesOf},
                                 {"flag_meanings", FlagMeanings},
                                 {"coverage_content_type", "qualityInformation"}}});
    Layout.gridAttributes = {{"standard_name", "radiation_wavelength"},
                             {"long_name", "wavelength of the channel, as its definition names it"},
                             {"units", "nm"}};
}

/// A coordinate is strictly monotonic: of channels at one wavelength the further ones are variables
/// of their own.
void CLayout::AddSeries() {
    if (Style.view == ValueView::HexCounts)
        return;
    for (const OpticalSeries& series : SeriesOf(Live.Definition())) {
        FrameVariable variable;
        std::vector<double> wavelengths;
        for (const OpticalSeries::Channel& channel : series.channels) {
            if (!wavelengths.empty() && channel.wavelength == wavelengths.back())
                continue;
            wavelengths.push_back(channel.wavelength);
            variable.indexes.push_back(channel.sensor);
            Taken[static_cast<std::size_t>(channel.sensor)] = true;
        }
        const CSensor& first = *Live.Definition().Sensor(variable.indexes[0]);
        Description description = Describe(first, NameFor(series.type));
        description.title = series.type;
        variable.grid = GridOf(wavelengths);
        Add(std::move(variable), description);
    }
}

int CLayout::GridOf(const std::vector<double>& wavelengths) {
    const auto known = std::ranges::find(Layout.grids, wavelengths, &WavelengthGrid::wavelengths);
    const auto place = known - Layout.grids.begin();
    if (known == Layout.grids.end())
        Layout.grids.push_back(
            {Layout.grids.empty() ? "wavelength" : NameFor("wavelength"), wavelengths});
    return static_cast<int>(place);
}

Description CLayout::Describe(const CSensor& sensor, const std::string& name) const {
    Description description{name, SensorName(sensor), sensor.Units, {}, &sensor};
    if (Style.view == ValueView::Calibrated)
        description.quantity = NameOfSensor(sensor, ReadUnits(sensor.Units), Live.Immersed);
    return description;
}

void CLayout::AddSensor(const CSensor& sensor) {
    const std::string name = NameFor(sensor.Type + "_" + sensor.Id);
    const Description description = Describe(sensor, name);
    if (IsText(sensor, Style.view))
        AddText(sensor, description);
    else
        Add({.name = {}, .indexes = {sensor.Index}}, description);
    if (!Style.degrees || !IsCoordinateText(sensor))
        return;
    Description degrees{
        NameFor(name + "_deg"), description.title + " in degrees", "degree", {}, nullptr};
    if (IsNamedLatitude(sensor))
        degrees.units = "degrees_north", degrees.quantity = {"latitude", "degree"};
    else if (IsNamedLongitude(sensor))
        degrees.units = "degrees_east", degrees.quantity = {"longitude", "degree"};
    Add({.name = {}, .origin = FrameOrigin::Degrees, .indexes = {sensor.Index}}, degrees);
}

void CLayout::AddProducts() {
    for (std::size_t i = 0; i < Instrument.derived.size(); ++i) {
        const DerivedRow& row = Instrument.derived[i];
        const Description description{NameFor(row.label), row.label, row.units,
                                      NameOfProduct(row.kind, ReadUnits(row.units)), nullptr};
        Add({.name = {}, .origin = FrameOrigin::Product, .indexes = {static_cast<int>(i)}},
            description);
    }
}

void CLayout::Add(FrameVariable variable, const Description& description) {
    variable.name = description.name;
    variable.statusName = NameFor(description.name + "_status");
    variable.attributes = AttributesOf(description);
    std::string ancillary = variable.statusName;
    for (const char* flag : FlagNames)
        ancillary += " " + std::string(flag);
    const bool number =
        variable.origin == FrameOrigin::Sensors || variable.origin == FrameOrigin::Product;
    if (Style.qc && number) {
        variable.qcName = NameFor(description.name + "_qc");
        variable.qcAttributes = QcOf("quality of " + description.title);
        ancillary += " " + variable.qcName;
    }
    variable.attributes.push_back({"ancillary_variables", ancillary});
    if (variable.width > 0)
        variable.attributes.push_back({"_Encoding", "utf-8"});
    variable.statusAttributes = StatusOf(description.title);
    Layout.variables.push_back(std::move(variable));
}

void CLayout::AddText(const CSensor& sensor, const Description& description) {
    FrameVariable variable{.name = {}, .origin = FrameOrigin::Text, .indexes = {sensor.Index}};
    variable.width = WidthOf(sensor, Style.view);
    if (variable.width > 0) {
        std::string& dimension = Widths[variable.width];
        if (dimension.empty())
            dimension = NameFor("bytes_" + std::to_string(variable.width));
        variable.widthDimension = dimension;
    }
    Description text = description;
    text.quantity = {};
    Add(std::move(variable), text);
}

FrameAttributes CLayout::StatusOf(const std::string& title) {
    return {{"standard_name", "status_flag"},
            {"long_name", Utf8Text("why " + title + " has no value")},
            {"flag_values", StatusValues},
            {"flag_meanings", StatusMeanings()},
            {"coverage_content_type", "qualityInformation"}};
}

FrameAttributes CLayout::QcOf(const std::string& title) {
    return {{"standard_name", "aggregate_quality_flag"},
            {"long_name", Utf8Text(title)},
            {"flag_values", QcValues},
            {"flag_meanings", QcMeanings},
            {"coverage_content_type", "qualityInformation"}};
}

FrameAttributes CLayout::AttributesOf(const Description& description) const {
    FrameAttributes attributes{{"long_name", Utf8Text(description.title)}};
    const auto set = [&](const char* name, std::string text) {
        attributes.push_back({name, std::move(text)});
    };
    const bool counts = Style.view != ValueView::Calibrated && description.sensor;
    const bool text = description.sensor && IsText(*description.sensor, Style.view);
    const bool degrees = description.units.starts_with("degrees_") ||
                         (!description.sensor && description.units == "degree");
    const std::optional<UnitText> units = ReadUnits(description.units);
    if (degrees || (units && !counts && !text))
        set("units", degrees ? description.units : units->text);
    if (!description.units.empty() && !degrees)
        set("original_units", Utf8Text(description.units));
    if (!description.quantity.standardName.empty())
        set("standard_name", std::string(description.quantity.standardName));
    set("coverage_content_type", "physicalMeasurement");
    if (!description.sensor)
        return attributes;
    set("sensor_type", Utf8Text(description.sensor->Type));
    set("fit_type", KeywordOf(description.sensor->Fit));
    if (counts)
        set("comment", "Raw counts as the instrument sent them, not calibrated.");
    return attributes;
}

void CLayout::DescribeFile() {
    const CInstrument& definition = Live.Definition();
    const CalendarTime now = CalendarFromSeconds(CSystemClock().Now().seconds);
    const std::string created = Format("%04d-%02d-%02dT%02d:%02d:%02dZ", now.year, now.month,
                                       now.day, now.hour, now.minute, now.second);
    const std::string name = Utf8Text(definition.ShownName());
    SetGlobal("Conventions", "CF-1.8, ACDD-1.3");
    SetGlobal("title", "Telemetry of instrument " + name);
    SetGlobal("summary", "Every frame of instrument " + name +
                             " in its raw log, decoded and calibrated by its definition, with what "
                             "the checks of its frames found.");
    SetGlobal("source", "raw log " + Utf8Text(Source.log));
    SetGlobal("instrument", name);
    SetGlobal("instrument_serial_number", Utf8Text(definition.SerialNumber()));
    SetGlobal("history", created + " QorView " QORVIEW_VERSION ": " + Utf8Text(Source.call));
    SetGlobal("date_created", created);
    SetGlobal("product_version", "QorView " QORVIEW_VERSION);
    SetGlobal("standard_name_vocabulary", "CF Standard Name Table");
    SetGlobal("qorview_version", QORVIEW_VERSION);
    SetGlobal("qorview_call", Utf8Text(Source.call));
    SetGlobal("qorview_immersed", Live.Immersed ? "yes" : "no");
}

/// The log's header, and the definition as it is.
void CLayout::DescribeLog() {
    const CInstrument& definition = Live.Definition();
    constexpr struct {
        std::string_view tag;
        const char* attribute;
    } Known[] = {{"OPERATOR", "creator_name"}, {"CRUISE-ID", "project"}, {"COMMENT", "comment"}};
    std::string header;
    for (const HeaderRecord& record : Source.header) {
        header += Utf8Text(record.tag + ": " + record.value) + "\n";
        for (const auto& known : Known)
            if (record.tag == known.tag && !record.value.empty())
                SetGlobal(known.attribute, Utf8Text(record.value));
    }
    SetGlobal("qorview_header", header);
    SetGlobal("qorview_definition_file", Utf8Text(definition.FilePath()));
    const std::optional<std::string> text = DefinitionBytes(definition);
    if (!text)
        return;
    SetGlobal("qorview_definition", Utf8Text(*text));
    SetGlobal("qorview_definition_sha256", Sha256Of(AsBytes(*text)));
}

} // namespace

std::string FrameLayout::NameFor(std::string_view text) {
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
    for (int number = 2; !names.insert(ToLower(name)).second; ++number)
        name = stem + "_" + std::to_string(number);
    return name;
}

FrameLayout LayoutOfFrames(const LogSource& source, const ExportedInstrument& instrument,
                           const FrameStyle& style, std::set<std::string> names) {
    return CLayout(source, instrument, style, std::move(names)).Make();
}

std::string TextOf(const FrameAttributes& attributes, std::string_view name) {
    const auto found = std::ranges::find(attributes, name, &FrameAttribute::name);
    const auto* text =
        found == attributes.end() ? nullptr : std::get_if<std::string>(&found->value);
    return text ? *text : std::string();
}

void SetText(FrameAttributes& attributes, std::string_view name, const std::string& text) {
    const auto found = std::ranges::find(attributes, name, &FrameAttribute::name);
    if (found != attributes.end())
        found->value = text;
    else
        attributes.push_back({std::string(name), text});
}

FrameAttributes CoverageOf(double firstSeconds, double lastSeconds, bool utc) {
    return {{"time_coverage_start", IsoTime(firstSeconds, utc)},
            {"time_coverage_end", IsoTime(lastSeconds, utc)},
            {"time_coverage_duration", "PT" + FixedNumber(lastSeconds - firstSeconds, 3) + "S"}};
}

} // namespace qor
