// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/KeptWindows.h"

#include "base/Text.h"
#include "views/Windows.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace qor {

namespace {

constexpr const char* PlaceSection = "Window";
constexpr int KeyAxisOfChoices = -1;
constexpr std::size_t NameBytes = 64, SettingBytes = 4096, MostSettings = 1000, MostNames = 200;
constexpr int GreatestPlace = 100'000;
constexpr int TilePlace::*TileNumbers[] = {&TilePlace::x, &TilePlace::y, &TilePlace::width,
                                           &TilePlace::height};

/// A member that is a text no longer than that; else empty.
std::string TextOf(const JsonValue& object, std::string_view name, std::size_t most) {
    const JsonValue* value = object.Member(name);
    return value && value->kind == JsonValue::Kind::Text && value->text.size() <= most
               ? value->text
               : std::string();
}

std::optional<double> NumberOf(const JsonValue& object, std::string_view name) {
    const JsonValue* value = object.Member(name);
    const auto number = value ? value->AsNumber() : std::nullopt;
    return number && std::isfinite(*number) ? number : std::nullopt;
}

int PixelsOf(const JsonValue& object, std::string_view name) {
    const auto number = NumberOf(object, name);
    return number && *number > 0.0 && *number < GreatestPlace ? static_cast<int>(*number) : 0;
}

bool IsInteger(const std::string& text) {
    const std::optional<double> number = WholeNumber(text);
    return number && std::fabs(*number) < 1e9 && FixedNumber(*number, 0) == text;
}

constexpr struct {
    AxisMode mode;
    const char* name;
} ModeNames[] = {
    {AxisMode::AsPage, "page"}, {AxisMode::Automatic, "automatic"}, {AxisMode::Fixed, "fixed"}};

JsonValue WriteChoice(const AxisChoice& choice) {
    JsonValue written = JsonValue::Object();
    for (const auto& [mode, name] : ModeNames)
        if (mode == choice.mode)
            written.Add("limits", JsonValue::Text(name));
    if (choice.mode == AxisMode::Fixed) {
        written.Add("minimum", JsonValue::Number(choice.minimum));
        written.Add("maximum", JsonValue::Number(choice.maximum));
    }
    if (choice.logarithmic)
        written.Add("logarithmic", JsonValue::Truth(*choice.logarithmic));
    return written;
}

std::optional<AxisChoice> ReadChoice(const JsonValue& value) {
    AxisChoice choice;
    const std::string limits = TextOf(value, "limits", NameBytes);
    for (const auto& [mode, name] : ModeNames)
        if (limits == name)
            choice.mode = mode;
    if (choice.mode == AxisMode::Fixed) {
        const auto minimum = NumberOf(value, "minimum"), maximum = NumberOf(value, "maximum");
        if (!minimum || !maximum || !IsRange(*minimum, *maximum))
            return std::nullopt;
        choice.minimum = *minimum;
        choice.maximum = *maximum;
    }
    const JsonValue* logarithmic = value.Member("logarithmic");
    if (logarithmic && logarithmic->kind == JsonValue::Kind::Truth)
        choice.logarithmic = logarithmic->truth;
    return choice;
}

JsonValue WritePlot(const KeptPlot& plot) {
    JsonValue written = JsonValue::Object(), hidden = JsonValue::Array(),
              axes = JsonValue::Object();
    for (const std::string& title : plot.hidden)
        hidden.elements.push_back(JsonValue::Text(title));
    for (const auto& [name, choice] : plot.axes)
        axes.Add(name, WriteChoice(choice));
    written.Add("hidden", std::move(hidden));
    written.Add("axes", std::move(axes));
    return written;
}

KeptPlot ReadPlot(const JsonValue& value) {
    KeptPlot plot;
    if (const JsonValue* hidden = value.Member("hidden");
        hidden && hidden->kind == JsonValue::Kind::Array)
        for (const JsonValue& title : hidden->elements)
            if (title.kind == JsonValue::Kind::Text && plot.hidden.size() < MostNames)
                plot.hidden.push_back(title.text);
    if (const JsonValue* axes = value.Member("axes"); axes && axes->kind == JsonValue::Kind::Object)
        for (std::size_t i = 0; i < std::min(axes->names.size(), MostNames); ++i)
            if (const auto choice = ReadChoice(axes->elements[i]))
                plot.axes[axes->names[i]] = *choice;
    return plot;
}

JsonValue WriteWindow(const KeptWindow& window) {
    JsonValue written = JsonValue::Object();
    written.Add("kind", JsonValue::Text(window.kind));
    written.Add("name", JsonValue::Text(window.name));
    if (!window.instrument.empty())
        written.Add("instrument", JsonValue::Text(Utf8Of(window.instrument)));
    if (window.width > 0 && window.height > 0) {
        written.Add("width", JsonValue::Number(window.width));
        written.Add("height", JsonValue::Number(window.height));
    }
    written.Add("settings", window.settings.Written());
    JsonValue plots = JsonValue::Array();
    for (const KeptPlot& plot : window.plots)
        plots.elements.push_back(WritePlot(plot));
    if (!std::ranges::all_of(window.plots, &KeptPlot::IsEmpty))
        written.Add("plots", std::move(plots));
    return written;
}

KeptWindow ReadWindow(const JsonValue& value) {
    KeptWindow window;
    window.kind = TextOf(value, "kind", NameBytes);
    window.name = TextOf(value, "name", NameBytes);
    window.instrument = TextOf(value, "instrument", SettingBytes);
    window.width = PixelsOf(value, "width");
    window.height = PixelsOf(value, "height");
    if (const JsonValue* settings = value.Member("settings"))
        window.settings.Read(*settings);
    if (const JsonValue* plots = value.Member("plots");
        plots && plots->kind == JsonValue::Kind::Array)
        for (const JsonValue& plot : plots->elements)
            if (window.plots.size() < KeptWindows::MostPlots)
                window.plots.push_back(ReadPlot(plot));
    return window;
}

/// "[x, y, width, height, front]" by name.
JsonValue WriteTiles(const std::map<std::string, KeptTile>& tiles) {
    JsonValue written = JsonValue::Object();
    for (const auto& [name, tile] : tiles) {
        JsonValue place = JsonValue::Array();
        for (const int TilePlace::*number : TileNumbers)
            place.elements.push_back(JsonValue::Number(tile.place.*number));
        place.elements.push_back(JsonValue::Truth(tile.front));
        written.Add(name, std::move(place));
    }
    return written;
}

std::map<std::string, KeptTile> ReadTiles(const JsonValue* value) {
    std::map<std::string, KeptTile> tiles;
    if (!value || value->kind != JsonValue::Kind::Object)
        return tiles;
    for (std::size_t i = 0; i < value->names.size() && tiles.size() < KeptWindows::MostWindows;
         ++i) {
        const std::vector<JsonValue>& numbers = value->elements[i].elements;
        if (value->elements[i].kind != JsonValue::Kind::Array ||
            numbers.size() != std::size(TileNumbers) + 1)
            continue;
        KeptTile tile;
        tile.place = {};
        bool usable = true;
        for (std::size_t k = 0; k < std::size(TileNumbers); ++k) {
            const double number = numbers[k].AsNumber().value_or(-1.0);
            usable = usable && number >= 0.0 && number <= TilePlace::Whole;
            tile.place.*TileNumbers[k] = usable ? static_cast<int>(number) : 0;
        }
        tile.front = numbers.back().truth;
        if (usable && tile.place.IsUsable())
            tiles[value->names[i]] = tile;
    }
    return tiles;
}

} // namespace

