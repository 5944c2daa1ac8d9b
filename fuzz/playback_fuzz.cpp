// SPDX-License-Identifier: GPL-3.0-or-later
//
// From live ports into a raw log and back: where CheckReplay promises that a log of these
// instruments can be taken apart again, the frames that are played are those that were cut, each
// with its time, in a whole log and in one that ends anywhere. Instruments that need a port of
// their own have one.
//
// The input: a line with a number (where the log ends, in bytes) and any text behind it, then
// definitions, each with a line "--" behind it, then what comes on the
// ports, in parts of one length: that of the shared port is the last.
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
    CNoSink sink;
    std::vector<LoggedInstrument> instruments;
    while (text.find(Mark) != std::string_view::npos && instruments.size() < 8) {
        CInstrument instrument;
        CDefinitionReader reader(instrument, "playback.cal");
        reader.Begin("playback.cal");
        reader.Feed(TakePart(text, Mark));
        if (reader.Finish() != DefinitionStatus::Success)
            continue;
        // One that no port takes is in no log.
        CFrameSync port(sink, "fuzz", StreamSource::ReportingPort);
        const AttachRequest request = MakeAttachRequest(instrument);
        if (port.Attach(request) != CommResult::Success)
            continue;
        instruments.push_back({request});
        instruments.back().request.instrumentName += std::to_string(instruments.size());
    }
    return instruments;
}

struct Frame {
    std::string name;
    std::vector<std::uint8_t> bytes;
    std::int64_t second;
    bool operator==(const Frame&) const = default;
};

/// The frames of a stream; of a port every read comes a second later.
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

/// What the ports give to the log, in the order of time.
std::vector<Frame> CutLive(const std::vector<LoggedInstrument>& instruments,
                           std::string_view stream) {
    std::vector<LoggedInstrument> sharing;
    std::vector<Frame> frames;
    const std::size_t part = stream.size() / (instruments.size() + 1);
    for (const LoggedInstrument& one : instruments) {
        if (one.request.noSync) {
            std::ranges::copy(Cut({one}, stream.substr(0, part), true), std::back_inserter(frames));
            stream.remove_prefix(part);
        } else {
            sharing.push_back(one);
        }
    }
    std::ranges::copy(Cut(sharing, stream, true), std::back_inserter(frames));
    std::ranges::stable_sort(frames, {}, &Frame::second);
    return frames;
}

/// A log's own records come before frames that begin like them. Where a frame has no header, the
/// header of another instrument inside it is that one's, and a time tag inside it is as good as the
/// one behind it.
bool IsAmbiguous(const Frame& frame, const std::vector<LoggedInstrument>& instruments) {
    if (BeginsWith(frame.bytes, HeaderRecordStart) || BeginsWith(frame.bytes, TimeStampStart))
        return true;
    const auto isOwn = [&frame](const LoggedInstrument& one) {
        return one.request.instrumentName == frame.name;
    };
    const FrameRule rule = RuleOf(std::ranges::find_if(instruments, isOwn)->request);
    if (rule != FrameRule::Lines && rule != FrameRule::Packets)
        return false;
    return std::ranges::any_of(frame.bytes, MayBeginTimeTag) ||
           std::ranges::any_of(instruments, [&](const LoggedInstrument& one) {
               return !isOwn(one) && !one.request.syncHeader.empty() &&
                      AsText(frame.bytes).find(one.request.syncHeader) != std::string_view::npos;
           });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data),
                           std::min<std::size_t>(size, 20'000));
    std::size_t cut = 0;
    const std::string_view first = TakePart(input, "\n");
    std::from_chars(first.data(), first.data() + first.size(), cut);
    const std::vector<LoggedInstrument> instruments = TakeInstruments(input);
    if (!CheckReplay(instruments).empty())
        return 0;
    const std::vector<Frame> sent = CutLive(instruments, input);
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
