// SPDX-License-Identifier: GPL-3.0-or-later
//
// A byte stream with instruments that a stranger may have declared. The stream in one piece and in
// pieces of every length must give the same frames, discard the same bytes and account for each.
//
// The input: a byte of flags (1 live, 2 global string, 4 no-sync instrument), then per instrument
// one text line "header|terminator|size" until an empty line, then the stream.
#include "Require.h"

#include "telemetry/FrameSync.h"

#include <algorithm>
#include <charconv>

namespace {

using namespace qor;

constexpr std::size_t MostInstruments = 80;

class CNoSink : public CMessageSink {
  public:
    void Raise(Event event) override { Require(!event.text.empty()); }
};

struct Input {
    bool live = false;
    bool globalSync = false;
    bool noSync = false;
    std::vector<AttachRequest> instruments;
    std::string_view stream;
};

std::string_view TakeUntil(std::string_view& text, char end) {
    std::string_view part = text.substr(0, text.find(end));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

Input Parse(std::string_view text) {
    Input input;
    unsigned flags = text.empty() ? 0 : static_cast<unsigned char>(text[0]);
    input.live = (flags & 1) != 0;
    input.globalSync = (flags & 2) != 0;
    input.noSync = (flags & 4) != 0;
    TakeUntil(text, '\n');
    for (std::string_view line = TakeUntil(text, '\n');
         !line.empty() && input.instruments.size() < MostInstruments;
         line = TakeUntil(text, '\n')) {
        AttachRequest request;
        request.instrumentName = std::to_string(input.instruments.size());
        request.syncHeader = TakeUntil(line, '|');
        request.terminator = TakeUntil(line, '|');
        std::from_chars(line.data(), line.data() + line.size(), request.frameSize);
        request.noSync = input.noSync;
        request.typeName = request.terminator.empty() ? "BSI" : "SEABIRD_19SCT";
        request.syncBytes.assign(request.syncHeader.begin(), request.syncHeader.end());
        input.instruments.push_back(std::move(request));
    }
    input.stream = text;
    return input;
}

struct Frame {
    std::string name;
    std::vector<std::uint8_t> bytes;
    std::uint64_t offset;
    FrameTime time;
    std::uint32_t counter;
    bool operator==(const Frame&) const = default;
};

struct Output {
    std::vector<Frame> frames;
    std::uint64_t discarded = 0;
    bool operator==(const Output&) const = default;
};

void Drain(CFrameSync& sync, Output& output) {
    CFrameData frame;
    PassResult pass;
    do {
        pass = sync.RunPass(5);
        while (sync.Frames().Pop(frame)) {
            Require(frame.Length() == frame.Bytes.size() && !frame.Bytes.empty());
            output.frames.push_back({frame.Info.instrumentName, frame.Bytes, frame.StreamOffset,
                                     frame.Info.time, frame.Info.frameCounter});
        }
    } while (pass.moreReady);
}

/// Pieces of `longest` bytes at most, their lengths drawn from the seed.
Output Run(const Input& input, std::size_t longest, std::uint32_t seed) {
    CNoSink sink;
    CFrameSync sync(sink, "fuzz", input.live ? StreamSource::ReportingPort : StreamSource::File);
    sync.SetMaxFrameDepth(INT32_MAX);
    if (input.globalSync)
        sync.SetGlobalSync("SYNC");
    for (const AttachRequest& request : input.instruments)
        if (sync.Attach(request) == CommResult::Success)
            (void)sync.SetAcquisition(request.instrumentName, true);
    Output output;
    for (std::string_view rest = input.stream; !rest.empty();) {
        seed = seed * 1664525U + 1013904223U;
        std::size_t length = std::min<std::size_t>(1 + (seed >> 8) % longest, rest.size());
        sync.SetSearchBound(1 + (seed >> 24));
        sync.Append(AsBytes(rest.substr(0, length)));
        rest.remove_prefix(length);
        Drain(sync, output);
    }
    sync.EndOfStream();
    Drain(sync, output);
    output.discarded = sync.Figures().bytesDiscarded;
    return output;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input = Parse({reinterpret_cast<const char*>(data), size});
    Output whole = Run(input, std::max<std::size_t>(input.stream.size(), 1), 0);
    std::uint64_t end = 0;
    std::uint64_t bytes = whole.discarded;
    for (const Frame& frame : whole.frames) {
        Require(frame.offset >= end);
        end = frame.offset + frame.bytes.size();
        bytes += frame.bytes.size();
    }
    Require(end <= input.stream.size() && bytes <= input.stream.size());
    for (std::size_t longest : {1U, 3U, 64U})
        Require(Run(input, longest, size > 0 ? data[size - 1] : 0U) == whole);
    return 0;
}
