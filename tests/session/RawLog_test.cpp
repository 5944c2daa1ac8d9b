// SPDX-License-Identifier: GPL-3.0-or-later
//
// Raw logs: names and questions, the header block to the byte, frames and their tags, interval
// runs.
#include "fakes/ScriptedPort.h"
#include "fakes/SessionFixture.h"

namespace qor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// 2005-05-03 14:23:05.250: year and day 2005123, time 142305250.
const std::string Tag("\x1E\x98\x83\x08\x7B\x67\xE2", 7);

class ARawLog : public ASession {
  protected:
    /// The header's lines as "value (TAG)|"; each record is 128 bytes, filled up with NUL.
    static std::string Header(const std::string& path) {
        std::string content = Content(path), lines;
        for (std::size_t at = 0; content.compare(at, 7, "QORHDR ") == 0; at += 128) {
            std::string record = content.substr(at, 128);
            std::size_t end = record.find("\r\n");
            EXPECT_EQ(record.substr(end + 2), std::string(128 - end - 2, '\0'));
            lines += record.substr(7, end - 7) + "|";
        }
        return lines;
    }
    void Ticks(int seconds) {
        for (int i = 0; i < seconds; ++i) {
            Clock.Advance(1000);
            Doc.RawLog.OnLogTick();
        }
    }
    std::string Log(const std::string& name = "cast.raw") { return Folder + name; }
};

TEST_F(ARawLog, HeaderWithoutRolesAndOptionsHasEighteenRecords) {
    Set(&CQorViewDoc::Station,
        {std::string(200, 'c'), "op", "44 N", "63 W", "GMT", "calm", "ST1", "AA"});
    EXPECT_FALSE(Doc.RawLog.EndLogFile(false)) << "nothing to end";
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_EQ(Content(Log()).size(), 2304u);
    EXPECT_EQ(Header(Log()),
              std::string(107, 'c') +
                  " (CRUISE-ID)|op (OPERATOR)|44 N (LATITUDE)|63 W (LONGITUDE)|GMT (ZONE)|"
                  "calm (COMMENT)|ST1 (STATION-ID)|AA (CAST)|Tue May 03 14:23:05 2005 (TIME-STAMP)|"
                  "NONE (MODE)|OFF (PRESSURE-TARE)|OFF (TIMETAG)|ON (DATETAG)|ON (TIMETAG2)|"
                  "OFF (PROFILER)|OFF (REFERENCE)|OFF (PRO-DARK)|OFF (REF-DARK)|");
    EXPECT_THAT(Doc.SetRole(InstrumentRole::Profiler, InstrumentId{73}), HasSubstr("no such"));
    {
        CRecursiveLock lock(Doc.DocLock);
        Doc.Roles[1] = InstrumentId{73}; // where no instrument is
    }
    EXPECT_EQ(Doc.Role(9), InstrumentId::None);
    EXPECT_EQ(Doc.Role(-1), InstrumentId::None);
    ASSERT_TRUE(Begin("role.raw"));
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_THAT(Header(Log("role.raw")), HasSubstr("|0.000000 (PRESSURE-TARE)|"));
    EXPECT_THAT(Header(Log("role.raw")), HasSubstr("|OFF (PROFILER)|OFF (REFERENCE)|"));
}

TEST_F(ARawLog, HasTheComputersOffsetForAZoneThatNobodyGave) {
    for (const auto& [minutes, zone] :
         {std::pair{780, "UTC+13:00"}, {-210, "UTC-03:30"}, {-30, "UTC-00:30"}, {0, "UTC+00:00"}}) {
        Clock.UtcOffsetMinutes = static_cast<std::int16_t>(minutes);
        const std::string name = "zone" + std::to_string(minutes) + ".raw";
        ASSERT_TRUE(Begin(name));
        ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
        EXPECT_THAT(Header(Log(name)), HasSubstr(std::string("|") + zone + " (ZONE)|"));
    }
}

