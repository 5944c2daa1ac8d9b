// SPDX-License-Identifier: GPL-3.0-or-later
//
// Sentences are taken out first, by name. Of the rest the pieces tell more than the bytes: among
// frames of others each piece begins with a frame. Only when they do not, one sequence that stands
// at one distance is looked for.
#include "session/UnnamedFrames.h"

#include "base/Text.h"
#include "session/ByteRepeat.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <map>

namespace qor {

namespace {

constexpr std::size_t FewestFrames = 3, LongestBegin = 16, LongestSentence = 512;
/// Three bytes at the beginning of as many pieces are no accident.
constexpr std::size_t ShortestBegin = 3;

using Pieces = std::vector<std::string_view>;

Pieces PiecesOf(const CDiscardedBytes& discarded) {
    const std::string_view all = AsText(discarded.Sample());
    const std::vector<std::size_t>& starts = discarded.PieceStarts();
    Pieces pieces;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : all.size();
        pieces.push_back(all.substr(starts[i], end - starts[i]));
    }
    return pieces;
}

bool IsNamed(std::string_view begin, const std::vector<std::string>& named) {
    return std::ranges::any_of(
        named, [&](const std::string& frame) { return frame.find(begin) != std::string::npos; });
}

/// The bytes of a tag that stands there: a raw log's frames have one.
std::size_t TagAt(std::string_view text) {
    return text.size() >= TimeTagSize && ParseTimeTag(AsBytes(text.substr(0, TimeTagSize)))
               ? TimeTagSize
               : 0;
}

/// "$GPRMC" of a sentence that begins the text; empty when none does.
std::string_view SentenceNameAt(std::string_view text) {
    if (!text.starts_with('$') && !text.starts_with('!'))
        return {};
    std::size_t size = 1;
    while (size < text.size() && size <= 10 &&
           (IsDigit(text[size]) || (text[size] >= 'A' && text[size] <= 'Z')))
        ++size;
    return size >= 4 && size < text.size() && text[size] == ',' ? text.substr(0, size)
                                                                : std::string_view();
}

struct Tally {
    std::size_t count = 0, bytes = 0;
    std::map<std::size_t, std::size_t> sizes;

    void Add(std::size_t size, std::size_t tag) {
        ++count;
        bytes += size + tag;
        ++sizes[size];
    }
    std::size_t UsualSize() const {
        const auto usual = std::ranges::max_element(
            sizes, [](const auto& a, const auto& b) { return a.second < b.second; });
        return usual == sizes.end() ? 0 : usual->first;
    }
};

/// Counts the sentences of a piece and gives what is left of it.
void TakeSentences(std::string_view piece, std::map<std::string_view, Tally>& sentences,
                   Pieces& rest) {
    std::size_t from = 0;
    for (std::size_t at = 0; at < piece.size(); ++at) {
        const std::string_view name = SentenceNameAt(piece.substr(at));
        const std::size_t end =
            name.empty() ? std::string_view::npos : piece.find('\n', at + name.size());
        if (end == std::string_view::npos || end - at > LongestSentence)
            continue;
        const std::size_t tag = TagAt(piece.substr(end + 1));
        sentences[name].Add(end + 1 - at, tag);
        if (at > from)
            rest.push_back(piece.substr(from, at - from));
        from = end + 1 + tag;
        at = from - 1;
    }
    if (from < piece.size())
        rest.push_back(piece.substr(from));
}

/// How many leading bytes three quarters of the pieces share with the first.
std::string_view CommonBegin(const Pieces& pieces) {
    std::size_t size = 0;
    const auto agree = [&](std::string_view piece) {
        return piece.size() > size && piece[size] == pieces.front()[size];
    };
    while (size < LongestBegin && size < pieces.front().size() &&
           static_cast<std::size_t>(std::ranges::count_if(pieces, agree)) * 4 >= pieces.size() * 3)
        ++size;
    return pieces.front().substr(0, size);
}

/// The frames that begin most of the pieces that begin alike.
std::optional<UnnamedFrames> FramesByPieces(const Pieces& pieces) {
    std::map<std::string_view, Pieces> groups;
    for (std::string_view piece : pieces)
        if (piece.size() > ShortestBegin && piece.find_first_not_of(piece[0]) < ShortestBegin)
            groups[piece.substr(0, ShortestBegin)].push_back(piece);
    const auto most = std::ranges::max_element(
        groups, [](const auto& a, const auto& b) { return a.second.size() < b.second.size(); });
    if (most == groups.end() || most->second.size() < FewestFrames)
        return std::nullopt;
    const std::string_view begin = CommonBegin(most->second);
    Tally tally;
    for (std::string_view piece : most->second) { // a piece may hold several
        for (std::size_t at = 0; at < piece.size();) {
            const std::size_t next = std::min(piece.find(begin, at + begin.size()), piece.size());
            const std::size_t held = next - at;
            const std::size_t tag =
                held > TimeTagSize ? TagAt(piece.substr(next - TimeTagSize)) : 0;
            tally.Add(held - tag, tag);
            at = next;
        }
    }
    return UnnamedFrames{std::string(begin), tally.UsualSize(), tally.count, tally.bytes};
}

std::optional<UnnamedFrames> FramesByRepeat(const Pieces& pieces) {
    std::string all;
    for (std::string_view piece : pieces)
        all += piece;
    constexpr std::size_t Enough = 64U << 10;
    const std::string_view looked = std::string_view(all).substr(0, Enough);
    const std::optional<ByteRepeat> repeat = FindRepeat(AsBytes(looked));
    if (!repeat || repeat->count < FewestFrames)
        return std::nullopt;
    std::size_t count = 0;
    for (std::size_t at = all.find(repeat->bytes); at != std::string::npos;
         at = all.find(repeat->bytes, at + repeat->bytes.size()))
        ++count;
    return UnnamedFrames{repeat->bytes, repeat->distance, count,
                         std::min(count * repeat->distance, all.size())};
}

} // namespace

std::vector<UnnamedFrames> FindUnnamedFrames(const CDiscardedBytes& discarded,
                                             const std::vector<std::string>& named) {
    std::map<std::string_view, Tally> sentences;
    Pieces rest;
    for (std::string_view piece : PiecesOf(discarded))
        TakeSentences(piece, sentences, rest);
    std::vector<UnnamedFrames> found;
    for (const auto& [name, tally] : sentences)
        found.push_back({std::string(name), tally.UsualSize(), tally.count, tally.bytes});
    std::optional<UnnamedFrames> records = FramesByPieces(rest);
    if (!records)
        records = FramesByRepeat(rest);
    if (records)
        found.push_back(*records);
    std::erase_if(found, [&](const UnnamedFrames& frames) {
        return frames.count < FewestFrames || IsNamed(frames.begin, named) ||
               frames.begin + "," == TimeStampStart;
    });
    std::ranges::sort(found, std::greater(), &UnnamedFrames::bytes);
    return found;
}

} // namespace qor
