// SPDX-License-Identifier: GPL-3.0-or-later
//
// Session files: read to the letter, refused with the place of the fault, written in one form.
#include "session/SessionFile.h"
#include "session/SessionPath.h"

#include "fakes/TempFolder.h"
#include "platform/WholeFile.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <limits>

namespace qor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* EveryField = R"({
  "qorview-session": 1,
  "title": "HE-612 \u00fcber",
  "resources": [
    { "port": "/dev/ttyUSB0", "baud": 57600, "format": "7e1.5", "reconnect": true, "colour": [1, {"a": 1e2}],
      "instruments": [
        { "definition": "cal/profiler.cal", "roles": ["profiler", "dut"], "immersed": true, "x": null },
        { "definition": "/else/where/../radiometer.cal", "title": "", "acquire": false, "log": true,
          "check": false, "check-counter": true, "check-sum": false, "beep": true } ] },
    { "port": "COM3", "packages": [ { "file": "./cast.sip", "default-salinity": 35.0, "saturation-irradiance": 2e2,
        "attenuation-window": 5, "instruments": { "a/b.cal": { "roles": ["reference"], "beep": true } } } ] },
    { "file": "2026-325-093015.raw", "baud": 3, "instruments": [ { "definition": "cal/gps.tdf", "roles": ["gps"] } ] }
  ],
  "station": { "cruise": "HE-612", "operator": "o", "latitude": "1", "longitude": "2", "zone": "UTC",
               "comment": "c", "station": "S4", "cast": "AA", "depth": 4000 },
  "log": { "directory": "logs/", "naming": "sqm", "name": "n", "sequence": 7, "time-stamps": true, "gps-header": true,
           "duration": "00:10:00", "repeat": "100:50:00", "session-log": false, "session-log-directory": ".", "k": 1 },
  "pressure-tare": -0.25,
  "calibration-mode": true,
  "windows": [ {}, { "kind": "profile", "axes": [[0, 1.50], true, "\u001b"] } ],
  "note": 123456789012345678901234567890
})";

class ASessionFile : public testing::Test {
  protected:
    SessionReading Read(std::string_view bytes) { return ReadSession(bytes, Path); }

    CTempFolder Temp;
    const std::string Path = Temp.Path + "cast.qor";
};