TEST_F(ARawLog, RolesAndOptionsAddTheirRecordsInFileOrder) {
    Add("PRO", Port), Add("REF", Port), Add("TRK", Port), Add("SQM", Port), Add("DUT", Port);
    AddedInstrument gps =
        Doc.AddInstrument(std::string(QORVIEW_SOURCE_DIR) + "/examples/gps.tdf", Port);
    ASSERT_TRUE(gps.Added()) << gps.parseLog;
    for (auto [role, name] : {std::pair{InstrumentRole::Profiler, "PRO"},
                              {InstrumentRole::Reference, "REF"},
                              {InstrumentRole::Tracker, "TRK"},
                              {InstrumentRole::SqmInstrument, "SQM"},
                              {InstrumentRole::DeviceUnderTest, "DUT"},
                              {InstrumentRole::WeatherStation, "PRO"},
                              {InstrumentRole::Gps, "$GPRMC"}})
        Doc.SetRole(role, Doc.FindInstrument(name));
    Doc.SetImmersed("PRO", true);
    Set([](LogOptions& options) { options.timeStampEnabled = options.gpsHeaderEnabled = true; });
    Set(&CQorViewDoc::PressureTare, 0.1);
    Set(&CQorViewDoc::Station, {"", "", "typed", "", "", "", "", ""});
    ASSERT_TRUE(Begin("before.raw"));
    Offer(*Find(gps.id), {"$GPRMC,092204.00,A,4436.1234,S,06334.5678,W,5.2,123.4,130705,018.2,W*00"
                          "\r\n"});
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_THAT(Header(Log("before.raw")), HasSubstr("|typed (LATITUDE)|"));
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_THAT(Header(Log()), HasSubstr("|44 36' 07\" S (LATITUDE)|63 34' 34\" W (LONGITUDE)|"));
    EXPECT_THAT(Header(Log()),
                testing::EndsWith(
                    "|0.100000 (PRESSURE-TARE)|OFF (TIMETAG)|ON (DATETAG)|ON (TIMETAG2)|"
                    "$PCZDA (NMEA)|WET (PROFILER)|DRY (REFERENCE)|OFF (PRO-DARK)|OFF (REF-DARK)|"
                    "PRO (PRO-ID)|REF (REF-ID)|TRK (TRK-ID)|ON (WEATHER)|$GPRMC (NMEA)|"
                    "SQM (SQM-ID)|DUT (DUT-ID)|"));
}

TEST_F(ARawLog, FramesAndTimeStampsStandInTheOrderOfTheirArrival) {
    CQorViewIns* pro = Add("PRO", Port);
    CQorViewIns* gps = Add("GPS", Port);
    Doc.SetRole(InstrumentRole::Gps, gps->Id);
    Set([](LogOptions& options) { options.timeStampEnabled = true; });
    ASSERT_TRUE(Begin());
    Doc.RawLog.OnLogTick(); // the second in which the log began
    Offer(*pro, {CounterFrame("PRO", 1), CounterFrame("PRO", 2)});
    Clock.Advance(800);
    Doc.RawLog.OnLogTick();
    Doc.RawLog.OnLogTick();
    Offer(*gps, {CounterFrame("GPS", 9)});
    LogStatus status = Doc.RawLog.Status();
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_EQ(Data(Log()), CounterFrame("PRO", 1) + Tag + CounterFrame("PRO", 2) + Tag +
                               "$PCZDA,142306.00,03,05,2005,,\r\n" + CounterFrame("GPS", 9));
    EXPECT_EQ(status.framesLogged, 3u);
    EXPECT_EQ(status.fileSize, Content(Log()).size());
    EXPECT_TRUE(status.dataLogged);
    EXPECT_EQ(FramesThisLog(*pro).written, 2u);
}

