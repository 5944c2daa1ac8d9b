// SPDX-License-Identifier: GPL-3.0-or-later
//
// Exported frames, format by format: the very bytes, and which file they are in.
#include "export/CheckCounts.h"
#include "export/ExportFormat.h"
#include "export/NetCdfFile.h"
#include "export/TimeWindow.h"
#include "telemetry/RawLogFormat.h"

#include "fakes/DefinedInstrument.h"
#include "fakes/TempFolder.h"

#include <gmock/gmock.h>

namespace qor {
namespace {

/// An instrument and its latest frame.
class CSender {
  public:
    explicit CSender(const std::string& name, const std::string& lines)
        : Definition(Define("INSTRUMENT " + name + " '' 3 AS 0 NONE\n" + lines)),
          Live(*Definition) {}

    void Send(const std::string& bytes) {
        CFrameData frame;
        frame.Bytes.assign(bytes.begin(), bytes.end());
        frame.Info.frameSize = static_cast<std::int32_t>(bytes.size());
        frame.Info.frameCounter = ++Sent;
        frame.Info.time = {1'115'130'185, 250, 60, false, true};
        frame.StreamOffset = 100;
        Live.Take(frame);
    }

    std::unique_ptr<CInstrument> Definition;
    CLiveInstrument Live;
    std::uint32_t Sent = 0;
};

class AnExport : public testing::Test {
  protected:
    AnExport() {
        Settings.report = [](const std::string& text) { ADD_FAILURE() << text; };
    }
    /// A sink of the format for a path in the folder.
    std::unique_ptr<CFrameSink> Make(const char* format, const std::string& name) {
        Settings.path = name.empty() ? "" : Temp.Path + name;
        return FindExportFormat(format)->make(Settings);
    }
    OutputResult Begin(CFrameSink& sink, std::initializer_list<CSender*> senders) {
        std::vector<ExportedInstrument> instruments;
        for (const CSender* sender : senders)
            instruments.push_back({&sender->Live, Derived});
        return sink.BeginLog({"cast.raw"}, instruments);
    }
    void Write(CFrameSink& sink, CSender& sender, const std::string& bytes) {
        sender.Send(bytes);
        sink.Write({sender.Live, Checks, Derived});
    }

