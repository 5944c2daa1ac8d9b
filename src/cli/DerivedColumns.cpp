// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/DerivedColumns.h"

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

CDerivedColumns::CDerivedColumns(const CPlayback& playback)
    : PressureTare(playback.PressureTare()) {
    for (std::size_t i = 0; i < playback.Packages().Count(); ++i) {
        const CPackage& source = *playback.Packages().Package(i);
        auto package = std::make_unique<Package>();
        package->instruments = playback.Packages().InstrumentsOf(source);
        package->settings = source.Settings;
        package->rows = CPackageRows(package->instruments, package->settings);
        for (const CLiveInstrument* instrument : package->instruments)
            PackageOf[instrument] = package.get();
        Packages.push_back(std::move(package));
    }
    for (const CQorViewIns* instrument : playback.Instruments())
        if (!PackageOf.contains(&instrument->Live))
            LoneRows.emplace(instrument, CInstrumentRows(instrument->Live));
}

const std::vector<DerivedRow>& CDerivedColumns::Rows(const CQorViewIns& instrument) const {
    auto package = PackageOf.find(&instrument.Live);
    return package != PackageOf.end() ? package->second->rows.Rows()
                                      : LoneRows.at(&instrument).Rows();
}

const std::vector<DerivedRow>& CDerivedColumns::Compute(const CQorViewIns& instrument) {
    auto found = PackageOf.find(&instrument.Live);
    if (found == PackageOf.end()) {
        LoneRows.at(&instrument).Read(instrument.Live, Current);
        return Current;
    }
    Package& package = *found->second;
    const CPackageRows::Inputs inputs{package.instruments, package.settings, PressureTare};
    package.rows.Advance(inputs, Velocity);
    package.rows.Read(inputs, Current);
    return Current;
}

void CDerivedColumns::WriteCsvHeader(COutput& output, const CQorViewIns& instrument) const {
    for (const DerivedRow& row : Rows(instrument)) {
        output.Char(',');
        WriteCsvField(output, Utf8Of(row.label + " [" + row.units + "]"));
    }
}

void CDerivedColumns::WriteCsv(COutput& output, const CQorViewIns& instrument) {
    for (const DerivedRow& row : Compute(instrument)) {
        output.Char(',');
        if (row.value)
            output.Number(*row.value);
    }
}

void CDerivedColumns::WriteJson(CJsonWriter& json, const CQorViewIns& instrument) {
    json.Key("derived"), json.BeginArray();
    for (const DerivedRow& row : Compute(instrument)) {
        json.BeginArray();
        json.Text(row.label);
        json.Text(row.units);
        json.NumberOrNull(row.value);
        json.EndArray();
    }
    json.EndArray();
}

} // namespace qor
