// SPDX-License-Identifier: GPL-3.0-or-later
//
// Figures as ratios: the median of several runs, beside a limit measured in the same run.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace qor {

/// Seconds that a call takes.
template <class Call> double SecondsOf(Call call) {
    auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

inline double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Median seconds of five runs.
template <class Call> double MedianSeconds(Call call, int runs = 5) {
    std::vector<double> seconds;
    for (int i = 0; i < runs; ++i)
        seconds.push_back(SecondsOf(call));
    return Median(seconds);
}

/// M: bytes a second of a large memory copy.
inline double MemoryCopySpeed() {
    constexpr std::size_t size = std::size_t{1} << 28;
    std::vector<char> from(size, 1), to(size, 2);
    volatile char sink = 0;
    double seconds = MedianSeconds([&] {
        std::memcpy(to.data(), from.data(), size);
        sink = to[size / 2];
    });
    static_cast<void>(sink);
    return static_cast<double>(size) / seconds;
}

/// One row of the table of ratios.
inline void PrintRow(const char* what, double figure, const char* unit, double limit,
                     const char* limitName, double must) {
    double ratio = figure / limit;
    std::printf("%-44s %12.4g %-10s %9.4f of %-26s %s\n", what, figure, unit, ratio, limitName,
                ratio >= must ? "ok" : "MISSED");
}

} // namespace qor
