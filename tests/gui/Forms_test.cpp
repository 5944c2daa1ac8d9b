// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/Form.h"
#include "app/dialogs/Forms.h"
#include "app/dialogs/PortFinder.h"
#include "gui/Desk.h"
#include "gui/Hands.h"
#include "gui/SampleSession.h"
#include "views/SessionForms.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

namespace qor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AForm : public testing::Test {
  protected:
    AForm() { Window.show(); }
    ~AForm() override { CloseForms(&Window); }

    FormFrame Frame() { return Session.Frame(TestTheme(), &Window); }
    FormDone Count() {
        return [this] { ++Done; };
    }

    QWidget Window;
    CSampleSession Session;
    int Done = 0;
};

/// A port form with the ports of the sample, once it has listed them.
class APortForm : public AForm {
  protected:
    CForm* Open(std::vector<std::string> files) {
        CForm* form = OpenPort(Frame(), {[this] { return Find(); }, std::move(files)},
                               [this](ResourceId id, bool connect) {
                                   Added = id;
                                   Connect = connect;
                               });
        EXPECT_TRUE(
            QTest::qWaitFor([form] { return form->findChildren<QRadioButton*>().size() > 1; }));
        return form;
    }

    /// On the thread that looks.
    std::vector<PortFound> Find() const {
        std::vector<PortFound> ports = SamplePorts();
        if (!Plugged)
            ports.erase(ports.begin());
        return ports;
    }

    std::atomic<bool> Plugged = true;
    ResourceId Added = ResourceId::None;
    bool Connect = false;
};

TEST_F(APortForm, TheOnlyFreePortIsTickedAndAddedWithItsPackage) {
    QPointer<CForm> form = Open({});
    EXPECT_TRUE(WithText<QRadioButton>(form, "FTDI A50285BI")->isChecked());
    EXPECT_EQ(Named<QComboBox>(form, "Speed [baud]")->currentText(), QStringLiteral("57600"))
        << "as last time";
    Type(form, "Speed [baud]", "57600x");
    EXPECT_FALSE(form->OkButton()->isEnabled());
    EXPECT_FALSE(WithText<QPushButton>(form, "Add")->isEnabled());
    Type(form, "Speed [baud]", "4800");
    PressReturn(form);
    ASSERT_NE(Added, ResourceId::None);
    EXPECT_TRUE(Connect);
    const SessionSnapshot now = Session.Doc.Snapshot();
    EXPECT_EQ(now.Find(Added)->name, "/dev/serial/by-id/usb-FTDI_A50285BI");
    EXPECT_EQ(now.Find(Added)->serial.baudRate, 4800U);
    EXPECT_EQ(LastLineText(Session.Profile, now.Find(Added)->name), "4800 8N1");
    EXPECT_THAT(Session.TakeTold(), IsEmpty());
}

TEST_F(APortForm, TheSpeedIsThatOfThePackageUntilOneIsTyped) {
    const std::string radiometer = Example("radiometer.cal");
    EXPECT_EQ(Session.Doc.RemoveResource(Session.Port), CommResult::Success);
    CForm* form = Open({Example("cast.sip"), radiometer});
    WithText<QRadioButton>(form, "FTDI A50285BI")->click();
    EXPECT_EQ(Named<QComboBox>(form, "Speed [baud]")->currentText(), QStringLiteral("57600"));
    WithText<QPushButton>(form, "Add")->click();
    ASSERT_NE(Added, ResourceId::None);
    EXPECT_FALSE(Connect);
    EXPECT_EQ(Session.Doc.Snapshot().Find(Added)->instruments.size(), 8U);
}

TEST_F(APortForm, WhatKeepsAPortFromBeingHadIsSaidWithItsRemedy) {
    CForm* form = Open({});
    WithText<QRadioButton>(form, "Prolific")->click();
    EXPECT_FALSE(form->OkButton()->isEnabled()) << "it could not be connected";
    EXPECT_TRUE(WithText<QPushButton>(form, "Add")->isEnabled());
    EXPECT_EQ(form->OkButton()->toolTip(),
              QStringLiteral("You may not open ttyUSB1: it belongs to group dialout."));
    WithText<QPushButton>(form, "Copy command")->click();
    for (auto* copy : form->findChildren<QPushButton*>())
        if (copy->text() == QStringLiteral("Copy command") && copy->isVisible())
            copy->click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(),
              QStringLiteral("sudo usermod -aG dialout $USER"));
    WithText<QRadioButton>(form, "FTDI A9GZ11")->click();
    EXPECT_FALSE(WithText<QPushButton>(form, "Add")->isEnabled()) << "the session has it";
    Type(form, "Name of another port", "/dev/ttyX");
    EXPECT_TRUE(form->OkButton()->isEnabled());
}

