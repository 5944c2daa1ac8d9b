// SPDX-License-Identifier: GPL-3.0-or-later
//
// A serial resource from initialisation to disconnection, against a scripted port: which steps,
// which codes, which log entries, and that no received frame is lost or stamped wrongly.
#include "telemetry/TelemComm.h"

#include "fakes/ManualClock.h"
#include "fakes/ScriptedPort.h"
#include "platform/SystemText.h"
#include "telemetry/StreamRun.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace qor {
namespace {

using Lines = std::vector<std::string>;

class AResource : public testing::Test {
  protected:
    AResource() {
        Settings.portName = "COM1";
        Settings.globalSyncString.clear();
    }
    void Initialise() {
        ASSERT_EQ(Comm.InitialiseSerial(Settings), CommResult::Success);
        Sink.Take();
    }
    void Attach() {
        ASSERT_EQ(Comm.Attach(Radiometer), CommResult::Success);
        ASSERT_EQ(Comm.EnableAcquisition("RAD"), CommResult::Success);
        Sink.Take();
    }
    void Connect() {
        ASSERT_EQ(Comm.Connect(), CommResult::Success);
        Sink.Take();
    }
    /// The notices posted since the last call.
    std::vector<NoticeCode> Notices() {
        std::vector<QueuedCommand> commands;
        Queue.Drain(commands, 0);
        std::vector<NoticeCode> notices;
        for (const QueuedCommand& command : commands)
            notices.push_back(command.notice);
        return notices;
    }
    Lines Frames() {
        Lines texts;
        CFrameQueue frames;
        EXPECT_EQ(Comm.RetrieveFrames(frames), CommResult::Success);
        for (CFrameData frame; frames.Pop(frame);)
            texts.emplace_back(frame.Text());
        return texts;
    }
    bool Connected() { return Comm.Figures().connected; }

