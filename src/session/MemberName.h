// SPDX-License-Identifier: GPL-3.0-or-later
//
// Names of archive members: which of them are harmless.
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

} // namespace qor
