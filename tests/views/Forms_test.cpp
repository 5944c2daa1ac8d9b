// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/TempFolder.h"
#include "views/FormNumbers.h"
#include "views/LogForms.h"
#include "views/SourceForms.h"

#include <gtest/gtest.h>

#include <functional>

namespace qor {
namespace {

/// A field of a form changed to something: what is said of it, which is nothing where it is well.
template <class Form> struct Change {
    std::function<void(Form&)> change;
    const char* field;
    const char* fault;
};

template <class Form>
void Walk(const Form& good, const std::vector<Change<Form>>& changes,
          const std::function<FormFaults(const Form&)>& check) {
    EXPECT_TRUE(check(good).Ok());
    for (const Change<Form>& one : changes) {
        Form form = good;
        one.change(form);
        const FormFaults faults = check(form);
        EXPECT_EQ(faults.Of(one.field), one.fault);
        EXPECT_EQ(faults.Ok(), std::string_view(one.fault).empty()) << one.fault;
    }
}

template <class Form> void Walk(const Form& good, const std::vector<Change<Form>>& changes) {
    Walk<Form>(good, changes, [](const Form& form) { return CheckForm(form); });
}

TEST(Forms, OfAPort) {
    constexpr const char* Speed = "Give a whole number from 1 to 12000000.";
    constexpr const char* Format = "Give data bits, parity and stop bits such as 8N1.";
    PortForm good;
    good.name = "ttyUSB0";
    good.inUse = {"ttyS0"};
    using C = Change<PortForm>;
    Walk<PortForm>(good, {C{[](PortForm& f) { f.name = " "; }, "name", "Name a port."},
                          C{[](PortForm& f) { f.name = "ttyS0 "; }, "name",
                            "The session has this port already."},
                          C{[](PortForm& f) { f.name = "a\xC2\x85z"; }, "name",
                            "A port's name holds no control characters."},
                          C{[](PortForm& f) { f.speed = "0"; }, "speed", Speed},
                          C{[](PortForm& f) { f.speed = "9600.5"; }, "speed", Speed},
                          C{[](PortForm& f) { f.speed = "12000001"; }, "speed", Speed},
                          C{[](PortForm& f) { f.speed = "nan"; }, "speed", Speed},
                          C{[](PortForm& f) { f.speed = " 12000000 "; }, "speed", ""},
                          C{[](PortForm& f) { f.format = "9N1"; }, "format", Format},
                          C{[](PortForm& f) { f.format = ""; }, "format", Format},
                          C{[](PortForm& f) { f.format = "7e2"; }, "format", ""}});
    good.format = "7E2";
    const auto settings = SettingsOf(good);
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->portName, "ttyUSB0");
    EXPECT_EQ(settings->baudRate, 9600u);
    EXPECT_EQ(settings->dataBits, 7);
    EXPECT_EQ(settings->parity, 2);
    EXPECT_EQ(settings->stopBits, 2);
    good.format = "8X1";
    EXPECT_FALSE(SettingsOf(good));
}

TEST(Forms, OfFilesAndInstruments) {
    CTempFolder temp;
    const std::string raw = temp.Put("a.raw", "x");
    const std::string cal = temp.Put("a.cal", "INSTRUMENT A '' 1 AS 0 NONE\n");
    using F = Change<FileForm>;
    FileForm file{raw, {}};
    Walk<FileForm>(
        file,
        {F{[](FileForm& f) { f.path = ""; }, "path", "Name a file."},
         F{[&](FileForm& f) { f.path = temp.Path; }, "path", "This is a folder, not a file."},
         F{[&](FileForm& f) { f.path = cal; }, "path",
           "This is no recorded telemetry; name a raw log."},
         F{[&](FileForm& f) { f.inUse = {raw}; }, "path", "The session has this file already."}});
    file.path = temp.Path + "missing.raw";
    EXPECT_FALSE(CheckForm(file).Of("path").empty());

    using I = Change<InstrumentForm>;
    Walk<InstrumentForm>(
        {cal, "COM1", {"COM1", "COM2"}},
        {I{[](InstrumentForm& f) { f.resource = "COM3"; }, "resource", "Choose a port."},
         I{[](InstrumentForm& f) { f.resources = {}; }, "resource", "Add a port first."},
         I{[](InstrumentForm& f) { f.path = ""; }, "path", "Name a file."},
         I{[](InstrumentForm& f) { f.calibrationMode = true; }, "path",
           "In calibration mode no instrument can be added."}});
    EXPECT_FALSE(CheckForm(InstrumentForm{raw, "COM1", {"COM1"}}).Ok());
    EXPECT_FALSE(CheckForm(InstrumentPropertiesForm{"two\nlines"}).Ok());
    EXPECT_TRUE(CheckForm(InstrumentPropertiesForm{"Gro\xC3\x9F"}).Ok());
}

TEST(Forms, OfAPackageAndOfRoles) {
    using P = Change<PackageForm>;
    const PackageForm good = FormOf(PackageSettings{true, 35.5, 200.0, 5.0});
    Walk<PackageForm>(
        good, {P{[](PackageForm& f) { f.defaultSalinity = "50.1"; }, "defaultSalinity",
                 "Give a number from 0 to 50."},
               P{[](PackageForm& f) { f.defaultSalinity = "x", f.useDefaultSalinity = false; },
                 "defaultSalinity", ""},
               P{[](PackageForm& f) { f.saturationIrradiance = "-1"; }, "saturationIrradiance",
                 "Give a number from 0 to 100000."},
               P{[](PackageForm& f) { f.saturationIrradiance = ""; }, "saturationIrradiance", ""},
               P{[](PackageForm& f) { f.attenuationWindow = "0"; }, "attenuationWindow",
                 "Give a number from 0.001 to 12000."},
               P{[](PackageForm& f) { f.attenuationWindow = "1e999"; }, "attenuationWindow",
                 "Give a number from 0.001 to 12000."}});
    const auto settings = SettingsOf(good);
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->DefaultSalinity, 35.5);
    EXPECT_EQ(settings->SaturationIrradiance, 200.0);

