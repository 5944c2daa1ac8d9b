// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames as netCDF-4 by the CF and ACDD conventions, a file an instrument: one in the named file,
// several in the named folder.
#pragma once

#include "export/FrameSink.h"

namespace qor {

std::unique_ptr<CFrameSink> MakeFrameNetCdf(const ExportSettings& settings);

} // namespace qor
