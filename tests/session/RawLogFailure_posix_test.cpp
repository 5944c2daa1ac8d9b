// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the disk can do to a raw log, and to the session log: no folder, no right, a file held
// elsewhere, no room. A limit on the size of files stands in for a full disk.
#if !defined(_WIN32)
#include "fakes/CollectingSink.h"
#include "fakes/SessionFixture.h"
#include "session/EventAdvice.h"

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace qor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class AFailingDisk : public ASession {
  protected:
    AFailingDisk() { std::signal(SIGXFSZ, SIG_IGN); }
    ~AFailingDisk() override { LimitFiles(RLIM_INFINITY); }

    static void LimitFiles(rlim_t bytes) {
        rlimit limit{};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
        limit.rlim_cur = bytes == RLIM_INFINITY ? limit.rlim_max : bytes;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    std::string Opening(const std::string& cause) {
        return "An error occured opening the file\r\n\"" + Folder + "cast.raw\".\r\n" + cause;
    }
};

TEST_F(AFailingDisk, FailureToOpenIsToldAndLeavesNoRun) {
    std::filesystem::create_directory(Folder + "cast.raw");
    Set([](LogOptions& options) { options.overwriteExisting = true; });
    EXPECT_FALSE(Begin());
    auto told = User.TakeMessages();
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.back(), Opening("The file could not be accessed."));
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    ASSERT_EQ(std::filesystem::remove(Folder + "cast.raw"), true);
    EXPECT_TRUE(Doc.RawLog.BeginLogFile());
}

TEST_F(AFailingDisk, LogThatAnotherProgramWritesIsNotTouched) {
    CFile other;
    ASSERT_EQ(other.CreateExclusive(Folder + "cast.raw"), FileCause::None);
    ASSERT_EQ(other.Write(AsBytes("theirs")), FileCause::None);
    Set([](LogOptions& options) { options.overwriteExisting = true; });
    EXPECT_FALSE(Begin());
    EXPECT_THAT(
        User.TakeMessages(),
        ElementsAre(Opening("A sharing violation occured, or a shared region was locked.")));
    EXPECT_EQ(Content(Folder + "cast.raw"), "theirs");
}

TEST_F(AFailingDisk, SymbolicLinkIsNotFollowed) {
    std::filesystem::create_symlink(Folder + "elsewhere", Folder + "cast.raw");
    Set([](LogOptions& options) { options.overwriteExisting = true; });
    EXPECT_FALSE(Begin());
    EXPECT_FALSE(FileExists(Folder + "elsewhere"));
    EXPECT_THAT(Reported(), HasSubstr("symbolic link"));
}

TEST_F(AFailingDisk, DiskFullInTheHeaderAbandonsTheLog) {
    LimitFiles(1000);
    EXPECT_FALSE(Begin());
    LimitFiles(RLIM_INFINITY);
    EXPECT_THAT(User.TakeMessages(),
                ElementsAre("An error occured creating the log file headers.\r\nLogging has been "
                            "aborted.\r\nSee the session log for details."));
    EXPECT_THAT(Reported(), testing::EndsWith("|Error writing to log file: The disk is full..|"));
    EXPECT_FALSE(Doc.RawLog.Status().logOpen);
    EXPECT_FALSE(std::filesystem::exists(Folder + "cast.raw")) << "it would block its own name";
}

TEST_F(AFailingDisk, DiskFullEndsTheLogWithAWholeRecordAndStopsTheRunOnDemand) {
    CQorViewIns* pro = Add("PRO", Port);
    Set(&SessionState::ExitOnError, true);
    Set([](LogOptions& options) {
        options.durationEnabled = options.repeatEnabled = true;
        options.duration = {1, 0, 0};
    });
    std::uint64_t inManifest = 0;
    Doc.RawLog.SetHashing(true);
    Doc.RawLog.OnFileEnded = [&](const FinishedFile& file) { inManifest = file.framesUnstored; };
    ASSERT_TRUE(Begin());
    Reported();
    // One record is 13 bytes; two and a half have room.
    LimitFiles(2304 + 2 * 13 + 6);
    Offer(*pro, {CounterFrame("PRO", 1)});
    std::vector<std::string> batch;
    for (int i = 2; i < 6; ++i)
        batch.push_back(CounterFrame("PRO", i));
    Offer(*pro, batch);
    Offer(*pro, {CounterFrame("PRO", 6)});
    LimitFiles(RLIM_INFINITY);
    EXPECT_EQ(Content(Folder + "cast.raw").size(), 2304u + 2 * 13);
    EXPECT_EQ(Reported(), "Error writing to log file: The disk is full..|"
                          "3 frames were received and not stored in \"" +
                              Folder + "cast.raw\".|End log file: \"" + Folder + "cast.raw\".|");
    LogStatus status = Doc.RawLog.Status();
    EXPECT_FALSE(status.loggingActive || status.intervalRun || status.waitingForNextLog);
    EXPECT_TRUE(status.runFailed);
    EXPECT_EQ(status.framesLogged, 2u);
    EXPECT_EQ(status.framesOffered, 3u);
    EXPECT_EQ(FramesThisLog(*pro).offered, 3u);
    EXPECT_EQ(Doc.Snapshot().Find(pro->Id)->framesThisLog, 2u);
    EXPECT_EQ(pro->FramesReceived, 6u);
    EXPECT_EQ(inManifest, 3u);
    Doc.RawLog.OnFileEnded = nullptr;
}

