// SPDX-License-Identifier: GPL-3.0-or-later
//
// The windows that there are: one row each, for the command line that prints their pages, the
// desktop that opens them, and sessions that name them. A new window is a view and its row here.
#pragma once

#include "views/View.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct WindowKind {
    std::string_view name;  ///< on the command line and in files
    std::string_view title; ///< in menus, before anything is shown
    /// The view goes before the document.
    std::unique_ptr<CView> (*make)(CQorViewDoc& doc);
};

std::span<const WindowKind> WindowKinds();
std::vector<std::string_view> WindowNames();

/// The window of a name, or null.
const WindowKind* FindWindowKind(std::string_view name);

/// Where the settings of windows of that kind and instrument (or package) begin in the profile.
std::string SettingsPrefix(const WindowKind& kind, const std::string& instrument);

/// The ranges in which a product of the instrument is bad, as the operator has set them in the
/// window of its package, else in its own, and as the profile keeps them; none where it keeps none.
WarningRanges KeptRanges(const CProfileStore& store, const std::string& instrument,
                         const std::string& package, ANCDATATYPE product);

} // namespace qor
