// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames into blocks, and blocks into the file.
#include "export/NetCdfTable.h"

#include "export/FrameCells.h"

#include <algorithm>
#include <limits>

namespace qor {

namespace {

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
        Define(LayoutOfFrames(source, instrument, Style),
               instrument.live->Definition().Sensors().size());
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
        FlagValues[i].push_back(CodeOf(flags[i]));
    for (Numbers& numbers : NumberList)
        Take(numbers, frame);
    if (frame.qc && Style.qc)
        TakeQc(*frame.qc);
    for (Texts& texts : TextList)
        TakeText(live, texts);
    if (Times.size() >= BlockFrames)
        WriteBlock();
    return File.Good();
}

void CNetCdfTable::TakeTime(const FrameTime& time) {
    const std::optional<double> seconds = ShownSeconds(time, UtcOffset);
    if (seconds) {
        FirstTime = AnyTime ? std::min(FirstTime, *seconds) : *seconds;
        LastTime = AnyTime ? std::max(LastTime, *seconds) : *seconds;
        AnyTime = true;
    }
    Times.push_back(seconds.value_or(std::numeric_limits<double>::quiet_NaN()));
}

/// Into the place of the frame that is being taken: Times has it already.
void CNetCdfTable::Take(Numbers& numbers, const ExportedFrame& frame) {
    std::size_t place = Times.size() - 1;
    for (const int index : numbers.indexes) {
        const FrameCell cell = CellOf(numbers.origin, index, frame, Style, Cell);
        numbers.values[place] = cell.value;
        numbers.statuses[place] = cell.status;
        place += BlockFrames;
    }
}

void CNetCdfTable::TakeQc(const FrameQc& qc) {
    TimeFlags.push_back(static_cast<signed char>(qc.time));
    for (Numbers& numbers : NumberList) {
        if (numbers.qc < 0)
            continue;
        const auto& flags = numbers.origin == FrameOrigin::Product ? qc.products : qc.sensors;
        std::size_t place = Times.size() - 1;
        for (const int index : numbers.indexes) {
            numbers.flags[place] = static_cast<signed char>(flags[static_cast<std::size_t>(index)]);
            place += BlockFrames;
        }
    }
}

void CNetCdfTable::TakeText(const CLiveInstrument& live, Texts& texts) {
    texts.statuses.push_back(TextCell(live, texts.sensor, Style.view, Cell));
    if (texts.width == 0) {
        texts.values.push_back(Cell);
        return;
    }
    Cell.resize(texts.width, '\0');
    texts.bytes += Cell;
}

void CNetCdfTable::WriteBlock() {
    const std::size_t frames = Times.size();
    if (frames == 0)
        return;
    const NetCdfRange line{{Written}, {frames}};
    File.Write(Time, line, Times.data());
    File.Write(Frame, line, FrameNumbers.data());
    if (TimeQc >= 0)
        File.Write(TimeQc, line, TimeFlags.data()), TimeFlags.clear();
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
        if (numbers.qc >= 0)
            File.Write(numbers.qc, column, numbers.flags.data() + place);
    }
}

void CNetCdfTable::DescribeTimes() {
    if (!AnyTime)
        return;
    SetAttributes(File, CNetCdfFile::Global,
                  CoverageOf(FirstTime, LastTime, UtcOffset.has_value()));
}

bool CNetCdfTable::Close() {
    WriteBlock();
    DescribeTimes();
    File.Close();
    return Fault.empty() && File.Good();
}

} // namespace qor