TEST_F(APortForm, AFileThatCannotBeUsedStandsInTheWayUntilItsTickGoes) {
    CForm* form = Open({Session.Temp.Path + "none.cal"});
    EXPECT_FALSE(form->OkButton()->isEnabled());
    auto* list = Named<QWidget>(form, "Definitions and packages");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_TRUE(form->OkButton()->isEnabled());
}

TEST_F(APortForm, APortThatGoesWhileItIsChosenStaysInSight) {
    CForm* form = Open({});
    Plugged = false;
    form->findChild<CPortFinder*>()->Look();
    EXPECT_TRUE(QTest::qWaitFor([form] { return !form->OkButton()->isEnabled(); }));
    EXPECT_EQ(form->OkButton()->toolTip(), QStringLiteral("There is no port ttyUSB0."));
}

/// A field of a form set to something that cannot be, then to something that can.
struct WrongThenRight {
    const char* name;
    std::function<CForm*(const FormFrame&, CSampleSession&)> open;
    const char* field;
    const char* wrong;
    const char* fault;
    const char* right;
};

TEST_F(AForm, WhatIsWrongStandsBesideTheFieldAndOkWaits) {
    const WrongThenRight refusals[] = {
        {"port",
         [](const FormFrame& f, CSampleSession& s) { return OpenPortProperties(f, s.Port, {}); },
         "Speed [baud]", "fast", "Give a whole number from 1 to 12000000.", "9600"},
        {"format",
         [](const FormFrame& f, CSampleSession& s) { return OpenPortProperties(f, s.Port, {}); },
         "Format", "9N1", "Give data bits, parity and stop bits such as 8N1.", "7E2"},
        {"package",
         [](const FormFrame& f, CSampleSession& s) {
             return OpenPackageProperties(f, s.Package, {});
         },
         "Window of attenuation [m]", "0", "Give a number from 0.001 to 12000.", "3.5"},
        {"naming", [](const FormFrame& f, CSampleSession&) { return OpenNaming(f, {}); }, "Folder",
         "/no/such/folder", "There is no such folder.", "."},
        {"settings",
         [](const FormFrame& f, CSampleSession&) { return OpenSettings(f, TestTheme(), {}); },
         "Text size (percent)", "300", "Give a whole number from 90 to 200.", "110"},
        {"tare", [](const FormFrame& f, CSampleSession&) { return OpenTare(f, {}); },
         "Pressure in air [dbar]", "0.4", "There is no profiler; give an instrument its role.",
         nullptr},
        {"comment",
         [](const FormFrame& f, CSampleSession&) {
             return OpenComment(f, QStringLiteral("09:41:07"), {});
         },
         "Comment", "  ", "Write a comment.", "CTD at the surface"},
    };
    for (const WrongThenRight& refusal : refusals) {
        SCOPED_TRACE(refusal.name);
        CForm* form = refusal.open(Frame(), Session);
        Type(form, refusal.field, refusal.wrong);
        EXPECT_FALSE(form->OkButton()->isEnabled());
        bool shown = false;
        for (auto* label : form->findChildren<QLabel*>())
            shown = shown || (label->isVisible() && label->text().toStdString() == refusal.fault);
        EXPECT_TRUE(shown);
        PressReturn(form);
        EXPECT_TRUE(form->isVisible()) << "the key does no more than the button";
        if (refusal.right) {
            Type(form, refusal.field, refusal.right);
            EXPECT_TRUE(form->OkButton()->isEnabled());
        }
        form->reject();
    }
}

