// SPDX-License-Identifier: GPL-3.0-or-later
//
// The manifests that a session makes of its raw logs, and what is read of one that is anybody's.
#include "base/Sha256.h"
#include "fakes/SessionFixture.h"
#include "platform/WholeFile.h"
#include "session/FileKind.h"

namespace qor {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class AManifest : public ASession {
  protected:
    AManifest() {
        Doc.MakeManifests();
        Pro = Add("PRO", Port);
    }
    /// Ends the log and waits for its manifest.
    void End() {
        Doc.RawLog.EndLogFile(true);
        Doc.Manifests.Stop();
    }
    LogManifest Read(const std::string& log) {
        bool there = false;
        const ManifestReading reading = LoadManifest(Folder + log, there);
        EXPECT_EQ(reading.fault, "") << log;
        return reading.manifest;
    }
    CQorViewIns* Pro = nullptr;
};

TEST_F(AManifest, SaysWhichBytesALogHadAndCountsEachLogAnew) {
    for (const std::string& name : {std::string("one.raw"), std::string("two.raw")}) {
        ASSERT_TRUE(Begin(name));
        Clock.StepWall(-3'600'000);
        Doc.RawLog.OnLogTick();
        Offer(*Pro, {CounterFrame("PRO", 1), CounterFrame("PRO", 2), CounterFrame("PRO", 4)});
        End();
        const LogManifest manifest = Read(name);
        const std::string log = Content(Folder + name);
        EXPECT_EQ(manifest.size, log.size());
        EXPECT_EQ(manifest.sha256, Sha256Of(AsBytes(log)));
        ASSERT_EQ(manifest.ports.size(), 1U);
        ASSERT_EQ(manifest.ports[0].instruments.size(), 1U);
        const LogManifest::Instrument& one = manifest.ports[0].instruments[0];
        EXPECT_EQ(one.name, "PRO");
        EXPECT_EQ(one.source.sha256, Sha256Of(AsBytes(CounterDefinition("PRO"))));
        EXPECT_EQ(LastPartOf(one.source.path), "PRO.cal");
        EXPECT_EQ(one.received, 3U);
        EXPECT_EQ(one.logged, 3U);
        EXPECT_EQ(one.dropped, 1U);
        EXPECT_EQ(one.checksumErrors, std::nullopt);
        Doc.RawLog.OnLogTick();
    }
    const std::string text = Content(Folder + "one.raw.json");
    EXPECT_THAT(text, HasSubstr(R"("utc": "2005-05-03T17:23:05.250Z")"));
    EXPECT_THAT(text, HasSubstr(R"("local": "2005-05-03T14:23:05.250")"));
    EXPECT_THAT(text, HasSubstr(R"("definition": "PRO.cal")"));
    EXPECT_THAT(Doc.Manifests.TakeFaults(), IsEmpty());
}

TEST_F(AManifest, NotesStepsOfTheClockAndOfTheZone) {
    Doc.RawLog.OnLogTick();
    ASSERT_TRUE(Begin());
    Clock.StepWall(-90'000);
    Doc.RawLog.OnLogTick();
    Clock.UtcOffsetMinutes = -240;
    Doc.RawLog.OnLogTick();
    End();
    const std::vector<ClockStep> steps = Read("cast.raw").steps;
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_EQ(steps[0].milliseconds, -90'000);
    EXPECT_FALSE(steps[0].ofZone);
    EXPECT_EQ(steps[1].milliseconds, -3'600'000);
    EXPECT_TRUE(steps[1].ofZone);
}

TEST_F(AManifest, ReplacesNothingButAnEarlierOneOfItsLog) {
    LogManifest other;
    other.log = "cast.raw";
    other.sha256 = std::string(64, 'a');
    const std::string ofThis = ManifestText(other, Folder);
    other.log = "other.raw";
    const struct {
        std::string there;
        bool replaced;
    } cases[] = {{ofThis, true},
                 {ManifestText(other, Folder), false},
                 {"notes of mine", false},
                 {"{}", false}};
    for (const auto& one : cases) {
        ASSERT_EQ(WriteWholeFile(Folder + "cast.raw.json", one.there), FileCause::None);
        Set(&SessionState::NoDialogs, false); // and the operator consents
        ASSERT_TRUE(Begin());
        End();
        EXPECT_EQ(Content(Folder + "cast.raw.json") != one.there, one.replaced) << one.there;
        EXPECT_EQ(Doc.Manifests.TakeFaults().size(), one.replaced ? 0U : 1U) << one.there;
    }
}

/// A log that replaces another has no manifest before it ends.
TEST_F(AManifest, GoesWithTheLogThatIsReplaced) {
    ASSERT_TRUE(Begin());
    End();
    Set(&SessionState::NoDialogs, false); // and the operator consents
    ASSERT_TRUE(Begin());
    Doc.Manifests.Stop();
    EXPECT_FALSE(FileExists(Folder + "cast.raw.json"));
    End();
    EXPECT_TRUE(FileExists(Folder + "cast.raw.json"));
}

TEST(LogManifest, ThatIsDamagedIsRefused) {
    const std::string hash(64, 'a'), rest = R"("log": "x.raw", "size": 1, "sha256": ")";
    const struct {
        std::string bytes;
        const char* fault;
    } cases[] = {
        {R"({"qorview-manifest": 1, )" + rest + hash + "\"}", ""},
        {R"({"qorview-manifest": 1, )" + rest + hash + R"(", "ports": [1, {"instruments": {}}]})",
         ""},
        {R"({"qorview-manifest": 2, )" + rest + hash + "\"}", "newer version"},
        {R"({"qorview-manifest": 1, )" + rest + "abc\"}", "which bytes"},
        {R"({"qorview-manifest": 1, "log": "x.raw", "size": -1, "sha256": ")" + hash + "\"}",
         "which bytes"},
        {"{" + rest + hash + "\"}", "no manifest"},
        {"[]", "no manifest"},
        {"", "line 1"},
    };
    for (const auto& one : cases) {
        const ManifestReading reading = ReadManifest(one.bytes, "/logs/");
        EXPECT_EQ(reading.fault.empty(), *one.fault == '\0') << one.bytes;
        EXPECT_THAT(reading.fault, HasSubstr(one.fault)) << one.bytes;
    }
    const std::string server =
        R"({"qorview-manifest": 1, )" + rest + hash +
        R"(", "ports": [{"instruments": [{"name": "A", "definition": )"
        R"("\\\\server\\share\\a.cal"}, {"name": "B", "definition": "b.cal"}]}]})";
    const ManifestReading reading = ReadManifest(server, "/logs/");
    ASSERT_EQ(reading.manifest.ports[0].instruments.size(), 2U);
#ifdef _WIN32
    EXPECT_EQ(reading.manifest.ports[0].instruments[0].source.path, "");
#endif
    EXPECT_NE(reading.manifest.ports[0].instruments[1].source.path, "");
}

} // namespace
} // namespace qor
