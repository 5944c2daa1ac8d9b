// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a stream's frames are, told by the plainest code there is: the whole stream lies in one
// text, every byte is compared one by one, nothing is remembered between calls. The fast code is
// held against it.
#pragma once

#include "telemetry/FrameSync.h"
#include "telemetry/RawLogFormat.h"

#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace qor {

struct PlainMatch {
    std::size_t position = 0;
    std::size_t candidate = 0;
};

/// Walks byte by byte with a current candidate, a matched length and the remembered start.
inline std::optional<PlainMatch> PlainSearch(const std::vector<std::string>& headers,
                                             std::string_view stream, std::size_t position) {
    std::size_t candidate = 0, matched = 0, start = 0;
    for (;;) {
        bool over = position >= stream.size();
        if (matched == 0) {
            if (over)
                return {};
            while (candidate < headers.size() &&
                   (headers[candidate].empty() || headers[candidate][0] != stream[position]))
                ++candidate;
            if (candidate == headers.size()) {
                candidate = 0;
                ++position;
                continue;
            }
            start = position++;
            matched = 1;
        } else if (!over && headers[candidate][matched] == stream[position]) {
            ++position;
            ++matched;
        } else {
            bool last = candidate + 1 == headers.size();
            candidate = last ? 0 : candidate + 1;
            position = last ? position : start;
            matched = 0;
            continue;
        }
        if (matched == headers[candidate].size())
            return PlainMatch{start, candidate};
    }
}

/// The frame's end, or npos: a byte that breaks a partial match is not tried again.
inline std::size_t PlainTerminator(std::string_view stream, std::size_t position,
                                   std::string_view terminator) {
    for (std::size_t matched = 0; position < stream.size(); ++position) {
        matched = stream[position] == terminator[matched] ? matched + 1 : 0;
        if (matched == terminator.size())
            return position + 1;
    }
    return std::string::npos;
}

struct PlainFrame {
    std::string instrument;
    std::string bytes;
    std::uint64_t offset = 0;
    std::optional<std::int64_t> milliseconds; ///< its time tag
    bool operator==(const PlainFrame&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const PlainFrame& frame) {
        return out << frame.instrument << " at " << frame.offset << ": " << frame.bytes << " time "
                   << frame.milliseconds.value_or(-1) << '\n';
    }
};

struct PlainResult {
    std::vector<PlainFrame> frames;
    std::uint64_t discarded = 0;
    bool operator==(const PlainResult&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const PlainResult& result) {
        for (const PlainFrame& frame : result.frames)
            out << frame;
        return out << result.discarded << " bytes discarded\n";
    }
};

/// Cuts a played-back stream from its first byte to its end; frames of `untagged` have no tag.
class CPlainSync {
  public:
    CPlainSync(std::vector<AttachRequest> instruments, std::string_view stream,
               std::set<std::string> untagged = {})
        : Instruments(std::move(instruments)), Stream(stream), Untagged(std::move(untagged)),
          RawLog(stream.starts_with("QORHDR ")) {
        for (const AttachRequest& instrument : Instruments) {
            Rules.push_back(RawLog ? RuleOf(instrument) : FrameRule::Header);
            const bool headed =
                Rules.back() == FrameRule::Header || Rules.back() == FrameRule::HeaderAndSize;
            Headers.push_back(headed ? instrument.syncHeader : "");
            Headerless = Headerless || !headed;
            if (headed) {
                Candidates.push_back(instrument.syncHeader);
                Places.push_back(Rules.size() - 1);
            }
        }
    }

    PlainResult Run() {
        SkipRecords();
        while (Position < Stream.size()) {
            std::size_t instrument = NextInstrument();
            if (instrument < Instruments.size())
                Take(instrument);
        }
        return Result;
    }

  private:
    void Drop(std::size_t count) {
        count = std::min(count, Stream.size() - Position);
        Boundary = Boundary && count == 0;
        Position += count;
        Result.discarded += count;
    }

    void SkipRecords() {
        while (RawLog) {
            std::string_view rest = Stream.substr(Position);
            std::size_t lineEnd = rest.substr(0, 82).find("\r\n");
            if (rest.starts_with("QORHDR ") && rest.size() >= 128)
                Position += 128;
            else if (rest.starts_with("$PCZDA,") && lineEnd != std::string::npos)
                Position += lineEnd + 2;
            else
                return;
        }
    }

    std::size_t NextInstrument() {
        for (std::size_t i = ChainFrom; i < Headers.size(); ++i)
            if (!Headers[i].empty() && Stream.substr(Position).starts_with(Headers[i]))
                return i;
        if (Headerless)
            return NextInRecord();
        auto match = PlainSearch(Headers, Stream, Position);
        Drop(match ? match->position - Position : Stream.size());
        return match ? match->candidate : Headers.size();
    }