TEST_F(AForm, PortPropertiesChangeTheLineAndKeepTheRest) {
    const SerialResourceSettings before = Session.Doc.Snapshot().Find(Session.Port)->serial;
    FormFrame frame = Frame();
    std::function<std::string()> work;
    frame.work = [&work](std::function<std::string()> given) { work = std::move(given); };
    CForm* form = OpenPortProperties(frame, Session.Port, Count());
    Type(form, "Speed [baud]", "19200");
    Type(form, "Format", "7E2");
    WithText<QCheckBox>(form, "Try again")->click();
    PressReturn(form);
    EXPECT_EQ(Done, 1);
    ASSERT_TRUE(work) << "the port may keep it waiting";
    EXPECT_EQ(Session.Doc.Snapshot().Find(Session.Port)->serial.baudRate, before.baudRate);
    EXPECT_EQ(work(), "");
    const SerialResourceSettings after = Session.Doc.Snapshot().Find(Session.Port)->serial;
    EXPECT_EQ(after.baudRate, 19200U);
    EXPECT_EQ(after.dataBits, 7);
    EXPECT_EQ(after.maxFrameDepth, before.maxFrameDepth);
    EXPECT_TRUE(IsTriedAgain(Session.Doc, Session.Port));
}

TEST_F(AForm, InstrumentSettingsTakeEffect) {
    const InstrumentId id = Session.Doc.Snapshot().resources[0].instruments[0].id;
    CForm* form = OpenInstrumentProperties(Frame(), id, Count());
    Type(form, "Title of its windows", "Downwelling");
    WithText<QCheckBox>(form, "Under water")->click();
    WithText<QCheckBox>(form, "Log its")->click();
    PressReturn(form);
    InstrumentDefaults wanted;
    wanted.Title = "Downwelling";
    wanted.Immersed = true;
    wanted.LogEnabled = false;
    EXPECT_EQ(Session.Doc.Instruments.Settings(id), wanted);
    EXPECT_EQ(Done, 1);
}

TEST_F(AForm, WhatHasGoneIsSaidAndChangesNothing) {
    const InstrumentId id = Session.Doc.Snapshot().resources[1].instruments[0].id;
    CForm* form = OpenInstrumentProperties(Frame(), id, Count());
    ASSERT_EQ(Session.Doc.RemoveInstrument(id), CommResult::Success);
    PressReturn(form);
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(Session.TakeTold().size(), 1);
    EXPECT_EQ(Done, 0);
    form->reject();
    CForm* gone = OpenInstrumentProperties(Frame(), id, Count());
    EXPECT_FALSE(gone->OkButton()->isVisible());
}

TEST_F(AForm, RolesAreOfferedToWhomeverCouldFillThem) {
    CForm* form = OpenRoles(Frame(), Count());
    EXPECT_EQ(Named<QComboBox>(form, "GPS")->count(), 2) << "nobody and the receiver";
    Named<QComboBox>(form, "GPS")->setCurrentIndex(1);
    Named<QComboBox>(form, "Profiler")->setCurrentIndex(1);
    PressReturn(form);
    EXPECT_EQ(Session.Doc.Role(InstrumentRole::Gps), Session.Instrument("$GPRMC"));
    EXPECT_EQ(Session.Doc.Role(InstrumentRole::Profiler), Session.Instrument("QORFAL071"));
    CForm* tare = OpenTare(Frame(), Count());
    Type(tare, "Pressure in air [dbar]", "0.42");
    PressReturn(tare);
    EXPECT_EQ(TareFormOf(Session.Doc).pressure, "0.42");
}

TEST_F(AForm, NamingShowsTheNextNameAsItIsTyped) {
    CForm* form = OpenNaming(Frame(), Count());
    QLabel* next = Named<QLabel>(form, "Next log");
    EXPECT_EQ(next->text(), QStringLiteral("The next log: (TIME STAMP)"));
    Named<QComboBox>(form, "Names")->setCurrentIndex(2);
    EXPECT_FALSE(form->OkButton()->isEnabled());
    Type(form, "File name", "cast");
    EXPECT_EQ(next->text(), QStringLiteral("The next log: cast.raw"));
    QString folder = QString::fromStdString(Session.Temp.Path);
    folder.chop(1);
    Named<QLineEdit>(form, "Folder")->setText(folder);
    PressReturn(form);
    EXPECT_EQ(Done, 1);
    ASSERT_TRUE(Session.Doc.RawLog.BuildLogFileName());
    ASSERT_TRUE(Session.Doc.RawLog.BeginLogFile());
    EXPECT_THAT(Session.Doc.RawLog.Status().logFilePath, HasSubstr(Session.Temp.Path + "cast.raw"))
        << "in the folder, not beside it";
    Session.Doc.RawLog.EndLogFile(true);
}

