// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a call is answered with before any command runs: help, the version, what is wrong with it.
// Called by main around the parser.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace qor {

/// Gives a bare --wet, --derived or --qc its value: the parser would take the next word for it.
/// That word may have been meant for it, then the result says so; else it is empty. A text file
/// behind
/// --qc is its value.
std::string SettleBareOptions(std::vector<std::string>& arguments);

/// Prints what a call asks for that wants help or the version, wherever it says so. The exit
/// status; none for every other call.
std::optional<int> AnswerCall(const CLI::App& app, const std::vector<std::string>& arguments);

/// What is wrong with a call that the parser refused, in one line.
std::string WhyRefused(const CLI::App& app, const CLI::ParseError& error,
                       const std::vector<std::string>& arguments);

} // namespace qor
