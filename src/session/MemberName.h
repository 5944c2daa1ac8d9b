// SPDX-License-Identifier: GPL-3.0-or-later
//
// Names of archive members: which of them are harmless, and what their extensions say.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// The parts of the path that a member's name stands for, with "." and ".." resolved. Empty when
/// the name is hostile: absolute or with a drive, leading outside, with a backslash, colon or
/// control character, not ASCII, overlong, with a part that is a device name or ends in a blank or
/// a dot.
std::vector<std::string> CleanMemberName(std::string_view name);

/// The text behind the last dot of the last part of a path, lowered; empty when there is none.
std::string ExtensionOf(std::string_view path);

/// True when the extension is "cal" or "tdf" in any case.
bool IsDefinitionName(std::string_view name);

} // namespace qor
