// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames as SeaBASS text, a file an instrument: one in the named file, several in the named folder.
#pragma once

#include "export/FrameSink.h"

namespace qor {

std::unique_ptr<CFrameSink> MakeFrameSeaBass(const ExportSettings& settings);

} // namespace qor