TEST_F(ASessionFile, EveryMemberArrivesAndIsWrittenInItsPlace) {
    const SessionReading reading = Read(EveryField);
    ASSERT_EQ(reading.refusal, "");
    const SessionRecord& session = *reading.session;
    EXPECT_EQ(session.title, "HE-612 \xC3\xBC"
                             "ber");
    const ResourceRecord& port = session.resources[0];
    EXPECT_EQ(port.port, "/dev/ttyUSB0");
    EXPECT_EQ(port.baud, 57600u);
    EXPECT_EQ(port.format, (LineFormat{7, 2, 1}));
    EXPECT_TRUE(port.reconnect);
    EXPECT_THAT(port.instruments[0].roles,
                ElementsAre(InstrumentRole::Profiler, InstrumentRole::DeviceUnderTest));
    EXPECT_EQ(port.instruments[0].immersed, true);
    EXPECT_EQ(port.instruments[0].title, std::nullopt);
    EXPECT_EQ(port.instruments[0].check, std::nullopt);
    EXPECT_EQ(port.instruments[1].title, "");
    EXPECT_EQ(port.instruments[1].immersed, std::nullopt);
    EXPECT_EQ(port.instruments[1].acquire, false);
    EXPECT_EQ(port.instruments[1].checkSum, false);
    const PackageRecord& package = session.resources[1].packages[0];
    EXPECT_EQ(session.resources[1].baud, std::nullopt);
    EXPECT_EQ(package.defaultSalinity, 35.0);
    EXPECT_EQ(package.saturationIrradiance, 200.0);
    EXPECT_EQ(package.attenuationWindow, 5.0);
    EXPECT_EQ(package.instruments[0].definition, "a/b.cal");
    EXPECT_EQ(package.instruments[0].beep, true);
    EXPECT_TRUE(session.resources[2].IsFile());
    EXPECT_EQ(session.station.stationId, "S4");
    EXPECT_EQ(session.station.cast, "AA");
    EXPECT_EQ(session.log.naming, LogNamingMode::Sqm);
    EXPECT_EQ(session.log.sequence, 7);
    EXPECT_EQ(session.log.duration->Seconds(), 600);
    EXPECT_EQ(session.log.repeat->Seconds(), 363000);
    EXPECT_FALSE(session.log.sessionLog);
    EXPECT_EQ(session.pressureTare, -0.25);
    EXPECT_TRUE(session.calibrationMode);
    EXPECT_THAT(reading.warnings,
                ElementsAre(Path +
                            ": unknown members, kept as they are: resources[0].instruments[0].x, "
                            "resources[0].colour, resources[2].baud, station.depth, log.k, note."));

    // Everything said, once more from what was written: members, order, unknown ones, numbers.
    const SessionWriting first = WriteSession(session, Path);
    ASSERT_EQ(first.refusal, "");
    const SessionReading again = Read(first.bytes);
    EXPECT_EQ(again.warnings, reading.warnings);
    EXPECT_EQ(WriteSession(*again.session, Path).bytes, first.bytes);
    EXPECT_EQ(again.session->windows, session.windows);
    std::string elsewhere = session.resources[0].instruments[1].definition;
    std::ranges::replace(elsewhere, PathSeparator(), '/');
    EXPECT_EQ(first.bytes, R"({
  "qorview-session": 1,
  "title": "HE-612 )"
                           "\xC3\xBC"
                           R"(ber",
  "resources": [
    {
      "port": "/dev/ttyUSB0",
      "baud": 57600,
      "format": "7E1.5",
      "reconnect": true,
      "instruments": [
        {
          "definition": "cal/profiler.cal",
          "roles": ["profiler", "dut"],
          "immersed": true,
          "x": null
        },
        {
          "definition": ")" + elsewhere +
                               R"(",
          "title": "",
          "acquire": false,
          "log": true,
          "check": false,
          "check-counter": true,
          "check-sum": false,
          "beep": true
        }
      ],
      "colour": [1, { "a": 1e2 }]
    },
    {
      "port": "COM3",
      "packages": [
        {
          "file": "cast.sip",
          "default-salinity": 35,
          "saturation-irradiance": 200,
          "attenuation-window": 5,
          "instruments": { "a/b.cal": { "roles": ["reference"], "beep": true } }
        }
      ]
    },
    {
      "file": "2026-325-093015.raw",
      "instruments": [{ "definition": "cal/gps.tdf", "roles": ["gps"] }],
      "baud": 3
    }
  ],
  "station": {
    "cruise": "HE-612",
    "operator": "o",
    "latitude": "1",
    "longitude": "2",
    "zone": "UTC",
    "comment": "c",
    "station": "S4",
    "cast": "AA",
    "depth": 4000
  },
  "log": {
    "directory": "logs",
    "naming": "sqm",
    "name": "n",
    "sequence": 7,
    "time-stamps": true,
    "gps-header": true,
    "duration": "00:10:00",
    "repeat": "100:50:00",
    "session-log": false,
    "session-log-directory": ".",
    "k": 1
  },
  "pressure-tare": -0.25,
  "calibration-mode": true,
  "windows": [{}, { "kind": "profile", "axes": [[0, 1.50], true, "\u001b"] }],
  "note": 123456789012345678901234567890
}
)");
}

