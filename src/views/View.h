// SPDX-License-Identifier: GPL-3.0-or-later
//
// What every window's view is to the faces: something that is told what to show, updates from the
// session, and has pages. The desktop asks it at its own rate, the command line once at the end of
// a played log. On the user-interface thread; a view takes the document's lock itself, for the time
// of its update, and neither speaks nor beeps under it (a page says `beep`). A view that has to see
// every frame is made with the document, keeps a CFrameWatch, and goes before the document.
//
// Texts of pages and menus are UTF-8. What comes from instruments and definitions is bytes, and
// goes onto a page through Utf8Of.
#pragma once

#include "products/DerivedRows.h"
#include "session/QorViewDoc.h"
#include "views/GridPage.h"
#include "views/Menu.h"
#include "views/PlotPage.h"
#include "views/PlotRange.h"
#include "views/WarningRanges.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// What a view shows: a table, plots, or both (a position beside its track). They live in the view.
struct ViewPages {
    const GridPage* grid = nullptr;
    std::vector<const PlotPage*> plots = {};
};

/// The rows of a page that can be seen; of a page that may be long only they are refreshed.
struct VisibleRows {
    std::size_t first = 0;
    std::size_t end = static_cast<std::size_t>(-1); ///< one past the last

    bool Contains(std::size_t row) const { return first <= row && row < end; }
};

/// The ranges that the operator set for a derived row of an instrument, or null.
using RangesFinder =
    std::function<const WarningRanges*(const std::string& instrument, ANCDATATYPE kind)>;

class CView {
  public:
    virtual ~CView() = default;

    /// Whose page it is: an instrument of the session by its name, byte for byte (a package also by
    /// its own). Without a name the view takes the first that has what it shows. A view of the
    /// whole session has no use for it.
    virtual void Show(const std::string& instrument) = 0;
    /// Chooses something to show by the text of its menu entry or its label ("ED(443)"), beside
    /// what was chosen before where several can be shown. What is wrong, as one sentence, or
    /// nothing.
    virtual std::string Select(CQorViewDoc& doc, std::string_view item) {
        return ChooseEntry(ContextMenu(doc), item);
    }

    /// Updates from the session: looks up what it shows by name, begins anew when another
    /// attachment stands behind the name, fills its pages. True when anything changed.
    virtual bool Refresh(CQorViewDoc& doc) = 0;
    virtual ViewPages Pages() const = 0;

    /// What a right click offers, as the view stands now. The entries act on the view: it outlives
    /// them.
    virtual Menu ContextMenu(CQorViewDoc& doc) = 0;

    /// What the operator is to be told when the view was opened, after its first Refresh; mostly
    /// nothing.
    virtual std::string Notice() const { return {}; }
    /// The ranges that activating a row of the grid lets the operator edit, or null.
    virtual WarningRanges* RangesOfRow(std::size_t) { return nullptr; }
    /// Those that this view keeps for an instrument that it shows, or null.
    virtual const WarningRanges* RangesOf(const std::string& /*instrument*/, ANCDATATYPE) const {
        return nullptr;
    }
    /// The instrument or the package whose rows it watches, by name; mostly nothing.
    virtual const std::string& Watched() const {
        static const std::string nobody;
        return nobody;
    }
    /// Whether a row is held to a range: then an alarm is to be told though nobody sees the page.
    virtual bool Watches() const { return false; }
    /// Those that the other windows keep; the finder is not used after the call.
    virtual void TakeRanges(const RangesFinder&) {}
    virtual void SetVisibleRows(VisibleRows) {}
    /// The room of its plots in pixels: no more points than it can show are taken.
    virtual void SetPlotSize(int /*width*/, int /*height*/) {}
    /// The part of the key axis to which a hand has zoomed, or nothing: a view that thins long
    /// curves takes the points of that part.
    virtual void SetKeyRange(const std::optional<PlotRange>&) {}
    /// Whether alarms may ask for their sound.
    virtual void SetAlarmSound(bool) {}

    /// What the operator set, from and to the profile store, under the prefix of this view.
    virtual void LoadSettings(const CProfileStore&, const std::string&) {}
    virtual void SaveSettings(CProfileStore&, const std::string&) const {}
};

} // namespace qor
