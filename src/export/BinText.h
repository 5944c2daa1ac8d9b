// SPDX-License-Identifier: GPL-3.0-or-later
//
// Means as rows of CSV, a table an instrument, and as lines of JSON.
#pragma once

#include "export/FrameSink.h"

namespace qor {

std::unique_ptr<CFrameSink> MakeBinTables(const ExportSettings& settings);
std::unique_ptr<CFrameSink> MakeBinLines(const ExportSettings& settings);

} // namespace qor