TEST_F(ARawLog, OnlyUnusableFramesAndThoseOfSilencedInstrumentsAreLeftOut) {
    CQorViewIns* pro = Add("PRO", Port);
    CQorViewIns* off = Add("OFF", Port);
    std::vector<std::uint64_t> seen;
    {
        CRecursiveLock lock(Doc.DocLock);
        off->LoggingEnabled = false;
    }
    const CFrameWatch watch(Doc, [&](CQorViewIns& instrument, const FrameCheckResult& found) {
        EXPECT_NE(instrument.Live.CurrentFrame(), nullptr);
        seen.push_back(found.dropped);
    });
    Offer(*pro, {CounterFrame("PRO", 1)});
    EXPECT_FALSE(std::filesystem::exists(Log()));
    ASSERT_TRUE(Begin());
    Offer(*pro, {CounterFrame("PRO", 2)}, true);
    Offer(*off, {CounterFrame("OFF", 1)});
    Offer(*pro, {CounterFrame("PRO", 9)}); // dropped frames before it: a check error, and logged
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_EQ(Data(Log()), CounterFrame("PRO", 9) + Tag);
    EXPECT_THAT(seen, ElementsAre(0, 0, 0, 1));
    EXPECT_EQ(FramesThisLog(*pro).written, 1u);
    EXPECT_EQ(Doc.RawLog.Status().framesOffered, 2u);
    CFrameQueue stray;
    CFrameInfo nobodys;
    nobodys.identity = 4000000000;
    stray.Push(nobodys, AsBytes("stray"), 0);
    stray.Push(CFrameInfo{}, AsBytes("stray"), 0);
    EXPECT_EQ(Doc.Acquisition.ProcessFrames(stray), 0u);
    EXPECT_TRUE(stray.Empty());
}

TEST_F(ARawLog, FinishedLogIsReadOnlyAndReplacedOnlyWithConsent) {
    Set(&CQorViewDoc::NoDialogs, false);
    ASSERT_TRUE(Begin("cast"));
    SetMode(LogNamingMode::UserFileName, "next"); // is for the next log
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    SetMode(LogNamingMode::UserFileName, "cast");
    bool readOnly = false;
    ASSERT_EQ(IsReadOnly(Log(), readOnly), FileCause::None);
    EXPECT_TRUE(readOnly);
    User.AnswersYes = false;
    EXPECT_FALSE(Doc.RawLog.BeginLogFile());
    EXPECT_FALSE(Doc.RawLog.BeginLogFile());
    EXPECT_THAT(User.TakeQuestions(),
                ElementsAre("The log file \"" + Log() +
                            "\"\r\nalready exists. Do you want to replace this file on the next "
                            "log?"));
    User.AnswersYes = true;
    Clock.Advance(1000);
    ASSERT_TRUE(Begin("cast"));
    EXPECT_FALSE(Doc.RawLog.BeginLogFile());
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_THAT(Header(Log()), HasSubstr("14:23:06 2005"));
    EXPECT_THAT(User.TakeMessages(), IsEmpty());
}

TEST_F(ARawLog, LogThatComesUnderTheNameOfAStartThatFailedIsNotReplacedUnasked) {
    Set(&CQorViewDoc::NoDialogs, false);
    const std::string disk = Folder + "disk/";
    const auto mount = [&] {
        std::filesystem::create_directory(disk);
        Temp.Put("disk/cast.raw", "theirs");
    };
    const struct {
        const char* what;
        bool folderThere;
        LogAnswer answer;
        std::function<void()> whileAsked;
    } cases[] = {{"no folder", false, LogAnswer::LogAsShown, {}},
                 {"cancelled", true, LogAnswer::ChangeFirst, {}},
                 {"another program was first", true, LogAnswer::LogAsShown, mount}};
    for (const auto& c : cases) {
        if (c.folderThere)
            std::filesystem::create_directory(disk);
        SetMode(LogNamingMode::UserFileName, "cast");
        ASSERT_EQ(Doc.RawLog.SetDirectory(disk), "");
        User.Answer = c.answer;
        User.WhileAsked = c.whileAsked;
        EXPECT_FALSE(Doc.RawLog.BeginLogFile()) << c.what;
        EXPECT_THAT(User.TakeQuestions(), IsEmpty()) << c.what;
        mount();
        User.WhileAsked = {};
        User.Answer = LogAnswer::LogAsShown;
        User.AnswersYes = false;
        EXPECT_FALSE(Doc.RawLog.BeginLogFile()) << c.what;
        EXPECT_EQ(User.TakeQuestions().size(), 1u) << c.what;
        EXPECT_EQ(Temp.Content("disk/cast.raw"), "theirs") << c.what;
        std::filesystem::remove_all(disk);
    }
}

