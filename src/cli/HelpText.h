// SPDX-License-Identifier: GPL-3.0-or-later
//
// Help that fits a terminal of 80 columns.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace qor {

/// The parser's own help with its long lines broken at blanks; explanations stay in their column.
class CHelpText : public CLI::Formatter {
  public:
    CHelpText() { column_width(30); }

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
};

} // namespace qor