    const AttachRequest Radiometer = Fixed("RAD", "$R", 6);
    CPortScript Script;
    CCollectingSink Sink;
    CManualClock Clock;
    CProcessCommand Queue{Clock};
    SerialResourceSettings Settings;
    CTelemComm Comm{Sink, &Queue, Clock, Script.Factory()};
};

TEST_F(AResource, InitialisationRefusesWhatItMustInItsWords) {
    SerialResourceSettings other = Settings;
    other.portName = "COM2";
    EXPECT_EQ(Comm.InitialiseSerial({}), CommResult::InvalidPortName);
    EXPECT_EQ(Comm.Connect(), CommResult::NotInitialised);
    EXPECT_EQ(Comm.InitialiseSerial(Settings), CommResult::Success);
    EXPECT_EQ(Sink.Take(), (Lines{"Unable to initialize serial communications.\r\n"
                                  "\tInvalid serial port identification.\r\n",
                                  "Unable to open serial port communications.\r\n"
                                  "\tThe communications resource has not been initialized.\r\n",
                                  "Initializing serial communications on COM1.\r\n"
                                  "\tGlobal synchronization has been deactivated.\r\n"}));
    EXPECT_EQ(Comm.State(), ResourceState::SerialReporting);
    EXPECT_EQ(Notices(), std::vector{NoticeCode::StatusChanged});

    EXPECT_EQ(Comm.InitialiseSerial(other), CommResult::InvalidPortName);
    Connect();
    EXPECT_EQ(Comm.InitialiseSerial(Settings), CommResult::StillConnected);
    EXPECT_EQ(Sink.Take(), Lines{"Unable to reinitialize serial communications.\r\n"
                                 "\tThe serial port is still connected.\r\n"});
    EXPECT_EQ(Comm.Disconnect(), CommResult::Success);
    Sink.Take();
    Settings.globalSyncString = "SYNC";
    Settings.baudRate = 57600;
    Settings.idleTimeoutCount = 0;
    EXPECT_EQ(Comm.InitialiseSerial(Settings), CommResult::Success);
    EXPECT_EQ(Sink.Take(), Lines{"Initializing serial communications on COM1.\r\n"});
    EXPECT_EQ(Comm.QuerySerialSettings()->baudRate, 57600u);
}

TEST_F(AResource, ReadIntervalIsOneCharacterAndSixMilliseconds) {
    for (auto [baud, milliseconds] : {std::pair{9600u, 7u}, {256000u, 6u}, {300u, 39u}}) {
        Settings.baudRate = baud;
        Initialise();
        Connect();
        EXPECT_EQ(Script.ReadInterval, milliseconds) << baud;
        EXPECT_EQ(Script.Line.baudRate, baud);
        EXPECT_EQ(Comm.Disconnect(), CommResult::Success);
    }
}

TEST_F(AResource, EveryFailingStepHasItsCodeAndClosesThePort) {
    Initialise();
    const std::string unopened = "Unable to open serial port communications on COM1.\r\n";
    using enum CommResult;
    struct {
        const char* step;
        CommResult code;
        std::string entry;
        CommResult abort = Success; ///< of the worker, before it runs
    } const cases[] = {
        {"Open", PortNotOpened, ""},
        {"SaveTimeouts", TimeoutsNotRead, "Unable to get serial port timeouts for COM1.\r\n\t"},
        {"ReadSettings", SettingsNotRead, "Unable to get serial port settings for COM1.\r\n\t"},
        {"WriteSettings", SettingsNotWritten, "Unable to set serial port settings for COM1.\r\n\t"},
        {"SetReadInterval", TimeoutsNotSet, "Unable to set serial port timeouts for COM1.\r\n\t"},
        {"SetQueues", QueueSizeNotSet,
         "Unable to set serial communications buffer for COM1.\r\n\t"},
        {"SetEventMask", EventMaskNotSet,
         "Unable to set serial communications mask for COM1.\r\n\t"},
        {"CreateInput", WorkerNotStarted,
         "Overlapped read initialization error:", InputEventNotCreated},
        {"IssueRead", WorkerNotStarted, "Read error:", ReadNotIssued},
        {"IssueStatusWait", WorkerNotStarted, "Status event error:", StatusWaitNotIssued},
    };
    Lines calls;
    for (const auto& row : cases) {
        Script.Fail(row.step, 5);
        EXPECT_EQ(Comm.Connect(), row.code) << row.step;
        if (calls.size() == 8)
            calls.push_back("ReadLineErrors");
        calls.push_back(row.step);
        const std::string begin =
            row.abort == Success ? "" : "Telemetry acquisition aborted on COM1.\r\n\t";
        Lines entries{begin + row.entry + SystemErrorText(5)};
        if (row.code == PortNotOpened)
            entries = {unopened};
        else if (row.code == WorkerNotStarted)
            entries.push_back(unopened);
        EXPECT_EQ(Sink.Take(), entries) << row.step;
        EXPECT_FALSE(Connected());
        EXPECT_EQ(Comm.Figures().connectError, row.code == WorkerNotStarted ? 0U : 5U) << row.step;
        Lines called = Script.TakeCalls();
        EXPECT_EQ(called.back(), row.code == PortNotOpened ? "Open" : "Close");
        called.resize(calls.size());
        EXPECT_EQ(called, calls) << "every step follows those before it";
        std::uint32_t code = 0;
        EXPECT_EQ(Comm.ResetAbortCode(code), Success);
        EXPECT_EQ(code, static_cast<std::uint32_t>(row.abort)) << row.step;
        Script.Repair();
    }
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Comm.Connect(), Success);
    EXPECT_EQ(Sink.Take(), Lines{"COM1 connection successful.\r\n"}) << "twice is once";
}