TEST_F(ARawLog, ConfirmationIsAskedOnceARunWithTheLockReleased) {
    Set(&CQorViewDoc::NoDialogs, false);
    User.WhileAsked = [this] { EXPECT_FALSE(Doc.RawLog.EndLogFile(true)); };
    EXPECT_FALSE(Begin("stopped.raw")) << "whatever the answer was";
    EXPECT_FALSE(std::filesystem::exists(Log("stopped.raw")));
    User.WhileAsked = [this] {
        // A frame or a display on another thread is not held up, and a second start is refused.
        std::thread([this] { EXPECT_FALSE(Doc.RawLog.Status().logOpen); }).join();
        EXPECT_FALSE(Doc.RawLog.BeginLogFile());
    };
    User.Answer = LogAnswer::ChangeFirst;
    EXPECT_FALSE(Begin());
    EXPECT_FALSE(std::filesystem::exists(Log()));
    User.Answer = LogAnswer::LogAsShown;
    Set([](LogOptions& options) {
        options.durationEnabled = options.repeatEnabled = true;
        options.duration = {0, 0, 2};
    });
    SetMode(LogNamingMode::TimeStamp);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    Ticks(6);
    EXPECT_GE(std::distance(std::filesystem::directory_iterator(Folder), {}), 2);
    EXPECT_THAT(User.TakeDialogs(), ElementsAre("stopped.raw", "cast.raw", "(TIME STAMP)"));
    EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
    SetMode(LogNamingMode::TimeStamp);
    Clock.Advance(60000);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    EXPECT_THAT(User.TakeDialogs(), ElementsAre("(TIME STAMP)"));
}

TEST_F(ARawLog, IntervalRunOpensFilesByItsTimers) {
    Set([](LogOptions& options) {
        options.durationEnabled = options.repeatEnabled = options.loggingSounds = true;
        options.duration = {0, 0, 10};
        options.repeatInterval = {0, 1, 0};
    });
    Set(&CQorViewDoc::ExitIfDone, true);
    SetMode(LogNamingMode::TimeStamp);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    Ticks(9);
    EXPECT_TRUE(Doc.RawLog.Status().logOpen);
    EXPECT_EQ(Doc.RawLog.Status().logElapsed, 9);
    Ticks(1);
    EXPECT_TRUE(Doc.RawLog.Status().waitingForNextLog);
    EXPECT_FALSE(Doc.RawLog.Status().logOpen);
    Ticks(59);
    EXPECT_FALSE(Doc.RawLog.Status().logOpen);
    Ticks(1);
    EXPECT_TRUE(Doc.RawLog.Status().logOpen);
    const std::string first = Folder + "2005-123-142305.raw",
                      second = Folder + "2005-123-142415.raw";
    EXPECT_EQ(Reported(), "Initializing serial communications on PORT1.|"
                          "\tGlobal synchronization has been deactivated.|"
                          "Begin log file: \"" +
                              first + "\".|End log file: \"" + first + "\".|Begin log file: \"" +
                              second + "\".|");
    EXPECT_EQ(User.Asterisks, 3);
    EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    EXPECT_EQ(User.CloseRequests, 0);
    Set([](LogOptions& options) { options.repeatEnabled = false; });
    Ticks(60);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    Ticks(10);
    LogStatus status = Doc.RawLog.Status();
    EXPECT_FALSE(status.loggingActive || status.runFailed);
    EXPECT_EQ(User.CloseRequests, 1);
}

class ALogOfALine : public ALine, public ASession {
  protected:
    ALogOfALine() : ASession(Script.Factory()) {}
    ~ALogOfALine() override { Doc.DisconnectAll(); }
};

