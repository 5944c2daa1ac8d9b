// SPDX-License-Identifier: GPL-3.0-or-later
//
// The windows of a session in the display area: opened from what the session keeps, described for
// it, or laid out for a session that has none yet. The form of what is kept is
// `views/KeptWindows.h`. User-interface thread, without the document's lock.
#pragma once

#include "app/windows/DisplayArea.h"
#include "app/windows/ViewWindow.h"

#include <functional>

namespace qor {

/// What windows are made with; `made` hears of each before it is shown, to connect its signals.
struct WindowMaker {
    const CTheme& theme;
    CQorViewDoc& doc;
    std::function<void(CViewWindow&)> made = {};
};

/// A window of that kind of an instrument (empty: the view's own choice), with a name that no other
/// has, set as its like was when it was closed last. Beside or behind another, else as a further
/// column.
CViewWindow* OpenWindow(CDisplayArea& area, const WindowMaker& maker, const WindowKind& kind,
                        const std::string& instrument, CDisplayWindow* beside = nullptr,
                        CDisplayArea::Place place = CDisplayArea::Place::Right);

/// Every open window and where it stands, for `CSessionDocument::SetWindows`. Of `before` the
/// layouts of other screens are kept.
JsonValue DescribeWindows(const CDisplayArea& area, const JsonValue& before = JsonValue::Array());

/// Opens what was described, over what is open: placed by the layout of the present screens, else
/// side by side, floats where they were. A float that no screen shows comes to the middle of one.
/// What is no description is ignored. How many windows were opened.
std::size_t OpenWindows(CDisplayArea& area, const WindowMaker& maker, const JsonValue& windows);

/// For a session that keeps no windows: the depth profile on the left, the spectrum above ancillary
/// values and time series, a ship's position and weather as tabs behind; only those for which the
/// session has something.
void OpenDefaultWindows(CDisplayArea& area, const WindowMaker& maker);

/// Closes them all; their settings are kept. They are gone when it returns, as they have to be
/// before their session.
void CloseWindows(CDisplayArea& area);

} // namespace qor