TEST_F(AFailingDisk, AnotherFileTakesWhatTheFullDiskDidNot) {
    const struct {
        std::int64_t age; ///< of the file that fails, in milliseconds
        bool spare;
        const char* next;
        int taken = 0; ///< the last suffix that is not free
    } cases[] = {{0, false, "cast-2.raw"},
                 {0, true, "spare/cast.raw"},
                 {5000, false, "cast-2.raw"},
                 {5000, false, "2005-123-142324.raw", 99}};
    CQorViewIns* pro = Add("PRO", Port);
    for (const auto& c : cases) {
        const std::string next = Folder + c.next;
        std::filesystem::create_directory(Folder + "spare");
        Set(&SessionState::SpareDirectories,
            c.spare ? std::vector{Folder + "spare/"} : std::vector<std::string>{});
        for (int number = 2; number <= c.taken; ++number)
            Temp.Put("cast-" + std::to_string(number) + ".raw", "");
        ASSERT_TRUE(Begin());
        Clock.Advance(c.age);
        LimitFiles(2304 + 2 * 13 + 6);
        for (int i = 1; i < 4; ++i)
            Offer(*pro, {CounterFrame("PRO", i)});
        LimitFiles(RLIM_INFINITY);
        const bool waits = c.age == 0 && !c.spare;
        EXPECT_EQ(Doc.RawLog.Status().recovering, waits) << next;
        EXPECT_EQ(std::filesystem::exists(next), !waits) << next;
        Clock.Advance(3000);
        Doc.RawLog.OnLogTick();
        Offer(*pro, {CounterFrame("PRO", 4)});
        EXPECT_EQ(Content(Folder + "cast.raw").size(), 2304u + 2 * 13);
        EXPECT_EQ(Content(next).size(), 2304u + 2 * 13) << "the third frame and the fourth";
        const LogStatus status = Doc.RawLog.Status();
        EXPECT_EQ(status.framesUnstored, 0u);
        EXPECT_FALSE(status.recovering || status.runFailed);
        EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
        EXPECT_THAT(Reported(), HasSubstr("End log file: \"" + next));
        for (const std::string& path : {Folder + "cast.raw", next}) {
            ASSERT_EQ(SetReadOnly(path, false), FileCause::None);
            std::filesystem::remove(path);
        }
    }
}

