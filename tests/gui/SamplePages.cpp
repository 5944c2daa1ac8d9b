// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/SamplePages.h"

#include "base/Text.h"

#include <array>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr double Gap = std::numeric_limits<double>::quiet_NaN();
constexpr double Start = 1763800800.0; // 2025-11-22 08:40:00 UTC

double Bell(double x, double middle, double width) {
    return std::exp(-(x - middle) * (x - middle) / (2.0 * width * width));
}

PlotAxis Axis(const char* label, const char* units, int decimals = 2) {
    PlotAxis axis;
    axis.label = label;
    axis.units = units;
    axis.decimals = decimals;
    return axis;
}

} // namespace

GridPage SampleAncillary() {
    GridPage page;
    page.title = "Ancillary View - PRO 0312";
    const auto row = [](std::uint64_t id, const char* label, const char* units, GridCell value,
                        Sign sign) {
        GridRow made{label, units, std::move(value)};
        made.id = id;
        made.sign = sign;
        made.opens = id == 1 || id == 3;
        return made;
    };
    page.rows = {row(1, "TILT", "deg", {"46.12", Cyan, Red}, Sign::Alarm),
                 row(2, "PRES", "dbar", {"23.4410", Yellow, Black}, Sign::Ok),
                 row(3, "TEMP W", "deg C", {"24.1180", Black, Yellow}, Sign::Warning),
                 row(4, "COND", "mS/cm", {"42.9140", Yellow, Black}, Sign::Stale),
                 row(5, "VBAT", "V", {"0x20000006", Yellow, Black}, Sign::Error),
                 row(6, "TIMER", "s", {"4811.20", Yellow, Black}, Sign::None)};
    page.rows[3].stale = true;
    page.rows[3].age = "38 s";
    page.head.sign = Sign::Alarm;
    page.head.leading = "TILT 46.12 deg";
    return page;
}

GridPage SampleStatus() {
    GridPage page;
    page.title = "Instrument status";
    page.ownColours = false;
    page.columns = {{"Instrument"},     {"Rate", true},      {"Dropped", true},
                    {"Checksum", true}, {"Discarded", true}, {"Age", true}};
    const auto row = [](std::uint64_t id, Sign sign, const char* name,
                        std::array<const char*, 5> cells) {
        GridRow made{name, {}, {cells[0]}, {}, id, sign};
        for (std::size_t i = 1; i < cells.size(); ++i)
            made.more.push_back({cells[i]});
        return made;
    };
    page.rows = {row(1, Sign::Stale, "GPS 17x", {"--", "0", "0", "0", "38 s"}),
                 row(2, Sign::Warning, "Radiance Lu 0318", {"9.7/10", "2", "0", "412", "0.1 s"}),
                 row(3, Sign::Ok, "Irradiance Ed 0317", {"9.9/10", "0", "0", "0", "0.1 s"}),
                 row(4, Sign::Waiting, "Weather", {"--", "0", "0", "0", "--"}),
                 row(5, Sign::Off, "Spare", {"--", "0", "0", "0", "--"})};
    page.head.sign = Sign::Stale;
    return page;
}

PlotPage SampleSpectrum() {
    PlotPage page;
    page.title = "Spectrum - ED and LU";
    page.key = Axis("Wavelength", "nm", 1);
    page.key.kind = AxisKind::Wavelength;
    page.axes = {Axis("Irradiance", "uW/cm^2/nm")};
    page.axes[0].fromZero = true;
    const std::array<const char*, 3> names{"ED", "ES", "LU x10"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        PlotCurve curve;
        curve.title = names[i];
        curve.id = i + 1;
        curve.broad = true;
        curve.place = static_cast<double>(i);
        curve.role = i == 1 ? CurveRole::Reference : CurveRole::Series;
        for (double nm = 350.0; nm <= 800.0; nm += 3.3)
            curve.points.push_back({nm, (90.0 - 25.0 * static_cast<double>(i)) *
                                            (Bell(nm, 490.0 + 30.0 * static_cast<double>(i), 80.0) +
                                             0.05 * std::sin(nm / 7.0))});
        page.curves.push_back(curve);
    }
    page.head.leading = "ED 443 nm 81.2 uW/cm^2/nm";
    page.station = "Cruise HE-612   Station S4   54 10.2 N 007 53.4 E";
    page.stamp = "2025-11-22 08:49:12 UTC";
    return page;
}