TEST_F(AForm, ARepeatNumbersTheLogsOfOneName) {
    NamingForm naming = NamingFormOf(Session.Doc);
    naming.mode = LogNamingMode::UserFileName;
    naming.userFileName = "mooring";
    ASSERT_EQ(ApplyNaming(Session.Doc, NamingFormOf(Session.Doc), naming), "");
    CForm* form = OpenLogOptions(Frame(), Count());
    WithText<QCheckBox>(form, "Begin a log again")->click();
    Type(form, "Pause between logs [h:mm:ss]", "1:00:00");
    EXPECT_FALSE(form->OkButton()->isEnabled()) << "a repeat needs a duration";
    WithText<QCheckBox>(form, "End each log")->click();
    Type(form, "Length [h:mm:ss]", "10:00");
    PressReturn(form);
    EXPECT_EQ(NextName(NamingFormOf(Session.Doc)), "mooring_001.raw");
    EXPECT_THAT(FirstLogText(Session.Doc), HasSubstr("mooring_001.raw in "));
}

TEST_F(AForm, OkKeepsWhatTheEndOfALogMovedOnMeanwhile) {
    CQorViewDoc& doc = Session.Doc;
    StationInformation station = StationOf(doc);
    station.cast = "AA";
    ASSERT_EQ(doc.RawLog.SetStation(station), "");
    LogOptions options;
    options.durationEnabled = options.repeatEnabled = true;
    options.duration = options.repeatInterval = {0, 10, 0};
    ASSERT_EQ(doc.RawLog.SetLogOptions(options), "");
    const struct {
        LogNamingMode mode;
        const char* next;
    } rows[] = {
        {LogNamingMode::AutoCast, "S4AB.raw"},
        {LogNamingMode::Sqm, "lamp008.raw"},
        {LogNamingMode::UserFileName, "mooring_008.raw"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.next);
        LogNaming naming;
        naming.logNamingMode = row.mode;
        naming.logUserFileName = "mooring";
        naming.numbered = row.mode == LogNamingMode::UserFileName;
        naming.sqmBaseName = "lamp";
        naming.sqmSequence = naming.number = 7;
        ASSERT_EQ(doc.RawLog.SetNaming(naming), "");
        CForm* stationForm = OpenStation(Frame(), {});
        CForm* namingForm = OpenNaming(Frame(), {});
        ASSERT_EQ(doc.RawLog.MoveNameOn(), ""); // as the end of a log does
        Type(stationForm, "Comment", row.next);
        PressReturn(stationForm);
        Type(namingForm, "Folder", Session.Temp.Path);
        PressReturn(namingForm);
        EXPECT_EQ(StationOf(doc).comment, row.next);
        EXPECT_EQ(NamingFormOf(doc).directory, Session.Temp.Path);
        EXPECT_EQ(NextName(NamingFormOf(doc)), row.next);
    }
    CForm* form = OpenNaming(Frame(), {});
    Type(form, "File name", "other");
    PressReturn(form);
    EXPECT_EQ(NextName(NamingFormOf(doc)), "other_001.raw") << "another name counts anew";
}

TEST_F(AForm, TheQuestionBeforeARunIsAnsweredOnce) {
    std::vector<LogAnswer> answers;
    const auto open = [&] {
        return OpenOverride(Frame(), {"cast.raw", StationOf(Session.Doc)},
                            [&answers](LogAnswer answer) { answers.push_back(answer); });
    };
    PressReturn(open());
    WithText<QPushButton>(open(), "Change first")->click();
    open()->close();
    EXPECT_THAT(answers,
                ElementsAre(LogAnswer::LogAsShown, LogAnswer::ChangeFirst, LogAnswer::Cancel));
}

TEST_F(AForm, RangesKeepOkAndTheirRefusals) {
    WarningRanges edited;
    CForm* form = OpenWarningRanges(Frame(), DefaultTiltRanges, "TILT",
                                    [&edited](const WarningRanges& ranges) { edited = ranges; });
    EXPECT_EQ(form->windowTitle(), QStringLiteral("Ancillary Data Alarms -TILT"));
    Type(form, "Warning Ranges Min", "50");
    EXPECT_TRUE(form->OkButton()->isEnabled());
    PressReturn(form);
    EXPECT_THAT(
        Session.User.TakeMessages(),
        ElementsAre("The Warning Range minimum value cannot\nbe greater than the maximum value."));
    EXPECT_TRUE(form->isVisible());
    Type(form, "Warning Ranges Min", "10");
    Named<QCheckBox>(form, "Alarm Ranges Enable")->click();
    PressReturn(form);
    EXPECT_EQ(edited, (WarningRanges{10, 45, 45, 180, 0, 1}));
    EXPECT_FALSE(form->isVisible());
}

