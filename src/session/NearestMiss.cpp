// SPDX-License-Identifier: GPL-3.0-or-later
//
// The causes are tried from the most certain one on.
#include "session/NearestMiss.h"

#include "base/Text.h"
#include "instrument/DefinitionVerdict.h"
#include "instrument/SpecialType.h"

#include <algorithm>
#include <map>

namespace qor {

namespace {

constexpr std::size_t ShownBytes = 160, MostDistances = 12, FollowingBytes = 12;

std::string Quoted(std::string_view bytes) {
    return "\"" + Printable(bytes) + "\"";
}

std::string PlaceText(const HeaderTrace& trace) {
    return trace.times == 1 ? Format("once, at byte %zu", trace.first)
                            : Format("%zu times, first at byte %zu", trace.times, trace.first);
}

/// Of a text: for each place, how long a beginning of it is also its end there (Knuth, Morris and
/// Pratt): the search stays linear whatever the header.
std::vector<std::uint32_t> BordersOf(std::string_view text) {
    std::vector<std::uint32_t> borders(text.size());
    for (std::uint32_t i = 1, matched = 0; i < text.size(); ++i) {
        while (matched > 0 && text[i] != text[matched])
            matched = borders[matched - 1];
        matched += text[i] == text[matched] ? 1 : 0;
        borders[i] = matched;
    }
    return borders;
}

/// Calls `take(end, length)` wherever so much of the header has just been seen.
template <class Take> void Match(std::string_view header, ByteSpan bytes, Take take) {
    const std::vector<std::uint32_t> borders = BordersOf(header);
    std::uint32_t matched = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        while (matched > 0 &&
               (matched == header.size() || static_cast<std::uint8_t>(header[matched]) != bytes[i]))
            matched = borders[matched - 1];
        matched += static_cast<std::uint8_t>(header[matched]) == bytes[i] ? 1 : 0;
        if (matched > 0)
            take(i + 1, std::size_t{matched});
    }
}

/// What is tried to explain, and with what.
struct Riddle {
    const CInstrument& instrument;
    ByteSpan bytes;
    std::uint64_t lineErrors;
    std::size_t skipped;
    const NearestMiss& miss;

