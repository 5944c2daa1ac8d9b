// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames as JSON Lines, in the order in which they were cut, whatever the number of instruments.
#pragma once

#include "export/FrameSink.h"

namespace qor {

std::unique_ptr<CFrameSink> MakeFrameLines(const ExportSettings& settings);

} // namespace qor
