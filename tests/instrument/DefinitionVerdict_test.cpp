// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a definition's user is told: the verdict and the hints.
#include "instrument/DefinitionVerdict.h"

#include "instrument/DefinitionHints.h"
#include "instrument/DefinitionReader.h"

#include <gmock/gmock.h>

#include <memory>

using namespace qor;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const std::string Header = "INSTRUMENT HDR '' 3 AS 0 NONE\n";
const std::string NoHeader = "INSTRUMENT NONE '' 0 AS 0 NONE\n";
const std::string Delimited = "VLF_INSTRUMENT HDR '' 3 AS 0 NONE\n";
const std::string Field = "FIELD NONE ',' 1 AS 0 DELIMITER\n";
const std::string Terminator = "TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n";
const std::string Sensor = "TEMP NONE 'C' 2 BU 0 COUNT\n";

/// A load in pieces of the size; whether it succeeds is the test's matter.
std::unique_ptr<CInstrument> Load(std::string_view text, std::size_t pieceSize = 4096) {
    auto instrument = std::make_unique<CInstrument>();
    CDefinitionReader reader(*instrument, "test.cal");
    reader.Begin("test.cal");
    while (!text.empty() && reader.Feed(text.substr(0, pieceSize)))
        text.remove_prefix(std::min(pieceSize, text.size()));
    static_cast<void>(reader.Finish());
    return instrument;
}

std::string InUtf16(const std::string& text, bool bigEndian) {
    std::string wide;
    for (char c : text)
        wide += bigEndian ? "\0"s + c : c + "\0"s;
    return wide;
}

TEST(DefinitionVerdict, SaysWhyNoFrameCanCome) {
    const std::string packets = "SPECIAL BSI '\\x01\\x02' 0 AS 0 NONE\n";
    const std::pair<std::string, const char*> cases[] = {
        {"", "is empty"},
        {"# nothing\n", "no sensors"},
        {Header, "no sensors"},
        {Header + Sensor, nullptr},
        {NoHeader + Sensor, "no SPECIAL line"},
        {"VLF_INSTRUMENT NONE '' 0 AS 0 NONE\n" + Terminator + "RATE 6 'Hz' 0 BU 0 NONE\n",
         "no sensors"},
        {"RATE 6 'Hz' 0 BU 0 NONE\n", "no SPECIAL line"},
        {NoHeader + Sensor + "SPECIAL OTHER 'KIND' 0 AS 0 NONE\n", "names no type"},
        {Header + Sensor + "SPECIAL OTHER 'KIND' 0 AS 0 NONE\n", nullptr},
        {NoHeader + Sensor + packets, nullptr},
        {NoHeader + Sensor + "SPECIAL bsi '\\x01' 0 AS 0 NONE\n", "no pairs"},
        {NoHeader + Sensor + "SPECIAL BSI '' 0 AS 0 NONE\n", "no pairs"},
        {NoHeader + Sensor + "SPECIAL BSI '0123456789abc' 0 AS 0 NONE\n", "no pairs"},
        {NoHeader + "SPECIAL heitronics_irc '' 0 AS 0 NONE\n", nullptr},
        {NoHeader + Sensor + "SPECIAL CTD 'SEABIRD_19SCT' 0 AS 0 NONE\n", nullptr},
        {NoHeader + Sensor + "SPECIAL SEABIRD_19SCT '' 0 AS 0 NONE\n", "names no type"},
        {NoHeader + Sensor + "SPECIAL HOBILABS_HS2_D '' 0 AS 0 NONE\n", "found by one"},
        {Header + Sensor + "SPECIAL HOBILABS_HS2_D '' 0 AS 0 NONE\n", nullptr},
        {InUtf16(Header + Sensor, false), "UTF-16"},
        {"\xFE\xFF" + InUtf16(Header + Sensor, true), "UTF-16"},
        {InUtf16(Sensor + Sensor, true), "UTF-16"},
        {"\xFF\xFE", "UTF-16"},
    };
    for (const auto& [text, reason] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        const std::string said = VerdictOf(*Load(text)).noFrames;
        EXPECT_EQ(said.empty(), reason == nullptr) << said;
        EXPECT_THAT(said, HasSubstr(reason ? reason : ""));
    }
}