    using R = Change<RolesForm>;
    RolesForm roles;
    roles.instruments = {"ed", "gps"};
    roles.optical = {"ed"};
    roles.receivers = {"gps"};
    roles.holders = {{InstrumentRole::DeviceUnderTest, "ed"},
                     {InstrumentRole::Gps, "gps"},
                     {InstrumentRole::Tracker, ""}};
    Walk<RolesForm>(roles,
                    {R{[](RolesForm& f) { f.holders[InstrumentRole::Tracker] = "nobody"; },
                       "tracker", "There is no instrument nobody."},
                     R{[](RolesForm& f) { f.holders[InstrumentRole::Gps] = "ed"; }, "gps",
                       "ed brings no position."},
                     R{[](RolesForm& f) { f.holders[InstrumentRole::DeviceUnderTest] = "gps"; },
                       "dut", "gps has no optical series to compare."}});
}

TEST(Forms, OfTheStation) {
    const struct {
        std::string StationInformation::*field;
        const char* name;
        std::string text;
        LogNamingMode mode;
        bool faulty;
    } cases[] = {
        {&StationInformation::comment, "comment", "two\r\nlines", LogNamingMode::TimeStamp, true},
        {&StationInformation::latitude, "latitude", "54 \t10.2 N", LogNamingMode::Sqm, true},
        {&StationInformation::stationId, "stationId", "S/4", LogNamingMode::AutoCast, true},
        {&StationInformation::stationId, "stationId", "S/4", LogNamingMode::TimeStamp, false},
        {&StationInformation::cast, "cast", "A1", LogNamingMode::AutoCast, true},
        {&StationInformation::cast, "cast", "", LogNamingMode::AutoCast, true},
        {&StationInformation::cast, "cast", "A1", LogNamingMode::UserFileName, false},
    };
    for (const auto& one : cases) {
        StationInformation station;
        station.cast = "AA";
        station.*one.field = one.text;
        const FormFaults faults = CheckForm(station, one.mode);
        EXPECT_EQ(!faults.Of(one.name).empty(), one.faulty) << one.name;
        EXPECT_EQ(faults.Ok(), !one.faulty) << one.name << ": the others are well";
    }
}