TEST_F(AForm, SettingsShowAtOnceAndCancelBringsBackWhatWas) {
    CForm* form = OpenSettings(Frame(), TestTheme(), Count());
    Named<QComboBox>(form, "Palette")->setCurrentIndex(2);
    EXPECT_TRUE(TestTheme().IsNight());
    form->reject();
    EXPECT_EQ(TestTheme().CurrentLook(), Look::Light);

    // The log of the session is not the program's, and what is held back stays so.
    CSessionLog& log = Session.Doc.SessionLog;
    const std::string own = Session.Temp.Path + "own/";
    log.WaitsForOperator = true;
    log.SetFile(true, own);
    log.HoldBack();
    PressReturn(OpenSettings(Frame(), TestTheme(), {}));
    EXPECT_EQ(log.SessionLogDirectory(), own);
    EXPECT_EQ(log.FilePath(), "");
    EXPECT_FALSE(SettingsFormOf(Session.Doc).sessionLog);

    form = OpenSettings(Frame(), TestTheme(), Count());
    WithText<QCheckBox>(form, "Keep it")->click();
    Named<QLineEdit>(form, "Folder")->setText(QString::fromStdString(Session.Temp.Path));
    WithText<QCheckBox>(form, "Sound when")->click();
    PressReturn(form);
    EXPECT_EQ(log.SessionLogDirectory(), Session.Temp.Path);
    EXPECT_NE(log.FilePath(), "") << "it is opened anew";
    EXPECT_TRUE(SettingsFormOf(Session.Doc).loggingSounds);
    EXPECT_EQ(Done, 1);
}

TEST_F(AForm, ACommentGoesIntoTheSessionLogWithItsTime) {
    static_cast<void>(Session.Reported());
    CForm* form = OpenComment(Frame(), QStringLiteral("09:41:07"), Count());
    QTest::keyClicks(form->focusWidget(), QStringLiteral("CTD at the surface"));
    PressReturn(form);
    EXPECT_THAT(Session.Reported(), HasSubstr("Comment at 09:41:07: CTD at the surface"));
}

TEST_F(AForm, OpensOnceAndIsFilledByKeysAlone) {
    CForm* form = OpenStation(Frame(), {});
    EXPECT_EQ(OpenStation(Frame(), {}), form);
    for (const char* text : {"S5", "AB", "HE-613"}) {
        auto* edit = qobject_cast<QLineEdit*>(form->focusWidget());
        ASSERT_NE(edit, nullptr);
        edit->selectAll();
        QTest::keyClicks(edit, QString::fromLatin1(text));
        QTest::keyClick(edit, Qt::Key_Tab);
    }
    PressReturn(form);
    EXPECT_EQ(StationOf(Session.Doc).stationId, "S5");
    EXPECT_EQ(StationOf(Session.Doc).cast, "AB");
    EXPECT_EQ(StationOf(Session.Doc).cruiseId, "HE-613");
}

TEST_F(AForm, IsAtRestWhenNothingHappens) {
    CForm* form = OpenStation(Frame(), {});
    Settle();
    int layouts = 0;
    class CCounter : public QObject {
      public:
        explicit CCounter(int& count) : Count(count) {}
        bool eventFilter(QObject*, QEvent* event) override {
            Count += event->type() == QEvent::LayoutRequest;
            return false;
        }
        int& Count;
    } counter(layouts);
    qApp->installEventFilter(&counter);
    Settle();
    EXPECT_EQ(layouts, 0);
    EXPECT_EQ(form->focusWidget(), Named<QLineEdit>(form, "Station"));
}

TEST_F(AForm, AtNightNothingButRedIsLit) {
    const CWithLook night(Look::Night);
    const FormFrame frame = Frame();
    for (CForm* form : {OpenStation(frame, {}), OpenNaming(frame, {}), OpenRoles(frame, {}),
                        OpenPortProperties(frame, Session.Port, {}), OpenTare(frame, {})}) {
        Settle();
        const QImage picture = form->grab().toImage();
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                ASSERT_EQ(picture.pixel(x, y) & 0x00FFFFU, 0U)
                    << form->windowTitle().toStdString() << " at " << x << ' ' << y;
    }
}

} // namespace
} // namespace qor
