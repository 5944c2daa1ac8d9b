// SPDX-License-Identifier: GPL-3.0-or-later
//
// The session as a thing: opened from a file into a document that runs, saved, closed, and what
// stands in the way.
#include "fakes/SessionFixture.h"
#include "fakes/ZipMaker.h"
#include "session/Playback.h"
#include "session/SessionFile.h"
#include "session/SessionOpener.h"

namespace qor {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ASessionDocument : public ASession {
  protected:
    CSessionDocument& Session = Doc.Session;

    ASessionDocument() {
        Doc.SessionLog.KeepFile = false;
        for (const char* name : {"PRO", "DECK", "GPS", "LONE"})
            Temp.Put(std::string(name) + ".cal", CounterDefinition(name));
        Temp.Put("cast.sip", CZipMaker()
                                 .Add("Properties.txt", "NAME = Cast\nBAUDRATE = 57600\n")
                                 .Add("sub/REF.cal", CounterDefinition("REF"))
                                 .Add("TRK.cal", CounterDefinition("TRK"))
                                 .Bytes());
        const auto zone =
            MakeHeaderRecord(FormatHeaderLine(static_cast<int>(HeaderTag::Zone), "UTC+13:00"));
        Temp.Put("played.raw", std::string(AsText(zone)) + CounterFrame("GPS", 1));
    }
    SessionOpening Open(const std::string& members) {
        return Session.OpenSession(
            Temp.Put("cast.qor", "{\"qorview-session\": 1, " + members + "}"));
    }
    static std::string Texts(const std::vector<Refusal>& refusals) {
        std::string text;
        for (const Refusal& one : refusals)
            text += one.subject + ": " + one.reason + "|";
        return text;
    }
    /// Saves under the name; the file's bytes.
    std::string Saved(const std::string& name) {
        EXPECT_EQ(Session.SaveSession(Folder + name), "");
        return Temp.Content(name);
    }
    SerialResourceSettings Line(const std::string& port) {
        for (const ResourceStatus& resource : Doc.Snapshot().resources)
            if (resource.name == port)
                return resource.serial;
        return {};
    }
    InstrumentDefaults Settings(const std::string& name) {
        return Doc.Instruments.Settings(Doc.FindInstrument(name));
    }
};

constexpr const char* Whole = R"("title": "HE-612", "note": 7,
  "resources": [
    { "port": "A", "baud": 4800, "format": "7E2", "reconnect": true, "colour": "red",
      "instruments": [
        { "definition": "PRO.cal", "roles": ["dut", "profiler"], "immersed": true, "title": "down", "x": [1] },
        { "definition": "DECK.cal", "acquire": false, "log": false, "check": true, "check-counter": false,
          "check-sum": true, "beep": true } ] },
    { "port": "B", "packages": [ { "file": "cast.sip", "default-salinity": 34.5, "attenuation-window": 8,
        "instruments": { "sub/REF.cal": { "roles": ["reference"], "immersed": true } }, "y": null } ] },
    { "file": "played.raw", "instruments": [ { "definition": "GPS.cal", "roles": ["gps"] } ] } ],
  "station": { "cruise": "HE-612", "station": "S4", "cast": "AB", "ship": "x" },
  "log": { "directory": "logs", "naming": "autocast", "name": "n", "sequence": 7, "time-stamps": true,
           "gps-header": true, "duration": "00:10:00", "repeat": "00:50:00", "session-log": false, "z": 1 },
  "pressure-tare": 10.125, "calibration-mode": true, "windows": [ { "kind": "profile" } ])";

