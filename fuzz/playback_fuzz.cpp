// SPDX-License-Identifier: GPL-3.0-or-later
//
// From a live stream into a raw log and back: where CheckReplay promises that a log of these
// instruments can be taken apart again, the frames that are played are those that were cut, each
// with its time, in a whole log and in one that ends anywhere.
//
// The input: a line with a number (where the log ends, in bytes) and any text behind it, then
// definitions, each with a line "--" behind it, then the stream.
#include "Require.h"

#include "instrument/DefinitionReader.h"
#include "telemetry/FrameSync.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <charconv>

namespace {

using namespace qor;

class CNoSink : public CMessageSink {
  public:
    void Raise(Event) override {}
};

constexpr std::string_view Mark = "\n--\n";

std::string_view TakePart(std::string_view& text, std::string_view end) {
    const std::size_t length = std::min(text.find(end), text.size());
    const std::string_view part = text.substr(0, length);
    text.remove_prefix(std::min(length + end.size(), text.size()));
    return part;
}

std::vector<LoggedInstrument> TakeInstruments(std::string_view& text) {
    std::vector<LoggedInstrument> instruments;
    while (text.find(Mark) != std::string_view::npos && instruments.size() < 8) {
        CInstrument instrument;
        CDefinitionReader reader(instrument, "playback.cal");
        reader.Begin("playback.cal");
        reader.Feed(TakePart(text, Mark));
        if (reader.Finish() == DefinitionStatus::Success)
            instruments.push_back({MakeAttachRequest(instrument)});
    }
    return instruments;
}

struct Frame {
    std::string name;
    std::vector<std::uint8_t> bytes;
    std::int64_t second;
    bool operator==(const Frame&) const = default;
};

/// The frames of a stream; of a live one every read comes a second later.
std::vector<Frame> Cut(const std::vector<LoggedInstrument>& instruments, std::string_view stream,
                       bool live) {
    CNoSink sink;
    CFrameSync sync(sink, "fuzz", live ? StreamSource::ReportingPort : StreamSource::File);
    sync.SetMaxFrameDepth(INT32_MAX);
    for (const LoggedInstrument& one : instruments)
        if (sync.Attach(one.request) == CommResult::Success)
            static_cast<void>(sync.SetAcquisition(one.request.instrumentName, true));
    FrameTime now{1'115'130'185, 0, 0, false, true};
    std::vector<Frame> frames;
    CFrameData frame;
    const auto take = [&](PassResult) {
        while (sync.Frames().Pop(frame))
            frames.push_back({frame.Info.instrumentName, frame.Bytes,
                              frame.Info.time.known ? frame.Info.time.seconds : 0});
    };
    for (; !stream.empty(); ++now.seconds) {
        sync.Append(AsBytes(stream.substr(0, 50)), now);
        stream.remove_prefix(std::min<std::size_t>(50, stream.size()));
        take(sync.RunPass());
    }
    take(sync.CutRest());
    return frames;
}

/// Where one header begins with another, what came before a frame says whose it is; a log does not
/// hold the bytes between frames.
bool SharesBeginnings(const std::vector<LoggedInstrument>& instruments) {
    for (const LoggedInstrument& one : instruments)
        for (const LoggedInstrument& other : instruments)
            if (&one != &other && !other.request.syncHeader.empty() &&
                one.request.syncHeader.starts_with(other.request.syncHeader))
                return true;
    return false;
}

/// A log's own records come before frames that begin like them, and where a frame has no header, a
/// time tag inside it is as good as one behind it.
bool IsAmbiguous(const Frame& frame, const std::vector<LoggedInstrument>& instruments) {
    const bool headerless = std::ranges::any_of(instruments, [&frame](const LoggedInstrument& one) {
        const FrameRule rule = RuleOf(one.request);
        return (rule == FrameRule::Lines || rule == FrameRule::Packets) &&
               one.request.instrumentName == frame.name;
    });
    return BeginsWith(frame.bytes, HeaderRecordStart) || BeginsWith(frame.bytes, TimeStampStart) ||
           (headerless && std::ranges::any_of(frame.bytes, MayBeginTimeTag));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data),
                           std::min<std::size_t>(size, 20'000));
    std::size_t cut = 0;
    const std::string_view first = TakePart(input, "\n");
    std::from_chars(first.data(), first.data() + first.size(), cut);
    const std::vector<LoggedInstrument> instruments = TakeInstruments(input);
    if (CheckReplay(instruments).conflict != ReplayConflict::None || SharesBeginnings(instruments))
        return 0;
    const std::vector<Frame> sent = Cut(instruments, input, true);
    if (std::ranges::any_of(
            sent, [&instruments](const Frame& frame) { return IsAmbiguous(frame, instruments); }))
        return 0;
    std::string log(AsText(MakeHeaderRecord(FormatHeaderLine(0, first))));
    std::vector<std::size_t> ends;
    for (const Frame& frame : sent) {
        const FrameTime time{frame.second, 0, 0, false, true};
        if (frame.second % 3 == 0)
            log += MakeTimeStamp(LocalCalendar(time));
        log.append(AsText(frame.bytes)).append(AsText(MakeTimeTag(time)));
        ends.push_back(log.size());
    }
    Require(Cut(instruments, log, false) == sent);

    const std::size_t length = HeaderRecordSize + cut % (log.size() - HeaderRecordSize + 1);
    const auto whole = std::ranges::upper_bound(ends, length) - ends.begin();
    const std::vector<Frame> played = Cut(instruments, log.substr(0, length), false);
    Require(played.size() >= static_cast<std::size_t>(whole));
    Require(std::equal(sent.begin(), sent.begin() + whole, played.begin()));
    return 0;
}
