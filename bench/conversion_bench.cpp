// SPDX-License-Identifier: GPL-3.0-or-later
//
// Conversion of whole frames, each beside a decoder written by hand for that very frame: the limit
// that a compiled definition can come near to. Delimited frames stand beside a search for their
// delimiters. Single sensors and frame making are here for comparison.
#include "instrument/Calibration.h"
#include "instrument/ConversionPlan.h"
#include "instrument/DefinitionReader.h"
#include "instrument/FrameChecks.h"
#include "simulation/FrameMaker.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

using namespace qor;

namespace {

std::unique_ptr<CInstrument> Define(const std::string& text) {
    auto instrument = std::make_unique<CInstrument>();
    CDefinitionReader reader(*instrument, "bench.cal");
    reader.Begin("bench.cal");
    reader.Feed(text);
    if (reader.Finish() != DefinitionStatus::Success || instrument->DiagnosticCount() != 0) {
        std::cerr << instrument->ParseLog();
        std::exit(1);
    }
    return instrument;
}

/// A hyperspectral radiometer: ten bytes of header, integration time, channels, ancillary fields,
/// counter and checksum; 330 bytes with 137 channels.
std::unique_ptr<CInstrument> Radiometer(int channels) {
    std::string text = "INSTRUMENT SATTLU '' 6 AS 0 NONE\nSN 0123 '' 4 AS 0 NONE\n"
                       "RATE 6 'Hz' 0 BU 0 NONE\n"
                       "INTTIME LU 'sec' 2 BU 1 POLYU\n0 0.001\nSAMPLE DELAY 'sec' 2 BS 1 POLYU\n0 "
                       "0.001\n";
    for (int i = 0; i < channels; ++i)
        text += "LU " + std::to_string(350.0 + 3.3 * i) + " 'uW/cm^2/nm/sr' 2 BU 1 OPTIC3\n" +
                std::to_string(2050.0 + i) + " 0.000021 1.754 0.256\n";
    text += "DARK AVE '' 2 BU 0 COUNT\nDARK SAMP '' 2 BU 0 COUNT\nTEMP INT 'C' 2 BU 1 POLYU\n-10 "
            "0.01\nPRES NONE 'm' 4 BF 1 POLYU\n-10.1 1.0\nTILT X 'deg' 2 BS 1 POLYU\n0 0.01\n"
            "TILT Y 'deg' 2 BS 1 POLYU\n0 0.01\nVS NONE 'V' 2 BU 1 POLYU\n0 0.03\n"
            "SPARE NONE '' 14 AS 0 NONE\nTIMER NONE 'sec' 10 AF 0 COUNT\n"
            "FRAME COUNTER '' 1 BU 0 COUNT\nCHECK SUM '' 1 BU 0 COUNT\n";
    return Define(text);
}

std::unique_ptr<CInstrument> Delimited(int fields) {
    std::string text = "VLF_INSTRUMENT $TXT '' 4 AS 0 NONE\n";
    for (int i = 0; i < fields; ++i)
        text +=
            "FIELD NONE ',' 1 AS 0 DELIMITER\nTEMP " + std::to_string(i) + " 'C' V AF 0 COUNT\n";
    return Define(text + "TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n");
}

void SetBytes(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

/// Frames enough that no branch learns one of them by heart, few enough for the first cache.
std::vector<std::vector<std::uint8_t>> Frames(const CInstrument& instrument) {
    CFrameMaker maker(instrument);
    std::vector<std::vector<std::uint8_t>> frames;
    for (int i = 0; i < 32; ++i)
        frames.push_back(maker.Next(1e9 + i / 6.0));
    return frames;
}

void Convert(benchmark::State& state, const CInstrument& instrument, bool immersed) {
    const auto frames = Frames(instrument);
    const CConversionPlan plan(instrument);
    FrameValues values;
    std::size_t i = 0;
    for (auto _ : state) {
        plan.Convert(frames[i++ % frames.size()], immersed, values);
        benchmark::DoNotOptimize(values.numbers.data());
        benchmark::ClobberMemory();
    }
    SetBytes(state, frames[0].size());
}

void RadiometerFrame(benchmark::State& state) {
    Convert(state, *Radiometer(static_cast<int>(state.range(0))), false);
}
BENCHMARK(RadiometerFrame)->Arg(137)->Arg(256);

void RadiometerFrameImmersed(benchmark::State& state) {
    Convert(state, *Radiometer(static_cast<int>(state.range(0))), true);
}
BENCHMARK(RadiometerFrameImmersed)->Arg(137);

/// The channels of the same frame alone, by a loop that knows everything beforehand.
void IdealDecoder(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const auto instrument = Radiometer(static_cast<int>(count));
    const auto frames = Frames(*instrument);
    std::vector<double> offsets(count), scales(count), factors(count), values(count);
    for (std::size_t k = 0; k < count; ++k) {
        const std::vector<double>& c = instrument->Sensors()[k + 3].Coefficients[0];
        offsets[k] = c[0];
        factors[k] = c[1];
        scales[k] = c[3] / 0.128;
    }
    std::size_t i = 0;
    for (auto _ : state) {
        const std::uint8_t* at = frames[i++ % frames.size()].data() + 14;
        for (std::size_t k = 0; k < count; ++k, at += 2)
            values[k] =
                (static_cast<double>(at[0] << 8 | at[1]) - offsets[k]) * scales[k] * factors[k];
        benchmark::DoNotOptimize(values.data());
        benchmark::ClobberMemory();
    }
    SetBytes(state, frames[0].size());
}
BENCHMARK(IdealDecoder)->Arg(137)->Arg(256);

void RadiometerFrameSensorBySensor(benchmark::State& state) {
    const auto instrument = Radiometer(137);
    const auto frames = Frames(*instrument);
    std::size_t i = 0;
    for (auto _ : state) {
        const auto& frame = frames[i++ % frames.size()];
        for (const CSensor& sensor : instrument->Sensors()) {
            double value = 0.0;
            benchmark::DoNotOptimize(CalibratedValue(sensor, frame, false, value));
            benchmark::DoNotOptimize(value);
        }
    }
    SetBytes(state, frames[0].size());
}
BENCHMARK(RadiometerFrameSensorBySensor);

/// The integration time changes with every frame: all scales anew.
void RadiometerFrameNewTime(benchmark::State& state) {
    const auto instrument = Radiometer(137);
    auto frames = Frames(*instrument);
    for (std::size_t i = 0; i < frames.size(); ++i)
        frames[i][11] = static_cast<std::uint8_t>(64 + i);
    const CConversionPlan plan(*instrument);
    FrameValues values;
    std::size_t i = 0;
    for (auto _ : state) {
        plan.Convert(frames[i++ % frames.size()], false, values);
        benchmark::ClobberMemory();
    }
    SetBytes(state, frames[0].size());
}
BENCHMARK(RadiometerFrameNewTime);

void DelimitedFrame(benchmark::State& state) {
    Convert(state, *Delimited(static_cast<int>(state.range(0))), false);
}
BENCHMARK(DelimitedFrame)->Arg(12)->Arg(60);

/// What it costs to look for the delimiters alone.
void DelimiterSearch(benchmark::State& state) {
    const auto instrument = Delimited(static_cast<int>(state.range(0)));
    const auto frames = Frames(*instrument);
    std::size_t i = 0;
    for (auto _ : state) {
        const auto& frame = frames[i++ % frames.size()];
        benchmark::DoNotOptimize(std::count(frame.begin(), frame.end(), ','));
    }
    SetBytes(state, frames[0].size());
}
BENCHMARK(DelimiterSearch)->Arg(12)->Arg(60);

class CSilentSink : public CMessageSink {
  public:
    void Raise(Event) override {}
};

void FrameChecksOfOneFrame(benchmark::State& state) {
    const auto instrument = Radiometer(137);
    CFrameMaker maker(*instrument);
    std::vector<std::vector<std::uint8_t>> frames; // a whole turn of the counter
    for (int i = 0; i < 256; ++i)
        frames.push_back(maker.Next(1e9 + i));
    CSilentSink sink;
    CFrameChecks checks;
    checks.SetUp(*instrument, "LU", "COM1", sink);
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(checks.Check(frames[i++ % frames.size()]));
    if (checks.ErrorCount > 0)
        state.SkipWithError("a frame failed its checks");
    SetBytes(state, frames[0].size());
}
BENCHMARK(FrameChecksOfOneFrame);

void MakeFrame(benchmark::State& state) {
    const auto instrument = Radiometer(137);
    CFrameMaker maker(*instrument);
    double seconds = 1e9;
    for (auto _ : state)
        benchmark::DoNotOptimize(maker.Next(seconds += 0.1));
}
BENCHMARK(MakeFrame);

} // namespace