PlotPage SampleWavelengths() {
    PlotPage page;
    page.title = "ED by wavelength";
    page.key = Axis("Time", "");
    page.key.kind = AxisKind::Time;
    page.key.automatic = false;
    page.key.minimum = Start;
    page.key.maximum = Start + 600.0;
    page.axes = {Axis("Ed", "uW/cm^2/nm")};
    for (const double nm : {412.0, 443.0, 490.0, 510.0, 555.0, 590.0, 625.0, 665.0, 710.0}) {
        PlotCurve curve;
        curve.title = Format("%.0f nm", nm);
        curve.id = static_cast<std::uint64_t>(nm);
        curve.role = CurveRole::Wavelength;
        curve.place = nm;
        for (double t = 0.0; t <= 600.0; t += 2.0)
            curve.points.push_back(
                {Start + t, 80.0 * Bell(nm, 500.0, 110.0) * (1.0 + 0.1 * std::sin(t / 40.0 + nm))});
        page.curves.push_back(curve);
    }
    return page;
}

PlotPage SampleProfile() {
    PlotPage page;
    page.title = "Depth profile";
    page.keyUpright = true;
    page.key = Axis("Depth", "m", 1);
    page.key.reversed = true;
    page.key.fromZero = true;
    page.axes = {Axis("Temperature", "deg C"), Axis("Chlorophyll", "mg/m^3")};
    const auto cast = [](const char* title, std::uint64_t id, int axis, CurveRole role,
                         double shift) {
        PlotCurve curve;
        curve.title = title;
        curve.id = id;
        curve.axis = axis;
        curve.role = role;
        curve.place = axis;
        curve.loops = true;
        curve.broad = true;
        for (double z = 0.2; z < 45.0; z += 0.25) {
            const double temperature =
                17.0 - 6.0 / (1.0 + std::exp(-(z - 18.0 - shift) / 2.5)) + 0.1 * std::sin(z * 2);
            const double green = 0.4 + 2.2 * Bell(z, 16.0 + shift, 4.0);
            curve.points.push_back({z, axis == 0 ? temperature : green});
        }
        return curve;
    };
    page.curves = {cast("previous cast", 9, 0, CurveRole::PreviousCast, 4.0),
                   cast("Temperature", 1, 0, CurveRole::Series, 0.0),
                   cast("Chlorophyll", 2, 1, CurveRole::Series, 0.0)};
    page.markers = {{23.4, "23.4 m", Sign::None}};
    page.head.leading = "T 12.41 deg C, 23.4 m";
    page.station = "Cruise HE-612   Station S4";
    page.stamp = "2025-11-22 08:49:12 UTC";
    return page;
}

PlotPage SampleSeries() {
    PlotPage page;
    page.title = "Time series";
    page.key = Axis("Time", "");
    page.key.kind = AxisKind::Time;
    page.key.automatic = false;
    page.key.minimum = Start;
    page.key.maximum = Start + 600.0;
    page.axes = {Axis("Tilt", "deg"), Axis("Chlorophyll", "mg/m^3")};
    page.axes[0].fromZero = true;
    page.axes[1].lane = 1;
    PlotCurve tilt, green, turbid;
    tilt.title = "TILT";
    tilt.id = 1;
    green.title = "CHL A";
    green.id = 2;
    green.axis = 1;
    turbid.title = "CHL B";
    turbid.id = 3;
    turbid.axis = 1;
    turbid.place = 1.0;
    for (double t = 0.0; t <= 600.0; t += 0.5) {
        const bool gap = t > 210.0 && t < 260.0;
        tilt.points.push_back(
            {Start + t, gap ? Gap : 8.0 + 5.0 * std::sin(t / 17.0) + std::sin(t)});
        green.points.push_back({Start + t, gap ? Gap : 1.8 + 0.5 * std::sin(t / 90.0)});
        turbid.points.push_back({Start + t, gap ? Gap : 1.2 + 0.3 * std::cos(t / 60.0)});
    }
    page.curves = {tilt, green, turbid};
    page.bands = {{0, 12.0, 20.0, Sign::Warning}};
    page.markers = {{Start + 330.0, "Cast 3", Sign::None}};
    page.head.leading = "TILT 8.42 deg";
    return page;
}