TEST_F(AResource, AbortClosesThePortAndHasToBeResetBeforeConnecting) {
    struct {
        const char* function;
        CommResult code;
        std::string detail;
    } cases[] = {
        {"CollectRead", CommResult::ReadNotCollected, "\tOverlapped read error:"},
        {"CollectStatus", CommResult::StatusNotCollected, "\tOverlapped status event error:"},
        {"ReadLineErrors", CommResult::LineStatusNotRead, "\tCommunications status error:"},
    };
    Initialise();
    Attach();
    CFrameQueue left;
    for (const auto& row : cases) {
        Connect();
        Script.Bytes("$Rabcd").ThenFail(row.function, 995);
        if (row.code == CommResult::LineStatusNotRead)
            Script.Status(EventLineError, 0);
        // The worker closes the port itself; a disconnection waits for that and loses no frame.
        while (Comm.Figures().abortCode == 0)
            std::this_thread::yield();
        EXPECT_EQ(Comm.Disconnect(&left), CommResult::Success);
        EXPECT_EQ(left.Size(), 1u) << row.function;
        EXPECT_FALSE(Connected());
        EXPECT_EQ(Sink.Take(),
                  (Lines{"$R found on COM1.\r\n", "Telemetry acquisition aborted on COM1.\r\n" +
                                                      row.detail + SystemErrorText(995)}));
        EXPECT_EQ(Script.TakeCalls().back(), "Close");
        EXPECT_EQ(Comm.Connect(), CommResult::AbortCodeSet);
        EXPECT_EQ(Sink.Take(), Lines{"Unable to open serial port communications on COM1.\r\n"
                                     "\tThe telemetry abort code has not been reset.\r\n"});
        std::uint32_t code = 0;
        EXPECT_EQ(Comm.ResetAbortCode(code), CommResult::Success);
        EXPECT_EQ(code, static_cast<std::uint32_t>(row.code));
        const PortLoss loss = Comm.Figures().lastLoss;
        EXPECT_EQ(loss.code, row.code) << "kept when the code is reset";
        EXPECT_EQ(loss.error, 995u);
        EXPECT_EQ(loss.time, Clock.Now());
        EXPECT_EQ(loss.milliseconds, Clock.MonotonicMilliseconds());
        Clock.Advance(1000);
        Script.Repair();
    }
    EXPECT_EQ(Comm.Figures().losses, std::size(cases));
    Connect();
}

// A worker that the driver holds longer than a disconnection waits for.
TEST_F(AResource, AWorkerThatEndsLateLetsTheNextConnectionBeMade) {
    Initialise();
    Attach();
    for (bool fails : {false, true}) {
        Connect();
        CEvent held, release;
        Script.Then([&] {
            if (fails)
                Script.Fail("CollectRead", 5);
            held.Set();
            while (!release.Wait(1))
                Clock.Advance(1000);
        });
        Script.Bytes("$Rlate");
        held.Wait();
        EXPECT_EQ(Comm.Disconnect(), CommResult::StillConnected);
        EXPECT_EQ(Comm.Connect(), CommResult::StillConnected) << "it would not be read";
        EXPECT_EQ(Sink.Take(), (Lines{"COM1 disconnection successful.\r\n",
                                      "The worker of COM1 does not end.\r\n"
                                      "\tThe serial port is still connected.\r\n",
                                      "Unable to open serial port communications on COM1.\r\n"
                                      "\tThe serial port is still connected.\r\n"}));
        release.Set();
        Script.TakeCalls();
        CommResult result = CommResult::StillConnected;
        while (result == CommResult::StillConnected)
            result = Comm.Connect();
        EXPECT_EQ(result, CommResult::Success) << "an end that was asked for is no abort";
        Lines calls = Script.TakeCalls();
        EXPECT_LT(std::ranges::find(calls, "Close"), std::ranges::find(calls, "Open"));
        Script.Repair();
        Script.Bytes("$Rnext").Played();
        Lines frames = Frames();
        EXPECT_EQ(frames.back(), "$Rnext");
        if (!fails) {
            EXPECT_EQ(frames, (Lines{"$Rlate", "$Rnext"})) << "what came before is not lost";
        }
        EXPECT_EQ(Comm.Disconnect(), CommResult::Success);
        Sink.Take();
    }
}

TEST_F(AResource, ALateWorkerCanBeDisconnectedAgain) {
    Initialise();
    Connect();
    CEvent held, release;
    Script.Then([&] {
        held.Set();
        while (!release.Wait(1))
            Clock.Advance(1000);
    });
    Script.Bytes("x");
    held.Wait();
    EXPECT_EQ(Comm.Disconnect(), CommResult::StillConnected);
    release.Set();
    EXPECT_EQ(Comm.Disconnect(), CommResult::Success);
    EXPECT_FALSE(Connected());
    Connect();
}

