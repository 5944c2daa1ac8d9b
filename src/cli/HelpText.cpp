// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/HelpText.h"

#include <sstream>

namespace qor {

namespace {

constexpr std::size_t Width = 80;

/// One line as several, the further ones indented.
std::string Broken(std::string line, std::size_t indent) {
    std::string lines;
    while (line.size() > Width) {
        const std::size_t blank = line.rfind(' ', Width);
        if (blank == line.npos || blank <= indent)
            break; // a word that is longer than the line
        lines += line.substr(0, blank) + "\n";
        line = std::string(indent, ' ') + line.substr(blank + 1);
    }
    return lines + line + "\n";
}

} // namespace

std::string CHelpText::make_help(const CLI::App* app, std::string name,
                                 CLI::AppFormatMode mode) const {
    std::istringstream given(CLI::Formatter::make_help(app, std::move(name), mode));
    std::string help;
    for (std::string line; std::getline(given, line);)
        help += Broken(line, line.starts_with("  ") ? get_column_width() : 0);
    return help;
}

} // namespace qor
