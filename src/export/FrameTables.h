// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames as CSV, a table an instrument. One table goes to standard output or into the named file;
// several go into the named folder.
#pragma once

#include "export/FrameSink.h"

namespace qor {

std::unique_ptr<CFrameSink> MakeFrameTables(const ExportSettings& settings);

} // namespace qor
