// SPDX-License-Identifier: GPL-3.0-or-later
//
// The limits that values are checked by, as people write them into a small text file: a line a
// rule, "TEMP gross -2 40". docs/file-formats.md says what a line may be. The file is foreign:
// everything in it is checked. Pure but for the reading of the file; any thread.
#pragma once

#include "export/QcTests.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// The name that speaks of all values, or of all instruments.
inline constexpr std::string_view EveryValue = "*";

enum class QcTest : std::uint8_t { Gross, Suspect, Warning, Alarm, Spike, Rate, Flat, Gap };

/// One line of the file.
struct QcRule {
    std::string name; ///< "*", of an instrument for a gap, else as in "TEMP" or "TEMP(W)"
    QcTest test = QcTest::Gross;
    std::vector<double> numbers = {};
    std::size_t line = 0;
};

struct QcLimits {
    std::string path = {}; ///< empty: nothing but gaps is looked for
    std::vector<QcRule> rules = {};

    /// What a value is held to; `names` are those it goes by, the most general first. Where several
    /// rules speak of it, the one of the most special name counts; `found` is what holds without.
    QcRules RulesOf(std::span<const std::string> names, QcRules found = {}) const;
    /// Seconds from frame to frame of the instrument that are no gap; none where no rule says.
    std::optional<double> GapOf(const std::string& instrument) const;
    /// Whether some rule wants to know the value that follows.
    bool LooksAhead() const;
    /// What is wrong when the rules speak of something that is none of these names ("path:line:
    /// ..."); empty when all is there.
    std::string WhyUnknown(std::span<const std::string> values,
                           std::span<const std::string> instruments) const;
};

/// Reads the rules. What is wrong, beginning with the file's name and the line; empty when all is
/// well.
std::string ReadQcLimits(const std::string& path, QcLimits& limits);
/// The same of a text.
std::string ParseQcLimits(std::string_view text, QcLimits& limits);

} // namespace qor