TEST_F(ASessionDocument, AFileBecomesTheSessionAndTheSessionTheFile) {
    Add("LONE", Port);
    Set(&CQorViewDoc::Velocity, {.timer = 1.0, .frame = 1, .velocity = 0.5});
    const SessionOpening opening = Open(Whole);
    ASSERT_EQ(opening.refusal, "");
    EXPECT_EQ(Texts(opening.refused), "");
    EXPECT_THAT(opening.warnings, ElementsAre(HasSubstr("unknown members")));
    EXPECT_THAT(Reported(), HasSubstr("Beginning session \"" + Folder + "cast.qor\".|"));

    std::vector<std::string> resources;
    for (const ResourceStatus& resource : Doc.Snapshot().resources)
        resources.push_back(resource.name);
    EXPECT_EQ(resources, (std::vector<std::string>{"A", "B", Folder + "played.raw"}));
    EXPECT_EQ(Line("A").baudRate, 4800u);
    EXPECT_EQ(Line("A").parity, 2);
    EXPECT_EQ(Line("B").baudRate, 57600u) << "its package's own";
    const InstrumentDefaults pro = Settings("PRO"), deck = Settings("DECK");
    EXPECT_TRUE(pro.Immersed && pro.LogEnabled && pro.CounterCheck && pro.Title == "down");
    EXPECT_EQ(deck, (InstrumentDefaults{false, false, false, true, false, true, true, {}}));
    EXPECT_TRUE(Settings("REF").Immersed && !Settings("TRK").Immersed);
    const std::pair<InstrumentRole, const char*> holders[] = {
        {InstrumentRole::Profiler, "PRO"},
        {InstrumentRole::DeviceUnderTest, "PRO"},
        {InstrumentRole::Reference, "REF"},
        {InstrumentRole::Gps, "GPS"}};
    for (const auto& [role, name] : holders)
        EXPECT_EQ(Doc.Role(role), Doc.FindInstrument(name)) << name;
    {
        CRecursiveLock lock(Doc.DocLock);
        EXPECT_EQ(Doc.PackageTable.at(0)->Settings.DefaultSalinity, 34.5);
        EXPECT_EQ(Doc.PackageTable[0]->Settings.AttenuationWindow, 8);
        EXPECT_EQ(Doc.Station.cruiseId + Doc.Station.stationId + Doc.Station.cast, "HE-612S4AB");
        EXPECT_EQ(Doc.Naming.logNamingMode, LogNamingMode::AutoCast);
        EXPECT_EQ(Doc.Options.repeatInterval.Seconds(), 3000);
        EXPECT_TRUE(Doc.Options.timeStampEnabled && Doc.Options.gpsHeaderEnabled);
        EXPECT_EQ(Doc.PressureTare, 10.125);
        EXPECT_TRUE(Doc.CalibrationMode);
        EXPECT_EQ(Doc.Resources.at(2)->ZoneMinutes, 13 * 60);
        EXPECT_FALSE(Doc.Velocity.timer || Doc.Velocity.velocity != 0);
    }
    EXPECT_FALSE(Session.Changed());
    const std::string first = Saved("cast.qor");
    EXPECT_THAT(first, AllOf(HasSubstr("\"y\": null"), HasSubstr("\"x\": [1]"),
                             HasSubstr("\"colour\": \"red\""), HasSubstr("\"ship\": \"x\""),
                             HasSubstr("\"check\": true"), Not(HasSubstr("57600"))));
    ASSERT_EQ(Session.OpenSession(Folder + "cast.qor").refusal, "");
    EXPECT_EQ(Saved("cast.qor"), first);
    EXPECT_FALSE(Session.Changed());
}

TEST_F(ASessionDocument, WhatACallSaysOfItsPackagesWinsWhereALogIsPlayed) {
    InstrumentSelection call;
    call.session = LoadSession(Temp.Put("cast.qor", R"({ "qorview-session": 1, "resources": [
        { "port": "A", "packages": [ { "file": "cast.sip", "default-salinity": 34.5,
          "saturation-irradiance": 100, "attenuation-window": 8 } ] } ] })"))
                       .session;
    call.packageOptions.saturationIrradiance = 200.0;
    call.packageOptions.attenuationWindow = 9.0;
    CSessionSetup setup(Doc);
    const std::string log = Folder + "played.raw";
    AddPlayed(Doc, setup, Doc.AddFileResource(log), log, call);
    CRecursiveLock lock(Doc.DocLock);
    ASSERT_EQ(Doc.PackageTable.size(), 1u);
    const PackageSettings& settings = Doc.PackageTable[0]->Settings;
    EXPECT_TRUE(settings.UseDefSalinity && settings.DefaultSalinity == 34.5) << "the session's";
    EXPECT_EQ(settings.SaturationIrradiance, 200);
    EXPECT_EQ(settings.AttenuationWindow, 9);
}

