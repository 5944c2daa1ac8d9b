// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a layout of frames says, as attributes and coordinates of a netCDF file.
#pragma once

#include "export/FrameVariables.h"
#include "export/NetCdfFile.h"

namespace qor {

void SetAttributes(CNetCdfFile& file, int variable, const FrameAttributes& attributes);

/// The dimension of one of the layout's grids of wavelengths, with its coordinate.
int AddGrid(CNetCdfFile& file, const FrameLayout& layout, int number);

} // namespace qor
