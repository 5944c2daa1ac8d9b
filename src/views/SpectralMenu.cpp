// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the spectral display offers, how it is chosen from, and how it is kept.
#include "base/Text.h"
#include "views/SpectralView.h"

#include <algorithm>
#include <array>

namespace qor {

namespace {

constexpr const char* SpectralSection = "\\Spectral";
constexpr int MostGroups = 32; ///< that are kept
constexpr std::array Means = {1, 5, 10, 20, 50, 100};
static_assert(Means.back() == CSpectralTraces::Kept);

struct SpectralSetting {
    const char* key;
    int CSpectralViewSettings::*field;
    int least, greatest;
};
constexpr SpectralSetting SpectralSettings[] = {
    {"Reading", &CSpectralViewSettings::Reading, 0, 1},
    {"Logarithmic", &CSpectralViewSettings::Logarithmic, 0, 1},
    {"MeanOf", &CSpectralViewSettings::MeanOf, 1, Means.back()},
    {"Band", &CSpectralViewSettings::Band, 0, 1},
    {"SubtractDark", &CSpectralViewSettings::SubtractDark, 0, 1},
    {"Ratio", &CSpectralViewSettings::Ratio, 0, 1},
    {"LeadingWavelength", &CSpectralViewSettings::LeadingWavelength, 1, 100'000},
};

} // namespace

bool CSpectralViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    const std::string section = prefix + SpectralSection;
    SavePlace(store, section);
    for (const SpectralSetting& setting : SpectralSettings)
        store.WriteInteger(section, setting.key, this->*setting.field);
    store.WriteText(section, "Dark", Dark);
    store.WriteText(section, "Reference", Reference);
    store.WriteInteger(section, "Groups", static_cast<int>(Groups.size()));
    for (std::size_t i = 0; i < Groups.size(); ++i)
        store.WriteText(section, "Group" + std::to_string(i), Groups[i]);
    return true;
}

bool CSpectralViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    const std::string section = prefix + SpectralSection;
    LoadPlace(store, section);
    for (const SpectralSetting& setting : SpectralSettings) {
        int value = this->*setting.field;
        LoadInteger(store, section, setting.key, value);
        if (setting.least <= value && value <= setting.greatest)
            this->*setting.field = value;
    }
    for (const auto& [key, name] : {std::pair{"Dark", &Dark}, std::pair{"Reference", &Reference}})
        if (std::string text = store.ReadText(section, key); !text.empty())
            *name = std::move(text);
    int groups = -1;
    LoadInteger(store, section, "Groups", groups);
    if (groups >= 0)
        Groups.clear();
    for (int i = 0; i < std::min(groups, MostGroups); ++i)
        if (std::string text = store.ReadText(section, "Group" + std::to_string(i)); !text.empty())
            Groups.push_back(std::move(text));
    return true;
}

void CSpectralView::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    if (Settings.Load(store, prefix))
        Redraw = true;
}

void CSpectralView::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    (void)Settings.Save(store, prefix); // without a prefix there is nothing to keep
}

