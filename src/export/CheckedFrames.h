// SPDX-License-Identifier: GPL-3.0-or-later
//
// A sink before a sink: checks the values of frames by limits and hands them on with what it found.
// Where a test looks ahead, a frame goes on when its instrument's next one has come. The sink
// behind sees instruments of its own, whose values can be taken out.
#pragma once

#include "export/FrameSink.h"

namespace qor {

/// `settings` have the limits.
std::unique_ptr<CFrameSink> MakeCheckedFrames(const ExportSettings& settings,
                                              std::unique_ptr<CFrameSink> behind);

/// What rules can speak of: the names of values, and of instruments.
std::vector<std::string> CheckedNames(std::span<const ExportedInstrument> instruments);
std::vector<std::string> NamesOf(std::span<const ExportedInstrument> instruments);

} // namespace qor
