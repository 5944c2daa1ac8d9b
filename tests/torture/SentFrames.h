// SPDX-License-Identifier: GPL-3.0-or-later
//
// What must come of the bytes that a simulated line was given: frames cut by the plainest rule,
// with the time tags that they must carry, and raw logs read back. Nothing here is the program's
// own searching, cutting or reading, so that both can be held against each other. One thread.
#pragma once

#include "base/Bytes.h"
#include "platform/Clock.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// The seven bytes of a time tag: year and day of the year in three, the time of day in four.
inline std::string TagOf(std::int64_t localMilliseconds) {
    const CalendarTime day = CalendarFromSeconds(localMilliseconds / 1000);
    const int date = day.year * 1000 + day.dayOfYear;
    const std::int64_t time =
        ((day.hour * 100 + day.minute) * 100 + day.second) * 1000 + localMilliseconds % 1000;
    std::string tag;
    for (int shift : {16, 8, 0})
        tag += static_cast<char>(date >> shift);
    for (int shift : {24, 16, 8, 0})
        tag += static_cast<char>(time >> shift);
    return tag;
}

struct SentFrame {
    std::string bytes;
    std::int64_t arrival = 0; ///< of its last byte, local milliseconds
    bool tagged = true;
};

/// The instruments of a line: headers, none the beginning of another, and the lengths of frames.
using FrameLengths = std::map<std::string, std::size_t, std::less<>>;

/// Cuts a line's bytes: the first header, so many bytes from there, and so on.
class CCutter {
  public:
    explicit CCutter(FrameLengths lengths) : Lengths(std::move(lengths)) {}

    void Take(std::string_view bytes, std::int64_t now) {
        Given += bytes.size();
        Bytes += bytes;
        Times.resize(Bytes.size(), now);
        Cut(false);
    }
    /// The connection is over: a frame without its end hides none behind its header. What is left
    /// is cut short, and no junk.
    void End() {
        const std::uint64_t before = Discarded;
        Cut(true);
        Discarded = before;
        Bytes.clear();
        Times.clear();
    }

    std::deque<SentFrame> Frames; ///< taken away by whoever has seen them
    std::uint64_t Given = 0, Discarded = 0, Count = 0, Whole = 0; ///< bytes, but for the count

  private:
    /// Where the next header begins, or may begin at the end.
    std::size_t NextBegin(std::size_t from) const {
        const auto begins = [this](std::size_t at) {
            const std::string_view rest = std::string_view(Bytes).substr(at);
            return std::ranges::any_of(Lengths, [rest](const auto& kind) {
                return rest.starts_with(kind.first) || kind.first.starts_with(rest);
            });
        };
        while (from < Bytes.size() && !begins(from))
            ++from;
        return from;
    }
    void Cut(bool ended) {
        std::size_t at = 0;
        for (;;) {
            const std::size_t begin = NextBegin(at);
            Discarded += begin - at;
            at = begin;
            const auto kind = std::ranges::find_if(Lengths, [this, at](const auto& one) {
                return std::string_view(Bytes).substr(at).starts_with(one.first);
            });
            if (kind == Lengths.end())
                break;
            const auto& [header, length] = *kind;
            if (Bytes.size() - at >= length) {
                Frames.push_back({Bytes.substr(at, length), Times[at + length - 1]});
                ++Count;
                Whole += length;
                at += length;
            } else if (ended) {
                at += header.size();
            } else {
                break;
            }
        }
        Bytes.erase(0, at);
        Times.erase(Times.begin(), Times.begin() + static_cast<std::ptrdiff_t>(at));
    }

    const FrameLengths Lengths;
    std::string Bytes;
    std::vector<std::int64_t> Times; ///< of each byte
};

/// The frames that were to be logged, by header, in order: what logs hold is ticked off.
class CLogCheck {
  public:
    explicit CLogCheck(FrameLengths lengths) : Lengths(std::move(lengths)) {}

    void Expect(const std::string& header, SentFrame frame) {
        Expected[header].push_back(std::move(frame));
    }
    /// Reads the next log; what is wrong with it, or nothing.
    std::string Read(std::string_view log) {
        while (log.starts_with("QORHDR ") && log.size() >= 128)
            log.remove_prefix(128);
        for (std::size_t length = 0; !log.empty(); log.remove_prefix(length)) {
            const bool sentence =
                log.starts_with("$PCZDA,") && log.size() >= 31 && log.substr(29, 2) == "\r\n";
            Sentences += sentence ? 1 : 0;
            length = sentence ? 31 : TickOff(log);
            if (length == 0)
                return "holds what was never sent, comes twice or out of order, or has another "
                       "time, " +
                       std::to_string(log.size()) + " bytes before its end";
        }
        return {};
    }
    /// Frames that no log held.
    std::uint64_t CountMissing() {
        for (auto& [header, frames] : Expected)
            Missing += frames.size();
        Expected.clear();
        return Missing;
    }

    std::uint64_t Logged = 0, Sentences = 0;

  private:
    /// The length of the frame at the start with its tag, 0 when it is none of those to come.
    std::size_t TickOff(std::string_view log) {
        const auto kind = std::ranges::find_if(
            Lengths, [log](const auto& one) { return log.starts_with(one.first); });
        if (kind == Lengths.end())
            return 0;
        std::deque<SentFrame>& frames = Expected[kind->first];
        const std::string_view bytes = log.substr(0, kind->second);
        const auto found = std::ranges::find(frames, bytes, &SentFrame::bytes);
        if (found == frames.end())
            return 0;
        const std::string tag = found->tagged ? TagOf(found->arrival) : "";
        Missing += static_cast<std::uint64_t>(found - frames.begin());
        frames.erase(frames.begin(), found + 1);
        ++Logged;
        return log.substr(bytes.size()).starts_with(tag) ? bytes.size() + tag.size() : 0;
    }

    const FrameLengths Lengths;
    std::map<std::string, std::deque<SentFrame>> Expected;
    std::uint64_t Missing = 0;
};

} // namespace qor
