// SPDX-License-Identifier: GPL-3.0-or-later
//
// The options that say where results go and what they may replace, and how a refusal is said.
#pragma once

#include "export/Output.h"

#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace qor {

/// Adds -o and --overwrite. The path is empty for standard output, which "-" names too.
CLI::Option* AddOutputOptions(CLI::App& command, const std::string& help, std::string& path,
                              OutputRules& rules);

/// Adds --csv-safe.
CLI::Option* AddSafeTextsOption(CLI::App& command, bool& safe);

/// The exit status of a command whose output came to this. Says what was refused.
int OutputExit(const OutputResult& result);

} // namespace qor
