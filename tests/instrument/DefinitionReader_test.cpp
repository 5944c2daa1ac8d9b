// SPDX-License-Identifier: GPL-3.0-or-later
//
// Definition texts against hand-derived parse logs and sensor lists. A log's line end stands for
// CR LF, "@FILE@" for the path that was loaded.
#include "instrument/DefinitionReader.h"

#include "base/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>

namespace qor {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::StartsWith;

const std::string Fixed = "INSTRUMENT QOR '' 3 AS 0 NONE\n";
const std::string Variable = "VLF_INSTRUMENT QOR '' 3 AS 0 NONE\n";
const std::string Field = "FIELD NONE ',' 1 AS 0 DELIMITER\n";
const std::string Terminator = "TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n";

struct Loaded {
    std::unique_ptr<CInstrument> instrument = std::make_unique<CInstrument>();
    DefinitionStatus status = DefinitionStatus::NoError;

    const CInstrument* operator->() const { return instrument.get(); }
};

Loaded Load(std::string_view text, std::size_t pieceSize = std::string_view::npos) {
    Loaded loaded;
    CDefinitionReader reader(*loaded.instrument, "test.cal");
    reader.Begin("/test.cal");
    for (bool goOn = true; goOn && !text.empty();) {
        goOn = reader.Feed(text.substr(0, pieceSize));
        text.remove_prefix(std::min(pieceSize, text.size()));
    }
    loaded.status = reader.Finish();
    return loaded;
}

std::string Describe(const CSensor& sensor) {
    std::string text = sensor.Type + "(" + sensor.Id + ") [" + sensor.Units + "] at " +
                       std::to_string(sensor.ByteOffset) + ", ";
    text += sensor.VariableLength ? "V" + std::to_string(sensor.VariableIndex)
                                  : std::to_string(sensor.FieldLength);
    text += std::string(" ") + KeywordOf(sensor.Data) + ", " + std::to_string(sensor.GainRanges) +
            " " + KeywordOf(sensor.Fit) + ", line " + std::to_string(sensor.LineNumber);
    if (sensor.IntegrationTime)
        text += ", time " + std::to_string(sensor.IntegrationTime->Index);
    const char* separator = ": ";
    for (const std::vector<double>& set : sensor.Coefficients) {
        text += std::exchange(separator, " | ");
        for (std::size_t i = 0; i < set.size(); ++i)
            text += (i > 0 ? " " : "") + ShortestNumber(set[i]);
    }
    return text;
}

std::vector<std::string> Sensors(const Loaded& loaded) {
    std::vector<std::string> list;
    for (const CSensor& sensor : loaded->Sensors())
        list.push_back(Describe(sensor));
    return list;
}

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string Replace(std::string text, std::string_view from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

TEST(DefinitionReader, GoldenDefinitionsGiveTheirLogsAndSensors) {
    const struct {
        const char *name, *ending;
        std::int32_t badLines;
        std::string_view delimiters, terminator;
    } cases[] = {{"repairs", ".cal", 1, "", ""},
                 {"dropped", ".cal", 1, "", ""},
                 {"delimiters", ".tdf", 0, ",,", "\r\n"}};
    for (const auto& golden : cases) {
        SCOPED_TRACE(golden.name);
        const std::string stem = QORVIEW_SOURCE_DIR "/tests/golden/definitions/"s + golden.name;
        const std::string path = stem + golden.ending;
        Loaded loaded;
        loaded.status = loaded.instrument->Load(path);
        EXPECT_EQ(loaded.status, DefinitionStatus::Success);
        EXPECT_EQ(loaded->ParseLog(),
                  Replace(Replace(ReadText(stem + ".log"), "\n", "\r\n"), "@FILE@", path));
        std::string sensors;
        for (const std::string& sensor : Sensors(loaded))
            sensors += sensor + "\n";
        EXPECT_EQ(sensors, ReadText(stem + ".sensors"));
        EXPECT_EQ(loaded->BadFormatLines(), golden.badLines);
        EXPECT_EQ(loaded->FieldDelimiter(), golden.delimiters);
        EXPECT_EQ(loaded->Terminator(), golden.terminator);
    }
}

TEST(DefinitionReader, FatalFaultsEndTheLoadWithTheirMessage) {
    using enum DefinitionStatus;
    struct {
        std::string text;
        DefinitionStatus status;
        std::string first, last;
    } const cases[] = {
        {"A 1 '' 2 BU 0 COUNT\n", HeaderNotFound, "header", ""},
        {"INSTRUMENT QOR '' 4 BU 1 POLYU\n", FieldLength, "INSTRUMENT", "field length"},
        {"instrument QOR '' 3 AI 1 POLYU\n", DataTypeInvalid, "INSTRUMENT", "data type"},
        {"vlf_Instrument QOR '' 3 AS 1 POLYU\n", GainRange, "INSTRUMENT", "gain range"},
        {Fixed + "SN NONE '' 4 AS 0 NONE\n", FieldLength, "SN (Serial Number)", "field length"},
        {Variable + "VLF_SN 12 '' 2 AI 0 DELIMITER\n", HeaderFitType, "SN (Serial Number)",
         "fit type"},
        {Variable + Field + "A 1 '' V AS 0 NONE\n", TerminatorNotFound, "reading",
         "The TERMINATOR delimiter could not be found"},
        {Replace("xxxxxxxxxx", "x", "a b\n"), FileCorrupted, "reading",
         "The file format is invalid or corrupted"},
    };
    for (const auto& fatal : cases) {
        const Loaded loaded = Load(fatal.text + "INSTRUMENT LATER '' 5 AS 0 NONE\n");
        EXPECT_EQ(loaded.status, fatal.status) << fatal.text;
        std::string log = fatal.first == "header" ? "INSTRUMENT definition line not found.\r\n"
                          : fatal.first == "reading"
                              ? "An error occured reading the Calibration File.\r\n"
                              : "Invalid " + fatal.first + " definition line found.\r\n";
        log += "\tCalibration File Name: \"test.cal\".\r\n";
        if (fatal.last.starts_with("The "))
            log += "\t" + fatal.last + ".\r\n";
        else if (!fatal.last.empty())
            log += "\tThe " + fatal.last + " parameter is invalid.\r\n";
        EXPECT_EQ(loaded->ParseLog(), log + "\tInstrument processing aborted.\r\n") << fatal.text;
    }
}

TEST(DefinitionReader, FilesThatCannotBeReadSayWhy) {
    CInstrument instrument;
    EXPECT_EQ(instrument.Load(""), DefinitionStatus::FileNotSpecified);
    EXPECT_EQ(instrument.Load("no/such/file.TDF"), DefinitionStatus::OpenFailed);
    EXPECT_THAT(instrument.ParseLog(),
                StartsWith("An error occured opening the Telemetry Definition File.\r\n"
                           "\tTelemetry Definition File Name: \"no/such/file.TDF\".\r\n\t"));
    EXPECT_EQ(instrument.FilePath(), "");

    const std::string example = QORVIEW_SOURCE_DIR "/examples/gps.tdf";
    EXPECT_EQ(instrument.Load(example), DefinitionStatus::Success);
    EXPECT_EQ(instrument.Load(example), DefinitionStatus::AlreadyDefined);
    EXPECT_THAT(instrument.ParseLog(), StartsWith("Unable to reload instrument.\r\n"));
}

TEST(DefinitionReader, TheHeaderIsOpenUntilAFieldOfSomeLength) {
    const Loaded loaded = Load("REMARK NONE '' 0 BU 0 NONE\n" + Fixed +
                               "SN 1 '' 1 AS 0 NONE\n"
                               "RATE 6 'Hz' 0 BU 0 NONE\n"
                               "SN 23 '' 2 AI 0 COUNT\n"
                               "VLF_SN 9 '' 1 AS 0 NONE\n"
                               "SN 45 '' 2 AS 0 NONE\n");
    EXPECT_EQ(loaded->SyncHeader(), "QOR123");
    EXPECT_EQ(loaded->SerialNumber(), "123");
    EXPECT_EQ(loaded->Name(), "QOR123");
    EXPECT_THAT(Sensors(loaded), ElementsAre("REMARK() [] at 0, 0 BU, 0 NONE, line 1",
                                             "RATE(6) [Hz] at 4, 0 BU, 0 NONE, line 4",
                                             "VLF_SN(9) [] at 6, 1 AS, 0 NONE, line 6",
                                             "SN(45) [] at 7, 2 AS, 0 NONE, line 7"));
    EXPECT_EQ(Load(Fixed)->Name(), "");
    EXPECT_EQ(Load("").status, DefinitionStatus::Success);
    const Loaded unsynced = Load("INSTRUMENT NONE '' 0 AS 0 NONE\nA 1 '' 2 BU 0 COUNT\n"
                                 "SN 12 '' 2 AS 0 NONE\n");
    EXPECT_EQ(unsynced->SyncHeader(), "");
    EXPECT_EQ(unsynced->SensorCount(), 2);
}

TEST(DefinitionReader, AnIntegrationTimeSensorMustBeUsableAndComeFirst) {
    const std::string channel = "ED 410 '' 2 BU 1 OPTIC3\n1 2 3 4\n";
    const std::pair<const char*, bool> cases[] = {
        {"inttime ed 'Sec' 2 bu 1 polyf\n1 0\n", true},
        {"INTTIME ED 'sec' 2 BU 1 OPTIC2\n1 2 3\n", true},
        {"INTTIME ED 'ms' 2 BU 1 POLYU\n0 1\n", false},
        {"INTTIME ED 'sec' 2 BU 1 POLYU\nx\n", false},
        {"TIME ED 'sec' 2 BU 1 POLYU\n0 1\n", false},
    };
    for (const auto& [inttime, usable] : cases)
        EXPECT_EQ(Load(Fixed + inttime + channel)->NextSensor("ed") != nullptr, usable) << inttime;
    EXPECT_EQ(Load(Fixed + channel + cases[0].first)->NextSensor("ED"), nullptr);

    const Loaded two = Load(Fixed + cases[0].first + cases[1].first + channel);
    EXPECT_EQ(two->Sensor(2)->IntegrationTime, two->Sensor(0));
    const Loaded none = Load(Fixed + cases[0].first + "ED 1 '' 0 BU 0 OPTIC3\n");
    EXPECT_EQ(none->Sensor(1)->Fit, FitType::NONE);
    EXPECT_EQ(none->Sensor(1)->IntegrationTime, nullptr);
}

TEST(DefinitionReader, AFailedCoefficientLineTakesTheOthersWithIt) {
    const Loaded loaded = Load(Fixed + "A 1 '' 2 BU 3 OPTIC1\n1 2 3\n1 1e999\nx y z\n"
                                       "A 2 '' 2 BU 1 POLYU\n1e-999 +5 .5 0x1\n");
    EXPECT_THAT(Sensors(loaded), ElementsAre("A(2) [] at 5, 2 BU, 1 POLYU, line 6: 0 5 0.5"));
    EXPECT_EQ(loaded->DiagnosticCount(), 3);
}

TEST(DefinitionReader, TheWrittenCountOfADroppedLineAndTheRepairedOneOfAKeptLineHold) {
    // Dropped with two: both lines go. Repaired to one: the second is a malformed definition.
    EXPECT_EQ(Load(Fixed + "A 1 '' 2 XX 2 POLYU\n0 1\n0 1\n")->BadFormatLines(), 0);
    EXPECT_EQ(Load(Fixed + "A 1 '' 2 BU 2 POLYU\n0 1\n0 1\n")->BadFormatLines(), 1);
    EXPECT_EQ(Load(Fixed + "A 1 '' 2 XX 4294967294 POLYU\n" + Fixed + Fixed)->LinesRead(), 4);
    // Rejected by the delimiter rules after the repair.
    const Loaded variable = Load(Variable + "A 1 '' 2 BU 2 POLYU\n0 1\n0 1\n" + Terminator);
    EXPECT_EQ(variable->BadFormatLines(), 1);
    EXPECT_EQ(variable->SensorCount(), 0);
}

TEST(DefinitionReader, TheDelimiterRulesSeeTheRepairedLength) {
    const Loaded loaded = Load(Variable + "A 1 '' 0 BF 0 NONE\n" + Field +
                               "B 2 '' 0 BD 0 NONE\n"
                               "C 3 '' 0 AS 0 DELIMITER\nD 4 '' V AS 0 NONE\n" +
                               Terminator);
    EXPECT_THAT(Sensors(loaded), ElementsAre("C(3) [] at 4, 0 AS, 0 DELIMITER, line 5",
                                             "D(4) [] at 4, V0 AS, 0 NONE, line 6"));
    EXPECT_EQ(loaded->DiagnosticCount(), 4);
}

TEST(DefinitionReader, UnitsAreTheTextBetweenTheFirstAndTheLastQuote) {
    const std::tuple<const char*, const char*, int> cases[] = {
        {"''", "", 0}, {"'V'", "V", 0}, {"\"V\"", "", 1}, {"'", "", 1},
        {"'V", "", 1}, {"V'", "", 1},   {"'a'b'", "", 1}, {"'a''", "", 1}};
    for (const auto& [units, text, diagnostics] : cases) {
        const Loaded loaded = Load(Fixed + "A NoNe " + units + " 2 BU 0 COUNT\n");
        ASSERT_EQ(loaded->SensorCount(), 1) << units;
        EXPECT_EQ(loaded->Sensor(0)->Units, text) << units;
        EXPECT_EQ(loaded->Sensor(0)->Id, "");
        EXPECT_EQ(loaded->DiagnosticCount(), diagnostics) << units;
    }
}

TEST(DefinitionReader, AFrameSizeNeverOverflows) {
    const Loaded loaded = Load(Fixed + "A 1 '' 4294967294 BU 1 POLYU\n0 1\n"
                                       "A 2 '' 2147483644 AS 0 NONE\n"
                                       "A 3 '' 1 BU 0 COUNT\nA 4 '' 9 XX 0 COUNT\n");
    EXPECT_EQ(loaded->FrameSize(), 2147483647);
    EXPECT_THAT(Sensors(loaded), ElementsAre("A(2) [] at 3, 2147483644 AS, 0 NONE, line 4"));
    EXPECT_EQ(loaded->DiagnosticCount(), 3);
    EXPECT_EQ(Load("A 2 '' 2147483647 XX 0 NONE\n" + Fixed).status, DefinitionStatus::FieldLength);
}

TEST(DefinitionReader, LinesMayEndAsTheyLikeAndHoldAnyByte) {
    const std::string text = "\n \t\r\n# only a comment\r\n\v\f " + Fixed +
                             "A\t1  '' 2 BU\t\t0 COUNT \r\r\n"
                             "A \0\x1a\r\xff '' 2 BU 1 POLYU#comment # again\r\n"
                             "0\t1\r\n"
                             "A 3 '' 2 BU 0 COUNT\r\r"s;
    for (std::size_t pieceSize : {std::size_t{1}, text.size()}) {
        const Loaded loaded = Load(text, pieceSize);
        EXPECT_EQ(loaded->LinesRead(), 8);
        EXPECT_EQ(loaded->SensorCount(), 3);
        EXPECT_EQ(loaded->DiagnosticCount(), 0);
        EXPECT_EQ(loaded->Sensor(1)->Id, "\0\x1a\r\xff"s);
    }
}

TEST(DefinitionReader, AnEndlessLineAndAFloodOfDiagnosticsAreRead) {
    const std::string spaces(1 << 20, ' ');
    std::string flood;
    for (int token = 0; token < 1 << 18; ++token)
        flood += "x ";
    const Loaded loaded =
        Load(Fixed + "A 1 '' 2 BU 1 POLYU\n" + spaces + flood + " 1#" + spaces, 4096);
    EXPECT_EQ(loaded->DiagnosticCount(), 1 << 18);
    EXPECT_EQ(loaded->SensorCount(), 1);
    EXPECT_LT(loaded->ParseLog().size(), std::size_t{17} << 20);
    EXPECT_THAT(loaded->ParseLog(),
                testing::EndsWith("\tFurther errors are counted, not listed.\r\n"));
}

} // namespace
} // namespace qor
