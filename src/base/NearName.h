// SPDX-License-Identifier: GPL-3.0-or-later
//
// What may have been meant by a name that nothing has. Plain functions, any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace qor {

/// A sentence with a blank before it that offers the names nearest to what was typed, whatever the
/// case: with the fewest letters wrong, missing, too many or exchanged, at most one in three, or
/// with more behind it. Where none is near, the names that there are; empty when these are too
/// many to be read.
std::string NameAdvice(std::string_view typed, std::span<const std::string_view> names);
std::string NameAdvice(std::string_view typed, std::span<const std::string> names);

} // namespace qor
