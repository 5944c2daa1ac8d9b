// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/NearName.h"

#include "base/Text.h"

#include <algorithm>
#include <vector>

namespace qor {

namespace {

/// What is longer is no name that somebody types; the work grows with the product of both lengths.
constexpr std::size_t LongestName = 64;
constexpr std::size_t ShortestBeginning = 3, LongestOffer = 200;
constexpr std::size_t Far = std::string::npos;

/// How many letters have to be changed, put in, left out, or exchanged with their neighbour.
std::size_t SlipsBetween(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row[b.size()];
}

/// How far what was typed is from a name; as far as can be for one that is not near.
std::size_t DistanceOf(std::string_view typed, std::string_view name) {
    const std::size_t longer = std::max(name.size(), typed.size());
    if (longer > LongestName)
        return Far;
    const std::string small = ToLower(typed), lower = ToLower(name);
    if (typed.size() >= ShortestBeginning && lower.starts_with(small))
        return name.size() == typed.size() ? 0 : 1;
    const std::size_t slips = SlipsBetween(small, lower);
    return slips <= std::max<std::size_t>(longer / 3, longer > 1) ? slips : Far;
}

} // namespace

std::string NameAdvice(std::string_view typed, std::span<const std::string_view> names) {
    std::vector<std::string_view> all, nearest;
    std::size_t least = Far;
    for (const std::string_view name : names) {
        if (std::ranges::find(all, name) != all.end())
            continue;
        all.push_back(name);
        const std::size_t distance = DistanceOf(typed, name);
        if (distance < least)
            nearest.clear();
        least = std::min(least, distance);
        if (distance == least && least != Far)
            nearest.push_back(name);
    }
    const bool near = !nearest.empty();
    const std::string offer = QuotedChoice(near ? nearest : all);
    if (offer.empty() || offer.size() > LongestOffer)
        return {};
    return near ? " Did you mean " + offer + "?" : " There is " + offer + ".";
}

std::string NameAdvice(std::string_view typed, std::span<const std::string> names) {
    return NameAdvice(typed, std::vector<std::string_view>(names.begin(), names.end()));
}

} // namespace qor
