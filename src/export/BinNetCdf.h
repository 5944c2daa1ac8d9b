// SPDX-License-Identifier: GPL-3.0-or-later
//
// Means as netCDF files, one an instrument: over time, pressure or depth, and over wavelength for
// optical series. A file holds one log, for coordinates go one way.
#pragma once

#include "export/FrameSink.h"

namespace qor {

std::unique_ptr<CFrameSink> MakeBinNetCdf(const ExportSettings& settings);

} // namespace qor