TEST(DefinitionVerdict, TellsTheFirstOfTheDiagnosticsInOneLine) {
    EXPECT_EQ(VerdictOf(*Load(Header + Sensor)).firstDiagnostic, "");
    const DefinitionVerdict verdict =
        VerdictOf(*Load(Header + "a b\n" + Sensor + "TEMP 2 C 2 BU 0 COUNT\n"));
    EXPECT_EQ(verdict.diagnostics, 2);
    EXPECT_EQ(verdict.firstDiagnostic,
              "Line 2: Unexpected sensor definition line format. > Sensor ignored.");
    EXPECT_EQ(VerdictOf(*Load("a b\nTEMP 2 'C' 2 BU 0 COUNT\n")).diagnostics, 1) << "a failed load";
}

TEST(DefinitionReader, SkipsAByteOrderMarkAndAFinalEndMark) {
    const std::string plain = Header + "TEMP \x1A 'C' 2 BU 0 COUNT\n" + Sensor;
    const std::string mark(Utf8Mark);
    for (std::size_t pieceSize : {std::size_t{1}, std::size_t{3}, std::size_t{4096}})
        for (const std::string& text :
             {plain, mark + plain, plain + "\x1A", mark + plain + "\x1A\x1A",
              mark + plain.substr(0, plain.size() - 1) + "\x1A"}) {
            const auto instrument = Load(text, pieceSize);
            EXPECT_EQ(instrument->SyncHeader(), "HDR");
            ASSERT_EQ(instrument->SensorCount(), 2);
            EXPECT_EQ(instrument->Sensor(0)->Id, "\x1A");
            EXPECT_EQ(instrument->LinesRead(), 3);
            EXPECT_EQ(instrument->DiagnosticCount(), 0);
        }
    const std::string many(10000, '\x1A');
    EXPECT_EQ(Load(Header + "TEMP " + many + " 'C' 2 BU 0 COUNT\n", 700)->Sensor(0)->Id, many);
    EXPECT_EQ(Load(mark)->LinesRead(), 0);
    EXPECT_EQ(Load("\x1A")->LinesRead(), 0);
    EXPECT_EQ(Load("#\n\x1A\n")->BadFormatLines(), 1) << "not at the end";
}

std::vector<std::string> Hints(const std::string& text) {
    std::vector<std::string> hints;
    for (const DefinitionHint& hint : HintsOf(*Load(text), text))
        hints.push_back(std::to_string(hint.line) + ": " + hint.text);
    return hints;
}

