// SPDX-License-Identifier: GPL-3.0-or-later
//
// The header search in bytes that hold no header, by number of headers, beside what the memory
// gives: searching one byte that is not there, and copying.
#include "telemetry/HeaderSearch.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>

namespace qor {
namespace {

constexpr std::size_t JunkSize = 1U << 20;

std::vector<std::uint8_t> RandomJunk() {
    std::mt19937 random(1);
    std::vector<std::uint8_t> junk(JunkSize);
    for (std::uint8_t& byte : junk)
        byte = static_cast<std::uint8_t>(random());
    return junk;
}

std::string SharedPrefixHeader(std::size_t number) {
    std::string digits = std::to_string(10000 + number);
    return "SATHSE" + digits.substr(1);
}

std::vector<std::string> RandomHeaders(std::size_t count) {
    std::mt19937 random(2);
    std::vector<std::string> headers(count);
    for (std::string& header : headers)
        for (int i = 0; i < 8; ++i)
            header += static_cast<char>(random());
    return headers;
}

std::vector<std::string> SharedPrefixHeaders(std::size_t count) {
    std::vector<std::string> headers;
    for (std::size_t i = 0; i < count; ++i)
        headers.push_back(SharedPrefixHeader(i));
    return headers;
}

/// Text in which beginnings of the headers stand everywhere, and no header.
std::vector<std::uint8_t> PrefixJunk() {
    std::mt19937 random(3);
    std::string text;
    while (text.size() < JunkSize) {
        text += SharedPrefixHeader(random() % 512).substr(0, random() % 9) + "-";
        for (std::size_t i = random() % 40; i-- > 0;)
            text += static_cast<char>(random());
    }
    text.resize(JunkSize);
    return {text.begin(), text.end()};
}

void Search(benchmark::State& state, const std::vector<std::string>& headers,
            const std::vector<std::uint8_t>& junk) {
    CHeaderSearch search;
    search.Compile(headers);
    for (auto _ : state)
        if (search.Search(junk, SIZE_MAX, true).outcome != SearchResult::Outcome::None)
            state.SkipWithError("the junk holds a header");
    state.SetBytesProcessed(static_cast<std::int64_t>(junk.size()) * state.iterations());
}

void SearchRandomHeaders(benchmark::State& state) {
    Search(state, RandomHeaders(static_cast<std::size_t>(state.range(0))), RandomJunk());
}
BENCHMARK(SearchRandomHeaders)->Arg(1)->Arg(4)->Arg(16)->Arg(64)->Arg(512);

void SearchSharedPrefixes(benchmark::State& state) {
    Search(state, SharedPrefixHeaders(static_cast<std::size_t>(state.range(0))), PrefixJunk());
}
BENCHMARK(SearchSharedPrefixes)->Arg(1)->Arg(4)->Arg(16)->Arg(64)->Arg(512);

void MemorySearch(benchmark::State& state) {
    std::vector<std::uint8_t> junk = RandomJunk();
    for (std::uint8_t& byte : junk)
        byte = byte == 'S' ? 's' : byte;
    for (auto _ : state)
        benchmark::DoNotOptimize(std::memchr(junk.data(), 'S', junk.size()));
    state.SetBytesProcessed(static_cast<std::int64_t>(junk.size()) * state.iterations());
}
BENCHMARK(MemorySearch);

void MemoryCopy(benchmark::State& state) {
    std::vector<std::uint8_t> junk = RandomJunk();
    std::vector<std::uint8_t> copy(junk.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), junk.data(), junk.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(junk.size()) * state.iterations());
}
BENCHMARK(MemoryCopy);

} // namespace
} // namespace qor
