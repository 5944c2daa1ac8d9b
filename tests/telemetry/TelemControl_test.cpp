// SPDX-License-Identifier: GPL-3.0-or-later
//
// The controller: every operation's failure line, byte for byte, and what attaching and removing
// do on the way.
#include "telemetry/TelemControl.h"

#include "fakes/DefinedInstrument.h"
#include "fakes/ManualClock.h"
#include "fakes/ScriptedPort.h"

#include <fstream>
#include <map>

namespace qor {
namespace {

using Lines = std::vector<std::string>;

class AController : public testing::Test {
  protected:
    static SerialResourceSettings Serial(const std::string& name) {
        SerialResourceSettings settings;
        settings.portName = name;
        settings.globalSyncString = "SYNC";
        return settings;
    }
    CFile Opened(const std::string& content) {
        std::ofstream(Path, std::ios::binary) << content;
        return OpenedAt(Path);
    }
    static CFile OpenedAt(const std::string& path) {
        CFile file;
        EXPECT_EQ(file.OpenForReading(path), FileCause::None);
        return file;
    }
    /// The messages since the last call.
    Lines Take() {
        std::vector<QueuedCommand> commands;
        Control.Commands().Drain(commands, 0);
        Lines lines;
        for (QueuedCommand& command : commands)
            if (command.notice == NoticeCode::None)
                lines.push_back(std::move(command.event.text));
        return lines;
    }
    void AddAll() {
        for (const char* name : {"COM1", "COM2"})
            ASSERT_EQ(Control.AddResource(Serial(name)), CommResult::Success);
        ASSERT_EQ(Control.AddResource(FileResourceSettings{}, Opened("HDRxHDRy")),
                  CommResult::Success);
        ASSERT_EQ(Control.AddInstrument(DefineFixed("VALUE NONE 'V' 1 BU 0 COUNT\n")),
                  CommResult::Success);
        Take();
    }

