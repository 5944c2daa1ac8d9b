// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/Windows.h"

#include "views/AncView.h"
#include "views/DepthProfile.h"
#include "views/GpsView.h"
#include "views/LinesView.h"
#include "views/LogView.h"
#include "views/MonitorView.h"
#include "views/PkgAncView.h"
#include "views/RealityCheck.h"
#include "views/SpectralView.h"
#include "views/StatusView.h"
#include "views/TimeSeries.h"
#include "views/WeatherView.h"

#include <algorithm>

namespace qor {

namespace {

std::unique_ptr<CView> MakeAncillary(int page) {
    auto view = std::make_unique<CAncViewDlg>(true);
    view->SetPage(page);
    return view;
}

/// A view that sees every frame, or keeps something of it.
template <class View> std::unique_ptr<CView> Make(CQorViewDoc& doc) {
    return std::make_unique<View>(doc);
}

constexpr WindowKind Table[] = {
    {"ancillary", "Ancillary",
     [](CQorViewDoc&) { return MakeAncillary(CAncViewSettings::DerivedPage); }},
    {"sensors", "Sensors",
     [](CQorViewDoc&) { return MakeAncillary(CAncViewSettings::SensorPage); }},
    {"package", "Package",
     [](CQorViewDoc&) -> std::unique_ptr<CView> { return std::make_unique<CPkgAncViewDlg>(true); }},
    {"reality-check", "Reality check",
     [](CQorViewDoc&) -> std::unique_ptr<CView> { return std::make_unique<COSRCViewDlg>(); }},
    {"profile", "Depth profile", Make<CDepthProfileView>},
    {"time-series", "Time series", Make<CTimeSeriesView>},
    {"spectral", "Spectrum", Make<CSpectralView>},
    {"gps", "GPS station", Make<CGpsView>},
    {"weather", "Weather station", Make<CWeatherView>},
    {"status", "Instrument status", Make<CStatusView>},
    {"monitor", "Telemetry monitor", Make<CMonitorView>},
    {"log", "Log status", Make<CLogView>},
    {"session-log", "Session log",
     [](CQorViewDoc&) -> std::unique_ptr<CView> { return std::make_unique<CLinesView>(false); }},
    {"comments", "Comments",
     [](CQorViewDoc&) -> std::unique_ptr<CView> { return std::make_unique<CLinesView>(true); }},
};

} // namespace

std::span<const WindowKind> WindowKinds() {
    return Table;
}

std::vector<std::string_view> WindowNames() {
    std::vector<std::string_view> names;
    for (const WindowKind& window : Table)
        names.push_back(window.name);
    return names;
}

const WindowKind* FindWindowKind(std::string_view name) {
    const auto found = std::ranges::find(Table, name, &WindowKind::name);
    return found == std::end(Table) ? nullptr : &*found;
}

std::string SettingsPrefix(const WindowKind& kind, const std::string& instrument) {
    return "View-" + std::string(kind.name) + (instrument.empty() ? "" : "-" + instrument);
}

WarningRanges KeptRanges(const CProfileStore& store, const std::string& instrument,
                         const std::string& package, ANCDATATYPE product) {
    // A window that was never told whose it is keeps its settings under its kind alone.
    for (const std::string& name : {package, std::string()}) {
        CPkgAncViewSettings settings;
        (void)settings.Load(store, SettingsPrefix(*FindWindowKind("package"), name));
        const WarningRanges* ranges = settings.RangesOf(product);
        if (!package.empty() && ranges && ranges->AnyEnabled())
            return *ranges;
    }
    for (const std::string& name : {instrument, std::string()}) {
        CAncViewSettings settings;
        (void)settings.Load(store, SettingsPrefix(*FindWindowKind("ancillary"), name));
        if (product == ANCDATATYPE::Tilt && settings.TiltWarnings.AnyEnabled())
            return settings.TiltWarnings;
    }
    return {};
}

} // namespace qor
