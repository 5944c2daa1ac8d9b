// SPDX-License-Identifier: GPL-3.0-or-later
//
// The list of reads whose bytes still wait. It is bounded: beyond the bound the last read is made
// one with the next, which makes a stamp late, never early.
#include "telemetry/ArrivalTimes.h"

namespace qor {

namespace {

constexpr std::size_t MostReads = 1024;

} // namespace

void CArrivalTimes::Note(std::uint64_t head, std::uint64_t end, const FrameTime& now) {
    while (!Reads.empty() && Reads.front().end <= head)
        Reads.pop_front();
    if (end <= head || (!Reads.empty() && Reads.back().end >= end))
        return;
    if (Reads.size() < MostReads)
        Reads.push_back({end, now});
    else
        Reads.back() = {end, now};
}

const FrameTime& CArrivalTimes::At(std::uint64_t end) {
    while (Reads.size() > 1 && Reads.front().end < end)
        Reads.pop_front();
    return Reads.front().time;
}

} // namespace qor
