// SPDX-License-Identifier: GPL-3.0-or-later
//
// The texts of the conversion status codes, as a display cell or a session-log line shows them.
#include "instrument/ConversionStatus.h"

#include "base/EnumTable.h"

#include <iterator>

namespace qor {

namespace {

struct ConversionRow {
    ConversionStatus status;
    std::string_view text;
};

constexpr ConversionRow ConversionTable[] = {
    {ConversionStatus::Good, "Good"},
    {ConversionStatus::WrongDataType, "Wrong data type"},
    {ConversionStatus::FrameTooShort, "Frame too short"},
    {ConversionStatus::GainOutOfRange, "Gain range not defined"},
    {ConversionStatus::NotUsable, "No numeric value"},
    {ConversionStatus::MissingArgument, "No frame to convert"},
    {ConversionStatus::NoNumber, "Not a number"},
    {ConversionStatus::NotFinite, "Value not finite"},
    {ConversionStatus::FieldNotFound, "Field not found"},
    {ConversionStatus::Rejected, "Failed its check"},
};
static_assert(IsAscendingTable(ConversionTable, &ConversionRow::status));
static_assert(EnumeratorsIn<ConversionStatus, 0x20000000, 0x40>() + 1 ==
              std::size(ConversionTable));

} // namespace

std::string_view ConversionStatusText(ConversionStatus status) {
    for (const ConversionRow& row : ConversionTable)
        if (row.status == status)
            return row.text;
    return "Unknown conversion error";
}

} // namespace qor