    /// Raw logs with instruments without sync header: what begins at a boundary, or the line before
    /// the next tag, or what the headers find up to there.
    std::size_t NextInRecord() {
        ChainFrom = Headers.size();
        const std::string_view rest = Stream.substr(Position);
        auto tagAt = [&](std::size_t place) {
            return ParseTimeTag(AsBytes(rest.substr(place).substr(0, TimeTagSize))).has_value();
        };
        for (std::size_t i = 0; Boundary && i < Headers.size(); ++i)
            if (!Headers[i].empty() && rest.starts_with(Headers[i]))
                return i;
        for (std::size_t i = 0; Boundary && i < Headers.size(); ++i)
            if (std::size_t size = PacketsAt(i, rest); Rules[i] == FrameRule::Packets && size != 0)
                if (rest.size() - size < TimeTagSize || tagAt(size))
                    return i;
        std::size_t tag = 1;
        while (tag < rest.size() && !tagAt(tag))
            ++tag;
        std::size_t found = Headers.size(), begin = std::min(tag + TimeTagSize, rest.size());
        for (std::size_t i = Headers.size(); i-- > 0;)
            if (std::size_t from = 0; Rules[i] == FrameRule::Lines && HasLine(i, tag, from))
                found = i, begin = from;
        auto match = PlainSearch(Candidates, Stream.substr(0, Position + begin), Position);
        const bool nobodys = !match && found == Headers.size();
        Drop(match ? match->position - Position : begin);
        if (nobodys && tag < rest.size()) {
            Boundary = true;
            SkipRecords();
        }
        return match ? Places[match->candidate] : found;
    }

    /// The packets' length, when all pairs stand at their places and their bytes are there.
    std::size_t PacketsAt(std::size_t instrument, std::string_view rest) const {
        std::size_t size = 0;
        const std::vector<std::uint8_t>& pairs = Instruments[instrument].syncBytes;
        for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
            if (rest.size() < size + 2 * pairs[i + 1] + 3 || AsBytes(rest)[size] != pairs[i] ||
                AsBytes(rest)[size + 1] != pairs[i + 1])
                return 0;
            size += 2 * std::size_t{pairs[i + 1]} + 3;
        }
        return size;
    }

    /// Whether a line ends at the tag, or less than a tag before the stream's end: its begin.
    bool HasLine(std::size_t instrument, std::size_t tag, std::size_t& from) const {
        const std::string& terminator = Instruments[instrument].terminator;
        const std::string_view rest = Stream.substr(Position);
        const auto endsAt = [&](std::size_t end) {
            const std::string_view piece = rest.substr(0, end);
            from = 0;
            if (Boundary && PlainTerminator(piece, 0, terminator) == end)
                return true;
            if (!piece.ends_with(terminator))
                return false;
            from = piece.substr(0, end - terminator.size()).rfind(terminator);
            from = from == std::string::npos ? end : from + terminator.size();
            return PlainTerminator(piece, from, terminator) == end;
        };
        if (tag < rest.size())
            return endsAt(tag);
        for (std::size_t end = rest.size() - 1; end > 0 && end + TimeTagSize > rest.size(); --end)
            if (rest[end] >= 0x1E && rest[end] <= 0x21 && endsAt(end)) // a tag begins so
                return true;
        return endsAt(rest.size());
    }

    void Take(std::size_t instrument) {
        const AttachRequest& request = Instruments[instrument];
        const FrameRule rule = Rules[instrument];
        std::size_t end =
            Position +
            static_cast<std::size_t>(request.frameSize > 0
                                         ? request.frameSize
                                         : static_cast<std::int32_t>(request.syncHeader.size()));
        if (rule == FrameRule::Packets)
            end = Position + PacketsAt(instrument, Stream.substr(Position));
        else if (!request.terminator.empty() && rule != FrameRule::HeaderAndSize)
            end = Endless.count(instrument) != 0
                      ? std::string::npos
                      : PlainTerminator(Stream, Position, request.terminator);
        if (end > Stream.size()) {
            if (!request.terminator.empty() && rule == FrameRule::Header)
                Endless.insert(instrument);
            Drop(request.syncHeader.size());
            ChainFrom = Headers.size();
            return;
        }
        PlainFrame frame{request.instrumentName,
                         std::string(Stream.substr(Position, end - Position)),
                         Position,
                         {}};
        Position = end;
        Boundary = true;
        ChainFrom = instrument + 1;
        if (RawLog && Untagged.count(request.instrumentName) == 0)
            TakeTag(frame);
        Result.frames.push_back(std::move(frame));
        SkipRecords();
    }

    void TakeTag(PlainFrame& frame) {
        auto time = ParseTimeTag(AsBytes(Stream.substr(Position).substr(0, TimeTagSize)));
        if (!time)
            return;
        frame.milliseconds = time->seconds * 1000 + time->milliseconds;
        Position += TimeTagSize;
    }

    std::vector<AttachRequest> Instruments;
    std::string_view Stream;
    std::set<std::string> Untagged;
    bool RawLog;
    std::vector<std::string> Headers;
    std::vector<std::string> Candidates; ///< the headers of those that have one
    std::vector<std::size_t> Places;     ///< and whose they are
    std::vector<FrameRule> Rules;
    bool Headerless = false; ///< there are instruments without sync header, and it counts
    bool Boundary = true;    ///< a frame without sync header may begin here
    std::size_t Position = 0;
    std::size_t ChainFrom = SIZE_MAX;
    std::set<std::size_t> Endless;
    PlainResult Result;
};

} // namespace qor