TEST_F(AResource, AShortTextFrameIsDeliveredInSilenceAndAtTheStop) {
    Initialise();
    ASSERT_EQ(Comm.Attach(Text("GPS", "$GP", "\r\n", 80)), CommResult::Success);
    ASSERT_EQ(Comm.EnableAcquisition("GPS"), CommResult::Success);
    Connect();
    Script.Bytes("$GP1\r\n").Silence(15).Played();
    EXPECT_EQ(Frames(), Lines{});
    Notices();
    Script.Silence(16).Played();
    EXPECT_EQ(Notices(), (std::vector{NoticeCode::StatusChanged, NoticeCode::FramesAvailable}));
    EXPECT_EQ(Frames(), Lines{"$GP1\r\n"});
    Script.Bytes("$GP2\r\n$GP").Played();
    CFrameQueue left;
    EXPECT_EQ(Comm.Disconnect(&left), CommResult::Success);
    ASSERT_EQ(left.Size(), 1u);
    EXPECT_EQ(left.Front().Text(), "$GP2\r\n");
    EXPECT_EQ(Comm.Figures().bytesDiscarded, 0u);
}

TEST_F(AResource, BoundsOfTheQueueAreThoseOfTheLastInitialisation) {
    const std::string frames = "$R0001$R0002$R0003$R0004";
    struct {
        std::int32_t depth;
        std::uint64_t bytes;
        std::uint64_t lost;
    } const rows[] = {{1, 0, 2}, {0, 0, 0}, {10, 2 * (6 + sizeof(CFrameData)), 2}, {10, 0, 0}};
    std::uint64_t lost = 0;
    for (const auto& row : rows) {
        Settings.maxFrameDepth = row.depth;
        Settings.maxFrameBytes = row.bytes;
        Initialise();
        if (lost == 0)
            Attach();
        Connect();
        Script.Bytes(frames).Played();
        lost += row.lost;
        EXPECT_EQ(Comm.Figures().framesLost, lost);
        EXPECT_EQ(Comm.Figures().bytesLost, 6 * lost);
        EXPECT_EQ(Comm.Disconnect(), CommResult::Success);
    }
}

TEST_F(AResource, FramesAreCutStampedAndAnnounced) {
    Initialise();
    Attach();
    Connect();
    Notices();
    FrameTime first, second;
    Script.Then([&] { first = Clock.Now(); }).Bytes("junk$Rabcd$R");
    Script.Then([&] {
        Clock.Advance(100);
        second = Clock.Now();
    });
    Script.BytesAtOnce("wxyz").Bytes("$R12").Played();
    EXPECT_EQ(Notices(), (std::vector{NoticeCode::StatusChanged, NoticeCode::FramesAvailable}));
    CFrameData frame;
    bool found = false;
    for (const auto& [text, time] : {std::pair{"$Rabcd", first}, {"$Rwxyz", second}}) {
        EXPECT_EQ(Comm.RetrieveFrame(frame, found), CommResult::Success);
        ASSERT_TRUE(found);
        EXPECT_EQ(frame.Text(), text);
        EXPECT_EQ(frame.Info.time, time);
        EXPECT_EQ(frame.Info.identity, Comm.IdentityOf("RAD"));
    }
    EXPECT_EQ(Comm.RetrieveFrame(frame, found), CommResult::Success);
    EXPECT_FALSE(found);
    ResourceFigures figures = Comm.Figures();
    EXPECT_EQ(figures.framesCut, 2u);
    EXPECT_EQ(figures.bytesReceived, 20u);
    EXPECT_EQ(figures.bytesDiscarded, 4u);
}

TEST_F(AResource, SilenceIsReportedOnceUntilBytesCome) {
    Initialise();
    Attach();
    const std::string waiting = "COM1 waiting for telemetry.\r\n";
    Script.Silence(15);
    Connect();
    Script.Played();
    EXPECT_EQ(Sink.Take(), Lines{});
    Script.Bytes("$R").Silence(40).Played();
    EXPECT_EQ(Sink.Take(), Lines{waiting});
    EXPECT_TRUE(Comm.Figures().waiting);
    Script.Bytes("$Rabcd").Played();
    EXPECT_EQ(Sink.Take(), (Lines{"COM1 reading telemetry.\r\n", "$R found on COM1.\r\n"}));
    EXPECT_FALSE(Comm.Figures().waiting);
}

