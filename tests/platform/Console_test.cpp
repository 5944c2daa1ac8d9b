// SPDX-License-Identifier: GPL-3.0-or-later
//
// The console's stop request and streams, as far as a test program can ask for them.
#include "platform/Console.h"

#include <gtest/gtest.h>

#include <csignal>

#if !defined(_WIN32)
#include <unistd.h>

namespace qor {
namespace {

TEST(StopWatch, HearsAnInterruptThatABackgroundJobInheritsAsIgnored) {
    std::signal(SIGINT, SIG_IGN);
    CEvent stop;
    CStopWatch watch(stop);
    EXPECT_FALSE(watch.Requested());
    kill(getpid(), SIGINT);
    EXPECT_TRUE(stop.Wait(5000));
    EXPECT_TRUE(watch.Requested());
}

/// Exit status 3 when the process outlives the second signal.
[[noreturn]] void AskTwice(std::chrono::milliseconds sameRequest) {
    {
        CEvent stop;
        CStopWatch watch(stop, sameRequest);
        kill(getpid(), SIGINT);
        stop.Wait(5000);
        kill(getpid(), SIGINT);
        sigset_t waiting;
        while (sigpending(&waiting) == 0 && sigismember(&waiting, SIGINT) == 1)
            sched_yield();
        if (sameRequest.count() == 0)
            CEvent().Wait(5000);
    }
    _exit(3);
}

TEST(StopWatchDeathTest, EndsTheProcessOnTheSecondSignalButNotOnOneDeliveredTwice) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(AskTwice(std::chrono::milliseconds(0)), testing::ExitedWithCode(130), "");
    EXPECT_EXIT(AskTwice(std::chrono::hours(1)), testing::ExitedWithCode(3), "");
}

/// Exit status 7 when a write that nobody reads ends once a stop is asked for.
[[noreturn]] void WriteToAReaderThatStandsStill() {
    CEvent stop;
    CStopWatch watch(stop);
    int ends[2];
    bool piped = pipe(ends) == 0 && dup2(ends[1], 1) == 1;
    kill(getpid(), SIGINT);
    StreamWrite still = WriteStream(StandardStream::Output, std::string(1 << 20, 'x'));
    close(ends[0]); // some sanitizers flush the streams at the end
    _exit(piped && still == StreamWrite::ReaderStalls ? 7 : 1);
}

TEST(WriteStreamDeathTest, EndsForAReaderThatStandsStillOnceAStopIsAskedFor) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(WriteToAReaderThatStandsStill(), testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace qor
#else
#include <windows.h>

namespace qor {
namespace {

TEST(WriteStream, EndsOnEveryThreadForAReaderThatStandsStillOnceTheProgramIsToEnd) {
    HANDLE reader = nullptr, writer = nullptr;
    ASSERT_TRUE(CreatePipe(&reader, &writer, nullptr, 0));
    const HANDLE own = GetStdHandle(STD_OUTPUT_HANDLE);
    SetStdHandle(STD_OUTPUT_HANDLE, writer);
    EXPECT_EQ(WriteStream(StandardStream::Output, "read"), StreamWrite::Done);
    HurryReaders();
    const std::string text(1 << 20, 'x');
    CWorker other;
    ASSERT_TRUE(other.Start(ThreadPriority::Normal, [&] {
        EXPECT_EQ(WriteStream(StandardStream::Output, text), StreamWrite::ReaderStalls);
    }));
    EXPECT_EQ(WriteStream(StandardStream::Output, text), StreamWrite::ReaderStalls);
    other.Join();
    SetStdHandle(STD_OUTPUT_HANDLE, own);
    CloseHandle(writer);
    CloseHandle(reader);
}

} // namespace
} // namespace qor
#endif
