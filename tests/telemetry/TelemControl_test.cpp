// SPDX-License-Identifier: GPL-3.0-or-later
//
// The controller: every operation's failure line, byte for byte, and what attaching and removing
// do on the way.
#include "telemetry/TelemControl.h"

#include "fakes/DefinedInstrument.h"
#include "fakes/ManualClock.h"
#include "fakes/ScriptedPort.h"
#include "telemetry/SpecialLine.h"

#include <fstream>

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
        CFile file;
        EXPECT_EQ(file.OpenForReading(Path), FileCause::None);
        return file;
    }
    /// The messages since the last call.
    Lines Take() {
        std::vector<ProcessCommand> commands;
        Control.Commands().Drain(commands, 0);
        Lines lines;
        for (ProcessCommand& command : commands)
            if (command.notice == NoticeCode::None)
                lines.push_back(std::move(command.text));
        return lines;
    }
    void AddAll() {
        ASSERT_EQ(Control.AddResource(Serial("COM1")), CommResult::Success);
        ASSERT_EQ(Control.AddResource(Serial("COM2")), CommResult::Success);
        ASSERT_EQ(Control.AddResource(FileResourceSettings{}, Opened("HDRxHDRy")),
                  CommResult::Success);
        ASSERT_EQ(Control.AddInstrument(DefineFixed("VALUE NONE 'V' 1 BU 0 COUNT\n")),
                  CommResult::Success);
        Take();
    }

    const std::string Path = testing::TempDir() + "qor_controller.raw";
    CManualClock Clock;
    CPortScript Script;
    CTelemControl Control{Clock, Script.Factory()};
};

constexpr const char* NoResource = "\tThe communications resource could not be found.\r\n";
constexpr const char* NoInstrument = "\tThe instrument could not be found.\r\n";