TEST_F(AResource, InitialisingWithZeroGivesTheDefaultsAgain) {
    Settings.idleTimeoutCount = 3;
    Settings.maxFrameDepth = 2;
    Initialise();
    Settings.idleTimeoutCount = Settings.maxFrameDepth = 0;
    Initialise();
    Attach();
    Connect();
    Script.Silence(15).Bytes("$Rabcd$Refgh$Rijkl").Played();
    EXPECT_EQ(Sink.Take(), Lines{"$R found on COM1.\r\n"});
    EXPECT_EQ(Frames().size(), 3u);
}

TEST_F(AResource, LineErrorsAreReportedAndNeverEndAcquisition) {
    Initialise();
    Attach();
    Connect();
    Script.Bytes("$Rab").Status(EventBreak, LineBreak).Status(0xC0, 0).Status(0, 0);
    Script.Status(EventLineError, 0xFFFF).Bytes("cd").Played();
    EXPECT_EQ(
        Sink.Take(),
        (Lines{"Unknown status event (0x00000040) on COM1.\n", "Break error on COM1.\r\n",
               "Break error on COM1.\r\n", "Hardware framing error on COM1.\r\n",
               "I/O error on COM1.\r\n", "Mode error on COM1.\r\n",
               "Input buffer overflow on COM1.\r\n", "Character buffer overrun on COM1.\r\n",
               "Rx parity error on COM1.\r\n",
               "Unable to transmit on COM1. The buffer is full.\r\n", "$R found on COM1.\r\n"}));
    EXPECT_EQ(Frames(), Lines{"$Rabcd"});
    EXPECT_EQ(Comm.Figures().lineErrors, (LineErrorCounts{2, 1, 1, 1, 1, 1, 1, 1}));
}

TEST_F(AResource, FiveFramingErrorsInARowSuggestAWrongBaudRate) {
    Initialise();
    Connect();
    auto told = [this](std::uint32_t error, int times) {
        for (int i = 0; i < times; ++i)
            Script.Status(EventLineError, error);
        Script.Played();
        return Sink.Take();
    };
    const std::string framing = "Hardware framing error on COM1.\r\n";
    const std::string broken = "Break error on COM1.\r\n";
    EXPECT_EQ(told(LineFraming, 6), (Lines{framing, framing, framing, framing, framing,
                                           "Detected possible incorrect baud rate on COM1.\r\n"}));
    EXPECT_EQ(told(LineBreak, 1), Lines{broken});
    EXPECT_EQ(told(LineFraming, 1), Lines{}) << "a break does not reset the count";
    EXPECT_EQ(told(LineParity, 1), Lines{"Rx parity error on COM1.\r\n"});
    EXPECT_EQ(told(LineFraming, 1), Lines{framing});
    EXPECT_EQ(told(LineBreak, 6), Lines(5, broken));
    EXPECT_EQ(Comm.Figures().lineErrors, (LineErrorCounts{7, 8, 0, 0, 0, 0, 1, 0}))
        << "those that are not told count too";
}

TEST_F(AResource, DisconnectionHandsOverWhatIsQueuedAndClosesInOrder) {
    Initialise();
    Attach();
    Connect();
    Script.Bytes("$Rabcd$Refgh$R12").Played();
    Script.TakeCalls();
    Sink.Take();
    CFrameQueue left;
    Comm.RequestStop();
    EXPECT_EQ(Comm.Disconnect(&left), CommResult::Success);
    EXPECT_EQ(left.Size(), 2u);
    EXPECT_EQ(Frames(), Lines{});
    EXPECT_EQ(Sink.Take(), Lines{"COM1 disconnection successful.\r\n"});
    Lines calls = Script.TakeCalls();
    EXPECT_EQ(Lines(calls.end() - 3, calls.end()), (Lines{"RestoreTimeouts", "Purge", "Close"}));
    EXPECT_EQ(Comm.Disconnect(), CommResult::Success);
    Connect();
    Script.Bytes("34$Rijkl").Played();
    EXPECT_EQ(Frames(), Lines{"$Rijkl"}) << "bytes from before the disconnection are gone";
}