    std::string Path = testing::TempDir() + "qor_controller.raw";
    CManualClock Clock;
    CPortScript Script;
    CTelemControl Control{Clock, Script.Factory()};
};

TEST_F(AController, AFailureNamesTheOperationAndWhatIsMissing) {
    AddAll();
    bool exists = false;
    std::uint32_t code = 0;
    std::int32_t size = 0;
    std::string text;
    SerialResourceSettings serial;
    CFrameData frame;
    using enum CommResult;
    const std::map<CommResult, std::string> details = {
        {ResourceNotFound, "\tThe communications resource could not be found.\r\n"},
        {InstrumentNotFound, "\tThe instrument could not be found.\r\n"},
        {ResourceReference, "\tThe communications resource reference is invalid.\r\n"},
        {NotAFile, "\tThe specified communications resource is not a file.\r\n"},
        {NotASerialPort, "\tThe specified communications resource is not a serial port.\r\n"},
        {ResourceAlreadyDefined, "\tThe communications resource has already been defined.\r\n"},
        {InstrumentAlreadyDefined, "\tThe instrument has already been defined.\r\n"},
        {InstrumentReference, "\tThe instrument reference is invalid.\r\n"},
    };
    constexpr CommResult NotFound = InstrumentNotFound;
    const struct {
        CommResult result;
        std::string deed;
        CommResult expected = ResourceNotFound;
    } rows[] = {
        {Control.ModifyResource(Serial("X")), "modify communications resource: X"},
        {Control.ModifyResource("X", {}, {}), "modify communications resource: X"},
        {Control.RemoveResource("X"), "remove communications resource: X"},
        {Control.RemoveInstrument("I"), "remove instrument: I", NotFound},
        {Control.ResourceIdentification(3, text), "retieve communications resource identification"},
        {Control.AbortCode("X", code), "retrieve telemetry aquisition abort code"},
        {Control.AttachInstrument("HDR", "X"), "attach instrument HDR to X"},
        {Control.InstrumentResource("HDR", text), "access instrument communications resource"},
        {Control.AttachInstrument("I", "COM1"), "attach instrument I to COM1", NotFound},
        {Control.StartAcquisition("I"), "start telemetry frame aquisition", NotFound},
        {Control.InstrumentSyncHeader("I", text), "retieve instrument header", NotFound},
        {Control.InstrumentFrameSize("I", size), "retrive instrument frame size", NotFound},
        {Control.CheckResource("", exists), "check existance of communications resource",
         ResourceReference},
        {Control.ModifyResource("COM1", {}, {}), "modify communications resource: COM1", NotAFile},
        {Control.RetrieveFileFrame(0, frame, exists), "retrieve frame from telemetry resource COM1",
         NotAFile},
        {Control.ResourceSettings(Path, serial), "retrieve telemetry communications information",
         NotASerialPort},
        {Control.AddResource(Serial("COM1")), "add communications resource: COM1",
         ResourceAlreadyDefined},
        {Control.AddInstrument(DefineFixed("V 1 '' 1 BU 0 COUNT\n")), "add instrument: HDR",
         InstrumentAlreadyDefined},
        {Control.AddInstrument(nullptr), "add instrument: ", InstrumentReference},
    };
    Lines expected;
    for (const auto& row : rows) {
        EXPECT_EQ(row.result, row.expected) << row.deed;
        if (row.deed.starts_with("remove "))
            expected.push_back("Removing " + row.deed.substr(7) + ".\r\n");
        expected.push_back("Unable to " + row.deed + ".\r\n" + details.at(row.expected));
    }
    EXPECT_EQ(Take(), expected);
}

TEST_F(AController, AbortedResourceMustBeReset) {
    AddAll();
    Script.Fail("CreateInput", 5);
    CTelemComm& port = *Control.Resource("COM1");
    std::ignore = Control.ConnectResource(port);
    Script.Repair();
    Take();
    EXPECT_EQ(Control.ConnectResource(port), CommResult::AbortCodeSet);
    Lines told = Take();
    told.erase(told.begin()); // the resource's own
    EXPECT_EQ(told, (Lines{"COM1 has aborted and must be reset before connecting.\r\n",
                           "Unable to connect communications resource.\r\n"}));
    std::uint32_t code = 0;
    EXPECT_EQ(Control.AbortCode("COM1", code), CommResult::Success);
    EXPECT_EQ(code, 0x10000005u);
    EXPECT_EQ(Control.ConnectResource(port), CommResult::Success);
}

TEST_F(AController, AttachingElsewhereAndRemovingTheResourceDetach) {
    AddAll();
    for (const char* name : {"COM1", "COM2"})
        EXPECT_EQ(Control.AttachInstrument("HDR", name), CommResult::Success);
    EXPECT_EQ(Control.RemoveResource("COM2"), CommResult::Success);
    EXPECT_EQ(Control.RemoveInstrument("HDR"), CommResult::Success);
    EXPECT_EQ(Take(),
              (Lines{"Attaching HDR to COM1.\r\n", "Detaching HDR from COM1.\r\n",
                     "Attaching HDR to COM2.\r\n", "Removing communications resource: COM2.\r\n",
                     "Detaching HDR from COM2.\r\n", "Removing instrument: HDR.\r\n"}));
}

TEST_F(AController, FileResourceTakesAnotherFileOnceItsOwnHasBeenRead) {
    AddAll();
    ASSERT_EQ(Control.AttachInstrument("HDR", Path), CommResult::Success);
    ASSERT_EQ(Control.StartAcquisition("HDR"), CommResult::Success);
    CFrameData frame;
    bool found = false;
    const std::string refused = "Unable to reinitialize file resource.\r\n\t",
                      unable = "Unable to modify communications resource: " + Path + ".\r\n";
    ASSERT_EQ(Control.RetrieveFrame(Path, frame, found), CommResult::Success);
    Take();
    EXPECT_EQ(Control.ModifyResource(Path, {}, Opened("HDRz")), CommResult::FileError) << "in use";
    EXPECT_EQ(
        Take(),
        (Lines{refused + "SHARE.EXE was not loaded, or a shared region was locked.\r\n", unable}));
    while (found)
        ASSERT_EQ(Control.RetrieveFrame(Path, frame, found), CommResult::Success);
    EXPECT_EQ(Control.ModifyResource(Path, {}, {}), CommResult::FileError) << "no open file";

    const std::string old = Path;
    Path += "2";
    ASSERT_EQ(Control.ModifyResource(old, {5, 64}, Opened("HDRz")), CommResult::Success);
    FileResourceSettings settings;
    EXPECT_EQ(Control.ResourceSettings(Path, settings), CommResult::Success);
    EXPECT_EQ(settings.readChunkSize, 64u);
    EXPECT_EQ(Control.RetrieveFrame(Path, frame, found), CommResult::Success);
    EXPECT_TRUE(found) << "the instrument stays attached";
    ASSERT_EQ(Control.AddResource(FileResourceSettings{}, OpenedAt(old)), CommResult::Success);
    EXPECT_EQ(Control.ModifyResource(old, {}, OpenedAt(Path)), CommResult::ResourceAlreadyDefined);
}

TEST(AttachRequest, NamesTheTypesWithoutSyncHeader) {
    struct {
        std::string line, type;
        bool noSync;
        std::string terminator;
        std::vector<std::uint8_t> pairs;
    } cases[] = {
        {"", "", false, "", {}},
        {"SPECIAL other 'x' 0 AS 0 NONE", "", false, "", {}},
        {"SPECIAL bsi '\\xAA\\x04\\xBB\\x02' 0 AS 0 NONE", "BSI", true, "", {0xAA, 4, 0xBB, 2}},
        {"SPECIAL BSI '\\xAA\\xZZ' 0 AS 0 NONE", "BSI", true, "", {}},
        {"SPECIAL BSI 'abababababababab' 0 AS 0 NONE", "BSI", true, "", {}},
        {"SPECIAL HobiLabs_HS2_D '' 0 AS 0 NONE", "HOBILABS_HS2_D", true, "", {}},
        {"SPECIAL HEITRONICS_IRC '' 0 AS 0 NONE", "HEITRONICS_IRC", true, "\r\n", {}},
        {"SPECIAL NONE 'aos_ezcompass_3' 0 AS 0 NONE", "AOS_EZCOMPASS_3", true, "\r\n", {}},
        {"SPECIAL NONE 'SEABIRD_19SCT' 0 AS 0 NONE", "SEABIRD_19SCT", true, "\r\n", {}},
        {"SPECIAL SEABIRD_19SCT 'BSI' 0 AS 0 NONE", "", false, "", {}},
    };
    for (const auto& row : cases) {
        AttachRequest request = MakeAttachRequest(*DefineFixed(row.line + "\n"));
        EXPECT_EQ(request.typeName, row.type) << row.line;
        EXPECT_EQ(request.noSync, row.noSync) << row.line;
        EXPECT_EQ(request.terminator, row.terminator) << row.line;
        EXPECT_EQ(request.syncBytes, row.pairs) << row.line;
    }
}

TEST(AttachRequest, ALogIsRefusedThatCouldNotBeTakenApart) {
    using enum ReplayConflict;
    auto of = [](const char* name, const std::string& header, const char* type,
                 std::vector<std::uint8_t> pairs = {}) {
        AttachRequest request;
        request.instrumentName = name;
        request.syncHeader = header;
        request.typeName = type;
        request.noSync = *type != 0;
        request.terminator = "\r\n";
        request.syncBytes = std::move(pairs);
        return request;
    };
    const AttachRequest text = of("T", "T", ""), lines = of("L", "", "SEABIRD_19SCT"),
                        named = of("N", "N", "HEITRONICS_IRC"),
                        packets = of("P", "P", "BSI", {1, 2}), other = of("O", "O", "BSI", {1, 3}),
                        sized = of("H", "H", "HOBILABS_HS2_D");
    AttachRequest same = of("S", "S", "BSI", {1, 2});
    same.terminator.clear(); // says nothing of packets
    const struct {
        std::vector<LoggedInstrument> instruments;
        std::vector<ReplayVerdict> verdicts;
    } rows[] = {
        {{}, {}},
        {{{text}, {lines}, {packets}, {other}, {sized}}, {}},
        {{{text, false}, {sized, false}, {lines}}, {}},
        {{{text}, {lines, false}}, {{NoTag, 1, 1}}},
        {{{packets, false}}, {{NoTag, 0, 0}}},
        {{{lines}, {text}, {of("L2", "", "")}}, {{SameHeader, 0, 2}}},
        {{{text}, {lines}, {named}}, {{SameFrames, 1, 2}}},
        {{{packets}, {other}, {same}}, {{SameFrames, 0, 2}}},
        {{{text}, {of("T2", "T2", "")}, {of("XT", "XT", "")}}, {{SharedStart, 0, 1}}},
        {{{of("H2", "H2", "")}, {sized}}, {{SharedStart, 0, 1}}},
        {{{of("P2", "P2", "")}, {packets}}, {}}, // the packets have no header
        {{{of("Z", "$PCZDA", "")}, {of("Q", "QORHDR X", "")}, {of("D", "$P", "")}},
         {{LogRecord, 0, 0}, {LogRecord, 1, 1}, {SharedStart, 0, 2}}},
    };
    for (const auto& row : rows) {
        const std::vector<ReplayVerdict> verdicts = CheckReplay(row.instruments);
        ASSERT_EQ(verdicts.size(), row.verdicts.size());
        for (std::size_t i = 0; i < verdicts.size(); ++i) {
            EXPECT_EQ(verdicts[i].conflict, row.verdicts[i].conflict) << row.instruments.size();
            EXPECT_EQ(verdicts[i].first, row.verdicts[i].first);
            EXPECT_EQ(verdicts[i].second, row.verdicts[i].second);
        }
    }
}

TEST(ProcessCommands, MessagesEndTheirLineAndWaitingNoticesAreNotRepeated) {
    CManualClock clock;
    CProcessCommand queue{clock};
    queue.Report("no end");
    queue.Report("bare\n");
    queue.Report("");
    queue.PostNotice(NoticeCode::FramesAvailable, "COM1");
    queue.Report("done\r\n");
    queue.PostNotice(NoticeCode::FramesAvailable, "COM1");
    queue.PostNotice(NoticeCode::FramesAvailable, "COM2");
    queue.PostFramesQueued("COM1");
    std::vector<QueuedCommand> commands;
    ASSERT_TRUE(queue.Drain(commands, 0));
    Lines seen;
    for (const QueuedCommand& command : commands)
        seen.push_back(
            std::to_string(static_cast<int>(command.notice)) +
            (command.notice == NoticeCode::None ? command.event.text : command.event.subject));
    EXPECT_EQ(seen, (Lines{"0no end\r\n", "0bare\n\r\n", "4COM1", "0done\r\n", "4COM2", "1COM1"}));
    queue.PostNotice(NoticeCode::FramesAvailable, "COM1");
    EXPECT_TRUE(queue.Drain(commands, 0)) << "a notice that was taken may come again";
    queue.Wake();
    EXPECT_FALSE(queue.Drain(commands, 60'000));
}

} // namespace
} // namespace qor
