// SPDX-License-Identifier: GPL-3.0-or-later
//
// Something named by a call, a form or a session that could not be used: a value, so that every
// face can say it in its own way.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace qor {

/// What it was, and why, in one line.
struct Refusal {
    enum class Kind { Resource, Definition, Package, Member, Name };
    Kind kind;
    std::string subject; ///< the file, the member in its package, or the name
    std::string reason;
    bool hasParseLog = false; ///< checking the file says more
};

/// Whether a name was given that nothing has: what was asked for is wrong, not what it met.
inline bool HasUnknownName(const std::vector<Refusal>& refusals) {
    return std::ranges::any_of(
        refusals, [](const Refusal& refusal) { return refusal.kind == Refusal::Kind::Name; });
}

} // namespace qor