TEST_F(AController, EveryOperationNamesItselfAndWhatIsMissing) {
    AddAll();
    bool exists = false;
    std::uint64_t bytes = 0;
    std::uint32_t code = 0;
    std::int32_t number = 0;
    std::string text;
    SerialResourceSettings serial;
    FileResourceSettings file;
    const CSensor* sensor = nullptr;
    CFrameData frame;
    CFrameQueue frames;
    struct {
        CommResult result;
        CommResult expected;
        std::string line, detail;
    } cases[] = {
        {Control.ModifyResource(Serial("X")), CommResult::ResourceNotFound,
         "Unable to modify communications resource: X.\r\n", NoResource},
        {Control.CheckResource("", exists), CommResult::ResourceReference,
         "Unable to check existance of communications resource.\r\n",
         "\tThe communications resource reference is invalid.\r\n"},
        {Control.ConnectResource("X"), CommResult::ResourceNotFound,
         "Unable to connect communications resource.\r\n", NoResource},
        {Control.DisconnectResource("X"), CommResult::ResourceNotFound,
         "Unable to disconnect communications resource.\r\n", NoResource},
        {Control.ResourceSettings("X", serial), CommResult::ResourceNotFound,
         "Unable to retrieve telemetry communications information.\r\n", NoResource},
        {Control.ResourceSettings("COM1", file), CommResult::NotAFile,
         "Unable to retrieve telemetry communications information.\r\n",
         "\tThe specified communications resource is not a file.\r\n"},
        {Control.ResourceSettings(Path, serial), CommResult::NotASerialPort,
         "Unable to retrieve telemetry communications information.\r\n",
         "\tThe specified communications resource is not a serial port.\r\n"},
        {Control.ResourceIdentification(3, text), CommResult::ResourceNotFound,
         "Unable to retieve communications resource identification.\r\n", NoResource},
        {Control.BytesDiscarded("X", bytes), CommResult::ResourceNotFound,
         "Unable to retrieve the number of bytes discarded.\r\n", NoResource},
        {Control.ResetBytesDiscarded("X"), CommResult::ResourceNotFound,
         "Unable to reset the number of bytes discarded.\r\n", NoResource},
        {Control.AbortCode("X", code), CommResult::ResourceNotFound,
         "Unable to retrieve telemetry aquisition abort code.\r\n", NoResource},
        {Control.AddResource(Serial("COM1")), CommResult::ResourceAlreadyDefined,
         "Unable to add communications resource: COM1.\r\n",
         "\tThe communications resource has already been defined.\r\n"},
        {Control.AddInstrument(DefineFixed("VALUE NONE 'V' 1 BU 0 COUNT\n")),
         CommResult::InstrumentAlreadyDefined, "Unable to add instrument: HDR.\r\n",
         "\tThe instrument has already been defined.\r\n"},
        {Control.AddInstrument(nullptr), CommResult::InstrumentReference,
         "Unable to add instrument: .\r\n", "\tThe instrument reference is invalid.\r\n"},
        {Control.AttachInstrument("I", "COM1"), CommResult::InstrumentNotFound,
         "Unable to attach instrument I to COM1.\r\n", NoInstrument},
        {Control.AttachInstrument("HDR", "X"), CommResult::ResourceNotFound,
         "Unable to attach instrument HDR to X.\r\n", NoResource},
        {Control.DetachInstrument("I"), CommResult::InstrumentNotFound,
         "Unable to remove instrument I.\r\n", NoInstrument},
        {Control.StartAcquisition("I"), CommResult::InstrumentNotFound,
         "Unable to start telemetry frame aquisition.\r\n", NoInstrument},
        {Control.StopAcquisition("HDR"), CommResult::ResourceNotFound,
         "Unable to stop telemetry frame aquisition.\r\n", NoResource},
        {Control.InstrumentResource("HDR", text), CommResult::ResourceNotFound,
         "Unable to access instrument communications resource.\r\n", NoResource},
        {Control.InstrumentFileType("I", text), CommResult::InstrumentNotFound,
         "Unable to retrieve the instrument file type.\r\n", NoInstrument},
        {Control.InstrumentFileName("I", text), CommResult::InstrumentNotFound,
         "Unable to retrieve the instrument file name.\r\n", NoInstrument},
        {Control.InstrumentSerialNumber("I", text), CommResult::InstrumentNotFound,
         "Unable to retrieve the instrument serial number.\r\n", NoInstrument},
        {Control.InstrumentSyncHeader("I", text), CommResult::InstrumentNotFound,
         "Unable to retieve instrument header.\r\n", NoInstrument},
        {Control.InstrumentLinesRead("I", number), CommResult::InstrumentNotFound,
         "Unable to retrieve the number of instrument file lines read.\r\n", NoInstrument},
        {Control.InstrumentFrameSize("I", number), CommResult::InstrumentNotFound,
         "Unable to retrive instrument frame size.\r\n", NoInstrument},
        {Control.InstrumentSensorCount("I", number), CommResult::InstrumentNotFound,
         "Unable to retrieve the number of instrument sensors.\r\n", NoInstrument},
        {Control.FindSensor("I", "VALUE", -1, sensor), CommResult::InstrumentNotFound,
         "Unable to find instrument sensor.\r\n", NoInstrument},
        {Control.AccessSensor("I", 0, sensor), CommResult::InstrumentNotFound,
         "Unable to access instrument sensors.\r\n", NoInstrument},
        {Control.AccessSensor("HDR", 99, sensor), CommResult::InstrumentReference,
         "Unable to access instrument sensors.\r\n", "\tThe instrument reference is invalid.\r\n"},
        {Control.RetrieveFileFrame(3, frame, exists), CommResult::ResourceNotFound,
         "Unable to retrieve instrument frame from file resource.\r\n", NoResource},
        {Control.RetrieveFileFrame(0, frame, exists), CommResult::NotAFile,
         "Unable to retrieve frame from telemetry resource COM1.\r\n",
         "\tThe specified communications resource is not a file.\r\n"},
        {Control.RetrieveFrames("X", frames), CommResult::ResourceNotFound,
         "Unable to retrieve frame from telemetry resource X.\r\n", NoResource},
    };
    Lines expected;
    for (const auto& row : cases) {
        EXPECT_EQ(row.result, row.expected) << row.line;
        expected.push_back(row.line + row.detail);
    }
    EXPECT_EQ(Take(), expected);

    std::ignore = Control.RemoveResource("X");
    std::ignore = Control.RemoveInstrument("I");
    EXPECT_EQ(Take(),
              (Lines{"Removing communications resource: X.\r\n",
                     std::string("Unable to remove communications resource: X.\r\n") + NoResource,
                     "Removing instrument: I.\r\n",
                     std::string("Unable to remove instrument: I.\r\n") + NoInstrument}));
}

TEST_F(AController, ResourceFailuresKeepTheirOwnDetail) {
    AddAll();
    Script.Fail("ReadSettings", 5);
    EXPECT_EQ(Control.ConnectResource("COM1"), CommResult::SettingsNotRead);
    Lines lines = Take();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], "Unable to connect communications resource.\r\n");
}

TEST_F(AController, AbortedResourceMustBeReset) {
    AddAll();
    Script.Fail("CreateInput", 5);
    EXPECT_EQ(Control.ConnectResource("COM1"), CommResult::WorkerNotStarted);
    Script.Repair();
    Take();
    EXPECT_EQ(Control.ConnectResource("COM1"), CommResult::AbortCodeSet);
    EXPECT_EQ(Take(), (Lines{"Unable to open serial port communications on COM1.\r\n"
                             "\tThe telemetry abort code has not been reset.\r\n",
                             "COM1 has aborted and must be reset before connecting.\r\n",
                             "Unable to connect communications resource.\r\n"}));
    std::uint32_t code = 0;
    EXPECT_EQ(Control.AbortCode("COM1", code), CommResult::Success);
    EXPECT_EQ(code, 0x10000005u);
    EXPECT_EQ(Control.ConnectResource("COM1"), CommResult::Success);
}

