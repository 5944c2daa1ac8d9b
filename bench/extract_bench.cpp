// SPDX-License-Identifier: GPL-3.0-or-later
//
// A raw log through the frame synchroniser: append, cut, take the tag, hand the frame over. Time a
// record of 330 bytes and its tag, by number of interleaved instruments, beside copying the same
// bytes.
#include "fakes/CollectingSink.h"
#include "telemetry/FrameSync.h"
#include "telemetry/RawLogFormat.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace qor {
namespace {

constexpr std::size_t FrameSize = 330;
constexpr std::size_t Records = 50000;
constexpr std::size_t ChunkSize = 256U << 10;
constexpr std::size_t FrameLimit = 64;

std::string HeaderOf(std::size_t instrument) {
    return "SATHSE" + std::to_string(1000 + instrument).substr(1);
}

/// A log in which the instruments take turns; text frames end in CR LF.
std::vector<std::uint8_t> MakeLog(std::size_t instruments, bool text) {
    auto record = MakeHeaderRecord(FormatHeaderLine(static_cast<int>(HeaderTag::Mode), "NONE"));
    std::vector<std::uint8_t> log(record.begin(), record.end());
    FrameTime time{.seconds = SecondsFromCalendar(2024, 5, 1, 8, 0, 0), .known = true};
    for (std::size_t i = 0; i < Records; ++i) {
        std::string frame = HeaderOf(i % instruments);
        while (frame.size() < FrameSize)
            frame += static_cast<char>(text ? ' ' + frame.size() % 90 : frame.size() * 7);
        if (text)
            frame.replace(FrameSize - 2, 2, "\r\n");
        log.insert(log.end(), frame.begin(), frame.end());
        time.milliseconds = static_cast<std::uint16_t>((time.milliseconds + 7) % 1000);
        time.seconds += i % 100 == 0 ? 1 : 0;
        auto tag = MakeTimeTag(time);
        log.insert(log.end(), tag.begin(), tag.end());
    }
    return log;
}

std::size_t PlayLog(CFrameSync& sync, ByteSpan log) {
    std::size_t frames = 0;
    CFrameData frame;
    while (!log.empty()) {
        ByteSpan chunk = log.first(std::min(ChunkSize, log.size()));
        log = log.subspan(chunk.size());
        sync.Append(chunk);
        PassResult pass;
        do {
            pass = sync.RunPass(FrameLimit);
            for (; sync.Frames().Pop(frame); ++frames)
                benchmark::DoNotOptimize(frame.Bytes.data());
        } while (pass.moreReady);
    }
    return frames;
}

void Extract(benchmark::State& state, std::size_t instruments, bool text) {
    std::vector<std::uint8_t> log = MakeLog(instruments, text);
    CCollectingSink sink;
    CFrameSync sync(sink, "bench.raw", StreamSource::File);
    for (std::size_t i = 0; i < instruments; ++i) {
        AttachRequest request;
        request.instrumentName = request.syncHeader = HeaderOf(i);
        request.frameSize = FrameSize;
        request.terminator = text ? "\r\n" : "";
        if (sync.Attach(request) == CommResult::Success)
            (void)sync.SetAcquisition(request.instrumentName, true);
    }
    for (auto _ : state) {
        sync.ForgetBytes();
        if (PlayLog(sync, log) != Records || sync.Figures().bytesDiscarded != 0)
            state.SkipWithError("frames are missing");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(log.size()) * state.iterations());
    state.counters["s/record"] = benchmark::Counter(static_cast<double>(Records),
                                                    benchmark::Counter::kIsIterationInvariantRate |
                                                        benchmark::Counter::kInvert);
}

void ExtractFixed(benchmark::State& state) {
    Extract(state, static_cast<std::size_t>(state.range(0)), false);
}
BENCHMARK(ExtractFixed)->Arg(1)->Arg(4)->Arg(16)->Arg(64)->Unit(benchmark::kMillisecond);

void ExtractText(benchmark::State& state) {
    Extract(state, static_cast<std::size_t>(state.range(0)), true);
}
BENCHMARK(ExtractText)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

void CopyLog(benchmark::State& state) {
    std::vector<std::uint8_t> log = MakeLog(1, false);
    std::vector<std::uint8_t> copy(ChunkSize);
    for (auto _ : state) {
        for (ByteSpan rest(log); !rest.empty();) {
            ByteSpan chunk = rest.first(std::min(ChunkSize, rest.size()));
            rest = rest.subspan(chunk.size());
            std::memcpy(copy.data(), chunk.data(), chunk.size());
            benchmark::ClobberMemory();
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(log.size()) * state.iterations());
    state.counters["s/record"] = benchmark::Counter(static_cast<double>(Records),
                                                    benchmark::Counter::kIsIterationInvariantRate |
                                                        benchmark::Counter::kInvert);
}
BENCHMARK(CopyLog)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace qor