JsonValue CKeptSettings::Written() const {
    JsonValue sections = JsonValue::Object();
    for (const auto& [place, text] : Values) {
        if (sections.names.empty() || sections.names.back() != place.first)
            sections.Add(place.first, JsonValue::Object());
        const std::string utf8 = Utf8Of(text);
        JsonValue value = JsonValue::Text(utf8);
        if (IsInteger(utf8))
            value = JsonValue::Number(*WholeNumber(utf8));
        sections.elements.back().Add(place.second, std::move(value));
    }
    return sections;
}

void CKeptSettings::Read(const JsonValue& value) {
    if (value.kind != JsonValue::Kind::Object)
        return;
    for (std::size_t i = 0; i < value.names.size(); ++i) {
        const JsonValue& section = value.elements[i];
        if (section.kind != JsonValue::Kind::Object)
            continue;
        for (std::size_t k = 0; k < section.names.size() && Values.size() < MostSettings; ++k) {
            const JsonValue& setting = section.elements[k];
            const bool text = setting.kind == JsonValue::Kind::Text;
            const bool number = setting.kind == JsonValue::Kind::Number && IsInteger(setting.text);
            if ((text || number) && setting.text.size() <= SettingBytes)
                Values[{value.names[i], section.names[k]}] = setting.text;
        }
    }
}

const KeptLayout* KeptWindows::LayoutFor(const std::string& screens) const {
    const auto found = std::ranges::find(layouts, screens, &KeptLayout::screens);
    return found != layouts.end() ? &*found : layouts.empty() ? nullptr : &layouts.front();
}