    const HeaderTrace& Header() const { return miss.header; }
    bool IsText() const {
        return miss.look.kind == StreamKind::Lines || miss.look.kind == StreamKind::Sentences ||
               miss.look.kind == StreamKind::Text;
    }
    std::string LineEnd() const {
        return miss.look.lineEnd.empty() ? "; no line ends at all"
                                         : "; lines end in " + Printable(miss.look.lineEnd);
    }
};

std::string NoBytes(const Riddle& riddle) {
    return riddle.bytes.empty() ? "No bytes came: is the instrument switched on and sending, and "
                                  "the cable on this port?"
                                : "";
}

std::string CannotGiveFrames(const Riddle& riddle) {
    const std::string reason = VerdictOf(riddle.instrument).noFrames;
    return reason.empty() ? "" : "The definition can never give a frame: " + reason;
}

std::string WithoutHeader(const Riddle& riddle) {
    const std::optional<SpecialType> special = SpecialTypeOf(riddle.instrument);
    if (!special || special->search == SpecialSearch::Header)
        return {};
    if (special->search == SpecialSearch::Packets)
        return "The pairs of bytes that its SPECIAL line gives do not stand at their places.";
    return "Its frames are lines that end in \\x0D\\x0A, and there is none" + riddle.LineEnd() +
           ".";
}

std::string HeaderAlone(const Riddle& riddle) {
    if (!riddle.Header().IsWhole())
        return {};
    const std::string there = "The sync header is there (" + PlaceText(riddle.Header()) + "), but ";
    const std::string_view from =
        AsText(riddle.bytes).substr(riddle.Header().first - riddle.skipped);
    const std::string& terminator = riddle.instrument.Terminator();
    if (!terminator.empty() && from.find(terminator) == std::string_view::npos)
        return there + "the terminator " + Printable(terminator) + " does not follow it" +
               riddle.LineEnd() + ".";
    std::string cause = there + Format("no whole frame: one has %d bytes",
                                       static_cast<int>(riddle.instrument.FrameSize()));
    if (const std::size_t usual = UsualDistance(riddle.Header()); usual > 0)
        return cause + Format(", the headers stand %zu bytes apart.", usual);
    return cause + Format(", and %zu follow.", from.size());
}

std::string OtherLetters(const Riddle& riddle) {
    const std::string& header = riddle.instrument.SyncHeader();
    if (header.size() < 3)
        return {};
    const std::string text = ToLower(AsText(riddle.bytes));
    const HeaderTrace found = TraceHeader(ToLower(header), AsBytes(text), riddle.skipped);
    return found.IsWhole()
               ? "The sync header " + Quoted(header) + " stands there in other letters, as " +
                     Quoted(
                         AsText(riddle.bytes).substr(found.first - riddle.skipped, found.length)) +
                     " (" + PlaceText(found) + "): upper and lower case count."
               : "";
}

std::string SevenBits(const Riddle& riddle) {
    return riddle.miss.look.kind == StreamKind::SevenBits ? riddle.miss.look.sentence : "";
}

std::string LineErrors(const Riddle& riddle) {
    return riddle.lineErrors == 0
               ? ""
               : "The port found framing or parity errors: its speed or its line format is not the "
                 "instrument's. Try another baud rate.";
}

std::string HeaderBeginning(const Riddle& riddle) {
    const HeaderTrace& trace = riddle.Header();
    if (trace.seen < 3 && trace.seen * 2 <= trace.length)
        return {};
    const std::string& header = riddle.instrument.SyncHeader();
    const std::string_view rest = std::string_view(header).substr(trace.seen);
    std::string cause = Format("Only the first %zu of %zu bytes of the sync header are there (",
                               trace.seen, trace.length);
    cause += PlaceText(trace) + "): behind " + Quoted(header.substr(0, trace.seen)) + " stands " +
             Quoted(std::string_view(trace.follows).substr(0, rest.size())) +
             " where the definition has " + Quoted(rest.substr(0, FollowingBytes)) + ".";
    if (rest.size() <= riddle.instrument.SerialNumber().size())
        cause += " Is it an instrument of another serial number?";
    return cause;
}

std::string OtherSpeed(const Riddle& riddle) {
    const bool text = riddle.instrument.Type() == FrameType::Variable;
    if (riddle.IsText() || (!text && riddle.miss.look.kind != StreamKind::Garbled))
        return {};
    if (riddle.miss.look.kind == StreamKind::Records)
        return "The sync header is not there, and the bytes are no text: they are another "
               "instrument's, or the port's speed is not the instrument's.";
    return "The sync header is not there, and the bytes are no text: the port's speed or line "
           "format is likely not the instrument's. Try another baud rate.";
}

std::string OtherInstrument(const Riddle& riddle) {
    std::string cause = "The sync header " + Quoted(riddle.instrument.SyncHeader()) +
                        " is not there: the bytes are another instrument's, or its header is "
                        "another";
    const StreamLook& look = riddle.miss.look;
    if (!look.lineStart.empty())
        return cause + "; lines begin with " + Quoted(look.lineStart) + ".";
    if (look.repeat)
        return cause + "; " + Quoted(look.repeat->bytes) + " could be one.";
    return cause + ".";
}

constexpr std::string (*Causes[])(const Riddle&) = {
    NoBytes,   CannotGiveFrames, WithoutHeader,   HeaderAlone, OtherLetters,
    SevenBits, LineErrors,       HeaderBeginning, OtherSpeed,  OtherInstrument};

} // namespace

HeaderTrace TraceHeader(std::string_view header, ByteSpan bytes, std::size_t skipped) {
    HeaderTrace trace;
    trace.length = header.size();
    header = header.substr(0, bytes.size()); // more of it cannot be there
    if (header.empty())
        return trace;
    Match(header, bytes,
          [&](std::size_t, std::size_t length) { trace.seen = std::max(trace.seen, length); });
    std::size_t last = 0;
    Match(header, bytes, [&](std::size_t end, std::size_t length) {
        if (length != trace.seen)
            return;
        const std::size_t begin = end - length;
        if (trace.times++ == 0) {
            trace.first = skipped + begin;
            trace.follows =
                AsText(bytes.subspan(end, std::min(bytes.size() - end, FollowingBytes)));
        } else if (trace.distances.size() < MostDistances) {
            trace.distances.push_back(begin - last);
        }
        last = begin;
    });
    return trace;
}

std::size_t UsualDistance(const HeaderTrace& trace) {
    std::map<std::size_t, std::size_t> counts;
    for (std::size_t distance : trace.distances)
        ++counts[distance];
    const auto usual = std::ranges::max_element(
        counts, [](const auto& a, const auto& b) { return a.second < b.second; });
    return usual == counts.end() ? 0 : usual->first;
}

NearestMiss NearestMissOf(const CInstrument& instrument, ByteSpan bytes, std::uint64_t lineErrors,
                          std::size_t skipped) {
    NearestMiss miss;
    miss.header = TraceHeader(instrument.SyncHeader(), bytes, skipped);
    miss.look = LookAt(bytes);
    miss.sample = Printable(AsText(bytes.first(std::min(bytes.size(), ShownBytes))));
    for (const auto& causeOf : Causes) {
        miss.cause = causeOf({instrument, bytes, lineErrors, skipped, miss});
        if (!miss.cause.empty())
            break;
    }
    return miss;
}

} // namespace qor
