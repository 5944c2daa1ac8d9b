// SPDX-License-Identifier: GPL-3.0-or-later
//
// Synchronisation without sync headers, on the thread that processes a resource's bytes.
#include "telemetry/SpecialSync.h"

#include <algorithm>
#include <cstring>

namespace qor {

namespace {

constexpr std::size_t PacketLength(std::uint8_t halfCount) {
    return 2 * std::size_t{halfCount} + 3;
}

} // namespace

void CSpecialSync::UsePackets(ByteSpan pairs) {
    UseNothing();
    Pairs.assign(pairs.begin(), pairs.end());
    Length = PacketsLengthOf(pairs);
}

void CSpecialSync::UseLines(std::string_view terminator) {
    UseNothing();
    Terminator = terminator;
}

void CSpecialSync::UseNothing() {
    *this = {};
}

std::size_t CSpecialSync::PacketsLengthOf(ByteSpan pairs) {
    std::size_t length = 0;
    for (std::size_t i = 1; i < pairs.size(); i += 2)
        length += PacketLength(pairs[i]);
    return length;
}

SearchResult CSpecialSync::Search(ByteSpan bytes, std::size_t limit, bool ended) {
    return Lines() ? SearchLine(bytes, limit) : SearchPackets(bytes, limit, ended);
}

SearchResult CSpecialSync::SearchPackets(ByteSpan bytes, std::size_t limit, bool ended) const {
    std::size_t end = std::min(limit, bytes.size());
    std::size_t position = 0;
    while (position < end) {
        const void* first = std::memchr(bytes.data() + position, Pairs[0], end - position);
        if (first == nullptr)
            return {SearchResult::Outcome::None, end, 0};
        position = static_cast<std::size_t>(static_cast<const std::uint8_t*>(first) - bytes.data());
        std::size_t place = position;
        std::size_t i = 0;
        while (i < Pairs.size() && place + i % 2 < bytes.size() &&
               bytes[place + i % 2] == Pairs[i]) {
            if (i % 2 == 1)
                place += PacketLength(Pairs[i]);
            ++i;
        }
        if (i == Pairs.size())
            return {SearchResult::Outcome::Found, position, 0};
        if (place + i % 2 >= bytes.size() && !ended)
            return {SearchResult::Outcome::Pending, position, 0};
        ++position;
    }
    return {SearchResult::Outcome::None, position, 0};
}

SearchResult CSpecialSync::SearchLine(ByteSpan bytes, std::size_t limit) {
    if (AtLine)
        return {SearchResult::Outcome::Found, 0, 0};
    AtLine = PartialLine.Find(bytes.first(std::min(limit, bytes.size())), Terminator);
    std::size_t passed = PartialLine.Scanned();
    PartialLine.Consumed(passed);
    return {SearchResult::Outcome::None, passed, 0};
}

void CSpecialSync::LoseLine() {
    AtLine = false;
    PartialLine.Restart();
}

} // namespace qor
