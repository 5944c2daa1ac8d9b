// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames into blocks, and blocks into the file.
#include "export/NetCdfTable.h"

#include "base/Text.h"
#include "products/GpsSentence.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr double Missing = std::numeric_limits<double>::quiet_NaN();
constexpr signed char NoValueYet = 9; ///< beside the numbers of the conversion status
constexpr signed char NotChecked = 2;

signed char CodeOf(ConversionStatus status) {
    return static_cast<signed char>(static_cast<std::uint32_t>(status) & 0x3F);
}

/// Decided: strings of the file end at a NUL, so the sign that Unicode has for it stands there.
std::string StringOf(const std::string& bytes) {
    std::string text = Utf8Of(bytes);
    for (std::size_t at = 0; (at = text.find('\0', at)) != text.npos;)
        text.replace(at, 1, "\xE2\x90\x80");
    return text;
}

/// What makes two tables of one instrument's frames the same.
std::vector<std::string> LayoutOf(const ExportedInstrument& instrument) {
    std::vector<std::string> layout;
    for (const CSensor& sensor : instrument.live->Definition().Sensors())
        layout.push_back(sensor.Type + "(" + sensor.Id + ") " + sensor.Units + " " +
                         KeywordOf(sensor.Fit) + " " + KeywordOf(sensor.Data));
    for (const DerivedRow& row : instrument.derived)
        layout.push_back(row.label + " " + row.units);
    return layout;
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

} // namespace

CNetCdfTable::CNetCdfTable(std::string path, const std::string& beside, const FrameStyle& style)
    : Place(std::move(path)), Style(style) {
    File.Create(beside);
}

std::string CNetCdfTable::FaultText() const {
    return Fault.empty() ? "cannot be written. " + File.FaultText() : Fault;
}

bool CNetCdfTable::BeginLog(const LogSource& source, const ExportedInstrument& instrument) {
    ++LogNumber;
    if (!Defined) {
        Layout = LayoutOf(instrument);
        UtcOffset = source.utcOffset;
        Define(source, instrument);
        Defined = true;
        return File.Good();
    }
    if (Layout != LayoutOf(instrument))
        Fault = "the sensors of " + source.log +
                " are others than those of the logs before it; decode it into a file of its own.";
    else if (source.utcOffset.has_value() != UtcOffset.has_value())
        Fault = "times of " + source.log +
                (UtcOffset ? " are local, those of the logs before it UTC"
                           : " are UTC, those of the logs before it local") +
                "; give --utc-offset=+HH:MM, or a file for each.";
    UtcOffset = source.utcOffset;
    return Fault.empty() && File.Good();
}

bool CNetCdfTable::Write(const ExportedFrame& frame) {
    if (!Fault.empty() || !File.Good())
        return false;
    const CLiveInstrument& live = frame.instrument;
    TakeTime(live.CurrentFrame()->Info.time);
    FrameNumbers.push_back(static_cast<int>(live.FrameNumber()));
    if (Style.files)
        LogNumbers.push_back(LogNumber);
    const auto flags = FlagsOf(frame.checks);
    for (std::size_t i = 0; i < flags.size(); ++i)
        FlagValues[i].push_back(!flags[i].value ? NotChecked
                                                : static_cast<signed char>(*flags[i].value));
    for (Numbers& numbers : NumberList)
        switch (numbers.origin) {
        case Origin::Sensors:
            TakeSensors(live, numbers);
            break;
        case Origin::Product:
            TakeProduct(frame.derived, numbers);
            break;
        case Origin::Degrees:
            TakeDegrees(live, numbers);
            break;
        }
    for (Texts& texts : TextList)
        TakeText(live, texts);
    if (Times.size() >= BlockFrames)
        WriteBlock();
    return File.Good();
}

void CNetCdfTable::TakeTime(const FrameTime& time) {
    double seconds = Missing;
    if (time.known) {
        const std::int64_t local = time.seconds + std::int64_t{time.utcOffsetMinutes} * 60;
        const std::int64_t shown = local - std::int64_t{UtcOffset.value_or(0)} * 60;
        // One rounding, so that the nearest millisecond is the one that was sent.
        seconds = static_cast<double>(shown * 1000 + time.milliseconds) / 1000.0;
        FirstTime = AnyTime ? std::min(FirstTime, seconds) : seconds;
        LastTime = AnyTime ? std::max(LastTime, seconds) : seconds;
        AnyTime = true;
    }
    Times.push_back(seconds);
}

/// Into the place of the frame that is being taken: Times has it already.
void CNetCdfTable::Take(Numbers& numbers, std::size_t channel, double value, signed char status) {
    const std::size_t place = channel * BlockFrames + Times.size() - 1;
    numbers.values[place] = value;
    numbers.statuses[place] = status;
}

