// SPDX-License-Identifier: GPL-3.0-or-later
//
// What every window's view is to the faces: something that is told what to show, updates from the
// session, and has pages. The desktop asks it at its own rate, the command line once at the end of
// a played log. On the user-interface thread; a view takes the document's lock itself, for the time
// of its update, and neither speaks nor beeps under it (a page says `beep`).
#pragma once

#include "session/QorViewDoc.h"
#include "views/GridPage.h"
#include "views/Menu.h"
#include "views/PlotPage.h"

#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// What a view shows: a table, plots, or both (a position beside its track). They live in the view.
struct ViewPages {
    const GridPage* grid = nullptr;
    std::vector<const PlotPage*> plots = {};
};

class CView {
  public:
    virtual ~CView() = default;

    /// Whose page it is: an instrument of the session by its name, byte for byte. A view of the
    /// whole session has no use for it.
    virtual void Show(const std::string& instrument) = 0;
    /// Chooses something to show by the text of its menu entry or its label ("ED(443)"), beside
    /// what was chosen before where several can be shown. What is wrong, as one sentence, or
    /// nothing.
    virtual std::string Select(CQorViewDoc& doc, std::string_view item) = 0;

    /// Updates from the session: looks up what it shows by name, begins anew when another
    /// attachment stands behind the name, fills its pages. True when anything changed.
    virtual bool Refresh(CQorViewDoc& doc) = 0;
    virtual ViewPages Pages() const = 0;

    /// What a right click offers, as the view stands now.
    virtual Menu ContextMenu(CQorViewDoc& doc) = 0;
};

} // namespace qor
