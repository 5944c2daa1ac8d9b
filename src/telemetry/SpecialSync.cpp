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
    *this = {};
    Pairs.assign(pairs.begin(), pairs.end());
    for (std::size_t i = 1; i < pairs.size(); i += 2)
        Length += PacketLength(pairs[i]);
}

void CSpecialSync::UseLines(std::string_view terminator) {
    *this = {};
    Terminator = terminator;
}

std::size_t CSpecialSync::PacketsAt(ByteSpan bytes) const {
    const bool stand = !IsLines() && bytes.size() >= Length && Compare(bytes) == Agreement::All;
    return stand ? Length : 0;
}

/// All of the bytes are one line.
bool CSpecialSync::IsLine(ByteSpan bytes) const {
    CTerminatorScan line;
    return bytes.size() <= LongestLine && line.Find(bytes, Terminator) &&
           line.Scanned() == bytes.size();
}

std::optional<std::size_t> CSpecialSync::LineAtEnd(ByteSpan bytes, bool boundary) const {
    if (!IsLines())
        return {};
    if (boundary && IsLine(bytes))
        return 0;
    const std::size_t skipped = bytes.size() - std::min(bytes.size(), LongestLine);
    std::string_view text = AsText(bytes.subspan(skipped));
    if (!text.ends_with(Terminator))
        return {};
    const std::size_t before = text.substr(0, text.size() - Terminator.size()).rfind(Terminator);
    const std::size_t begin = skipped + before + Terminator.size();
    if (before == std::string_view::npos || !IsLine(bytes.subspan(begin)))
        return {};
    return begin;
}

SearchResult CSpecialSync::Search(ByteSpan bytes, std::size_t limit, bool ended) {
    return IsLines() ? SearchLine(bytes, limit) : SearchPackets(bytes, limit, ended);
}

CSpecialSync::Agreement CSpecialSync::Compare(ByteSpan bytes) const {
    std::size_t packet = 0;
    for (std::size_t i = 0; i < Pairs.size(); ++i) {
        const std::size_t place = packet + i % 2;
        if (place >= bytes.size())
            return Agreement::Unknown;
        if (bytes[place] != Pairs[i])
            return Agreement::Differs;
        if (i % 2 == 1)
            packet += PacketLength(Pairs[i]);
    }
    return Agreement::All;
}

SearchResult CSpecialSync::SearchPackets(ByteSpan bytes, std::size_t limit, bool ended) const {
    const std::size_t end = std::min(limit, bytes.size());
    for (std::size_t position = 0; position < end; ++position) {
        const void* first = std::memchr(bytes.data() + position, Pairs[0], end - position);
        if (first == nullptr)
            break;
        position = static_cast<std::size_t>(static_cast<const std::uint8_t*>(first) - bytes.data());
        Agreement agreement = Compare(bytes.subspan(position));
        if (agreement == Agreement::All)
            return {SearchResult::Outcome::Found, position, 0};
        if (agreement == Agreement::Unknown && !ended)
            return {SearchResult::Outcome::Pending, position, 0};
    }
    return {SearchResult::Outcome::None, end, 0};
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
