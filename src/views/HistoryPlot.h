// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the windows of histories have in common: which values they show, the watches that keep
// these, one value axis a unit, the menus for both, and what is kept of them. On the user-interface
// thread; what reads the session is under the document's lock.
#pragma once

#include "views/HistoryItems.h"
#include "views/Menu.h"
#include "views/PlotPage.h"
#include "views/ShownInstrument.h"
#include "views/WindowPlace.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// Kept for each of these windows.
struct CHistoryPlotSettings : WindowPlace {
    std::vector<std::string> Items;         ///< "NAME: LABEL"; empty: the window's own choice
    std::map<std::string, AxisChoice> Axes; ///< by units, the key axis by KeyAxisName

    static constexpr const char* KeyAxisName = "key";

    void SaveItems(CProfileStore& store, const std::string& section) const;
    void LoadItems(const CProfileStore& store, const std::string& section);
};

class CHistoryPlot {
  public:
    /// What a window shows unasked.
    using Choice = std::vector<PlotItem> (*)(const CQorViewDoc&, const CQorViewIns&);

    struct Curve {
        PlotItem item;
        CHistoryWatch watch;
        std::string title; ///< its label, behind "NAME: " when it is another instrument's
        int axis = 0;
        std::uint64_t id = 0; ///< of its curves: times eight, to tell them apart
        std::int64_t age = -1;
        bool stale = false;
    };

    /// `serves`: whose page it is while no name was given (any, when null).
    CHistoryPlot(CQorViewDoc& doc, CHistoryPlotSettings& settings, Choice choice, Serves serves)
        : Doc(doc), Settings(settings), Unasked(choice), IsServed(std::move(serves)) {}

    CQorViewDoc& Doc;

    void Show(const std::string& instrument);
    /// Adds a value to what is shown. What is wrong, or nothing; Unknown when it names none.
    std::string Select(std::string_view text) REQUIRES(Doc.DocLock);
    static constexpr const char* Unknown = "?";

    /// Looks up what is shown. True when there is something to draw: a new frame, another
    /// attachment, another second of age, or Redraw was called.
    bool Refresh() REQUIRES(Doc.DocLock);
    void Redraw() { Drawn = false; }
    /// After its settings were changed from outside.
    void LookAgain() { LookedUp = false; }

    /// The instrument whose page it is; null when it is not there.
    const CQorViewIns* Instrument() const REQUIRES(Doc.DocLock);
    const std::vector<Curve>& Curves() const { return Shown; }
    /// A curve's points; null when it is watched no more.
    const WatchedCurve* PointsOf(const Curve& curve) const REQUIRES(Doc.DocLock) {
        return Doc.History.Curve(curve.watch.Which());
    }

    /// The page's title, head, axes and stamp; what leads is the first curve's latest value.
    /// `laneAUnit`: each axis has a strip of its own.
    void BeginPage(const char* window, bool laneAUnit, PlotPage& page) const REQUIRES(Doc.DocLock);
    /// "T 12.41"; with its units when asked for. Empty without a frame.
    std::string Leading(bool withUnits) const REQUIRES(Doc.DocLock);
    /// ", 38 s old" when what leads is old.
    std::string LeadingAge() const;
    /// A choice for one axis of the page, by hand.
    void SetAxis(const PlotPage& page, int axis, const AxisChoice& choice);

    /// The menus of what can be shown and of the axes.
    MenuEntry ShowMenu() REQUIRES(Doc.DocLock);
    MenuEntry AxesMenu(const PlotPage& page);

  private:
    struct Moment {
        std::uint64_t taken = 0;
        std::int64_t age = 0; ///< s, while something is old
        bool there = false, waits = true;

        bool operator==(const Moment&) const = default;
    };

    void LookUp(const CQorViewIns* instrument) REQUIRES(Doc.DocLock);
    void AddCurve(const PlotItem& item, const CQorViewIns* instrument, std::vector<Curve>& to)
        REQUIRES(Doc.DocLock);
    Moment Now(const CQorViewIns* instrument) REQUIRES(Doc.DocLock);
    std::vector<std::string> UnitsShown() const;
    bool IsShown(const PlotItem& item) const;
    void Toggle(const PlotItem& item);
    MenuEntry EntryOf(const PlotItem& item);
    MenuEntry MenuOf(std::string title, const std::vector<PlotItem>& items);

    CHistoryPlotSettings& Settings;
    const Choice Unasked;
    const Serves IsServed;
    std::string Name;     ///< empty: the first that serves
    std::string LastName; ///< whose page it was
    InstrumentId Attached = InstrumentId::None;
    bool WasThere = false;
    bool LookedUp = false;
    std::uint32_t Version = 0;
    std::vector<Curve> Shown;
    std::optional<Moment> Last;
    bool Drawn = false;
};

/// The choice that the operator made for an axis, upon it.
void ApplyChoice(const AxisChoice& choice, PlotAxis& axis);

} // namespace qor