TEST_F(AFailingDisk, WhatALogThatATimerEndsDidNotTakeIsInAnotherFile) {
    CQorViewIns* pro = Add("PRO", Port);
    for (const bool every : {true, false}) {
        Set([every](LogOptions& options) {
            options.everyEnabled = every;
            options.every = {0, 1, 0};
            options.durationEnabled = !every;
            options.duration = {0, 0, 2}; // a file that fails as young is not tried at its place
        });
        SetMode(LogNamingMode::TimeStamp);
        ASSERT_TRUE(Doc.RawLog.BeginLogFile());
        const std::string path = Doc.RawLog.Status().logFilePath;
        LimitFiles(2304 + 13 + 6);
        Process(*pro, {CounterFrame("PRO", 1), CounterFrame("PRO", 2), CounterFrame("PRO", 3)});
        Doc.RawLog.WaitForDisk();
        LimitFiles(RLIM_INFINITY);
        Reported();
        Clock.Advance(Doc.RawLog.NextTimer() - Clock.MonotonicMilliseconds());
        Doc.RawLog.OnLogTick();
        const LogStatus status = Doc.RawLog.Status();
        EXPECT_EQ(status.loggingActive, every);
        EXPECT_EQ(status.runFrames, 3u);
        EXPECT_EQ(status.runUnstored, 0u);
        EXPECT_FALSE(status.runFailed);
        EXPECT_THAT(Reported(), HasSubstr("no frame was lost between"));
        EXPECT_EQ(Content(path).size(), 2304u + 13);
        Doc.RawLog.EndLogFile(true);
        Clock.Advance(60'000);
    }
}

TEST_F(AFailingDisk, AnAbandonedRunHasFailedWhateverBecomesOfItsLastFrames) {
    CQorViewIns* pro = Add("PRO", Port);
    for (const bool full : {false, true}) {
        ASSERT_TRUE(Begin(full ? "full.raw" : "cast.raw"));
        Clock.Advance(5000);
        LimitFiles(2304);
        Process(*pro, {CounterFrame("PRO", 1)});
        Doc.RawLog.WaitForDisk();
        LimitFiles(full ? 2303 : RLIM_INFINITY);
        Reported();
        Doc.RawLog.AbandonRun();
        LimitFiles(RLIM_INFINITY);
        EXPECT_TRUE(Doc.RawLog.Status().runFailed);
        EXPECT_EQ(Doc.RawLog.Status().runUnstored, full ? 1u : 0u);
        const std::string said = Reported();
        EXPECT_EQ(said.find("No other log file") != std::string::npos, full) << said;
        EXPECT_THAT(said, testing::Not(HasSubstr("wait in memory"))) << "nothing is tried again";
    }
}

TEST_F(AFailingDisk, NextLogThatCannotBeBegunWaitsForAnotherFile) {
    const struct {
        bool full, spare, stops;
    } cases[] = {
        {false, true, false}, {false, false, false}, {true, false, false}, {false, true, true}};
    namespace fs = std::filesystem;
    CQorViewIns* pro = Add("PRO", Port);
    Set([](LogOptions& options) {
        options.everyEnabled = true;
        options.every = {0, 1, 0};
    });
    for (const auto& c : cases) {
        fs::create_directories(Folder + "logs");
        fs::create_directories(Folder + "spare");
        Set(&SessionState::ExitOnError, c.stops);
        Set(&SessionState::SpareDirectories,
            c.spare ? std::vector{Folder + "spare/"} : std::vector<std::string>{});
        SetMode(LogNamingMode::TimeStamp);
        ASSERT_EQ(Doc.RawLog.SetDirectory(Folder + "logs"), "");
        ASSERT_TRUE(Doc.RawLog.BeginLogFile());
        Offer(*pro, {CounterFrame("PRO", 1)});
        if (c.full)
            LimitFiles(1000);
        else
            fs::rename(Folder + "logs", Folder + "away");
        Reported();
        Clock.Advance(Doc.RawLog.NextTimer() - Clock.MonotonicMilliseconds());
        Doc.RawLog.OnLogTick();
        EXPECT_EQ(Doc.RawLog.Status().loggingActive, !c.stops);
        EXPECT_EQ(Doc.RawLog.Status().recovering, !c.spare);
        Offer(*pro, {CounterFrame("PRO", 2)});
        LimitFiles(RLIM_INFINITY);
        if (!c.full)
            fs::rename(Folder + "away", Folder + "logs");
        Clock.Advance(3000);
        Doc.RawLog.OnLogTick();
        const LogStatus status = Doc.RawLog.Status();
        EXPECT_EQ(status.runFailed, c.stops);
        Doc.RawLog.EndLogFile(true);
        if (c.stops)
            continue;
        EXPECT_THAT(Reported(), HasSubstr("could not be begun"));
        EXPECT_THAT(status.logFilePath, HasSubstr(c.spare ? "/spare/" : "/logs/"));
        EXPECT_THAT(Data(status.logFilePath), testing::StartsWith(CounterFrame("PRO", 2)));
        EXPECT_EQ(Doc.RawLog.Status().runFrames, 2u);
        EXPECT_EQ(Doc.RawLog.Status().runUnstored, 0u);
    }
}

TEST_F(AFailingDisk, WhatBefallsALogInItsLastMomentIsSaid) {
    namespace fs = std::filesystem;
    const std::string path = Folder + "cast.raw", away = Folder + "away.raw";
    const struct {
        std::function<void()> happens;
        const char* said;
        std::uint64_t framesLeft;
    } cases[] = {{[&] { fs::remove(path); }, "was deleted", 0},
                 {[&] { fs::resize_file(path, 2310); }, "was cut off by another program", 0},
                 {[&] {
                      fs::create_hard_link(path, away);
                      fs::rename(Temp.Put("theirs", "theirs"), path);
                  },
                  "was taken away", 1},
                 {[&] { std::ofstream(path, std::ios::app) << "theirs"; },
                  "holds bytes of another program", 1}};
    CQorViewIns* pro = Add("PRO", Port);
    for (const auto& c : cases) {
        ASSERT_TRUE(Begin());
        Offer(*pro, {CounterFrame("PRO", 1)});
        Reported();
        c.happens();
        EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
        EXPECT_THAT(Reported(), testing::StartsWith("The log file \"" + path + "\" " + c.said));
        EXPECT_TRUE(Doc.RawLog.Status().runFailed) << c.said;
        EXPECT_EQ(Doc.RawLog.Status().runFrames, c.framesLeft) << c.said;
        EXPECT_EQ(Doc.RawLog.Status().runGone, 1 - c.framesLeft) << c.said;
        fs::remove(path);
        fs::remove(away);
    }
}

TEST_F(AFailingDisk, FramesOfALostFileStayCountedAsTheRunGoesOn) {
    CQorViewIns* pro = Add("PRO", Port);
    Set([](LogOptions& options) {
        options.everyEnabled = true;
        options.every = {0, 1, 0};
    });
    SetMode(LogNamingMode::TimeStamp);
    for (const char* run : {"first", "second"}) {
        ASSERT_TRUE(Doc.RawLog.BeginLogFile()) << run;
        Offer(*pro, {CounterFrame("PRO", 1), CounterFrame("PRO", 2)});
        std::filesystem::remove(Doc.RawLog.Status().logFilePath);
        Clock.Advance(Doc.RawLog.NextTimer() - Clock.MonotonicMilliseconds());
        Doc.RawLog.OnLogTick();
        EXPECT_EQ(Doc.RawLog.Status().runGone, 2u) << run;
        Offer(*pro, {CounterFrame("PRO", 3)});
        Doc.RawLog.EndLogFile(true);
        EXPECT_EQ(Doc.RawLog.Status().runGone, 2u) << run;
        EXPECT_EQ(Doc.RawLog.Status().runFrames, 1u) << run;
        Clock.Advance(60'000);
    }
}

TEST_F(AFailingDisk, ThatNoOtherFileCanBeBegunIsOneFaultHoweverOftenItIsTried) {
    CQorViewIns* pro = Add("PRO", Port);
    ASSERT_EQ(Doc.SetRole(InstrumentRole::Gps, pro->Id), "");
    Set([](LogOptions& options) { options.gpsHeaderEnabled = true; });
    std::vector<std::string> faults, positions;
    Doc.Acquisition.OnEvent = [&](const Event& event) {
        const EventAdvice* row = AdviceOf(event.kind);
        if (event.kind == EventKind::PositionKept)
            positions.push_back(event.text);
        else if (row && row->fault)
            faults.push_back(event.text);
    };
    std::filesystem::create_directory(Folder + "logs");
    SetMode(LogNamingMode::UserFileName, "cast.raw");
    ASSERT_EQ(Doc.RawLog.SetDirectory(Folder + "logs"), "");
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    Clock.Advance(5000);
    std::filesystem::rename(Folder + "logs", Folder + "gone");
    LimitFiles(2304);
    Offer(*pro, {CounterFrame("PRO", 1)});
    LimitFiles(RLIM_INFINITY);
    for (int tries = 0; tries < 3; ++tries) {
        Clock.Advance(3000);
        Doc.RawLog.OnLogTick();
    }
    Reported();
    EXPECT_THAT(faults, ElementsAre(HasSubstr("Error writing"),
                                    HasSubstr("No other log file can be begun")));
    EXPECT_EQ(positions.size(), 1u) << "one header stands in a file";
    std::filesystem::create_directory(Folder + "logs");
    Clock.Advance(3000);
    Doc.RawLog.OnLogTick();
    Reported();
    Doc.RawLog.WaitForDisk();
    EXPECT_EQ(Doc.RawLog.Status().framesLogged, 1u);
    EXPECT_EQ(positions.size(), 2u);
    Doc.Acquisition.OnEvent = nullptr;
}

TEST_F(AFailingDisk, LogThatIsAwayAtItsEndIsToldAndProtectedWhereItIs) {
    ASSERT_TRUE(Begin());
    std::filesystem::rename(Folder + "cast.raw", Folder + "away.raw");
    EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
    bool readOnly = false;
    EXPECT_EQ(IsReadOnly(Folder + "away.raw", readOnly), FileCause::None);
    EXPECT_TRUE(readOnly) << "the next run would take it for a log that a crash cut off";
    EXPECT_THAT(User.TakeMessages(),
                ElementsAre("An error occured while accessing the log file\r\n\"" + Folder +
                            "cast.raw\"."));
}

TEST_F(AFailingDisk, SessionLogGoesOnInMemoryAfterAWriteFailure) {
    Doc.SessionLog.SetFile(true, Folder);
    Doc.SessionLog.OpenSessionLog();
    LimitFiles(10);
    Doc.SessionLog.AddSessionLogEntry("A\r\n");
    Doc.SessionLog.WaitForDisk();
    Doc.SessionLog.AddSessionLogEntry("B\r\n");
    LimitFiles(RLIM_INFINITY);
    EXPECT_THAT(User.TakeMessages(),
                ElementsAre("An error occured while writing to the session log file:\r\n\"" +
                            Folder +
                            "QorView.log\".\r\nThe disk is full.\r\nSession log aborted."));
    EXPECT_THAT(Doc.SessionLog.SessionLogText(), HasSubstr("B\r\n"));
    EXPECT_EQ(Doc.SessionLog.FilePath(), "");
}

TEST_F(AFailingDisk, FailedSynchronisationIsReportedOncePerFile) {
    CCollectingSink sink;
    CDiskSync sync(sink);
    CFile closed, good;
    ASSERT_EQ(good.CreateExclusive(Folder + "good"), FileCause::None);
    const auto nothing = [] { return std::uint64_t{0}; };
    sync.Watch(closed, nothing);
    sync.Watch(good, nothing);
    sync.Finish();
    sync.Stop();
    ASSERT_EQ(sink.Messages().size(), 1u);
    EXPECT_THAT(sink.Messages()[0],
                testing::StartsWith("Error synchronizing log file with the disk"));
}

class CTellingSink : public CCollectingSink {
  public:
    void Raise(Event event) override {
        CCollectingSink::Raise(std::move(event));
        Told.Set();
    }
    CEvent Told;
};

// A sanitizer looks at memory through handles of its own.
#if !defined(__SANITIZE_ADDRESS__) && defined(__has_feature)
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__
#endif
#endif

TEST_F(AFailingDisk, FolderThatCouldNotBeSynchronisedIsTriedAgain) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "there have to be handles beside a sanitizer";
#endif
    using testing::AllOf;
    const auto lost = AllOf(HasSubstr("cast.raw"), HasSubstr("lose the whole log"));
    const auto passed = HasSubstr("Folder synchronized with the disk again after ");
    for (const bool deleted : {false, true}) {
        CTellingSink sink;
        CDiskSync sync(sink);
        CFile log;
        ASSERT_EQ(log.CreateExclusive(Folder + "cast.raw"), FileCause::None);
        // Only the handle with which the file is synchronised can still be had.
        const int handle = ::dup(STDERR_FILENO);
        ::close(handle);
        rlimit limit{};
        ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
        const rlimit none{static_cast<rlim_t>(handle) + 1, limit.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
        sync.Watch(log, [] { return std::uint64_t{0}; });
        sink.Told.Wait();
        if (deleted) // then its name is nothing to synchronise
            std::filesystem::remove(log.Path());
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
        sync.Finish();
        sync.Stop();
        if (deleted)
            EXPECT_THAT(sink.Messages(), ElementsAre(lost));
        else
            EXPECT_THAT(sink.Messages(), ElementsAre(lost, passed));
        EXPECT_EQ(sink.Count(EventKind::SyncFailed), 1u);
    }
}

TEST_F(AFailingDisk, SessionLogThatItEndedIsStillNamed) {
    Doc.SessionLog.SetFile(true, Folder);
    Doc.SessionLog.OpenSessionLog();
    LimitFiles(8);
    Doc.SessionLog.AddSessionLogEntry("A\r\n");
    Doc.SessionLog.WaitForDisk();
    EXPECT_EQ(Doc.SessionLog.FilePath(), "");
    EXPECT_EQ(Doc.SessionLog.LostPath(), Folder + "QorView.log");
    LimitFiles(RLIM_INFINITY);
    Doc.SessionLog.OpenSessionLog();
    EXPECT_EQ(Doc.SessionLog.LostPath(), "");
}

} // namespace
} // namespace qor
#endif