TEST_F(ALogOfALine, LogsAtRoundTimesFollowEachOtherWithoutLosingAFrame) {
    Add("PRO", Port);
    Set([](LogOptions& options) {
        options.everyEnabled = options.loggingSounds = true;
        options.every = {1, 0, 0};
    });
    SetMode(LogNamingMode::TimeStamp);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    const auto receive = [this](int counter) {
        Script.Bytes(CounterFrame("PRO", counter));
        Script.Played();
        return Doc.Acquisition.TakeFrames();
    };
    EXPECT_EQ(receive(1), 1U);
    std::size_t takenBetween = 1;
    CEvent disconnected;
    std::thread operatorsHand;
    User.WhileBeeping = [&] {
        if (Doc.RawLog.Status().logOpen || operatorsHand.joinable())
            return;
        takenBetween = receive(2); // one has ended, the next has not begun
        operatorsHand = std::thread([&] {
            EXPECT_EQ(Doc.DisconnectResource(Port), CommResult::Success);
            disconnected.Set();
        });
        EXPECT_FALSE(disconnected.Wait(50)) << "the frame belongs into the log to come";
    };
    EXPECT_EQ(Doc.RawLog.NextTimer(), (36 * 60 + 55) * 1000 - 250);
    Clock.Advance(Doc.RawLog.NextTimer());
    Doc.RawLog.OnLogTick();
    operatorsHand.join();
    User.WhileBeeping = {};
    EXPECT_EQ(takenBetween, 0U);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    EXPECT_EQ(receive(3), 1U);
    EXPECT_TRUE(Doc.RawLog.Status().intervalRun);
    EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    EXPECT_THAT(Data(Folder + "2005-123-142305.raw"), testing::StartsWith(CounterFrame("PRO", 1)));
    const std::string second = Data(Folder + "2005-123-150000.raw");
    EXPECT_THAT(second, testing::StartsWith(CounterFrame("PRO", 2)));
    EXPECT_THAT(second, HasSubstr(CounterFrame("PRO", 3)));
}

TEST_F(ARawLog, ShorterLogsAtRoundTimesArePausedAndTheFirstIsCut) {
    Set([](LogOptions& options) {
        options.everyEnabled = options.durationEnabled = true;
        options.every = {0, 1, 0};
        options.duration = {0, 0, 50};
    });
    SetMode(LogNamingMode::TimeStamp);
    Clock.Advance(5000);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile()); // at 14:23:10.250
    Ticks(48);
    EXPECT_EQ(Doc.RawLog.Status().logEndTime.seconds,
              Doc.RawLog.Status().logStartTime.seconds + 50);
    Ticks(2); // its fifty seconds end with the minute
    EXPECT_EQ(Doc.RawLog.Status().logFilePath, Log("2005-123-142400.raw"));
    Ticks(50);
    EXPECT_TRUE(Doc.RawLog.Status().waitingForNextLog);
    Ticks(9);
    EXPECT_FALSE(Doc.RawLog.Status().logOpen);
    Ticks(1);
    EXPECT_EQ(Doc.RawLog.Status().logFilePath, Log("2005-123-142500.raw"));
}

TEST_F(ARawLog, NameOfAnotherProgramsSecondGetsTheNextFreeSuffix) {
    CFile open, ended;
    ASSERT_EQ(open.CreateExclusive(Folder + "2005-123-142305.raw"), FileCause::None);
    ASSERT_EQ(ended.CreateExclusive(Folder + "2005-123-142305-2.raw"), FileCause::None);
    ended.Close();
    SetMode(LogNamingMode::TimeStamp);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    EXPECT_EQ(Doc.RawLog.Status().logFilePath, Folder + "2005-123-142305-3.raw");
    EXPECT_TRUE(std::filesystem::is_empty(ended.Path()));
    EXPECT_THAT(User.TakeMessages(), IsEmpty());
}

