// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/PageText.h"

#include "base/Text.h"
#include "export/Json.h"

#include <cmath>

namespace qor {

namespace {

/// 0x00BBGGRR as "#rrggbb".
std::string ColourText(Colour colour) {
    return Format("#%02x%02x%02x", colour & 0xFF, colour >> 8 & 0xFF, colour >> 16 & 0xFF);
}

std::optional<double> Finite(double value) {
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

void WriteRows(CJsonWriter& json, const GridPage& page) {
    json.Key("rows"), json.BeginArray();
    for (const GridRow& row : page.rows) {
        json.BeginObject();
        json.Key("label"), json.Text(row.label);
        json.Key("units"), json.Text(row.units);
        json.Key("text"), json.Text(row.value.text);
        json.Key("value"), json.NumberOrNull(row.number);
        json.Key("stale"), json.Bool(row.stale);
        json.Key("background"), json.Text(ColourText(row.value.background));
        json.Key("foreground"), json.Text(ColourText(row.value.textColour));
        if (!row.more.empty()) {
            json.Key("more"), json.BeginArray();
            for (const GridCell& cell : row.more)
                json.Text(cell.text);
            json.EndArray();
        }
        json.EndObject();
    }
    json.EndArray();
}

void WriteCurves(CJsonWriter& json, const ShownPages& pages) {
    json.Key("curves"), json.BeginArray();
    for (const PlotPage* plot : pages.plots)
        for (const PlotCurve& curve : plot->curves) {
            json.BeginObject();
            json.Key("title"), json.Text(curve.title);
            json.Key("units"), json.Text(curve.units);
            json.Key("axis"), json.Integer(curve.axis);
            json.Key("points"), json.BeginArray();
            for (const PlotPoint& point : curve.points) {
                json.BeginArray();
                json.NumberOrNull(Finite(point.x));
                json.NumberOrNull(point.valid ? Finite(point.y) : std::nullopt);
                json.EndArray();
            }
            json.EndArray();
            json.EndObject();
        }
    json.EndArray();
}

void WriteAxis(CJsonWriter& json, std::string_view place, const PlotAxis& axis) {
    json.BeginObject();
    json.Key("place"), json.Text(place);
    json.Key("label"), json.Text(axis.label);
    json.Key("units"), json.Text(axis.units);
    json.Key("minimum"), json.NumberOrNull(Finite(axis.minimum));
    json.Key("maximum"), json.NumberOrNull(Finite(axis.maximum));
    json.Key("automatic"), json.Bool(axis.automatic);
    json.Key("logarithmic"), json.Bool(axis.logarithmic);
    json.Key("reversed"), json.Bool(axis.reversed);
    json.EndObject();
}

void WriteAxes(CJsonWriter& json, const ShownPages& pages) {
    json.Key("axes"), json.BeginArray();
    for (const PlotPage* plot : pages.plots) {
        if (plot->axes.empty()) {
            PlotAxis x, y;
            x.label = plot->xLabel;
            y.label = plot->yLabel;
            y.minimum = plot->yMinimum;
            y.maximum = plot->yMaximum;
            y.automatic = false;
            WriteAxis(json, "x", x);
            WriteAxis(json, "y", y);
            continue;
        }
        WriteAxis(json, "key", plot->key);
        for (const PlotAxis& axis : plot->axes)
            WriteAxis(json, "value", axis);
    }
    json.EndArray();
}

} // namespace

void WritePageJson(COutput& output, std::string_view window, const ShownPages& pages) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("window"), json.Text(window);
    json.Key("title");
    json.Text(pages.grid            ? pages.grid->title
              : pages.plots.empty() ? std::string()
                                    : pages.plots.front()->title);
    WriteRows(json, pages.grid ? *pages.grid : GridPage{});
    WriteCurves(json, pages);
    WriteAxes(json, pages);
    json.EndObject();
    json.EndLine();
}

void WritePageText(COutput& output, const ShownPages& pages) {
    if (pages.grid) {
        output.Text(pages.grid->title + "\n");
        for (const GridRow& row : pages.grid->rows) {
            output.Text(Format("  %-24s %14s %s%s", row.label.c_str(), row.value.text.c_str(),
                               row.units.c_str(), row.stale ? "  (stale)" : ""));
            for (const GridCell& cell : row.more)
                output.Text("  " + cell.text);
            output.Char('\n');
        }
    }
    for (const PlotPage* plot : pages.plots) {
        output.Text(plot->title + "\n");
        for (const PlotCurve& curve : plot->curves) {
            output.Text("  " + curve.title + " [" + curve.units + "]\n");
            for (const PlotPoint& point : curve.points)
                output.Text("    " + ShortestNumber(point.x) + "  " +
                            (point.valid && std::isfinite(point.y) ? ShortestNumber(point.y)
                                                                   : std::string("--")) +
                            "\n");
        }
    }
}

} // namespace qor
