// SPDX-License-Identifier: GPL-3.0-or-later
//
// What stands in a folder. Any thread, no state; a network drive may keep the caller waiting.
#pragma once

#include <string>
#include <vector>

namespace qor {

/// The names of a folder's entries, sorted; "" is the working directory. Empty when it cannot be
/// read; of one that cannot be read to its end what was read.
std::vector<std::string> NamesIn(const std::string& folder);

} // namespace qor
