// SPDX-License-Identifier: GPL-3.0-or-later
//
// The display windows of a session as its file keeps them: what each showed, how its operator had
// set it, where it stood, and the layouts by set of screens. The only room that knows their form.
// Reading believes nothing: what is no window is left out, what is out of range is not taken. Plain
// values, any thread.
#pragma once

#include "session/JsonValue.h"
#include "session/ProfileStore.h"
#include "views/PlotRange.h"
#include "views/WindowTiling.h"

#include <map>
#include <string>
#include <vector>

namespace qor {

/// A store of settings whose content goes into the session's file and comes from it.
class CKeptSettings : public CMemoryProfileStore {
  public:
    JsonValue Written() const;
    void Read(const JsonValue& value);

    bool operator==(const CKeptSettings& other) const { return Values == other.Values; }
};

/// How the operator looks at a plot. By titles, because numbers are others when the page is.
struct KeptPlot {
    static constexpr const char* KeyName = "key"; ///< of the key axis

    std::vector<std::string> hidden;        ///< titles of curves
    std::map<std::string, AxisChoice> axes; ///< by AxisTitle, or KeyName

    bool IsEmpty() const { return hidden.empty() && axes.empty(); }
    bool operator==(const KeptPlot&) const = default;
};

struct KeptWindow {
    std::string kind; ///< by which FindWindowKind finds it
    std::string name; ///< tells it from the others in layouts
    std::string instrument;
    CKeptSettings settings; ///< of the view, XPosition and YPosition among them; see Place
    int width = 0;          ///< of a float; 0: not said
    int height = 0;
    std::vector<KeptPlot> plots;

    bool operator==(const KeptWindow&) const = default;
};

/// Where a docked window stands.
struct KeptTile {
    TilePlace place;
    bool front = true; ///< of those of the same place

    bool operator==(const KeptTile&) const = default;
};

/// Where the docked windows stand on one set of screens. Decided: places of our own, not the bytes
/// that the widget library has for it, which are believed when they are read back.
struct KeptLayout {
    std::string screens;                   ///< "1366x768+0+0 1920x1080+1366+0"
    std::map<std::string, KeptTile> tiles; ///< by the windows' names

    bool operator==(const KeptLayout&) const = default;
};

struct KeptWindows {
    static constexpr std::size_t MostWindows = 100, MostLayouts = 8, MostPlots = 8;

    std::vector<KeptWindow> windows;
    std::vector<KeptLayout> layouts; ///< the latest first

    /// The layout of a set of screens, else the latest; null when there is none.
    const KeptLayout* LayoutFor(const std::string& screens) const;
    /// Puts it first, instead of the one that its screens had.
    void Keep(KeptLayout layout);

    bool operator==(const KeptWindows&) const = default;
};

/// A float's place among the settings of its view; -1 and -1: docked.
struct KeptPlace {
    int x = -1;
    int y = -1;

    bool Floats() const { return x != -1 || y != -1; }
};
KeptPlace PlaceOf(const KeptWindow& window);
/// In every section of the settings, and in one where there is none.
void SetPlace(KeptWindow& window, KeptPlace place);

JsonValue WriteWindows(const KeptWindows& windows);
/// Windows without a name of their own get one; kinds that nobody knows are left out.
KeptWindows ReadWindows(const JsonValue& value);

/// What of a plot is worth keeping: not the times to which a hand has zoomed.
KeptPlot KeepPlot(const PlotPage& page, const HiddenCurves& hidden,
                  const std::map<int, AxisChoice>& choices);
/// The same for the page as it is now: the curves that are switched off, the choices by axis (-1:
/// the key axis).
HiddenCurves HiddenOf(const KeptPlot& kept, const PlotPage& page);
std::map<int, AxisChoice> ChoicesOf(const KeptPlot& kept, const PlotPage& page);

} // namespace qor