void CNetCdfTable::TakeSensors(const CLiveInstrument& live, Numbers& numbers) {
    const FrameValues& current = live.Values();
    for (std::size_t channel = 0; channel < numbers.indexes.size(); ++channel) {
        const int index = numbers.indexes[channel];
        const auto i = static_cast<std::size_t>(index);
        ShownValue value{current.statuses[i], false, current.numbers[i]};
        if (Style.view != ValueView::Calibrated)
            value = ValueOf(live, *live.Definition().Sensor(index), Style.view, Cell);
        else if (Style.digits > 0 && value.status == ConversionStatus::Good)
            value.number = Rounded(value.number, Style.digits);
        Take(numbers, channel, value.status == ConversionStatus::Good ? value.number : Missing,
             CodeOf(value.status));
    }
}

void CNetCdfTable::TakeProduct(std::span<const DerivedRow> rows, Numbers& numbers) {
    const auto i = static_cast<std::size_t>(numbers.indexes[0]);
    const DerivedRow* row = i < rows.size() ? &rows[i] : nullptr;
    const bool has = row && row->value;
    const bool failed = row && row->status != ConversionStatus::Good;
    Take(numbers, 0, has ? Rounded(*row->value, Style.digits) : Missing,
         has      ? CodeOf(ConversionStatus::Good)
         : failed ? CodeOf(row->status)
                  : NoValueYet);
}

void CNetCdfTable::TakeDegrees(const CLiveInstrument& live, Numbers& numbers) {
    const CSensor* sensor = live.Definition().Sensor(numbers.indexes[0]);
    const std::optional<double> degrees = SignedDegrees(live, *sensor);
    Take(numbers, 0, degrees ? Rounded(*degrees, Style.digits) : Missing,
         degrees ? CodeOf(ConversionStatus::Good) : NoValueYet);
}

void CNetCdfTable::TakeText(const CLiveInstrument& live, Texts& texts) {
    const ShownValue value =
        ValueOf(live, *live.Definition().Sensor(texts.sensor), Style.view, Cell);
    const bool good = value.status == ConversionStatus::Good;
    texts.statuses.push_back(CodeOf(value.status));
    std::string text = good ? StringOf(Cell) : std::string();
    if (texts.width == 0) {
        texts.values.push_back(std::move(text));
        return;
    }
    text.resize(texts.width, '\0');
    texts.bytes += text;
}

void CNetCdfTable::WriteBlock() {
    const std::size_t frames = Times.size();
    if (frames == 0)
        return;
    const NetCdfRange line{{Written}, {frames}};
    File.Write(Time, line, Times.data());
    File.Write(Frame, line, FrameNumbers.data());
    if (Style.files)
        File.Write(Log, line, LogNumbers.data());
    for (std::size_t i = 0; i < std::size(Flags); ++i)
        File.Write(Flags[i], line, FlagValues[i].data()), FlagValues[i].clear();
    for (const Numbers& numbers : NumberList)
        WriteNumbers(numbers, frames);
    for (Texts& texts : TextList) {
        const NetCdfRange area{{Written, 0}, {frames, texts.width}};
        if (texts.width > 0)
            File.Write(texts.variable, area, texts.bytes.data());
        else
            File.Write(texts.variable, line, texts.values);
        File.Write(texts.status, line, texts.statuses.data());
        texts.bytes.clear();
        texts.values.clear();
        texts.statuses.clear();
    }
    Times.clear();
    FrameNumbers.clear();
    LogNumbers.clear();
    Written += frames;
}

void CNetCdfTable::WriteNumbers(const Numbers& numbers, std::size_t frames) {
    for (std::size_t channel = 0; channel < numbers.indexes.size(); ++channel) {
        // Of a variable over time alone the library looks at the first of each.
        const NetCdfRange column{{Written, channel}, {frames, 1}};
        const std::size_t place = channel * BlockFrames;
        File.Write(numbers.variable, column, numbers.values.data() + place);
        File.Write(numbers.status, column, numbers.statuses.data() + place);
    }
}

void CNetCdfTable::DescribeTimes() {
    if (!AnyTime)
        return;
    SetGlobal("time_coverage_start", IsoTime(FirstTime, UtcOffset.has_value()));
    SetGlobal("time_coverage_end", IsoTime(LastTime, UtcOffset.has_value()));
    SetGlobal("time_coverage_duration", "PT" + FixedNumber(LastTime - FirstTime, 3) + "S");
}

bool CNetCdfTable::Close() {
    WriteBlock();
    DescribeTimes();
    File.Close();
    return Fault.empty() && File.Good();
}

} // namespace qor