TEST_F(AController, AttachingElsewhereDetachesAndRemovingDetaches) {
    AddAll();
    std::string resource;
    EXPECT_EQ(Control.AttachInstrument("HDR", "COM1"), CommResult::Success);
    EXPECT_EQ(Control.AttachInstrument("HDR", "COM2"), CommResult::Success);
    EXPECT_EQ(Control.InstrumentResource("HDR", resource), CommResult::Success);
    EXPECT_EQ(resource, "COM2");
    EXPECT_EQ(Control.ConnectResource("COM2"), CommResult::Success);
    EXPECT_EQ(Control.RemoveResource("COM2"), CommResult::Success);
    EXPECT_EQ(Take(),
              (Lines{"Attaching HDR to COM1.\r\n", "Detaching HDR from COM1.\r\n",
                     "Attaching HDR to COM2.\r\n", "COM2 connection successful.\r\n",
                     "Removing communications resource: COM2.\r\n",
                     "COM2 disconnection successful.\r\n", "Detaching HDR from COM2.\r\n"}));
    EXPECT_EQ(Control.InstrumentResource("HDR", resource), CommResult::ResourceNotFound);
    EXPECT_EQ(Control.AttachInstrument("HDR", "COM1"), CommResult::Success);
    EXPECT_EQ(Control.RemoveInstrument("HDR"), CommResult::Success);
    EXPECT_EQ(Control.Instrument("HDR"), nullptr);
    EXPECT_EQ(Control.Resource("COM1")->IdentityOf("HDR"), 0u);
    EXPECT_EQ(Control.ResourceCount(), 2u);
}

TEST_F(AController, FileFramesComeByPosition) {
    AddAll();
    ASSERT_EQ(Control.AttachInstrument("HDR", Path), CommResult::Success);
    ASSERT_EQ(Control.StartAcquisition("HDR"), CommResult::Success);
    CFrameData frame;
    bool found = false;
    for (const char* text : {"HDRx", "HDRy"}) {
        EXPECT_EQ(Control.RetrieveFileFrame(2, frame, found), CommResult::Success);
        ASSERT_TRUE(found);
        EXPECT_EQ(frame.Text(), text);
    }
    EXPECT_EQ(Control.RetrieveFileFrame(2, frame, found), CommResult::Success);
    EXPECT_FALSE(found);
}

TEST(SpecialLine, NamesTheTypesWithoutSyncHeader) {
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
        {"SPECIAL NONE 'SEABIRD_37SIMCT' 0 AS 0 NONE", "SEABIRD_37SIMCT", true, "\r\n", {}},
        {"SPECIAL NONE 'SEABIRD_19SCT' 0 AS 0 NONE", "SEABIRD_19SCT", true, "\r\n", {}},
        {"SPECIAL SEABIRD_19SCT 'BSI' 0 AS 0 NONE", "", false, "", {}},
    };
    for (const auto& row : cases) {
        AttachRequest request = MakeAttachRequest(*DefineFixed(row.line + "\n"));
        EXPECT_EQ(request.typeName, row.type) << row.line;
        EXPECT_EQ(request.noSync, row.noSync) << row.line;
        EXPECT_EQ(request.terminator, row.terminator) << row.line;
        EXPECT_EQ(request.syncBytes, row.pairs) << row.line;
        EXPECT_EQ(request.syncHeader, "HDR");
        EXPECT_EQ(request.frameSize, 3);
    }
    AttachRequest text = MakeAttachRequest(*DefineDelimited(""));
    EXPECT_EQ(text.terminator, "\r\n");
    EXPECT_FALSE(text.noSync);
}

TEST(ProcessCommands, MessagesEndTheirLineAndWaitingNoticesAreNotRepeated) {
    CProcessCommand queue;
    queue.Report("no end");
    queue.Report("bare\n");
    queue.Report("");
    queue.PostNotice(NoticeCode::FramesAvailable, "COM1");
    queue.Report("done\r\n");
    queue.PostNotice(NoticeCode::FramesAvailable, "COM1");
    queue.PostNotice(NoticeCode::FramesAvailable, "COM2");
    queue.PostFramesQueued("COM1");
    std::vector<ProcessCommand> commands;
    ASSERT_TRUE(queue.Drain(commands, 0));
    Lines seen;
    for (const ProcessCommand& command : commands)
        seen.push_back(std::to_string(static_cast<int>(command.notice)) + command.text);
    EXPECT_EQ(seen, (Lines{"0no end\r\n", "0bare\n\r\n", "4COM1", "0done\r\n", "4COM2", "1COM1"}));
    queue.PostNotice(NoticeCode::FramesAvailable, "COM1");
    EXPECT_TRUE(queue.Drain(commands, 0)) << "a notice that was taken may come again";
    queue.Wake();
    EXPECT_FALSE(queue.Drain(commands, 60'000));
}

} // namespace
} // namespace qor
