// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/FrameCells.h"

#include "base/Text.h"
#include "products/GpsSentence.h"

#include <limits>

namespace qor {

namespace {

constexpr double Missing = std::numeric_limits<double>::quiet_NaN();

/// Decided: strings of the file end at a NUL, so the sign that Unicode has for it stands there.
std::string StringOf(const std::string& bytes) {
    std::string text = Utf8Of(bytes);
    for (std::size_t at = 0; (at = text.find('\0', at)) != text.npos;)
        text.replace(at, 1, "\xE2\x90\x80");
    return text;
}

FrameCell SensorCell(const CLiveInstrument& live, int index, const FrameStyle& style,
                     std::string& scratch) {
    const FrameValues& current = live.Values();
    const auto i = static_cast<std::size_t>(index);
    ShownValue value{current.statuses[i], false, current.numbers[i]};
    if (style.view != ValueView::Calibrated)
        value = ValueOf(live, *live.Definition().Sensor(index), style.view, scratch);
    else if (style.digits > 0 && value.status == ConversionStatus::Good)
        value.number = Rounded(value.number, style.digits);
    return {value.status == ConversionStatus::Good ? value.number : Missing, CodeOf(value.status)};
}

FrameCell ProductCell(std::span<const DerivedRow> rows, int index, int digits) {
    const auto i = static_cast<std::size_t>(index);
    const DerivedRow* row = i < rows.size() ? &rows[i] : nullptr;
    if (row && row->value)
        return {Rounded(*row->value, digits), CodeOf(ConversionStatus::Good)};
    const bool failed = row && row->status != ConversionStatus::Good;
    return {Missing, failed ? CodeOf(row->status) : NoValueYet};
}

FrameCell DegreesCell(const CLiveInstrument& live, int index, int digits) {
    const std::optional<double> degrees = SignedDegrees(live, *live.Definition().Sensor(index));
    return degrees ? FrameCell{Rounded(*degrees, digits), CodeOf(ConversionStatus::Good)}
                   : FrameCell{Missing, NoValueYet};
}

} // namespace

FrameCell CellOf(FrameOrigin origin, int index, const ExportedFrame& frame, const FrameStyle& style,
                 std::string& scratch) {
    switch (origin) {
    case FrameOrigin::Sensors:
        return SensorCell(frame.instrument, index, style, scratch);
    case FrameOrigin::Product:
        return ProductCell(frame.derived, index, style.digits);
    case FrameOrigin::Degrees:
        return DegreesCell(frame.instrument, index, style.digits);
    case FrameOrigin::Text:
        break; // is no number
    }
    return {Missing, NoValueYet};
}

signed char TextCell(const CLiveInstrument& live, int sensor, ValueView view, std::string& text) {
    const ShownValue value = ValueOf(live, *live.Definition().Sensor(sensor), view, text);
    text = value.status == ConversionStatus::Good ? StringOf(text) : std::string();
    return CodeOf(value.status);
}

signed char CodeOf(const FrameFlag& flag) {
    return flag.value ? static_cast<signed char>(*flag.value) : NotChecked;
}

} // namespace qor