TEST(Forms, OfTheLog) {
    constexpr const char* Span = "Give a time such as 10m, 1h30m or 00:10:00.";
    using O = Change<LogOptionsForm>;
    LogOptionsForm good;
    good.useDuration = good.useRepeat = good.gpsHeader = good.hasGps = true;
    good.duration = "10:00";
    good.repeat = "1:00:00";
    Walk<LogOptionsForm>(
        good, {O{[](LogOptionsForm& f) { f.duration = "0:00"; }, "duration", Span},
               O{[](LogOptionsForm& f) { f.repeat = "often"; }, "repeat", Span},
               O{[](LogOptionsForm& f) { f.repeat = "often", f.useRepeat = false; }, "repeat", ""},
               O{[](LogOptionsForm& f) { f.useDuration = false; }, "repeat",
                 "A repeat needs a duration: the length of each log."},
               O{[](LogOptionsForm& f) { f.hasGps = false; }, "gpsHeader",
                 "No instrument has the role of the GPS."}});
    const auto options = SettingsOf(good);
    ASSERT_TRUE(options);
    EXPECT_EQ(options->duration.Seconds(), 600);
    EXPECT_EQ(options->repeatInterval.Seconds(), 3600);
    EXPECT_EQ(FormOf(*options, true).repeat, "01:00:00");

    CTempFolder temp;
    using N = Change<NamingForm>;
    NamingForm naming;
    naming.mode = LogNamingMode::UserFileName;
    naming.directory = temp.Path;
    naming.userFileName = "cast";
    EXPECT_EQ(NextName(naming), "cast.raw");
    Walk<NamingForm>(
        naming, {N{[](NamingForm& f) { f.userFileName = " "; }, "userFileName", "Name a file."},
                 N{[](NamingForm& f) { f.userFileName = "a/b"; }, "userFileName",
                   "The file name \"a/b\" holds a character that a file's name cannot."},
                 N{[](NamingForm& f) { f.userFileName = "", f.mode = LogNamingMode::TimeStamp; },
                   "userFileName", ""},
                 N{[](NamingForm& f) { f.directory += "missing"; }, "directory",
                   "There is no such folder."},
                 N{[](NamingForm& f) { f.mode = LogNamingMode::Sqm, f.sqmSequence = "1000"; },
                   "sqmSequence", "Give a whole number from 0 to 999."},
                 N{[](NamingForm& f) { f.mode = LogNamingMode::Sqm, f.sqmSequence = "999"; },
                   "sqmSequence", ""},
                 N{[](NamingForm& f) { f.mode = LogNamingMode::AutoCast; }, "station",
                   "The cast \"\" is not two letters."}});
    naming.userFileName = "?";
    EXPECT_EQ(NextName(naming), "");
}

TEST(Forms, OfTheQuestionTheProgramAndTheTare) {
    using O = Change<OverrideForm>;
    OverrideForm question;
    question.displayName = "S4AA.raw";
    question.mode = LogNamingMode::AutoCast;
    question.station.cast = "AA";
    Walk<OverrideForm>(question, {O{[](OverrideForm& f) { f.displayName = ""; }, "displayName",
                                    "The next log has no name; change the naming first."},
                                  O{[](OverrideForm& f) { f.station.cast = "1"; }, "cast",
                                    "The cast \"1\" is not two letters."}});
    using S = Change<SettingsForm>;
    Walk<SettingsForm>(
        {}, {S{[](SettingsForm& f) { f.textSize = "201"; }, "textSize",
               "Give a whole number from 90 to 200."},
             S{[](SettingsForm& f) { f.sessionLog = true, f.sessionLogDirectory = "no/such/one"; },
               "sessionLogDirectory", "There is no such folder."},
             S{[](SettingsForm& f) { f.sessionLogDirectory = "no/such/one"; },
               "sessionLogDirectory", ""}});
    using T = Change<TareForm>;
    Walk<TareForm>({"0.42", true}, {T{[](TareForm& f) { f.hasProfiler = false; }, "pressure",
                                      "There is no profiler; give an instrument its role."},
                                    T{[](TareForm& f) { f.pressure = "0,42"; }, "pressure",
                                      "Give a number from -12000 to 12000."}});
    EXPECT_EQ(SettingsOf(TareForm{" -1.5 ", true}), -1.5);
    EXPECT_FALSE(SettingsOf(TareForm{"inf", true}));
}

} // namespace
} // namespace qor