TEST_F(ASessionFile, WhatIsNotSaidIsAsTheProgramHasIt) {
    const SessionReading reading =
        Read("\xEF\xBB\xBF{\"qorview-session\": 1.0, \"pressure-tare\": null, "
             "\"log\": {\"duration\": null}}");
    ASSERT_EQ(reading.refusal, "");
    EXPECT_TRUE(reading.warnings.empty() && reading.session->resources.empty());
    EXPECT_EQ(reading.session->log.naming, LogNamingMode::TimeStamp);
    EXPECT_EQ(reading.session->log.directory, "");
    EXPECT_TRUE(reading.session->log.sessionLog && !reading.session->log.timeStamps);
    EXPECT_FALSE(reading.session->log.duration || reading.session->pressureTare);
}

/// A whole session around the member that a case is about.
std::string With(const std::string& member) {
    return "{\"qorview-session\": 1, " + member + "}";
}
std::string WithResource(const std::string& members) {
    return With("\"resources\": [{\"port\": \"A\", " + members + "}]");
}

TEST_F(ASessionFile, DamageIsRefusedWithItsPlaceAndWhatWouldBeRight) {
    const std::string gps = "{\"definition\": \"d\", \"roles\": [\"gps\"]}";
    struct {
        std::string bytes, line; // the line that follows the file's path
    } cases[] = {
        {"", "line 1, column 1: this is no JSON: unexpected end of input"},
        {"{\n  \"qorview-session\": 1,\n}",
         "line 3, column 1: this is no JSON: unexpected '}'; expected string literal."},
        {With("\"title\": \"\xFC\""),
         "line 1, column 34: this is no JSON: invalid string: ill-formed UTF-8 byte."},
        {With("\"title\": \"") + '\0', "line 1, column"},
        {With("\"note\": 1e999"), "line 1, column 36: a number is beyond the range of numbers."},
        {With("\"title\": \"a\", \"title\": \"b\""),
         "the member \"title\" stands twice; keep one."},
        {With("\"note\": [1, {\"a\": {\"b\": 1, \"b\": 2}}]"),
         "note[1].a: the member \"b\" stands twice; keep one."},
        {"[]", "give an object, not an array."},
        {"{}", "qorview-session: is required: give 1. Without it this is no session file."},
        {"{\"qorview-session\": 2, \"resources\": 5}",
         "qorview-session: 2: written by a newer version; this one reads 1."},
        {"{\"qorview-session\": \"1\"}", "qorview-session: give 1, not \"1\"."},
        {"{\"qorview-session\": 0}", "qorview-session: give 1, not 0."},
        {"{\"qorview-session\": 1.5}",
         "qorview-session: 1.5: written by a newer version; this one reads 1."},
        {With("\"title\": 5"), "title: give a text, not 5."},
        {With("\"title\": null"), "title: give a text, not null."},
        {With("\"title\": \"a\\u0000b\""), "title: give a text without control characters."},
        {With("\"title\": \"a\\u009bb\""), "title: give a text without control characters."},
        {With("\"title\": \"" + std::string(4097, 'x') + '"'),
         "title: give a text of at most 4096 bytes."},
        {With("\"resources\": {}"), "resources: give an array of ports and files, not an object."},
        {With("\"resources\": [7]"), "resources[0]: give an object, not 7."},
        {With("\"resources\": [{}]"), "resources[0]: give \"port\" or \"file\", one of the two."},
        {WithResource("\"file\": \"b\""),
         "resources[0]: give \"port\" or \"file\", one of the two."},
        {With("\"resources\": [{\"port\": \"\"}]"),
         "resources[0].port: is required: give the name of a port."},
        {With("\"resources\": [{\"port\": 3}]"), "resources[0].port: give a text, not 3."},
        {With("\"resources\": [{\"port\": \"A\"}, {\"file\": \"f\"}, {\"port\": \"A\"}]"),
         "resources[2].port: \"A\" is named twice, already by resources[0]; put its instruments "
         "together."},
        {WithResource("\"baud\": \"9600\""),
         "resources[0].baud: give a whole number from 1 to 12000000, not \"9600\"."},
        {WithResource("\"baud\": 0"),
         "resources[0].baud: give a whole number from 1 to 12000000, not 0."},
        {WithResource("\"baud\": 9600.5"),
         "resources[0].baud: give a whole number from 1 to 12000000, not 9600.5."},
        {WithResource("\"baud\": 99999999999999999999"),
         "resources[0].baud: give a whole number from 1 to 12000000, not 99999999999999999999."},
        {WithResource("\"format\": \"9N1\""),
         "resources[0].format: give data bits 5 to 8, parity N, O, E, M or S and stop bits, as in "
         "\"8N1\", not \"9N1\"."},
        {WithResource("\"format\": 8"), "resources[0].format: give data bits 5 to 8, parity N, O, "
                                        "E, M or S and stop bits, as in \"8N1\", not 8."},
        {WithResource("\"reconnect\": 1"), "resources[0].reconnect: give true or false, not 1."},
        {WithResource("\"instruments\": {}"),
         "resources[0].instruments: give an array of instruments, not an object."},
        {WithResource("\"instruments\": [{}]"), "resources[0].instruments[0].definition: is "
                                                "required: give the path of a definition file."},
        {WithResource("\"instruments\": [{\"definition\": \"d\\n\"}]"),
         "resources[0].instruments[0].definition: give a text without control characters."},
        {WithResource("\"instruments\": [{\"definition\": \"d\", \"immersed\": \"yes\"}]"),
         "resources[0].instruments[0].immersed: give true or false, not \"yes\"."},
        {WithResource("\"instruments\": [" + gps + ", " + gps + "]"),
         "resources[0].instruments[1].roles: \"gps\" is given twice, already to "
         "resources[0].instruments[0]; give a role to one instrument."},
        {WithResource("\"instruments\": [{\"definition\": \"d\", \"roles\": [\"gps\", \"gps\"]}]"),
         "resources[0].instruments[0].roles: \"gps\" is given twice, already to "
         "resources[0].instruments[0]"},
        {WithResource("\"instruments\": [" + gps +
                      "], \"packages\": [{\"file\": \"p\", \"instruments\": {\"m x.cal\": "
                      "{\"roles\": [\"gps\"]}}}]"),
         "resources[0].packages[0].instruments[\"m x.cal\"].roles: \"gps\" is given twice, already "
         "to resources[0].instruments[0];"},
        {WithResource("\"instruments\": [{\"definition\": \"d\", \"roles\": [\"captain\"]}]"),
         "resources[0].instruments[0].roles: give \"profiler\", \"reference\", \"tracker\", "
         "\"sqm\", \"dut\", \"weather\" or \"gps\", not \"captain\"."},
        {WithResource("\"instruments\": [{\"definition\": \"d\", \"roles\": \"gps\"}]"),
         "resources[0].instruments[0].roles: give an array of roles, not \"gps\"."},
        {WithResource("\"packages\": [{}]"),
         "resources[0].packages[0].file: is required: give the path of a package."},
        {WithResource("\"packages\": [{\"file\": \"p\", \"default-salinity\": 50.5}]"),
         "resources[0].packages[0].default-salinity: give a number from 0 to 50, not 50.5."},
        {WithResource("\"packages\": [{\"file\": \"p\", \"saturation-irradiance\": -1}]"),
         "resources[0].packages[0].saturation-irradiance: give a number from 0 to 100000, not -1."},
        {WithResource("\"packages\": [{\"file\": \"p\", \"attenuation-window\": 0}]"),
         "resources[0].packages[0].attenuation-window: give a number from 0.001 to 12000, not 0."},
        {WithResource("\"packages\": [{\"file\": \"p\", \"instruments\": []}]"),
         "resources[0].packages[0].instruments: give an object with the names of the package's "
         "files, not an array."},
        {WithResource("\"packages\": [{\"file\": \"p\", \"instruments\": {\"a\\nb\": {}}}]"),
         "resources[0].packages[0].instruments[\"a\\nb\"]: give a text without control "
         "characters."},
        {With("\"station\": []"), "station: give an object, not an array."},
        {With("\"station\": {\"cast\": 1}"), "station.cast: give a text, not 1."},
        {With("\"station\": {\"comment\": \"a\\r\\nb\"}"),
         "station.comment: give a text without control characters."},
        {With("\"log\": true"), "log: give an object, not true."},
        {With("\"log\": {\"naming\": \"date\"}"),
         "log.naming: give \"file\", \"autocast\", \"time-stamp\" or \"sqm\", not \"date\"."},
        {With("\"log\": {\"naming\": null}"),
         "log.naming: give \"file\", \"autocast\", \"time-stamp\" or \"sqm\", not null."},
        {With("\"log\": {\"name\": \"../x\"}"),
         "log.name: give the file's name alone, and its folder as \"directory\"."},
        {With("\"log\": {\"sequence\": 1000}"),
         "log.sequence: give a whole number from 0 to 999, not 1000."},
        {With("\"log\": {\"duration\": \"90\"}"),
         "log.duration: give hours, minutes and seconds as in \"00:10:00\", or null, not \"90\"."},
        {With("\"log\": {\"repeat\": \"00:60:00\"}"),
         "log.repeat: give hours, minutes and seconds as in \"00:10:00\", or null, not "
         "\"00:60:00\"."},
        {With("\"log\": {\"duration\": 600}"),
         "log.duration: give hours, minutes and seconds as in \"00:10:00\", or null, not 600."},
        {With("\"pressure-tare\": \"1\""),
         "pressure-tare: give a number from -12000 to 12000, not \"1\"."},
        {With("\"pressure-tare\": 1e300"),
         "pressure-tare: give a number from -12000 to 12000, not 1e300."},
        {With("\"calibration-mode\": 0"), "calibration-mode: give true or false, not 0."},
        {With("\"windows\": {}"), "windows: give an array of objects, not an object."},
        {With("\"windows\": [{}, 1]"), "windows[1]: give an object, not 1."},
    };
    for (const auto& row : cases) {
        const SessionReading reading = Read(row.bytes);
        EXPECT_FALSE(reading.session) << row.bytes;
        EXPECT_THAT(reading.refusal, StartsWith(Path + ": " + row.line)) << row.bytes;
        EXPECT_EQ(reading.refusal.find('\n'), std::string::npos);
    }
}

