// SPDX-License-Identifier: GPL-3.0-or-later
//
// The header search against the plain walk: small alphabets make shared prefixes, headers that are
// prefixes of others and overlaps with themselves the rule.
#include "telemetry/HeaderSearch.h"

#include "telemetry/PlainSync.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace qor {
namespace {

using Matches = std::vector<PlainMatch>;

Matches PlainMatches(const std::vector<std::string>& headers, const std::string& stream) {
    Matches all;
    std::size_t position = 0;
    while (auto match = PlainSearch(headers, stream, position)) {
        all.push_back(*match);
        position = match->position + headers[match->candidate].size();
    }
    return all;
}

/// All matches of a stream that comes in chunks of random length, each behind the header before it.
Matches ChunkedMatches(const std::vector<std::string>& headers, const std::string& stream,
                       std::size_t longestChunk, std::size_t limit, std::mt19937& random) {
    CHeaderSearch search;
    search.Compile(headers);
    Matches all;
    std::size_t head = 0, arrived = 0;
    for (;;) {
        ByteSpan bytes = AsBytes(stream).subspan(head, arrived - head);
        SearchResult result = search.Search(bytes, limit, arrived == stream.size());
        head += result.position;
        EXPECT_LE(head, arrived);
        if (result.outcome == SearchResult::Outcome::Found) {
            all.push_back({head, result.candidate});
            head += headers[result.candidate].size();
        } else if (result.outcome == SearchResult::Outcome::Pending || head == arrived) {
            if (arrived == stream.size())
                return all;
            arrived = std::min(arrived + 1 + random() % longestChunk, stream.size());
        }
    }
}

std::string RandomText(std::mt19937& random, std::size_t length, std::size_t alphabet) {
    std::string text;
    while (text.size() < length)
        text += static_cast<char>('A' + random() % alphabet);
    return text;
}

TEST(HeaderSearch, FindsWhatThePlainWalkFindsHoweverTheBytesCome) {
    std::mt19937 random(42);
    std::size_t found = 0;
    for (int round = 0; round < 20000; ++round) {
        bool many = round % 200 == 0; // in long junk
        std::size_t alphabet = many ? 6 : 2 + random() % 3;
        std::vector<std::string> headers(many ? 80 : 1 + random() % 7);
        for (std::string& header : headers)
            header = (many ? "A" : "") + RandomText(random, random() % 6, alphabet);
        std::string stream = RandomText(random, random() % (many ? 5000 : 80), alphabet);
        Matches expected = PlainMatches(headers, stream);
        found += expected.size();
        for (std::size_t chunk : {std::size_t{1}, std::size_t{5}, std::size_t{1000}})
            ASSERT_EQ(ChunkedMatches(headers, stream, chunk, 1 + random() % 20, random), expected)
                << testing::PrintToString(headers) << ' ' << stream << ' ' << chunk;
    }
    EXPECT_GT(found, 100000U);
}

TEST(HeaderSearch, ThePlainWalkItselfKeepsItsRules) {
    const struct {
        std::vector<std::string> headers;
        const char* stream;
        Matches expected;
        const char* why;
    } cases[] = {
        {{"AB", "AC"}, "xxACAB", {{2, 1}, {4, 0}}, "a later candidate from the same start"},
        {{"AB", "ABC"}, "ABC", {{0, 0}}, "the earlier attached wins"},
        {{"ABC", "AB"}, "ABD", {{0, 1}}, "the shorter one once the longer has failed"},
        {{"AAB"}, "AAAB", {}, "an overlap with a broken match of the last is missed"},
        {{"AAB", "X"}, "AAAB", {{1, 0}}, "but not with one of another"},
        {{"", "A"}, "A", {{0, 1}}, "an empty header never matches"},
        {{"ABCD", "A"}, "xABC", {{1, 1}}, "a partial match at the end gives way"},
    };
    std::mt19937 random(1);
    for (const auto& c : cases) {
        EXPECT_EQ(PlainMatches(c.headers, c.stream), c.expected) << c.why;
        EXPECT_EQ(ChunkedMatches(c.headers, c.stream, 1, 1, random), c.expected) << c.why;
    }
}

} // namespace
} // namespace qor
