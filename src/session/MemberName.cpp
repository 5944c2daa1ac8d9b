// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which names of archive members are harmless. The rules are the union of what POSIX and Windows
// find dangerous: the same package gives the same result on both.
#include "session/MemberName.h"

#include "base/Text.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t LongestName = 200;

constexpr std::string_view DeviceNames[] = {
    "con",  "prn",  "aux",  "nul",  "conin$", "conout$", "clock$", "com0", "com1",
    "com2", "com3", "com4", "com5", "com6",   "com7",    "com8",   "com9", "lpt0",
    "lpt1", "lpt2", "lpt3", "lpt4", "lpt5",   "lpt6",    "lpt7",   "lpt8", "lpt9",
};

/// Windows opens the device whatever extension follows its name, and drops blanks before it.
bool IsDeviceName(std::string_view part) {
    const std::string stem = ToLower(Trim(part.substr(0, part.find('.'))));
    return std::find(std::begin(DeviceNames), std::end(DeviceNames), stem) != std::end(DeviceNames);
}

bool IsHarmless(char c) {
    return c >= ' ' && c < 0x7f && c != '\\' && c != ':';
}

bool IsHarmlessPart(std::string_view part) {
    return !part.ends_with(' ') && !part.ends_with('.') && !IsDeviceName(part);
}

} // namespace

std::vector<std::string> CleanMemberName(std::string_view name) {
    if (name.empty() || name.size() > LongestName || name.front() == '/' ||
        !std::all_of(name.begin(), name.end(), IsHarmless))
        return {};
    std::vector<std::string> parts;
    for (std::size_t at = 0; at <= name.size();) {
        const std::size_t end = std::min(name.find('/', at), name.size());
        const std::string_view part = name.substr(at, end - at);
        at = end + 1;
        if (part.empty() || part == ".")
            continue;
        if (part == ".." ? parts.empty() : !IsHarmlessPart(part))
            return {};
        if (part == "..")
            parts.pop_back();
        else
            parts.emplace_back(part);
    }
    return parts;
}

} // namespace qor
