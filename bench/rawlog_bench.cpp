// SPDX-License-Identifier: GPL-3.0-or-later
//
// The raw log: one write a frame and one write a batch, beside the same bytes written bare; and
// what the way of a frame costs beside its checks and conversions.
#include "base/Text.h"
#include "session/FrameWatch.h"
#include "session/QorViewDoc.h"
#include "telemetry/RawLogFormat.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>

namespace qor {
namespace {

class CSilentUser : public CUserService {
  public:
    void ShowMessage(const std::string&) override {}
    bool AskYesNo(const std::string&) override { return true; }
    void Beep(BeepKind) override {}
    LogAnswer ConfirmLog(const LogQuestion&) override { return LogAnswer::LogAsShown; }
    void RequestClose() override {}
};

/// A session with one instrument of 60-byte frames.
struct Bench {
    Bench()
        : Folder((std::filesystem::temp_directory_path() / "qorbench").string() + PathSeparator()),
          Doc(
              Clock, [] { return nullptr; }, User, Profile) {
        std::filesystem::create_directories(Folder);
        std::ofstream(Folder + "BENCH.cal") << "INSTRUMENT BENCH '' 5 AS 0 NONE\n"
                                               "VALUE NONE '' 4 BU 0 COUNT\n"
                                               "REST NONE '' 50 AS 0 NONE\n"
                                               "FRAME COUNTER '' 1 BU 0 COUNT\n";
        const ResourceId port = Doc.AddSerialResource({.portName = "PORT", .globalSyncString = ""});
        const InstrumentId id = Doc.AddInstrument(Folder + "BENCH.cal", port).id;
        CRecursiveLock lock(Doc.DocLock);
        Instrument = Doc.Find(id);
        Doc.NoDialogs = Doc.Options.overwriteExisting = true;
        Doc.Naming.logDirectory = Folder;
        Info.identity = static_cast<std::uint32_t>(id);
        Info.time = Clock.Now();
    }
    ~Bench() {
        Doc.RawLog.ShutDown();
        std::filesystem::remove_all(Folder);
    }
    void Fill(std::int64_t frames) {
        for (std::int64_t i = 0; i < frames; ++i) {
            Frame.back() = Counter++;
            Queue.Push(Info, Frame, 0);
        }
    }

    std::string Folder;
    CSystemClock Clock;
    CSilentUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Doc;
    CQorViewIns* Instrument = nullptr;
    CFrameInfo Info;
    CFrameQueue Queue;
    std::vector<std::uint8_t> Frame = std::vector<std::uint8_t>(60, 'B');
    std::uint8_t Counter = 0;
};

/// Frames at once, and whether the file is hashed for its manifest.
void LogFrames(benchmark::State& state) {
    Bench bench;
    bench.Doc.RawLog.SetHashing(state.range(1) != 0);
    if (!bench.Doc.RawLog.BeginLogFile())
        state.SkipWithError("the log did not begin");
    for (auto _ : state) {
        bench.Fill(state.range(0));
        bench.Doc.Acquisition.ProcessFrames(bench.Queue);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(LogFrames)->ArgsProduct({{1, 16, 256}, {0, 1}});

void BareWrite(benchmark::State& state) {
    Bench bench;
    CFile file;
    if (file.CreateExclusive(bench.Folder + "bare.raw") != FileCause::None)
        state.SkipWithError("no file");
    std::vector<std::uint8_t> records(static_cast<std::size_t>(state.range(0)) * 67, 'B');
    for (auto _ : state)
        if (file.Write(records) != FileCause::None)
            state.SkipWithError("no room");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BareWrite)->Arg(1)->Arg(16)->Arg(256);

/// No log is open: look-up, checks, conversion, current frame, hook.
void PassFrames(benchmark::State& state) {
    Bench bench;
    std::uint64_t seen = 0;
    const CFrameWatch watch(bench.Doc, [&](CQorViewIns&, const FrameCheckResult&) { ++seen; });
    for (auto _ : state) {
        bench.Fill(256);
        bench.Doc.Acquisition.ProcessFrames(bench.Queue);
    }
    state.SetItemsProcessed(state.iterations() * 256);
    benchmark::DoNotOptimize(seen);
}
BENCHMARK(PassFrames);

/// Only what no way can save: filling the queue, checks and conversion.
void CheckAndConvert(benchmark::State& state) {
    Bench bench;
    CConversionPlan plan(bench.Instrument->Definition());
    FrameValues values;
    for (auto _ : state) {
        bench.Fill(256);
        for (; !bench.Queue.Empty(); bench.Queue.DropFront()) {
            ByteSpan frame = bench.Queue.Front().Span();
            benchmark::DoNotOptimize(bench.Instrument->Checks.Check(frame));
            plan.Convert(frame, false, values);
        }
    }
    state.SetItemsProcessed(state.iterations() * 256);
}
BENCHMARK(CheckAndConvert);

} // namespace
} // namespace qor
