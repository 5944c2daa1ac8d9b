// SPDX-License-Identifier: GPL-3.0-or-later
//
// The fixed English texts for causes of file errors. Three tables exist because their users print
// different texts for the same cause; each keeps its own.
#pragma once

#include "platform/File.h"

#include <string_view>

namespace qor {

/// For raw log and session log messages; no line end. Any cause beyond 14: "An unknown file error
/// orrured."
std::string_view GetFileErrorText(FileCause cause);

/// For the parse log of definition files; ends in CR LF.
std::string_view DefinitionFileErrorText(FileCause cause);

/// For the detail lines of communications resources; ends in CR LF.
std::string_view ResourceFileErrorText(FileCause cause);

} // namespace qor