TEST(DefinitionHints, NameLikelyMistakes) {
    struct {
        std::string text;
        const char* hint; ///< the only one, by a part of it
    } const cases[] = {
        {Delimited + Field + "A 1 '' V AF 0 COUNT\nA 2 '' V AF 0 COUNT\n" + Field +
             "A 3 '' V AF 0 COUNT\n" + Terminator,
         "4: No FIELD line"},
        {Header + "A 1 '' 2 BU 0 NONE\nA 2 '' 2 AS 0 NONE\nRATE 6 'Hz' 0 BU 0 NONE\n",
         "2: A number with the fit type NONE"},
        {Delimited + Field + "A 1 '' V AF 0 COUNT\nTERMINATOR NONE '\\r\\n' 2 AS 0 DELIMITER\n",
         "4: A backslash"},
        {Delimited + "FIELD NONE '\\t' 1 AS 0 DELIMITER\nA 1 '' V AF 0 COUNT\n" + Terminator,
         "2: A backslash"},
        {Delimited + "SN 12 '' 2 AS 0 NONE\n" + Field + "A 1 '' V AF 0 COUNT\n" + Terminator,
         "2: Behind VLF_INSTRUMENT"},
        {Header + "vlf_sn 12 '' 2 AS 0 NONE\n" + Sensor, "2: Behind INSTRUMENT"},
        {Header + "FRAME_COUNTER NONE '' 1 BU 0 COUNT\n", "2: This is not checked as a frame"},
        {Header + "FrameCnt 1 '' 1 BU 0 COUNT\n", "2: This is not checked as a frame counter"},
        {Header + "CHECK_SUM NONE '' 1 BU 0 COUNT\n", "2: This is not checked as a check sum"},
        {Header + "FRAME COUNTER '' 2 BU 0 COUNT\n", "2: This frame counter is not checked"},
        {Header + "CHECKSUM NONE '' 2 BU 0 COUNT\n", "2: This check sum is not checked"},
        {Header + "A 1 '' 2 BU 0 COUNT\nB 1 '' 2 BU 0 COUNT\na 1 '' 2 BU 0 COUNT\n",
         "4: The sensor of line 2"},
        {Delimited + "FIELD NONE ',' 1 AS 0 NONE\n" + Field + "A 1 '' V AF 0 COUNT\n" + Terminator,
         "2: A FIELD or TERMINATOR line"},
        {Header + "FIELD NONE ',' 1 AS 0 NONE\n" + Sensor, "2: FIELD and TERMINATOR lines belong"},
        // Loads that fail.
        {Delimited + Field + "A 1 '' V AF 0 COUNT\nTERMINATOR NONE '\\x0A' 1 AS 0 NONE\n",
         "4: A FIELD or TERMINATOR line"},
        {"INSTRUMENT SAT\\x2C '' 7 AS 0 NONE\n", "1: The text of a header line"},
        {Header + "SN 0042 '' 3 AS 0 NONE\n" + Sensor, "2: The length of a header line"},
        {"VLF_INSTRUMENT NONE '' 4 AS 0 NONE\n", "1: The length of a header line"},
        {Header + "A 1 '' 2 BU 1 POLYU # two\n\n1,5 0.25 0,5\nB 1 '' 2 BU 0 COUNT\n",
         "4: A coefficient with a comma"},
        {std::string(Utf8Mark) + Header + Sensor, "1: The file begins with a byte order mark"},
        {Delimited + Field + "CHECK SUM '' V AI 0 COUNT\n" + Terminator,
         "3: A check sum in a delimited frame"},
    };
    for (const auto& c : cases)
        EXPECT_THAT(Hints(c.text), ElementsAre(HasSubstr(c.hint))) << c.text;
}

TEST(DefinitionHints, AreNotGivenForWhatIsRightAndHaveAnEnd) {
    for (const std::string& text :
         {Header + "SN 12 '' 2 AS 0 NONE\nFRAME COUNTER '' 1 BU 0 COUNT\nFRAME TIMER '' 2 BU 0 "
                   "COUNT\nCHECK SUM '' 1 BU 0 COUNT\nA 1 'a\\b' 2 BU 1 POLYU\n1.5 0.25 # 1,5\n",
          Delimited + "VLF_SN 12 '' 2 AS 0 NONE\n" + Field + "REMARK 1 '' 0 BU 0 NONE\n" +
              "A 1 '' V AF 1 POLYU\n0 1\n" + Field + "A 2 '' V AF 0 COUNT\n" + Terminator,
          Header + Sensor + "SN 12345 '' 2 BU 0 COUNT\n", "\xFF\xFE"s + InUtf16(Header, false)})
        EXPECT_THAT(Hints(text), IsEmpty()) << text;
    std::string many = Header;
    for (int i = 0; i < 500; ++i)
        many += "A 1 '' 2 BU 0 COUNT\nB 1 '' 2 BU 1 POLYU\n1 2,5\n";
    EXPECT_EQ(Hints(many).size(), 100u);
}

} // namespace