    CTempFolder Temp;
    ExportSettings Settings;
    FrameCheckResult Checks{.checksCounter = true, .dropped = true};
    std::vector<DerivedRow> Derived;
};

const std::string Sensors = "NOTE 1 '' 3 AS 0 NONE\n"
                            "TEMP NONE 'C' 2 BU 1 POLYU\n0 0.1\n"
                            "DEPTH NONE 'm' 2 AI 1 POLYU\n0 0.1\n";

TEST_F(AnExport, QuotesTextsShortensNumbersAndLeavesOutWhatHasNoValue) {
    Settings.style.derived = true;
    Derived.resize(2);
    Derived[0].label = "K \xB5";
    Derived[0].units = "1/m";
    Derived[0].value = 0.1;
    Derived[1].label = "T";
    CSender sender("ABC", Sensors);
    const std::string frame = "ABC\",~" + std::string("\0\3", 2) + "??";
    const struct {
        const char *format, *expected;
    } cases[] = {
        {"csv", "time,frame,NOTE(1) [],TEMP() [C],DEPTH() [m],K \xC2\xB5 [1/m],T []\r\n"
                "2005-05-03T15:23:05.250,1,\"\"\",~\",0.30000000000000004,,0.1,\r\n"},
        {"jsonl",
         "{\"file\":\"cast.raw\",\"instrument\":\"ABC\",\"frame\":2,\"offset\":100,\"length\":10,"
         "\"time\":\"2005-05-03T15:23:05.250\",\"dropped\":true,\"checksum_error\":null,"
         "\"value_error\":false,\"values\":[\"\\\",~\",0.30000000000000004,null],"
         "\"status\":{\"2\":\"0x20000006\"},"
         "\"derived\":[[\"K \xC2\xB5\",\"1/m\",0.1],[\"T\",\"\",null]]}\n"},
    };
    for (const auto& row : cases) {
        const auto sink = Make(row.format, row.format);
        ASSERT_TRUE(Begin(*sink, {&sender}).Good());
        Write(*sink, sender, frame);
        sink->EndLog();
        ASSERT_TRUE(sink->Finish().Good());
        EXPECT_EQ(Temp.Content(row.format), row.expected);
    }
}

TEST_F(AnExport, MarksFramesAndTheirLogsAndSaysWhatIsLeftOut) {
    Settings.style.flags = Settings.style.files = true;
    CSender sender("ABC", "NOTE 1 '' 3 AS 0 NONE\n");
    const struct {
        const char *format, *expected;
    } cases[] = {{"csv", "file,time,frame,dropped,checksum_error,value_error,NOTE(1) []\r\n"
                         "cast.raw,2005-05-03T15:23:05.250,1,true,,false,xyz\r\n"},
                 {"summary", "ABC: 2 frames, 2 dropped, checksum errors not checked, 1 frames left "
                             "out\n"}};
    for (const auto& row : cases) {
        const auto sink = Make(row.format, row.format);
        ASSERT_TRUE(Begin(*sink, {&sender}).Good());
        Write(*sink, sender, "ABCxyz");
        sink->LeaveOut({sender.Live, Checks, Derived});
        sink->EndLog();
        ASSERT_TRUE(sink->Finish().Good());
        EXPECT_THAT(Temp.Content(row.format), testing::StartsWith(row.expected));
    }
}

TEST_F(AnExport, HasNamesDigitsAndDegreesForOtherPrograms) {
    Settings.style = {
        .derived = true, .simpleNames = true, .digits = 3, .utcOffset = 780, .degrees = true};
    CSender sender("ABC", "LATITUDE NONE '' 9 AF 0 DDMM\nLATHEMISPHERE NONE '' 1 AS 0 NONE\n"
                          "TEMP \xB5m/s 'C' 2 BU 1 POLYU\n0 0.1\ntemp m_s '' 1 BU 0 COUNT\n");
    Derived.resize(1);
    Derived[0].label = "T (W)";
    Derived[0].value = 12345.678;
    const struct {
        const char *format, *expected;
    } cases[] = {{"csv",
                  "time,frame,LATITUDE,LATITUDE_deg,LATHEMISPHERE,TEMP_m_s,temp_m_s_2,T_W\r\n"
                  "2005-05-03T02:23:05.250Z,1,\"44 30' 00\"\"\",-44.5,S,1560,65,12300\r\n"},
                 {"jsonl", "\"degrees\":{\"0\":-44.5},\"derived\":[[\"T (W)\",\"\",12300]]}\n"}};
    for (const auto& row : cases) {
        const auto sink = Make(row.format, row.format);
        ASSERT_TRUE(Begin(*sink, {&sender}).Good());
        Write(*sink, sender, "ABC04430.000S=\1A");
        sink->EndLog();
        ASSERT_TRUE(sink->Finish().Good());
        EXPECT_THAT(Temp.Content(row.format), testing::EndsWith(row.expected));
    }
}

TEST_F(AnExport, HasTheUnitsOfSimpleNamesBesideItsFile) {
    Settings.style = {.derived = true, .simpleNames = true, .described = true};
    Derived.resize(1);
    Derived[0].label = "T (W)";
    Derived[0].units = "1/m";
    CSender sender("ABC", "NOTE 1 '' 3 AS 0 NONE\nTEMP \xB5 'C' 2 BU 1 POLYU\n0 0.1\n");
    const auto column = [](const std::string& name, const std::string& title,
                           const std::string& units, const std::string& type) {
        return "{\"name\":\"" + name + "\",\"titles\":\"" + title + "\",\"units\":\"" + units +
               "\",\"datatype\":\"" + type + "\"}";
    };
    {
        const auto sink = Make("csv", "t.csv");
        ASSERT_TRUE(Begin(*sink, {&sender}).Good());
        ASSERT_TRUE(sink->Finish().Good());
    }
    EXPECT_EQ(Temp.Content("t.csv"), "time,frame,NOTE_1,TEMP,T_W\r\n");
    EXPECT_EQ(Temp.Content("t.csv.json"),
              "{\"@context\":\"http://www.w3.org/ns/csvw\",\"url\":\"t.csv\",\"tableSchema\":"
              "{\"columns\":[" +
                  column("time", "time", "", "datetime") + "," +
                  column("frame", "frame", "", "integer") + "," +
                  column("NOTE_1", "NOTE(1)", "", "string") + "," +
                  column("TEMP", "TEMP(\xC2\xB5)", "C", "number") + "," +
                  column("T_W", "T (W)", "1/m", "number") + "]}}\n");
    // What stands in the way of either is refused before the first row, and leaves nothing.
    ASSERT_EQ(RemoveFile(Temp.Path + "t.csv"), FileCause::None);
    EXPECT_EQ(Begin(*Make("csv", "t.csv"), {&sender}).state, OutputState::Exists);
    EXPECT_FALSE(FileExists(Temp.Path + "t.csv") || FileExists(Temp.Path + "t.csv.part"));
    Settings.style.simpleNames = Settings.style.described = false;
    const auto full = Make("csv", "full.csv");
    ASSERT_TRUE(Begin(*full, {&sender}).Good() && full->Finish().Good());
    EXPECT_FALSE(FileExists(Temp.Path + "full.csv.json"));
}

TEST(Zones, AreReadAsPeopleWriteThem) {
    const struct {
        const char* text;
        std::optional<int> minutes;
    } cases[] = {{"UTC+13:00", 780}, {" gmt -3:30 ", -210}, {"UTC", 0},       {"z", 0},
                 {"+0100", 60},      {"-8", -480},          {"UTC+05", 300},  {"", {}},
                 {"NZDT", {}},       {"UTC+15", {}},        {"UTC+1:75", {}}, {"13:00", {}},
                 {"UTC+130", {}},    {"UTC+13:00 x", {}}};
    for (const auto& row : cases)
        EXPECT_EQ(MinutesOfZone(row.text), row.minutes) << row.text;
}

TEST_F(AnExport, PutsATableAnInstrumentIntoAFolderAndGoesOnWithItInTheNextLog) {
    CSender upper("A_B", Sensors), lower("a_b", Sensors), other("A/B", Sensors);
    const std::string row = "2005-05-03T15:23:05.250,";
    EXPECT_EQ(Begin(*Make("csv", ""), {&upper, &lower}).state, OutputState::NeedsFolder);
    const auto sink = Make("csv", "tables");
    ASSERT_TRUE(Begin(*sink, {&upper, &lower, &other}).Good());
    Write(*sink, upper, "A_Bxyz12 8");
    sink->EndLog();
    CSender again("A_B", Sensors);
    ASSERT_TRUE(Begin(*sink, {&again}).Good());
    Write(*sink, again, "A_Bxyz12 9");
    sink->EndLog();
    ASSERT_TRUE(sink->Finish().Good());
    EXPECT_THAT(
        Temp.Content("tables/A_B.csv"),
        testing::EndsWith("\r\n" + row + "1,xyz,1259.4,0.8\r\n" + row + "1,xyz,1259.4,0.9\r\n"));
    EXPECT_TRUE(FileExists(Temp.Path + "tables/a_b_2.csv"));
    EXPECT_TRUE(FileExists(Temp.Path + "tables/A_B_3.csv"));
}

TEST_F(AnExport, PutsSeveralTablesOnlyIntoWhatIsAFolder) {
    CSender first("ABC", Sensors), second("DEF", Sensors);
    Temp.Put("file", "");
    std::filesystem::create_directory(Temp.Path + "there.csv");
    const struct {
        const char* path;
        OutputState state;
    } cases[] = {{"new.csv", OutputState::NeedsFolder},
                 {"file", OutputState::NeedsFolder},
                 {"there.csv", OutputState::Good},
                 {"new.2/", OutputState::Good},
                 {"new", OutputState::Good},
                 {"no/where", OutputState::Failed}};
    Settings.report = [](const std::string&) {};
    for (const auto& row : cases) {
        const auto sink = Make("csv", row.path);
        EXPECT_EQ(Begin(*sink, {&first, &second}).state, row.state) << row.path;
    }
    EXPECT_FALSE(FileExists(Temp.Path + "new")) << "a folder whose tables did not come";
    EXPECT_TRUE(FileExists(Temp.Path + "there.csv"));
}

TEST_F(AnExport, OfWhichOneTableIsRefusedLeavesNone) {
    CSender first("ABC", Sensors), second("DEF", Sensors);
    std::filesystem::create_directory(Temp.Path + "tables");
    Temp.Put("tables/DEF.csv", "precious");
    {
        const auto sink = Make("csv", "tables");
        const OutputResult result = Begin(*sink, {&first, &second});
        EXPECT_EQ(result.state, OutputState::Exists);
        EXPECT_TRUE(IsSameFile(result.path, Temp.Path + "tables/DEF.csv")) << result.path;
    }
    EXPECT_EQ(Temp.Content("tables/DEF.csv"), "precious");
    EXPECT_FALSE(FileExists(Temp.Path + "tables/ABC.csv"));
    EXPECT_FALSE(FileExists(Temp.Path + "tables/ABC.csv.part"));
}

TEST_F(AnExport, ToNetCdfNeedsAFileAndAProgramThatHasTheLibrary) {
    CSender sender("ABC", Sensors);
    const OutputState refusal =
        CNetCdfFile::IsThere() ? OutputState::NeedsFile : OutputState::NotBuilt;
    EXPECT_EQ(Begin(*Make("netcdf", ""), {&sender}).state, refusal);
    const auto sink = Make("netcdf", "cast.nc");
    const OutputResult begun = Begin(*sink, {&sender});
    EXPECT_EQ(begun.state, CNetCdfFile::IsThere() ? OutputState::Good : OutputState::NotBuilt);
    EXPECT_FALSE(FileExists(Temp.Path + "cast.nc")) << "before it is complete";
    if (!begun.Good())
        return;
    Write(*sink, sender, "ABC\",~" + std::string("\0\3", 2) + "??");
    sink->EndLog();
    ASSERT_TRUE(sink->Finish().Good());
    EXPECT_TRUE(FileExists(Temp.Path + "cast.nc"));
    EXPECT_FALSE(FileExists(Temp.Path + "cast.nc.part"));
}

TEST_F(AnExport, ToOneNetCdfFileOfLogsThatDoNotGoTogetherIsRefused) {
    if (!CNetCdfFile::IsThere())
        GTEST_SKIP() << "built without libnetcdf";
    const struct {
        const char* sensors;
        std::optional<int> utcOffset;
        const char* said;
    } cases[] = {{"NOTE 1 '' 3 AS 0 NONE\n", {}, "the sensors of other.raw are others"},
                 {Sensors.c_str(), 60, "times of other.raw are UTC"}};
    for (const auto& row : cases) {
        std::string said;
        Settings.report = [&](const std::string& text) { said += text; };
        const auto sink = Make("netcdf", "cast.nc");
        CSender first("ABC", Sensors), second("ABC", row.sensors);
        ASSERT_TRUE(Begin(*sink, {&first}).Good());
        sink->EndLog();
        const ExportedInstrument other[] = {{&second.Live, {}}};
        EXPECT_EQ(sink->BeginLog({"other.raw", row.utcOffset}, other).state, OutputState::Failed);
        EXPECT_THAT(said, testing::HasSubstr(row.said));
        EXPECT_FALSE(sink->Good());
    }
    EXPECT_FALSE(FileExists(Temp.Path + "cast.nc.part"));
}

TEST(ATimeWindow, HoldsWhatIsShownFromItsStartUntilBeforeItsEnd) {
    const FrameTime time{1'000'000, 900, 60, false, true};
    const std::int64_t local = 1'000'000 + 3600;
    const struct {
        TimeWindow window;
        std::optional<int> utcOffset;
        bool has;
    } cases[] = {{{}, {}, true},
                 {{local, {}}, {}, true},
                 {{local + 1, {}}, {}, false},
                 {{{}, local}, {}, false},
                 {{local, local + 1}, {}, true},
                 {{local, {}}, 60, false},
                 {{local - 3600, local - 3599}, 60, true}};
    for (const auto& row : cases)
        EXPECT_EQ(row.window.Has(time, row.utcOffset), row.has) << &row - cases;
    EXPECT_FALSE((TimeWindow{local, {}}.Has({}, {}))) << "without a time";
    EXPECT_TRUE((TimeWindow{local, local}.IsEmpty()));
}

TEST(ACheck, ThatIsNotMadeIsNotZero) {
    const struct {
        FrameCheckResult checks;
        const char *counts, *sentence;
    } cases[] = {
        {{}, "dropped not checked, checksum errors not checked", ""},
        {{.checksSum = true}, "dropped not checked, 0 checksum errors", ""},
        {{.checksCounter = true, .checksSum = true, .dropped = true, .checksumError = true},
         "2 dropped, 2 checksum errors",
         "2 of 3 frames failed their checks (ABC: 2 dropped, 2 checksum errors)."},
        {{.checksCounter = true, .valueError = true},
         "0 dropped, checksum errors not checked, 2 value errors",
         "2 of 3 frames failed their checks (ABC: 0 dropped, checksum errors not checked, 2 value "
         "errors)."},
    };
    for (const auto& row : cases) {
        CheckCounts counts;
        CFailedFrames failed;
        failed.Add("DEF", {});
        for (int frame = 0; frame < 2; ++frame)
            counts.Add(row.checks), failed.Add("ABC", row.checks);
        EXPECT_EQ(counts.Text(), row.counts);
        EXPECT_EQ(failed.Sentence(), row.sentence);
    }
}

TEST(AnOffset, IsSignHoursAndMinutes) {
    const std::pair<const char*, std::optional<int>> cases[] = {
        {"+13:00", 780}, {"-03:30", -210}, {"+00:00", 0}, {"13:00", {}}, {"+15:00", {}},
        {"+1:00", {}},   {"+01:60", {}},   {"UTC+1", {}}, {"", {}},      {"+01:0a", {}}};
    for (const auto& [text, minutes] : cases)
        EXPECT_EQ(MinutesOfOffset(text), minutes) << text;
}

TEST(ExportFormats, AreFoundByTheirNamesAndByTheExtensionsOfTheirFiles) {
    for (const ExportFormat& format : ExportFormats()) {
        EXPECT_EQ(FindExportFormat(format.name), &format);
        if (format.extension.empty())
            continue;
        EXPECT_EQ(ExportFormatOf("some.folder/CAST" + std::string(format.extension)), &format);
    }
    EXPECT_EQ(FindExportFormat("CSV"), nullptr);
    EXPECT_EQ(ExportFormatOf("cast.JSONL"), FindExportFormat("jsonl"));
    for (const char* path : {"", "tables", "a.jsonl/tables", "cast.txt"})
        EXPECT_EQ(ExportFormatOf(path), FindExportFormat("csv")) << path;
}

} // namespace
} // namespace qor