PlotPage SampleTrack() {
    PlotPage page;
    page.title = "Track";
    page.sameScale = true;
    page.key = Axis("East", "m", 0);
    page.axes = {Axis("North", "m", 0)};
    PlotCurve track;
    track.title = "track of the log";
    track.loops = true;
    track.id = 1;
    for (double t = 0.0; t < 7.0; t += 0.02)
        track.points.push_back({120.0 * std::sin(t) + 20.0 * t, 60.0 * std::sin(2.0 * t)});
    page.curves = {track};
    return page;
}

PlotPage SampleComparison() {
    PlotPage page;
    page.title = "DUT/REF Normalized [%]";
    page.xLabel = "Wavelength [nm]";
    page.yLabel = "%";
    page.yMinimum = -10.0;
    page.yMaximum = 10.0;
    PlotCurve curve;
    curve.title = page.title;
    for (int i = 0; i < 60; ++i)
        curve.points.push_back(
            {400.0 + 5.0 * i, i % 9 == 4 ? 0.0 : 4.0 * std::sin(i / 6.0), i % 9 != 4});
    page.curves = {curve};
    return page;
}

TreePage SampleTree() {
    return {
        {{1,
          TreeKind::Resource,
          Sign::Ok,
          "ttyUSB0 57600 8N1",
          {},
          {},
          {},
          "FTDI A50285BI",
          {{11,
            TreeKind::Note,
            Sign::None,
            "discarded 412  lost 0  line errors 0",
            {},
            {},
            {},
            {},
            {}},
           {12,
            TreeKind::Package,
            Sign::Ok,
            "Profiler HE",
            {},
            {},
            {},
            {},
            {{121, TreeKind::Instrument, Sign::Alarm, "PRO 0312", "P", "9.9/10", "0.1 s", {}, {}},
             {122,
              TreeKind::Instrument,
              Sign::Ok,
              "Irradiance Ed 0317",
              "R",
              "9.9/10",
              "0.1 s",
              {},
              {}},
             {123,
              TreeKind::Instrument,
              Sign::Warning,
              "Radiance Lu 0318",
              {},
              "9.7/10",
              "0.1 s",
              {},
              {}}}}}},
         {2,
          TreeKind::Resource,
          Sign::Error,
          "ttyUSB1 4800 8N1",
          {},
          {},
          {},
          "lost at 09:41:04",
          {{21,
            TreeKind::Note,
            Sign::None,
            "discarded 0  lost 38  line errors 2",
            {},
            {},
            {},
            {},
            {}},
           {22, TreeKind::Instrument, Sign::Stale, "GPS 17x", "G", "0.0/1", "38 s", {}, {}},
           {23, TreeKind::Instrument, Sign::Waiting, "Weather", "W", "--/1", "--", {}, {}},
           {24, TreeKind::Instrument, Sign::Off, "Spare", {}, "--", "--", {}, {}}}}}};
}

LogPage SampleLog(LogState state, RunKind run) {
    LogPage page;
    page.state = state;
    page.run = run;
    page.speed = "x4";
    page.elapsed = "00:12:34";
    page.file = "2026-325-093015.raw";
    page.frames = "48 210";
    page.left = "212 h left";
    page.next = "10:00:00";
    page.cause = "2026-325-093015.raw: no space on the disk since 09:41:04.";
    return page;
}

} // namespace qor
