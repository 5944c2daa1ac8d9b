// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the histories of a session can be of, as windows name it: sensors that give numbers and
// derived rows, their titles, units and decimals, and what a window shows by itself. Under the
// document's lock; titles and units are UTF-8.
#pragma once

#include "session/QorViewDoc.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// A value that a plot can show.
struct PlotItem {
    HistoryItem item;
    std::string label;     ///< "TEMP(W)", "T (W)"
    std::string shortName; ///< in front of a leading value: "T" for "T (W)"
    std::string units;
    int decimals = 2;
    std::optional<ANCDATATYPE> kind; ///< of a derived row
    bool countsFrames = false;       ///< a counter, check or serial number: nothing to begin with

    /// "NAME: LABEL", as it is kept.
    std::string FullName() const;
};

/// The derived rows of an instrument (those of its package), then its sensors.
std::vector<PlotItem> ItemsOf(const CQorViewDoc& doc, const CQorViewIns& instrument)
    REQUIRES(doc.DocLock);
/// The instruments whose items belong together: those of its package, itself first; or itself.
std::vector<const CQorViewIns*> FellowsOf(const CQorViewDoc& doc, const CQorViewIns& instrument)
    REQUIRES(doc.DocLock);

/// The item of a label among an instrument's and its package's, or of "NAME: LABEL". `shown` may
/// be null: then only the latter.
std::optional<PlotItem> FindItem(const CQorViewDoc& doc, const CQorViewIns* shown,
                                 std::string_view text) REQUIRES(doc.DocLock);

/// Temperature, salinity and chlorophyll or the like, as far as they are there; otherwise the first
/// three values but the pressure.
std::vector<PlotItem> ProfileItems(const CQorViewDoc& doc, const CQorViewIns& instrument)
    REQUIRES(doc.DocLock);
/// The first three derived rows; without any the first three values.
std::vector<PlotItem> SeriesItems(const CQorViewDoc& doc, const CQorViewIns& instrument)
    REQUIRES(doc.DocLock);

/// How an item is at this moment.
struct ItemState {
    bool attached = false; ///< its instrument is in the session
    bool stale = false;
    std::int64_t age = -1; ///< ms since its latest frame; negative: none has come
};
ItemState StateOf(const CQorViewDoc& doc, const PlotItem& item) REQUIRES(doc.DocLock);

} // namespace qor