TEST_F(AResource, FrameThatTheStopFindsReceivedIsStillCut) {
    Initialise();
    Attach();
    for (const int longest : {0, 50}) {
        Script.LongestRead = longest;
        Script.Then([this] { Comm.RequestStop(); }).Bytes("$Rlast").BytesAtOnce("$Rin the");
        Script.Bytes(" driver$Rdriver").Status(EventLineError, LineParity).Bytes("$Rends");
        Connect();
        CFrameQueue left;
        EXPECT_EQ(Comm.Disconnect(&left), CommResult::Success);
        EXPECT_EQ(left.Size(), 4u) << longest;
    }
}

TEST_F(AResource, FailuresWhileClosingAreAllReported) {
    Initialise();
    Connect();
    Script.Fail("RestoreTimeouts", 5).Fail("Purge", 6);
    EXPECT_EQ(Comm.Disconnect(), CommResult::NotRestored);
    EXPECT_EQ(Sink.Take(),
              (Lines{"COM1 disconnection successful.\r\n",
                     "Unable to reset serial port timeouts for COM1.\r\n\t" + SystemErrorText(5),
                     "Unable to purge serial port buffers for COM1.\r\n\t" + SystemErrorText(6)}));
    EXPECT_FALSE(Connected());
}

TEST_F(AResource, UnknownInstrumentsAndAttachFailuresAreTold) {
    std::ignore = Comm.Attach(Radiometer);
    EXPECT_EQ(Sink.Take(), Lines{"Unable to attach RAD.\r\n"
                                 "\tThe communications resource has not been initialized.\r\n"});
    Initialise();
    for (int attached : {0, 2}) {
        for (int i = 0; i < attached; ++i)
            std::ignore = Comm.Attach(Radiometer);
        std::ignore = Comm.EnableAcquisition("RAD");
        std::ignore = Comm.DisableAcquisition("RAD");
        std::ignore = Comm.Detach("RAD");
    }
    const std::string unattached = "\tThe instrument has not been attached or defined.\r\n";
    EXPECT_EQ(Sink.Take(),
              (Lines{"Unable to enable telemetry acquisition on COM1.\r\n" + unattached,
                     "Unable to disable telemetry acquisition on COM1.\r\n" + unattached,
                     "Unable to detach RAD.\r\n" + unattached, "Attaching RAD to COM1.\r\n",
                     "Unable to attach RAD to COM1.\r\n"
                     "\tThe instrument has already been attached.\r\n",
                     "Enabling telemetry acquisition for RAD on COM1.\r\n",
                     "Disabling telemetry acquisition for RAD on COM1.\r\n",
                     "Detaching RAD from COM1.\r\n"}));
}

// What the thread sanitizer has to say.
TEST_F(AResource, AnyThreadMayAskWhileAnotherConnectsAndDisconnects) {
    Initialise();
    Attach();
    std::atomic<bool> done = false;
    std::size_t frames = 0, handedOver = 0;
    std::thread other([&] {
        while (!done) {
            frames += Frames().size();
            Comm.IdentityOf("RAD");
            EXPECT_EQ(Comm.EnableAcquisition("RAD"), CommResult::Success);
        }
    });
    CFrameQueue left;
    for (int round = 0; round < 20; ++round) {
        Connect();
        Script.Bytes("$Rabcd$Refgh").Status(EventLineError, LineFraming);
        Script.Bytes("$Rijkl").Played();
        if (round % 4 == 3)
            Script.ThenFail("CollectRead", 5);
        EXPECT_EQ(Comm.Disconnect(&left), CommResult::Success);
        handedOver += left.Size();
        std::uint32_t code = 0;
        EXPECT_EQ(Comm.ResetAbortCode(code), CommResult::Success);
        Script.Repair();
    }
    done = true;
    other.join();
    EXPECT_EQ(Comm.Figures().framesCut, 60u);
    EXPECT_EQ(frames + handedOver, 60u) << "a frame is retrieved or handed over";
}

} // namespace
} // namespace qor
