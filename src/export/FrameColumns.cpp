// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FrameColumns.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

CFrameColumns::CFrameColumns(FrameLayout layout, const FrameStyle& style,
                             std::optional<int> utcOffset)
    : Columns(layout.variables.size()), Shape(std::move(layout)), Style(style),
      UtcOffset(utcOffset) {}

void CFrameColumns::Reserve(std::size_t frames) {
    Seconds.reserve(frames);
    Counts.reserve(frames);
    for (auto& flags : Flags)
        flags.reserve(frames);
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        const FrameVariable& variable = Shape.variables[i];
        const bool text = variable.origin == FrameOrigin::Text;
        if (text && variable.width > 0)
            Columns[i].bytes.reserve(frames * variable.width);
        else if (!text)
            Columns[i].numbers.reserve(frames * variable.indexes.size());
        Columns[i].statuses.reserve(frames * variable.indexes.size());
    }
}

void CFrameColumns::TakePlain(const ExportedFrame& frame) {
    Seconds.push_back(ShownSeconds(frame.instrument.CurrentFrame()->Info.time, UtcOffset)
                          .value_or(std::numeric_limits<double>::quiet_NaN()));
    Counts.push_back(static_cast<std::int32_t>(frame.instrument.FrameNumber()));
    const auto flags = FlagsOf(frame.checks);
    for (std::size_t i = 0; i < flags.size(); ++i)
        Flags[i].push_back(CodeOf(flags[i]));
}

void CFrameColumns::TakeValues(const ExportedFrame& frame) {
    const bool plain = Style.view == ValueView::Calibrated && Style.digits == 0;
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        const FrameVariable& variable = Shape.variables[i];
        Column& column = Columns[i];
        if (variable.origin == FrameOrigin::Text) {
            column.statuses.push_back(
                TextCell(frame.instrument, variable.indexes[0], Style.view, Cell));
            if (variable.width == 0) {
                column.texts.push_back(Cell);
                continue;
            }
            Cell.resize(variable.width, '\0');
            column.bytes += Cell;
        } else if (variable.origin == FrameOrigin::Sensors && plain) {
            TakeChannels(variable, frame.instrument, column);
        } else {
            for (const int index : variable.indexes) {
                const FrameCell cell = CellOf(variable.origin, index, frame, Style, Cell);
                column.numbers.push_back(cell.value);
                column.statuses.push_back(cell.status);
            }
        }
    }
}

/// The path of nearly every value: no call for each.
void CFrameColumns::TakeChannels(const FrameVariable& variable, const CLiveInstrument& live,
                                 Column& column) {
    const FrameValues& current = live.Values();
    const std::size_t begin = column.numbers.size(), count = variable.indexes.size();
    column.numbers.resize(begin + count);
    column.statuses.resize(begin + count);
    double* numbers = column.numbers.data() + begin;
    signed char* statuses = column.statuses.data() + begin;
    for (std::size_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(variable.indexes[i]);
        const ConversionStatus status = current.statuses[index];
        numbers[i] = status == ConversionStatus::Good ? current.numbers[index]
                                                      : std::numeric_limits<double>::quiet_NaN();
        statuses[i] = CodeOf(status);
    }
}

void CFrameColumns::Finish() {
    const auto known = [](double seconds) { return !std::isnan(seconds); };
    if (std::ranges::none_of(Seconds, known))
        return;
    double first = std::numeric_limits<double>::infinity(), last = -first;
    for (const double seconds : Seconds)
        if (known(seconds)) {
            first = std::min(first, seconds);
            last = std::max(last, seconds);
        }
    for (FrameAttribute& attribute : CoverageOf(first, last, UtcOffset.has_value()))
        Shape.global.push_back(std::move(attribute));
}

} // namespace qor
