// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/PageText.h"

#include "base/Text.h"
#include "export/Json.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

/// 0x00BBGGRR as "#rrggbb".
std::string ColourText(Colour colour) {
    return Format("#%02x%02x%02x", colour & 0xFF, colour >> 8 & 0xFF, colour >> 16 & 0xFF);
}

constexpr std::size_t LabelWidth = 24, ValueWidth = 14, ColumnWidth = 10;

/// How many characters UTF-8 has.
std::size_t PlaceCount(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string NumberOrNone(double value, bool valid) {
    return valid && std::isfinite(value) ? ShortestNumber(value) : "--";
}

std::optional<double> Finite(double value) {
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

void WriteRows(CJsonWriter& json, const GridPage& page) {
    json.Key("rows"), json.BeginArray();
    for (const GridRow& row : page.rows) {
        json.BeginObject();
        json.Key("label"), json.Path(row.label);
        json.Key("units"), json.Path(row.units);
        json.Key("text"), json.Path(row.value.text);
        json.Key("value"), json.NumberOrNull(row.number);
        json.Key("stale"), json.Bool(row.stale);
        json.Key("sign"), json.Text(SignWord(row.sign));
        json.Key("background"), json.Text(ColourText(row.value.background));
        json.Key("foreground"), json.Text(ColourText(row.value.textColour));
        if (!row.more.empty()) {
            json.Key("more"), json.BeginArray();
            for (const GridCell& cell : row.more)
                json.Path(cell.text);
            json.EndArray();
            json.Key("numbers"), json.BeginArray();
            for (const GridCell& cell : row.more)
                json.NumberOrNull(cell.number);
            json.EndArray();
        }
        json.EndObject();
    }
    json.EndArray();
}

void WriteColumns(CJsonWriter& json, const GridPage& page) {
    json.Key("columns"), json.BeginArray();
    for (const GridColumn& column : page.columns)
        json.Path(column.title);
    json.EndArray();
}

std::string_view StateWord(PageState state) {
    switch (state) {
    case PageState::Live:
        return "live";
    case PageState::Empty:
        return "empty";
    case PageState::Waiting:
        return "waiting";
    case PageState::Gone:
        return "gone";
    }
    return "";
}

const PageHead& HeadOf(const ViewPages& pages) {
    return pages.grid ? pages.grid->head : pages.plots.front()->head;
}

void WriteHead(CJsonWriter& json, const PageHead& head) {
    json.Key("state"), json.Text(StateWord(head.state));
    json.Key("sign"), json.Text(SignWord(head.sign));
    json.Key("leading"), json.Path(head.leading);
    json.Key("sentence"), json.Path(head.sentence);
}

void WriteCurves(CJsonWriter& json, const ViewPages& pages) {
    json.Key("curves"), json.BeginArray();
    for (const PlotPage* plot : pages.plots)
        for (const PlotCurve& curve : plot->curves) {
            json.BeginObject();
            json.Key("title"), json.Path(curve.title);
            json.Key("units"), json.Path(curve.units);
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
    json.Key("label"), json.Path(axis.label);
    json.Key("units"), json.Path(axis.units);
    json.Key("minimum"), json.NumberOrNull(Finite(axis.minimum));
    json.Key("maximum"), json.NumberOrNull(Finite(axis.maximum));
    json.Key("automatic"), json.Bool(axis.automatic);
    json.Key("logarithmic"), json.Bool(axis.logarithmic);
    json.Key("reversed"), json.Bool(axis.reversed);
    json.EndObject();
}

void WriteAxes(CJsonWriter& json, const ViewPages& pages) {
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

void WritePageJson(COutput& output, std::string_view window, const ViewPages& pages) {
    CJsonWriter json(output);
    json.BeginObject();
    json.Key("window"), json.Text(window);
    json.Key("title"), json.Path(pages.grid ? pages.grid->title : pages.plots.front()->title);
    WriteHead(json, HeadOf(pages));
    WriteColumns(json, pages.grid ? *pages.grid : GridPage{});
    WriteRows(json, pages.grid ? *pages.grid : GridPage{});
    WriteCurves(json, pages);
    WriteAxes(json, pages);
    json.EndObject();
    json.EndLine();
}

namespace {

/// So wide that the columns stand below each other, whatever the number of bytes.
std::string Padded(const std::string& text, std::size_t width, bool right) {
    const std::string blanks(width - std::min(width, PlaceCount(text)), ' ');
    return right ? blanks + text : text + blanks;
}

/// One line, whatever line ends instruments have put into its texts.
void WriteLine(COutput& output, const std::string& line) {
    output.Foreign(line);
    output.Char('\n');
}

void WriteGridText(COutput& output, const GridPage& page) {
    WriteLine(output, page.title);
    std::string heads;
    for (std::size_t i = 0; i < page.columns.size(); ++i)
        heads += i == 0 ? "  " + Padded(page.columns[i].title, LabelWidth, false)
                 : i == 1
                     ? " " + Padded(page.columns[i].title, ValueWidth, true)
                     : "  " + Padded(page.columns[i].title, ColumnWidth, page.columns[i].number);
    if (!heads.empty())
        WriteLine(output, heads);
    for (const GridRow& row : page.rows) {
        std::string line = "  " + Padded(row.label, LabelWidth, false) + " " +
                           Padded(row.value.text, ValueWidth, true);
        if (page.columns.empty() && !row.units.empty())
            line += " " + row.units;
        for (std::size_t i = 0; i < row.more.size(); ++i)
            line += "  " + Padded(row.more[i].text, ColumnWidth,
                                  i + 2 < page.columns.size() && page.columns[i + 2].number);
        WriteLine(output, line + (row.stale ? "  (stale)" : ""));
    }
}

void WritePlotText(COutput& output, const PlotPage& plot) {
    WriteLine(output, plot.title);
    for (const PlotCurve& curve : plot.curves) {
        WriteLine(output, "  " + curve.title + " [" + curve.units + "]");
        for (const PlotPoint& point : curve.points)
            output.Text("    " + NumberOrNone(point.x, true) + "  " +
                        NumberOrNone(point.y, point.valid) + "\n");
    }
}

} // namespace

void WritePageText(COutput& output, const ViewPages& pages) {
    if (pages.grid)
        WriteGridText(output, *pages.grid);
    for (const PlotPage* plot : pages.plots)
        WritePlotText(output, *plot);
    if (!HeadOf(pages).sentence.empty())
        WriteLine(output, "  " + HeadOf(pages).sentence);
}

} // namespace qor
