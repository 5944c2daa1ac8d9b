// SPDX-License-Identifier: GPL-3.0-or-later
//
// Pages as text and as JSON, so that what a window shows can be read and checked without one. Both
// are UTF-8, as the pages are.
#pragma once

#include "export/Output.h"
#include "views/View.h"

#include <string_view>

namespace qor {

/// One JSON object a line: window, title, head, columns, rows, curves, axes.
void WritePageJson(COutput& output, std::string_view window, const ViewPages& pages);
void WritePageText(COutput& output, const ViewPages& pages);

} // namespace qor
