// SPDX-License-Identifier: GPL-3.0-or-later
//
// Numbers and names as they are typed into forms. Pure.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qor {

/// The finite number that the text is, blanks around it apart.
std::optional<double> NumberIn(std::string_view text);
/// What is wrong with a number that has to be in a range, as one sentence, or nothing.
std::string NumberFault(std::string_view text, double least, double greatest, bool whole = false);

} // namespace qor