void KeptWindows::Keep(KeptLayout layout) {
    std::erase_if(layouts,
                  [&](const KeptLayout& other) { return other.screens == layout.screens; });
    layouts.insert(layouts.begin(), std::move(layout));
    layouts.resize(std::min(layouts.size(), MostLayouts));
}

KeptPlace PlaceOf(const KeptWindow& window) {
    const JsonValue sections = window.settings.Written();
    for (const JsonValue& section : sections.elements) {
        const auto x = NumberOf(section, "XPosition"), y = NumberOf(section, "YPosition");
        if (x && y && std::fabs(*x) < GreatestPlace && std::fabs(*y) < GreatestPlace)
            return {static_cast<int>(*x), static_cast<int>(*y)};
    }
    return {};
}

void SetPlace(KeptWindow& window, KeptPlace place) {
    std::vector<std::string> sections = window.settings.Written().names;
    if (sections.empty())
        sections.push_back(PlaceSection);
    for (const std::string& section : sections) {
        window.settings.WriteInteger(section, "XPosition", place.x);
        window.settings.WriteInteger(section, "YPosition", place.y);
    }
}

/// One array holds both: a layout is known by its screens.
JsonValue WriteWindows(const KeptWindows& kept) {
    JsonValue written = JsonValue::Array();
    for (const KeptWindow& window : kept.windows)
        written.elements.push_back(WriteWindow(window));
    for (const KeptLayout& layout : kept.layouts) {
        JsonValue value = JsonValue::Object();
        value.Add("screens", JsonValue::Text(layout.screens));
        value.Add("places", WriteTiles(layout.tiles));
        written.elements.push_back(std::move(value));
    }
    return written;
}

KeptWindows ReadWindows(const JsonValue& value) {
    KeptWindows kept;
    if (value.kind != JsonValue::Kind::Array)
        return kept;
    std::set<std::string> names;
    for (const JsonValue& element : value.elements) {
        const std::string screens = TextOf(element, "screens", SettingBytes);
        if (!screens.empty()) {
            if (kept.layouts.size() < KeptWindows::MostLayouts &&
                std::ranges::find(kept.layouts, screens, &KeptLayout::screens) ==
                    kept.layouts.end())
                kept.layouts.push_back({screens, ReadTiles(element.Member("places"))});
            continue;
        }
        KeptWindow window = ReadWindow(element);
        if (!FindWindowKind(window.kind) || kept.windows.size() == KeptWindows::MostWindows)
            continue;
        for (int number = 1; window.name.empty() || !names.insert(window.name).second; ++number)
            window.name = window.kind + "-" + std::to_string(number);
        kept.windows.push_back(std::move(window));
    }
    return kept;
}

KeptPlot KeepPlot(const PlotPage& page, const HiddenCurves& hidden,
                  const std::map<int, AxisChoice>& choices) {
    KeptPlot kept;
    for (const PlotCurve& curve : page.curves)
        if (hidden.contains(curve.id))
            kept.hidden.push_back(curve.title);
    const auto count = static_cast<int>(ValueAxisCount(page));
    for (const auto& [number, choice] : choices) {
        if (choice == AxisChoice() || number >= count)
            continue;
        const bool isKey = number == KeyAxisOfChoices;
        const PlotAxis axis =
            isKey ? KeyAxis(page) : ValueAxis(page, static_cast<std::size_t>(number));
        if (axis.kind != AxisKind::Time)
            kept.axes[isKey ? KeptPlot::KeyName : AxisTitle(axis)] = choice;
    }
    return kept;
}

HiddenCurves HiddenOf(const KeptPlot& kept, const PlotPage& page) {
    HiddenCurves hidden;
    for (const PlotCurve& curve : page.curves)
        if (std::ranges::find(kept.hidden, curve.title) != kept.hidden.end())
            hidden.insert(curve.id);
    return hidden;
}

std::map<int, AxisChoice> ChoicesOf(const KeptPlot& kept, const PlotPage& page) {
    std::map<int, AxisChoice> choices;
    const auto take = [&](const std::string& name, const PlotAxis& axis, int number) {
        const auto choice = kept.axes.find(name);
        if (choice != kept.axes.end() && axis.kind != AxisKind::Time)
            choices[number] = choice->second;
    };
    take(KeptPlot::KeyName, KeyAxis(page), KeyAxisOfChoices);
    for (std::size_t i = 0; i < ValueAxisCount(page); ++i)
        take(AxisTitle(ValueAxis(page, i)), ValueAxis(page, i), static_cast<int>(i));
    return choices;
}

} // namespace qor