TEST_F(ARawLog, StepOfTheWallClockIsNotedAndMovesNoTimer) {
    Set([](LogOptions& options) {
        options.durationEnabled = true;
        options.duration = {0, 0, 10};
    });
    ASSERT_TRUE(Begin());
    Ticks(2);
    Clock.StepWall(3600 * 1000);
    Ticks(1);
    Clock.StepWall(-3600 * 1000);
    Ticks(6);
    EXPECT_THAT(Reported(), HasSubstr("The system clock was set forward by 3600.000 seconds.|"
                                      "The system clock was set back by 3600.000 seconds.|"));
    EXPECT_TRUE(Doc.RawLog.Status().logOpen);
    Ticks(1);
    EXPECT_FALSE(Doc.RawLog.Status().logOpen);
    EXPECT_THAT(Reported(), testing::StartsWith("End log file"));
}

TEST_F(ARawLog, ADurationChangedDuringALogCountsFromItsStart) {
    ASSERT_TRUE(Begin());
    Ticks(20);
    LogOptions options;
    options.durationEnabled = true;
    options.duration = {0, 0, 30};
    Doc.RawLog.SetLogOptions(options);
    EXPECT_EQ(Doc.RawLog.Status().logEndTime.seconds,
              Doc.RawLog.Status().logStartTime.seconds + 30);
    Ticks(9);
    EXPECT_TRUE(Doc.RawLog.Status().logOpen);
    Ticks(1);
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
}

TEST_F(ARawLog, RepeatedLogsOfOneNameAreNumberedAndNeverReplaceEachOther) {
    Set([](LogOptions& options) {
        options.durationEnabled = options.repeatEnabled = options.overwriteExisting = true;
        options.duration = options.repeatInterval = {0, 0, 2};
    });
    LogNaming naming;
    naming.logNamingMode = LogNamingMode::UserFileName;
    naming.logDirectory = Folder;
    naming.logUserFileName = "cast";
    naming.numbered = true;
    EXPECT_EQ(Doc.RawLog.SetNaming(naming), "");
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    Ticks(9);
    EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
    for (const char* name : {"cast_001.raw", "cast_002.raw", "cast_003.raw"})
        EXPECT_TRUE(std::filesystem::exists(Folder + name)) << name;

    // Without numbers the second log of the run is refused, consent or not.
    naming.numbered = false;
    EXPECT_EQ(Doc.RawLog.SetNaming(naming), "");
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    Reported();
    Ticks(5);
    EXPECT_THAT(Reported(), HasSubstr("already exists and is not replaced."));
    EXPECT_TRUE(Doc.RawLog.Status().runFailed);
}

TEST_F(ARawLog, StationAndNamingAreCheckedAndBuildTheNameAnew) {
    SetMode(LogNamingMode::AutoCast);
    StationInformation station;
    station.stationId = "S4";
    station.cast = "AA";
    EXPECT_EQ(Doc.RawLog.SetStation(station), "");
    ASSERT_TRUE(Doc.RawLog.BuildLogFileName());
    station.cast = "AB";
    EXPECT_EQ(Doc.RawLog.SetStation(station), "");
    ASSERT_TRUE(Doc.RawLog.BuildLogFileName());
    EXPECT_EQ(Doc.RawLog.Status().logFilePath, Folder + "S4AB.raw");
    for (auto [id, cast, part] : {std::tuple{"S4", "A", "cast"},
                                  {"S4", "A1", "cast"},
                                  {"../S4", "AB", "station"},
                                  {"S\n4", "AB", "station"}}) {
        station.stationId = id;
        station.cast = cast;
        EXPECT_THAT(Doc.RawLog.SetStation(station), HasSubstr(part));
    }
    LogNaming naming;
    naming.sqmSequence = 1000;
    EXPECT_THAT(Doc.RawLog.SetNaming(naming), HasSubstr("1000 is not in 0 to 999"));
    naming.sqmSequence = 0;
    naming.logUserFileName = "a/b";
    EXPECT_THAT(Doc.RawLog.SetNaming(naming), HasSubstr("\"a/b\""));
}

} // namespace
} // namespace qor