std::string CSpectralView::Select(CQorViewDoc& doc, std::string_view item) {
    CRecursiveLock lock(Doc.DocLock);
    const std::size_t bracket = item.find('(');
    const std::string_view type = item.substr(0, bracket);
    const std::vector<SpectralGroup> groups = Traces.Groups();
    const auto group = std::ranges::find_if(groups, [&](const SpectralGroup& one) {
        return EqualsNoCase(Utf8Of(one.type), type) || EqualsNoCase(one.Text(), item);
    });
    if (group == groups.end())
        return CView::Select(doc, item);
    if (bracket != item.npos && item.ends_with(')')) {
        const auto wavelength = WholeNumber(item.substr(bracket + 1, item.size() - bracket - 2));
        if (!wavelength || !(*wavelength >= 1.0) || !(*wavelength <= 100'000.0))
            return std::string(item) + ": give a wavelength in nm in the brackets.";
        Settings.LeadingWavelength = static_cast<int>(*wavelength + 0.5);
    }
    Choose(*group, true);
    return {};
}

void CSpectralView::Choose(const SpectralGroup& group, bool on) {
    CRecursiveLock lock(Doc.DocLock);
    std::vector<std::string>& chosen = Settings.Groups;
    // What this instrument does not have was of another one.
    const std::vector<SpectralGroup> groups = Traces.Groups();
    std::erase_if(chosen, [&groups](const std::string& text) {
        return std::ranges::find(groups, text, &SpectralGroup::Text) == groups.end();
    });
    if (chosen.empty() && !on)
        for (const SpectralGroup& shown : ShownGroups())
            chosen.push_back(shown.Text());
    std::erase(chosen, group.Text());
    if (on)
        chosen.push_back(group.Text());
    Redraw = true;
}

void CSpectralView::Toggle(int CSpectralViewSettings::*setting) {
    Settings.*setting = Settings.*setting == 0;
    Redraw = true;
}

Menu CSpectralView::ContextMenu(CQorViewDoc&) {
    CRecursiveLock lock(Doc.DocLock);
    Menu menu;
    AddGroupEntries(menu);
    menu.push_back({"&Hold", [this, on = !Held.has_value()] { Hold(on); }, true, Held.has_value()});
    AddDrawingEntries(menu);
    AddOverlayEntries(menu);
    return menu;
}

void CSpectralView::AddGroupEntries(Menu& menu) {
    const std::vector<SpectralGroup> shown = ShownGroups();
    for (const SpectralGroup& group : Traces.Groups()) {
        const bool on = std::ranges::find(shown, group) != shown.end();
        menu.push_back({group.Text(), [this, group, on] { Choose(group, !on); }, true, on,
                        on && shown.size() == 1 ? "It is the only one shown." : ""});
    }
    if (!menu.empty())
        menu.push_back({});
}

void CSpectralView::AddDrawingEntries(Menu& menu) {
    for (int reading = 0; const char* text : {"&Calibrated Values", "&Raw Counts"}) {
        menu.push_back({text,
                        [this, reading] {
                            Settings.Reading = reading;
                            Redraw = true;
                        },
                        true, Settings.Reading == reading});
        ++reading;
    }
    menu.push_back({"&Logarithmic", [this] { Toggle(&CSpectralViewSettings::Logarithmic); }, true,
                    Settings.Logarithmic != 0});
    Menu means;
    for (const int count : Means)
        means.push_back({count == 1 ? "Each frame" : Format("Mean of %d", count),
                         [this, count] {
                             Settings.MeanOf = count;
                             Redraw = true;
                         },
                         true, Settings.MeanOf == count});
    menu.push_back({"&Mean", {}, false, false, {}, std::move(means)});
    menu.push_back({"Least and &Greatest", [this] { Toggle(&CSpectralViewSettings::Band); }, true,
                    Settings.Band != 0});
}

void CSpectralView::AddOverlayEntries(Menu& menu) {
    menu.push_back({});
    menu.push_back({"&Freeze", [this] { Freeze(); }});
    menu.push_back(
        {"&Thaw", [this] { Thaw(); }, false, false, Frozen.empty() ? "Nothing is frozen." : ""});
    struct Overlay {
        const char *text, *none, *of;
        std::string CSpectralViewSettings::*name;
    };
    for (const Overlay& overlay :
         {Overlay{"&Dark", "No Dark", "Dark of ", &CSpectralViewSettings::Dark},
          Overlay{"Re&ference", "No Reference", "Reference of ",
                  &CSpectralViewSettings::Reference}}) {
        const auto choose = [this, overlay](const std::string& name) {
            Settings.*overlay.name = name;
            Hold(false); // what is held has no such spectra
        };
        Menu names{
            {overlay.none, [choose] { choose({}); }, true, (Settings.*overlay.name).empty()}};
        for (const std::string& name : OpticalInstruments(Doc))
            names.push_back({overlay.of + Utf8Of(name), [choose, name] { choose(name); }, true,
                             Settings.*overlay.name == name});
        menu.push_back({overlay.text, {}, false, false, {}, std::move(names)});
    }
    menu.push_back(
        {"&Subtract Dark", [this] { Toggle(&CSpectralViewSettings::SubtractDark); }, true,
         Settings.SubtractDark != 0,
         Settings.Dark.empty() && Settings.SubtractDark == 0 ? "Choose a dark first." : ""});
    const bool nothing = Settings.Reference.empty() && Frozen.empty() && Settings.Ratio == 0;
    menu.push_back({"Rati&o to Reference", [this] { Toggle(&CSpectralViewSettings::Ratio); }, true,
                    Settings.Ratio != 0,
                    nothing ? "Choose a reference or freeze a spectrum first." : ""});
}

} // namespace qor
