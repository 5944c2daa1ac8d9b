// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a watched value costs its history, and what a plot costs that shows it. A value may cost 30
// ns.
#include "fakes/ManualClock.h"
#include "fakes/ScriptedUser.h"
#include "instrument/Calibration.h"
#include "instrument/DefinitionReader.h"
#include "products/CastDetector.h"
#include "products/HistoryCurve.h"
#include "session/QorViewDoc.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

using namespace qor;

/// Appends at 20 Hz long past the point where every level is thinned.
void AppendToHistory(benchmark::State& state) {
    CHistoryCurve curve;
    std::int64_t i = 0;
    for (; i < 20 * 7200; ++i)
        curve.Append(0.05 * static_cast<double>(i), std::sin(1e-3 * static_cast<double>(i)), 0.0);
    for (auto _ : state) {
        curve.Append(0.05 * static_cast<double>(i), static_cast<double>(i % 977), 0.0);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(AppendToHistory);

/// The limit: the same values into plain memory.
void AppendToMemory(benchmark::State& state) {
    std::vector<HistoryPoint> points(1u << 16);
    std::size_t i = 0;
    for (auto _ : state) {
        points[i & 0xFFFF] = {0.05 * static_cast<double>(i), static_cast<double>(i % 977), 0.0,
                              false};
        benchmark::ClobberMemory();
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(AppendToMemory);

/// Of what a profiler measures, without checks that the frames of a benchmark would fail.
constexpr const char* ProfilerText = R"(INSTRUMENT PRO '' 3 AS 0 NONE
PRES NONE 'dbar' 2 BU 1 POLYU
0 0.001
TEMP W 'C' 2 BU 1 POLYU
0 0.001
COND NONE 'mS/cm' 2 BU 1 POLYU
0 0.003
TILT X 'deg' 2 BU 1 POLYU
0 0.001
TILT Y 'deg' 2 BU 1 POLYU
0 0.001
CHL NONE 'mg/m^3' 2 BU 0 COUNT
CDOM 370 'ppb' 2 BU 0 COUNT
VOLT A 'V' 2 BU 0 COUNT
VOLT B 'V' 2 BU 0 COUNT
VOLT C 'V' 2 BU 0 COUNT
HEADING NONE 'deg' 2 BU 0 COUNT
LEAK NONE '' 2 BU 0 COUNT
)";

/// A session with a profiler as a package, whose frames arrive at 10 Hz.
class CRunningCast {
  public:
    CRunningCast()
        : Doc(
              Clock, [] { return nullptr; }, User, Profile) {
        const ResourceId port = Doc.AddSerialResource({.portName = "PORT", .globalSyncString = ""});
        auto definition = std::make_unique<CInstrument>();
        CDefinitionReader reader(*definition, "profiler.cal");
        reader.Begin("profiler.cal");
        reader.Feed(ProfilerText);
        if (reader.Finish() != DefinitionStatus::Success)
            return;
        Name = definition->Name();
        LoadedPackage loaded;
        loaded.ok = true;
        loaded.members.push_back({"profiler.cal", std::move(definition)});
        Doc.Packages.AddPackage(std::move(loaded), port);
        CRecursiveLock lock(Doc.DocLock);
        Ins = Doc.Find(Doc.FindInstrument(Name));
        Info.identity = static_cast<std::uint32_t>(Ins->Id);
        Info.frameSize = static_cast<std::int32_t>(Ins->Definition().FrameSize());
        Info.time.known = true;
        Bytes.assign(static_cast<std::size_t>(Info.frameSize), AsciiOne);
    }
    static constexpr std::uint8_t AsciiOne = 0x31; ///< a number in text fields too
    bool Works() const { return Ins != nullptr; }

    /// Watches so many of the sensors, or of the rows that cost no sum over channels.
    void Watch(std::size_t sensors, std::size_t rows) {
        for (const CSensor& sensor : Ins->Definition().Sensors())
            if (sensors > 0 && KindOfValue(sensor) == ValueKind::Number) {
                Doc.History.Watch({Name, SensorName(sensor)});
                --sensors;
            }
        for (const char* label : {"DEPTH", "VELOCITY", "T (W)", "SALINITY", "TILT"})
            if (rows > 0) {
                Doc.History.Watch({Name, label, true});
                --rows;
            }
    }
    /// A thousand frames, the whole way of a frame.
    void Run() {
        for (int i = 0; i < 1000; ++i) {
            Milliseconds += 100;
            Info.time.seconds = 1'790'000'000 + Milliseconds / 1000;
            Info.time.milliseconds = static_cast<std::uint16_t>(Milliseconds % 1000);
            ++Info.frameCounter;
            Frames.Push(Info, Bytes, 0);
        }
        Doc.Acquisition.ProcessFrames(Frames);
    }

  private:
    CManualClock Clock;
    CScriptedUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Doc;
    std::string Name;
    CQorViewIns* Ins = nullptr;
    CFrameInfo Info;
    std::vector<std::uint8_t> Bytes;
    CFrameQueue Frames;
    std::int64_t Milliseconds = 0;
};

/// The way of a frame while so many sensors and rows of it are watched; what a watched value costs
/// is the difference to none.
void FramesWatched(benchmark::State& state) {
    CRunningCast cast;
    if (!cast.Works()) {
        state.SkipWithError("the example's definition does not load");
        return;
    }
    cast.Watch(static_cast<std::size_t>(state.range(0)), static_cast<std::size_t>(state.range(1)));
    for (int i = 0; i < 50; ++i)
        cast.Run(); // past the hour after which every level is thinned
    for (auto _ : state)
        cast.Run();
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(FramesWatched)
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({4, 0})
    ->Args({12, 0})
    ->Args({0, 4})
    ->Args({0, 5}) // with the tilt, whose tangents cost more than all the rest
    ->Unit(benchmark::kMicrosecond);

/// A plot of 2000 points over the last minutes, an hour, a day.
void PlotHistory(benchmark::State& state) {
    CHistoryCurve curve;
    constexpr double End = 86400.0;
    for (int i = 0; i < 20 * 86400; ++i)
        curve.Append(0.05 * i, std::sin(1e-3 * i), 0.0);
    std::vector<HistoryPoint> points;
    for (auto _ : state) {
        curve.Query(End - static_cast<double>(state.range(0)), End, 2000, points);
        benchmark::DoNotOptimize(points.data());
    }
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(PlotHistory)->Arg(300)->Arg(3600)->Arg(86400)->Unit(benchmark::kMicrosecond);

void DetectCast(benchmark::State& state) {
    CCastDetector detector;
    std::int64_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(detector.Take(
            0.05 * static_cast<double>(i), std::fabs(static_cast<double>(i % 8000 - 4000)) / 40));
        ++i;
    }
}
BENCHMARK(DetectCast);

} // namespace
