// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a watched value costs its history, and what a plot costs that shows it. A value may cost 30
// ns.
#include "products/CastDetector.h"
#include "products/HistoryCurve.h"

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
