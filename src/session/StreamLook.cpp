// SPDX-License-Identifier: GPL-3.0-or-later
//
// Guesses in the order of their certainty: text, text behind parity bits, records, noise.
#include "session/StreamLook.h"

#include "base/Text.h"

#include <algorithm>
#include <bit>
#include <map>
#include <vector>

namespace qor {

namespace {

constexpr std::size_t MostBytes = 64U << 10;

constexpr bool IsTextByte(std::uint8_t byte) {
    return (byte >= ' ' && byte <= '~') || byte == '\t' || byte == '\r' || byte == '\n';
}

template <class Test> bool Most(ByteSpan bytes, std::size_t percent, Test test) {
    const auto count = static_cast<std::size_t>(std::ranges::count_if(bytes, test));
    return count * 100 >= bytes.size() * percent;
}

std::string RepeatText(const ByteRepeat& repeat) {
    return Format("\"%s\" stands every %zu bytes (%zu times, first at byte %zu)",
                  Printable(repeat.bytes).c_str(), repeat.distance, repeat.count, repeat.first);
}

std::string CommonLineEnd(std::string_view text) {
    std::size_t both = 0, feeds = 0, returns = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n')
            ++(i > 0 && text[i - 1] == '\r' ? both : feeds);
        returns += text[i] == '\r' ? 1 : 0;
    }
    returns -= both;
    if (both + feeds + returns == 0)
        return {};
    return both >= feeds && both >= returns ? "\r\n" : feeds >= returns ? "\n" : "\r";
}

/// The whole lines: the first may have begun before the text.
std::vector<std::string_view> LinesOf(std::string_view text, std::string_view end) {
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    for (std::size_t at = text.find(end); at != std::string_view::npos;
         at = text.find(end, start)) {
        if (at > start)
            lines.push_back(text.substr(start, at - start));
        start = at + end.size();
    }
    if (lines.size() > 1)
        lines.erase(lines.begin());
    return lines;
}

/// "$GPRMC" of "$GPRMC,..."; empty of a line that is no sentence.
std::string_view SentenceName(std::string_view line) {
    if (!line.starts_with('$') && !line.starts_with('!'))
        return {};
    const std::string_view name = line.substr(0, line.find(','));
    const bool whole = name.size() < line.size() && name.size() >= 4 && name.size() <= 10;
    const auto isNameByte = [](char c) { return IsDigit(c) || (c >= 'A' && c <= 'Z'); };
    return whole && std::all_of(name.begin() + 1, name.end(), isNameByte) ? name
                                                                          : std::string_view();
}

std::string SentenceNames(const std::vector<std::string_view>& lines) {
    std::map<std::string_view, std::size_t> names;
    for (std::string_view line : lines)
        if (const std::string_view name = SentenceName(line); !name.empty())
            ++names[name];
    std::size_t all = 0, shown = 0;
    std::string text;
    for (const auto& [name, count] : names) {
        all += count;
        if (++shown <= 5)
            text.append(text.empty() ? "" : ", ").append(name);
    }
    return all * 2 < lines.size() ? std::string() : text;
}

/// The character that most lines have, and how often they have it: "fields separated by ...".
std::string DelimiterText(const std::vector<std::string_view>& lines, char& delimiter) {
    for (char c : std::string_view(",;\t| ")) {
        std::map<std::ptrdiff_t, std::size_t> counts;
        std::size_t without = 0;
        for (std::string_view line : lines)
            if (const auto count = std::ranges::count(line, c); count > 0)
                ++counts[count];
            else
                ++without;
        if (without * 5 > lines.size())
            continue;
        delimiter = c;
        const auto usual = std::ranges::max_element(
            counts, [](const auto& a, const auto& b) { return a.second < b.second; });
        return Format(", with %ld \"%s\" in most of them", static_cast<long>(usual->first),
                      c == ' ' ? "\\x20" : Printable({&c, 1}).c_str());
    }
    return {};
}

std::string CommonStart(const std::vector<std::string_view>& lines, char delimiter) {
    std::string_view start = lines.front();
    for (std::string_view line : lines) {
        const auto end = std::ranges::mismatch(start, line).in1;
        start = start.substr(0, static_cast<std::size_t>(end - start.begin()));
    }
    if (delimiter != 0)
        start = start.substr(0, start.find(delimiter));
    return std::string(start.substr(0, 32));
}

void LookAtText(std::string_view text, StreamLook& look) {
    look.lineEnd = CommonLineEnd(text);
    const std::vector<std::string_view> lines =
        look.lineEnd.empty() ? std::vector<std::string_view>() : LinesOf(text, look.lineEnd);
    if (lines.empty()) {
        look.kind = StreamKind::Text;
        look.repeat = FindRepeat(AsBytes(text));
        look.sentence = "These look like text without line ends";
        look.sentence += look.repeat ? "; " + RepeatText(*look.repeat) + "." : ".";
        return;
    }
    const std::string ending =
        Format(": %zu, ending in %s", lines.size(), Printable(look.lineEnd).c_str());
    char delimiter = 0;
    const std::string fields = DelimiterText(lines, delimiter);
    const std::string names = SentenceNames(lines);
    look.kind = names.empty() ? StreamKind::Lines : StreamKind::Sentences;
    if (names.empty() && lines.size() > 1)
        look.lineStart = CommonStart(lines, delimiter);
    if (!names.empty())
        look.sentence = "These look like NMEA sentences (" + names + ")" + ending + ".";
    else
        look.sentence =
            "These look like lines of text" + ending + fields +
            (look.lineStart.empty() ? "." : "; they begin with \"" + look.lineStart + "\".");
}

/// The line format with which the bytes become text, or null.
const char* SevenBitFormat(ByteSpan bytes) {
    if (!Most(bytes, 95, [](std::uint8_t b) { return IsTextByte(b & 0x7FU); }))
        return nullptr;
    constexpr std::size_t Nearly = 98;
    if (Most(bytes, Nearly, [](std::uint8_t b) { return std::popcount(b) % 2 == 0; }))
        return "7E1";
    if (Most(bytes, Nearly, [](std::uint8_t b) { return std::popcount(b) % 2 == 1; }))
        return "7O1";
    return Most(bytes, Nearly, [](std::uint8_t b) { return b >= 0x80; }) ? "7M1" : nullptr;
}

void LookAtBinary(ByteSpan bytes, StreamLook& look) {
    if (const char* format = SevenBitFormat(bytes)) {
        look.kind = StreamKind::SevenBits;
        look.sentence = Format(
            "These look like text of seven data bits with a parity bit: read them as %s.", format);
        return;
    }
    look.repeat = FindRepeat(bytes);
    if (look.repeat) {
        look.kind = StreamKind::Records;
        look.sentence =
            Format("These look like binary records of %zu bytes: ", look.repeat->distance) +
            RepeatText(*look.repeat) + ".";
    } else if (Most(bytes, 60, [](std::uint8_t b) { return b == 0 || b >= 0x80; })) {
        look.kind = StreamKind::Garbled;
        look.sentence = "These look like a line that was read at another speed: most bytes are "
                        "0x00 or have their high bit set, and nothing repeats.";
    } else {
        look.kind = StreamKind::Binary;
        look.sentence = "These look like binary bytes in which nothing repeats.";
    }
}

} // namespace

StreamLook LookAt(ByteSpan bytes) {
    StreamLook look;
    bytes = bytes.first(std::min(bytes.size(), MostBytes));
    if (bytes.empty())
        look.sentence = "There are no bytes.";
    else if (Most(bytes, 95, IsTextByte))
        LookAtText(AsText(bytes), look);
    else
        LookAtBinary(bytes, look);
    return look;
}

} // namespace qor
