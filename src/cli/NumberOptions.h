// SPDX-License-Identifier: GPL-3.0-or-later
//
// What numbers and times of a call may be, for the parser: anything else is a wrong call that names
// option and value. The parser's own numbers would let NaN, octal and hexadecimal ones pass.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>

namespace qor {

/// A decimal number that is finite and in the range.
CLI::Validator DecimalIn(double least, double greatest);

/// Decimal digits of a count in the range.
CLI::Validator CountIn(std::uint64_t least, std::uint64_t greatest);

/// "2026-06-21T12:00:00" in a year that time tags can have.
CLI::Validator TimeOfLogs();

/// Anything but an empty text.
CLI::Validator SomeValue();

} // namespace qor
