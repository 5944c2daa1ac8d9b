// SPDX-License-Identifier: GPL-3.0-or-later
//
// Decided: a raw log holds frames without sync header between frames with one. Packets are theirs
// that stand at a boundary with a time tag behind them; so is the last line before a tag, unless a
// sync header came before it. A piece that nobody takes is discarded with its tag, behind which is
// a boundary again: the log was made with an instrument that is not attached, or is damaged.
#include "telemetry/RecordSearch.h"

#include <algorithm>

namespace qor {

namespace {

using Outcome = RecordResult::Outcome;

/// What is looked through for a tag before a piece is given up.
constexpr std::size_t LongestPiece = 1U << 20;

struct Line {
    std::size_t instrument = 0;
    std::size_t begin = 0;
};

/// The line that ends the piece; a tag follows it. The piece begins at a boundary or anywhere.
std::optional<Line> LineBeforeTag(const CAttachedInstruments& attached, ByteSpan piece,
                                  bool boundary) {
    for (std::size_t position : attached.Headerless())
        if (auto begin = attached[position].special.LineAtEnd(piece, boundary))
            return Line{position, *begin};
    return {};
}

/// The same when the stream ends within the tag, or right behind the line. The tag is looked for
/// first: bytes of it may read as a line's end.
std::optional<Line> LineBeforeEnd(const CAttachedInstruments& attached, ByteSpan piece,
                                  bool boundary) {
    for (std::size_t cut = 1; cut < TimeTagSize && cut < piece.size(); ++cut)
        if (MayBeginTimeTag(piece[piece.size() - cut]))
            if (auto line = LineBeforeTag(attached, piece.first(piece.size() - cut), boundary))
                return line;
    return LineBeforeTag(attached, piece, boundary);
}

} // namespace

RecordResult CRecordSearch::Search(const CAttachedInstruments& attached, ByteSpan bytes,
                                   std::uint64_t offset, bool boundary, bool ended) {
    ended = ended && bytes.size() <= LongestPiece; // else the piece ends before the stream does
    bytes = bytes.first(std::min(bytes.size(), LongestPiece));
    if (boundary)
        if (std::optional<RecordResult> result = AtBoundary(attached, bytes, ended))
            return *result;
    std::optional<std::size_t> tag = NextTag(bytes, offset);
    if (!tag && !ended && bytes.size() < LongestPiece)
        return {Outcome::Pending};
    std::optional<Line> line;
    if (tag)
        line = LineBeforeTag(attached, bytes.first(*tag), boundary);
    else if (ended)
        line = LineBeforeEnd(attached, bytes, boundary);
    const ByteSpan others = bytes.first(line  ? line->begin
                                        : tag ? *tag + TimeTagSize
                                              : bytes.size());
    SearchResult header = attached.Headers().Search(others, others.size(), true);
    if (header.outcome == SearchResult::Outcome::Found)
        return {Outcome::Found, header.position, attached.PositionOf(header.candidate)};
    if (line)
        return {Outcome::Found, line->begin, line->instrument};
    return {tag ? Outcome::Boundary : Outcome::None, others.size()};
}

/// What begins with the first byte; empty when neither a sync header nor packets do.
std::optional<RecordResult> CRecordSearch::AtBoundary(const CAttachedInstruments& attached,
                                                      ByteSpan bytes, bool ended) {
    SearchResult header = attached.Headers().MatchFrom(0, bytes, ended);
    if (header.outcome == SearchResult::Outcome::Found)
        return RecordResult{Outcome::Found, 0, attached.PositionOf(header.candidate)};
    if (header.outcome == SearchResult::Outcome::Pending ||
        (!ended && bytes.size() < attached.LongestPackets() + TimeTagSize))
        return RecordResult{Outcome::Pending};
    // Packets may hold bytes that read as a time: they are asked before a tag is looked for.
    for (std::size_t position : attached.Headerless()) {
        const std::size_t length = attached[position].special.PacketsAt(bytes);
        if (length != 0 &&
            (bytes.size() - length < TimeTagSize || Tags.Read(bytes.subspan(length))))
            return RecordResult{Outcome::Found, 0, position};
    }
    return {};
}

std::optional<std::size_t> CRecordSearch::NextTag(ByteSpan bytes, std::uint64_t offset) {
    Searched = std::max(Searched, offset + 1);
    for (; Searched + TimeTagSize <= offset + bytes.size(); ++Searched) {
        const auto place = static_cast<std::size_t>(Searched - offset);
        if (MayBeginTimeTag(bytes[place]) && Tags.Read(bytes.subspan(place, TimeTagSize)))
            return place;
    }
    return {};
}

} // namespace qor