TEST_F(ASessionDocument, WhatCannotBeOpenedIsNamedAndTheRestStands) {
    Temp.Put("bad.cal", "VLF_INSTRUMENT $T '' 2 AS 0 NONE\n");
    const SessionOpening opening = Open(R"("resources": [
      { "port": "A", "instruments": [ { "definition": "none.cal", "roles": ["gps"], "x": 1 },
          { "definition": "PRO.cal", "roles": ["profiler"] }, { "definition": "bad.cal" },
          { "definition": "PRO.cal" } ],
        "packages": [ { "file": "none.sip" }, { "file": "cast.sip", "instruments": { "no.cal": { "beep": true } } } ] },
      { "file": "none.raw", "instruments": [ { "definition": "DECK.cal", "roles": ["sqm"] } ] } ])");
    ASSERT_EQ(opening.refusal, "");
    std::vector<std::string> refused;
    for (const Refusal& one : opening.refused)
        refused.push_back(one.subject.substr(Folder.size()));
    EXPECT_THAT(refused, ElementsAre("none.raw", "none.cal", "bad.cal", "PRO.cal", "none.sip",
                                     "cast.sip(no.cal)"));
    EXPECT_NE(Doc.FindInstrument("PRO"), InstrumentId::None);
    EXPECT_NE(Doc.FindInstrument("TRK"), InstrumentId::None);
    EXPECT_THAT(Reported(), HasSubstr("none.raw: cannot be read."));

    // Nothing of it is lost by saving, but a role that has another holder by now.
    EXPECT_EQ(Doc.SetRole(InstrumentRole::Gps, Doc.FindInstrument("PRO")), "");
    const std::string first = Saved("cast.qor");
    for (const char* kept : {"\"none.cal\"", "\"x\": 1", "\"bad.cal\"", "\"none.sip\"",
                             "\"no.cal\": { \"beep\": true }", "\"none.raw\"", "[\"sqm\"]"})
        EXPECT_THAT(first, HasSubstr(kept));
    EXPECT_THAT(first, HasSubstr("[\"profiler\", \"gps\"]"));
    ASSERT_EQ(Session.OpenSession(Folder + "cast.qor").refusal, "");
    EXPECT_EQ(Saved("cast.qor"), first);
}

