// SPDX-License-Identifier: GPL-3.0-or-later
//
// Cell texts of fields, apart from any locale. Displays and the command line call it.
#include "instrument/FieldText.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/FieldValue.h"

namespace qor {

namespace {

ConversionStatus CalibratedText(const CSensor& sensor, ByteSpan frame, bool immersed, int decimals,
                                std::string& text) {
    if (KindOfValue(sensor) == ValueKind::Text)
        return ValueText(sensor, frame, text);
    double value = 0.0;
    const ConversionStatus status = CalibratedValue(sensor, frame, immersed, value);
    if (status == ConversionStatus::Good)
        text = FixedNumber(value, decimals);
    return status;
}

std::string RawText(const CSensor& sensor, const RawValue& raw) {
    return IsInteger(sensor.Data) ? std::to_string(raw.integer) : ShortestNumber(raw.number);
}

std::string HexText(const CSensor& sensor, ByteSpan field, const RawValue& raw) {
    if (sensor.Data == DataType::AF)
        return RawText(sensor, raw);
    std::string text = "0x";
    if (sensor.Data == DataType::AI)
        return text + Format("%X", static_cast<unsigned>(static_cast<std::uint32_t>(raw.integer)));
    if (field.empty())
        return text + "0";
    const bool digits = sensor.Data == DataType::HU || sensor.Data == DataType::HS;
    for (std::uint8_t byte : field) {
        if (digits)
            text += static_cast<char>(byte >= 'a' ? byte - 'a' + 'A' : byte);
        else
            text += Format("%02X", static_cast<unsigned>(byte));
    }
    return text;
}

ConversionStatus CountsText(const CSensor& sensor, ByteSpan frame, bool hexadecimal,
                            std::string& text) {
    ByteSpan field;
    RawValue raw;
    ConversionStatus status = FieldOf(sensor, frame, field);
    if (status != ConversionStatus::Good)
        return status;
    if (KindOfValue(sensor) == ValueKind::Text && sensor.Data == DataType::AS)
        return TextOfField(sensor, field, &text);
    status = RawOfField(sensor, field, raw);
    if (status == ConversionStatus::Good)
        text = hexadecimal ? HexText(sensor, field, raw) : RawText(sensor, raw);
    return status;
}

} // namespace

ConversionStatus FormatField(const CSensor& sensor, ByteSpan frame, bool immersed, FieldView view,
                             int decimals, std::string& text) {
    const ConversionStatus status =
        view == FieldView::Calibrated
            ? CalibratedText(sensor, frame, immersed, decimals, text)
            : CountsText(sensor, frame, view == FieldView::HexCounts, text);
    if (status != ConversionStatus::Good)
        text = ConversionStatusText(status);
    return status;
}

} // namespace qor
