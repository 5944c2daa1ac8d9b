// SPDX-License-Identifier: GPL-3.0-or-later
//
// Names of archive members: what they read, and which of them no sound package has. Nothing is ever
// written under such a name; it is shown, and its extension is read.
#pragma once

#include <string>
#include <string_view>

namespace qor {

/// A stored name as UTF-8 with "/" between its parts: bytes that are no UTF-8 are in code page 437,
/// and some packers write a backslash.
std::string MemberNameOf(std::string_view stored);

/// True for a name (of MemberNameOf) that is empty, overlong or absolute, has a drive, leads
/// outside or holds a control character.
bool IsHostileName(std::string_view name);

} // namespace qor