TEST_F(ASessionFile, HostileFilesAreRefusedBeforeTheyCost) {
    std::string deep(100'000, '['), wide = "[0", keys = "{\"k\": 0";
    for (int i = 0; i < 100'000; ++i)
        wide += ",0";
    for (int i = 0; i < 5'000; ++i)
        keys += ", \"k" + std::to_string(i) + "\": 0";
    EXPECT_THAT(Read(deep).refusal, HasSubstr("nested deeper than 64 levels."));
    EXPECT_THAT(Read(With("\"note\": " + wide + ']')).refusal,
                HasSubstr("more than 100000 values."));
    EXPECT_THAT(Read(std::string((16U << 20) + 1, ' ')).refusal, HasSubstr("larger than"));
    const SessionReading many = Read(With("\"note\": " + keys + "}, " + keys.substr(1)));
    ASSERT_EQ(many.warnings.size(), 1u);
    EXPECT_LT(many.warnings[0].size(), 400u + Path.size());
    EXPECT_THAT(many.warnings[0], HasSubstr(" and 4990 more."));
}

TEST_F(ASessionFile, PathsAreRelativeOnlyInOrBelowTheFolder) {
    const std::string folder = Temp.Path;
    std::filesystem::create_directories(folder + "sub");
    struct {
        std::string written, resolved, stored;
    } cases[] = {
        {"cal/a.cal", folder + "cal/a.cal", "cal/a.cal"},
        {"./cal//../a b.cal", folder + "a b.cal", "a b.cal"},
        {folder + "cal/a.cal", folder + "cal/a.cal", "cal/a.cal"},
        {folder, folder.substr(0, folder.size() - 1), "."},
        {"..", std::filesystem::path(folder).parent_path().parent_path().string(), ""},
        {folder.substr(0, folder.size() - 1) + "-other/a",
         folder.substr(0, folder.size() - 1) + "-other/a", ""},
        {"\xC3\xBC/\xE6\xB5\xB7.cal", folder + "\xC3\xBC/\xE6\xB5\xB7.cal",
         "\xC3\xBC/\xE6\xB5\xB7.cal"},
    };
    const auto native = [](std::string path) { // as this system writes it
        std::ranges::replace(path, '/', PathSeparator());
        return path;
    };
    for (const auto& row : cases) {
        SessionReading reading =
            Read(With("\"log\": {\"directory\": " + WriteJson(JsonValue::Text(row.written)) + "}"));
        ASSERT_EQ(reading.refusal, "");
        EXPECT_EQ(native(reading.session->log.directory), native(row.resolved));
        std::string stored = row.stored.empty() ? row.resolved : row.stored;
        std::ranges::replace(stored, PathSeparator(), '/');
        EXPECT_THAT(WriteSession(*reading.session, Path).bytes,
                    HasSubstr("\"directory\": \"" + stored + '"'));
    }
}

TEST_F(ASessionFile, SavingLeavesTheOldFileOrTheNewOne) {
    SessionRecord session;
    session.title = "one";
    ASSERT_EQ(SaveSession(session, Path), "");
    EXPECT_EQ(LoadSession(Path).session->title, "one");

    // What could not be read again is not written.
    session.log.duration = LogSpan{0, 90, 0};
    ASSERT_EQ(SaveSession(session, Path), "");
    const std::string before = Temp.Content("cast.qor");
    EXPECT_THAT(before, HasSubstr("\"01:30:00\""));
    session.station.comment = "caf\xE9";
    EXPECT_EQ(SaveSession(session, Path),
              Path + ": station.comment: give a name in UTF-8; no session file can hold another.");
    session.station.comment = "two\nlines";
    EXPECT_EQ(SaveSession(session, Path),
              Path + ": station.comment: give a text without control characters.");
    session.station.comment = {};
    session.pressureTare = std::numeric_limits<double>::infinity();
    EXPECT_EQ(SaveSession(session, Path),
              Path + ": pressure-tare: give a number from -12000 to 12000, not \"inf\".");
    session.pressureTare = 10.132;
    EXPECT_EQ(Temp.Content("cast.qor"), before);
    ASSERT_EQ(SetReadOnly(Path, true), FileCause::None);
    EXPECT_EQ(SaveSession(session, Path),
              Path + ": cannot be saved. The file could not be accessed.");
    EXPECT_EQ(LoadSession(Temp.Path + "none.qor").refusal,
              Temp.Path + "none.qor: cannot be read. The file could not be found.");
}

TEST(SessionPath, AStrangersServerIsNotLookedAt) {
    const struct {
        const char *folder, *path;
        bool leads;
    } cases[] = {
        {"C:\\logs\\", "\\\\stranger\\share\\a.cal", true},
        {"\\\\ours\\share\\", "\\\\OURS\\other\\a.cal", false},
        {"\\\\ours\\share\\", "\\\\ours.stranger\\a.cal", true},
        {"C:\\logs\\", "\\\\.\\UNC\\stranger\\a.cal", true},
        {"C:\\logs\\", "//stranger/share/a.cal", true},
        {"C:\\logs\\", "C:\\cal\\a.cal", false},
        {"/logs/", "/cal/a.cal", false},
    };
    for (const auto& one : cases)
        EXPECT_EQ(LeadsToServer(one.folder, one.path), one.leads) << one.path;
}

} // namespace
} // namespace qor