TEST_F(ASessionDocument, AFaultyFileLeavesEverythingAsItWas) {
    ASSERT_EQ(Open("\"title\": \"before\", \"resources\": [ { \"port\": \"A\", \"instruments\": "
                   "[ { \"definition\": \"PRO.cal\" } ] } ]")
                  .refusal,
              "");
    const InstrumentId pro = Doc.FindInstrument("PRO");
    std::string deep(70, '[');
    const std::pair<std::string, const char*> cases[] = {
        {"\"resources\": [ { \"port\": \"B\" }, { \"port\": \"B\" } ]", "resources[1].port: "},
        {"\"station\": { \"cast\": \"../x\" }, \"log\": { \"naming\": \"autocast\" }",
         "station: The cast \"../x\" holds a character"},
        {"\"log\": { \"naming\": \"sqm\", \"name\": \"a*\" }", "log.name: The SQM base name"},
        {"\"log\": { \"duration\": \"00:00:00\" }", "log.duration: "},
        {"\"x\": " + deep, "nested deeper"},
        {"\"x\": [" + std::string(300'000, ',') + "]", "line 1"},
        {"\"x\": -1e400", "a number is beyond the range"},
        {"\"title\": \"\\ud800\"", "line 1"},
    };
    for (const auto& [members, part] : cases) {
        const SessionOpening opening = Open(members);
        EXPECT_THAT(opening.refusal, AllOf(HasSubstr(part), testing::StartsWith(Folder))) << part;
        EXPECT_EQ(opening.refusal.find('\n'), std::string::npos);
        EXPECT_EQ(Doc.FindInstrument("PRO"), pro);
        EXPECT_EQ(Session.Title(), "before");
    }
    EXPECT_THAT(Session.OpenSession(Folder + "none.qor").refusal, HasSubstr("could not be found"));
    SessionRecord endless; // the same for what was not read from a file
    endless.log.duration = LogSpan{0, 1, 0};
    EXPECT_EQ(SessionFault(endless), "");
    endless.log.repeat = LogSpan{1'000'000, 0, 0};
    EXPECT_THAT(SessionFault(endless), testing::StartsWith("log: The pause between logs"));
    // A cast that has moved on past its letters is no fault of the file.
    EXPECT_EQ(
        Open("\"station\": { \"cast\": \"[A\" }, \"log\": { \"naming\": \"autocast\" }").refusal,
        "");
}

TEST_F(ASessionDocument, AnOpenLogIsEndedOnlyByConsent) {
    Add("PRO", Port);
    ASSERT_TRUE(Begin());
    const auto file = Temp.Put("cast.qor", "{\"qorview-session\": 1}");
    EXPECT_THAT(Session.OpenSession(file).refusal, HasSubstr("cast.raw\" is open; end it"));
    EXPECT_THAT(Session.CloseSession(), HasSubstr("is open"));
    EXPECT_THAT(User.TakeQuestions(), IsEmpty()) << "nobody can be asked";
    Set(&CQorViewDoc::NoDialogs, false);
    User.AnswersYes = false;
    EXPECT_THAT(Session.NewSession(), HasSubstr("is open"));
    EXPECT_TRUE(Doc.RawLog.Status().logOpen);
    EXPECT_NE(Doc.FindInstrument("PRO"), InstrumentId::None);
    User.AnswersYes = true;
    EXPECT_EQ(Session.NewSession(), "");
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    EXPECT_THAT(User.TakeQuestions(), testing::SizeIs(2));
    EXPECT_TRUE(Doc.Snapshot().resources.empty());
    EXPECT_THAT(Reported(), HasSubstr("End log file"));
}

TEST_F(ASessionDocument, KnowsWhetherItWasChanged) {
    ASSERT_EQ(Session.NewSession(), "");
    EXPECT_FALSE(Session.Changed());
    const ResourceId port = Doc.AddSerialResource({.portName = "P", .globalSyncString = ""});
    EXPECT_TRUE(Session.Changed());
    const InstrumentId pro = Add("PRO", port)->Id;
    EXPECT_THAT(Saved("a.qor"), AllOf(HasSubstr("\"baud\": 19200"), HasSubstr("\"PRO.cal\""),
                                      Not(HasSubstr("immersed"))));
    const std::function<void()> changes[] = {
        [&] { Doc.SetImmersed("PRO", true); },
        [&] { EXPECT_EQ(Doc.SetRole(InstrumentRole::Tracker, pro), ""); },
        [&] {
            EXPECT_EQ(Doc.RawLog.SetStation({"", "", "", "", "", "c", "", ""}), "");
        },
        [&] {
            LogOptions options;
            options.gpsHeaderEnabled = true;
            EXPECT_EQ(Doc.RawLog.SetLogOptions(options), "");
        },
        [&] { SetMode(LogNamingMode::Sqm); },
        [&] { Doc.SetReconnect(port, true); },
        [&] { EXPECT_EQ(Session.SetTitle("t"), ""); },
        [&] { Session.SetWindows(JsonValue::Array()), Session.SetWindows({}); },
        [&] { EXPECT_EQ(Doc.RemoveInstrument(pro), CommResult::Success); },
    };
    for (const auto& change : changes) {
        change();
        EXPECT_TRUE(Session.Changed()) << &change - changes;
        Session.SetWindows(JsonValue::Array());
        Saved("a.qor");
        EXPECT_FALSE(Session.Changed()) << &change - changes;
    }
    EXPECT_EQ(Session.Path(), Folder + "a.qor");
    EXPECT_THAT(Session.SetTitle("a\nb"), HasSubstr("without control characters"));
    EXPECT_EQ(Session.Title(), "t");
    // Elsewhere the paths stay those of the files.
    std::filesystem::create_directories(Folder + "sub");
    ASSERT_NE(Add("DECK", port), nullptr);
    EXPECT_EQ(Session.SaveSession(Folder + "sub/b.qor"), "");
    EXPECT_EQ(Session.OpenSession(Folder + "sub/b.qor").refused.size(), 0u);
}

TEST_F(ASessionDocument, InstrumentsBeginWithTheirDefaults) {
    Doc.Instruments.DefaultsPath =
        Temp.Put("Instruments.ini", "[PRO]\nImmersed=1\nCounterCheck=0\nTitle=deep\nnonsense\n");
    CQorViewIns* pro = Add("PRO", Port);
    EXPECT_TRUE(Settings("PRO").Immersed && !Settings("PRO").CounterCheck);
    EXPECT_EQ(pro->Title, "deep");
    Add("DECK", Port);
    const std::string said = Reported();
    EXPECT_THAT(said, HasSubstr("line 5 is passed over"));
    EXPECT_EQ(said.find("line 5"), said.rfind("line 5")) << "once";
    EXPECT_THAT(Saved("a.qor"), Not(HasSubstr("immersed"))) << "as the defaults have it";

    InstrumentDefaults dry = Settings("PRO");
    dry.Immersed = false;
    EXPECT_EQ(Doc.Instruments.ChangeSettings(pro->Id, dry), "");
    EXPECT_THAT(Saved("a.qor"), HasSubstr("\"immersed\": false"));
    EXPECT_EQ(Doc.Instruments.UseAsDefault(pro->Id), "");
    EXPECT_THAT(Temp.Content("Instruments.ini"),
                AllOf(HasSubstr("Immersed=0"), HasSubstr("nonsense")));
    // What the session says wins over the defaults.
    ASSERT_EQ(Open("\"resources\": [ { \"port\": \"A\", \"instruments\": [ { \"definition\": "
                   "\"PRO.cal\", \"immersed\": true } ] } ]")
                  .refusal,
              "");
    EXPECT_TRUE(Settings("PRO").Immersed && !Settings("PRO").CounterCheck);
    Doc.Instruments.DefaultsPath.clear();
    EXPECT_THAT(Doc.Instruments.UseAsDefault(Doc.FindInstrument("PRO")),
                HasSubstr("no folder for settings"));
}

TEST_F(ASessionDocument, CalibrationModeKeepsInstrumentsAndPackagesWhereTheyAre) {
    ASSERT_EQ(Open("\"calibration-mode\": true, \"resources\": [ { \"port\": \"A\", "
                   "\"instruments\": [ { \"definition\": \"PRO.cal\" } ], \"packages\": [ { "
                   "\"file\": \"cast.sip\" } ] }, { \"port\": \"B\" } ]")
                  .refusal,
              "");
    const SessionSnapshot before = Doc.Snapshot();
    const ResourceId a = before.resources[0].id, b = before.resources[1].id;
    InstrumentId pro = Doc.FindInstrument("PRO");
    PackageId package = Doc.Packages.Named("Cast");
    ASSERT_NE(package, PackageId::None);
    User.TakeMessages();
    const std::function<void()> attempts[] = {
        [&] { EXPECT_TRUE(Doc.AddInstrument(Folder + "DECK.cal", a).locked); },
        [&] { EXPECT_FALSE(Doc.Packages.AddFile(Folder + "DECK.cal", a)); },
        [&] { EXPECT_FALSE(Doc.Packages.AddFile(Folder + "cast.sip", b)); },
        [&] { EXPECT_NE(Doc.RemoveInstrument(pro), CommResult::Success); },
        [&] { EXPECT_NE(Doc.RemoveResource(a), CommResult::Success); },
        [&] { EXPECT_FALSE(Doc.Packages.RemovePackage(package)); },
        [&] { EXPECT_NE(Doc.Packages.ChangeSettings(package, {}), ""); },
        [&] { EXPECT_NE(Doc.Instruments.MoveInstrument(pro, b), ""); },
    };
    for (const auto& attempt : attempts) {
        attempt();
        EXPECT_THAT(User.TakeMessages(), ElementsAre(CPackageList::LockedText));
    }
    EXPECT_EQ(Doc.Snapshot().resources[0].instruments.size(), 3u);
    EXPECT_EQ(Doc.RemoveResource(b), CommResult::Success) << "nothing is on it";
    EXPECT_EQ(Session.CloseSession(), "");
    EXPECT_NE(Add("PRO", Doc.AddSerialResource({.portName = "P", .globalSyncString = ""})),
              nullptr);
}

} // namespace
} // namespace qor
