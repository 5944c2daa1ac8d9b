// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/DerivedColumns.h"

#include "export/FrameText.h"

namespace qor {

namespace {

/// Labels and units are 8-bit texts of our own; CSV is UTF-8.
std::string Utf8Of(std::string_view latin) {
    std::string text;
    for (char c : latin) {
        auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80)
            text += static_cast<char>(0xC0 | byte >> 6);
        text += byte < 0x80 ? c : static_cast<char>(0x80 | (byte & 0x3F));
    }
    return text;
}

} // namespace

void CDerivedColumns::WriteCsvHeader(COutput& output, const CQorViewIns& instrument) {
    Doc.ReadDerived(instrument, Rows);
    for (const DerivedRow& row : Rows) {
        output.Char(',');
        WriteCsvField(output, Utf8Of(row.label + " [" + row.units + "]"));
    }
}

void CDerivedColumns::WriteCsv(COutput& output, const CQorViewIns& instrument) {
    Doc.ReadDerived(instrument, Rows);
    for (const DerivedRow& row : Rows) {
        output.Char(',');
        if (row.value)
            output.Number(*row.value);
    }
}

void CDerivedColumns::WriteJson(CJsonWriter& json, const CQorViewIns& instrument) {
    Doc.ReadDerived(instrument, Rows);
    json.Key("derived"), json.BeginArray();
    for (const DerivedRow& row : Rows) {
        json.BeginArray();
        json.Text(row.label);
        json.Text(row.units);
        json.NumberOrNull(row.value);
        json.EndArray();
    }
    json.EndArray();
}

} // namespace qor
