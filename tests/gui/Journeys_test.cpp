// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ways of an operator through the real window over the real engine: practice lines and
// pseudo-terminals send, the event loop runs, logs are files.
#include "app/desk/Desk.h"
#include "app/dialogs/Form.h"
#include "app/plots/PlotWidget.h"
#include "app/windows/PageGrid.h"
#include "fakes/TempFolder.h"
#include "gui/Desk.h"
#include "gui/Hands.h"
#include "platform/VirtualPort.h"
#include "session/ProfileFile.h"
#include "session/SessionSetup.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>

#include <atomic>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qor {
namespace {

using testing::HasSubstr;

const std::string Source = QORVIEW_SOURCE_DIR;

/// An operator at a desk of his own: settings and logs go to a folder of the test.
class AtTheDesk : public testing::Test {
  protected:
    AtTheDesk() {
        qputenv("QORVIEW_HOME", QByteArray::fromStdString(Temp.Path));
        qputenv("HOME", QByteArray::fromStdString(Temp.Path));
        SitDown();
    }
    ~AtTheDesk() override { GetUp(); }

    void SitDown() {
        Profile = std::make_unique<CFileProfileStore>();
        EXPECT_EQ(Profile->Load(Temp.Path + "qorview.ini"), FileCause::None);
        Window = std::make_unique<CMainWindow>(TestTheme());
        Desk = std::make_unique<CDesk>(TestTheme(), *Window, *Profile);
        Window->resize(1366, 768);
        Window->show();
    }
    void GetUp() {
        Desk.reset();
        Window.reset();
    }

    CQorViewDoc& Doc() { return Desk->Engine().Doc(); }
    void Press(Do action) { Window->Actions()[action]->trigger(); }
    template <class Condition> bool Until(Condition condition) {
        return QTest::qWaitFor(condition, 15'000);
    }
    std::uint64_t Frames() {
        std::uint64_t frames = 0;
        for (const ResourceStatus& resource : Doc().Snapshot().resources)
            frames += resource.frames;
        return frames;
    }
    /// Everything that was said in the strip, a line each.
    std::string Said() {
        std::string said;
        for (const CMessageHistory::Entry& entry : Window->Strip().History().Entries())
            said += entry.message.text + "\n";
        return said;
    }
    bool WasSaid(const std::string& text) { return Said().find(text) != std::string::npos; }
    CViewWindow* Shown(const char* kind) {
        for (CViewWindow* window : Desk->Windows().Windows())
            if (window->Kind().name == kind)
                return window;
        return Desk->Windows().OpenWindow(kind);
    }
    CForm* OpenForm() {
        CForm* form = nullptr;
        EXPECT_TRUE(Until([&] {
            for (auto* found : Window->findChildren<CForm*>())
                form = found->isVisible() ? found : form;
            return form != nullptr;
        })) << "no form; "
            << Said();
        return form;
    }
    bool IsLogging() { return Doc().RawLog.Status().logOpen; }
    void StartLog() {
        Press(Do::StartLog);
        PressReturn(OpenForm()); // log as shown
        EXPECT_TRUE(Until([&] { return IsLogging(); })) << Said();
    }

    CTempFolder Temp;
    std::unique_ptr<CFileProfileStore> Profile;
    std::unique_ptr<CMainWindow> Window;
    std::unique_ptr<CDesk> Desk;
};

/// A pseudo-terminal behind which a weather station sends lines of the test.
class AWeatherStation {
  public:
    AWeatherStation() { Opened = Line.Open(Port) == 0; }

    static std::string Text(int number) {
        return "$WIMET,245," + std::to_string(number) + ".5,17.2,81,1013.2\r\n";
    }
    void Send(int first, int count) {
        for (int i = first; i < first + count; ++i) {
            std::size_t written = 0;
            EXPECT_EQ(Line.Write(AsBytes(Text(i)), 5000, written), 0U);
        }
    }

    CVirtualPort Line;
    std::string Port;
    bool Opened = false;
};

const std::string WeatherDefinition = Source + "/examples/practice/weather.tdf";

/// A session of a weather station on a port that is not there.
std::string Deck(const std::string& definition = WeatherDefinition) {
    return R"({"qorview-session": 1, "title": "Deck", "resources": [{"port": "/dev/ttyNONE", )"
           R"("instruments": [{"definition": ")" +
           definition + "\"}]}]}";
}

} // namespace

TEST_F(AtTheDesk, PracticeMovesCurvesAfterOneClick) {
    WithText<QPushButton>(Window.get(), "Practice")->click();
    CViewWindow* spectrum = Shown("spectral");
    const auto values = [&] {
        std::vector<double> found;
        for (CPlotWidget* plot : spectrum->ShownPlots())
            for (const PlotCurve& curve : plot->Page().curves)
                for (const PlotPoint& point : curve.points)
                    found.push_back(point.y);
        return found;
    };
    ASSERT_TRUE(Until([&] { return values().size() > 3; })) << Said();
    const std::vector<double> before = values();
    EXPECT_TRUE(Until([&] { return values() != before; })) << "the curve stands still";
    const TreePage tree = MakeTreePage(Doc(), Desk->Engine().Rates());
    ASSERT_EQ(tree.rows.size(), 2U);
    EXPECT_EQ(tree.rows[0].sign, Sign::Ok);
}

TEST_F(AtTheDesk, APortAnInstrumentAndALogGiveTheFramesThatWereSent) {
    AWeatherStation station;
    if (!station.Opened)
        GTEST_SKIP() << "no pseudo-terminals here";
    emit Window->FilesDropped({QString::fromStdString(WeatherDefinition)});
    CForm* form = OpenForm();
    Type(form, "Name of another port", station.Port);
    ASSERT_TRUE(form->OkButton()->isEnabled()) << form->OkButton()->toolTip().toStdString();
    PressReturn(form);
    ASSERT_TRUE(Until([&] {
        const SessionSnapshot now = Doc().Snapshot();
        return now.resources.size() == 1 && now.resources[0].figures.connected;
    })) << Said();
    station.Send(0, 3);
    ASSERT_TRUE(Until([&] { return Frames() == 3; }));

    Press(Do::StartLog); // the form named it
    ASSERT_TRUE(Until([&] { return IsLogging(); })) << Said();
    station.Send(3, 40);
    ASSERT_TRUE(Until([&] { return Frames() == 43; }));
    const std::string path = Doc().RawLog.Status().logFilePath;
    Press(Do::StopLog);
    ASSERT_TRUE(Until([&] { return !Doc().RawLog.Status().loggingActive; }));
    std::ostringstream log;
    log << std::ifstream(path, std::ios::binary).rdbuf();
    const std::string bytes = log.str();
    std::size_t at = 0;
    for (int i = 3; i < 43; ++i) {
        at = bytes.find(AWeatherStation::Text(i), at);
        ASSERT_NE(at, std::string::npos) << "frame " << i << " is not in " << path;
    }
    EXPECT_EQ(bytes.find(AWeatherStation::Text(2)), std::string::npos) << "sent before the log";
    EXPECT_EQ(bytes.size(), at + AWeatherStation::Text(42).size() + 7) << "and the last time tag";
}

TEST_F(AtTheDesk, APortThatIsLostAndBackIsToldWhileTheLogGoesOn) {
    Press(Do::Practice);
    ASSERT_TRUE(Until([&] { return Frames() > 20; }));
    StartLog();
    Press(Do::LostPort);
    EXPECT_TRUE(Until([&] { return WasSaid("Practice profiler"); })) << Said();
    EXPECT_EQ(Window->Strip().History().Current()->sign, Sign::Error);
    EXPECT_TRUE(IsLogging());
    Press(Do::LostPort);
    EXPECT_TRUE(Until([&] {
        const StripMessage* current = Window->Strip().History().Current();
        return current && current->sign == Sign::Ok;
    })) << Said();
    EXPECT_TRUE(IsLogging());
}

TEST_F(AtTheDesk, AReplayPlaysSeeksAndEnds) {
    Desk->Session().Replay(QString::fromStdString(Source + "/examples/cast.raw"));
    ASSERT_TRUE(Until([&] { return Frames() > 10; })) << Said();
    const auto file = [&] { return Doc().Snapshot().resources.at(0); };
    EXPECT_GE(file().instruments.size(), 6U) << "found beside the log";
    Press(Do::ReplayPlay);
    EXPECT_FALSE(file().playing);
    emit Window->Replay().SeekAsked(0.5);
    Press(Do::ReplayPlay);
    EXPECT_TRUE(Until([&] { return file().filePosition > file().fileSize / 2; }));
    emit Window->Replay().SpeedChosen(4);
    EXPECT_TRUE(Until([&] { return !file().playing; })) << "plays at full speed to its end";
    EXPECT_GT(file().filePosition + 100, file().fileSize);
}

TEST_F(AtTheDesk, WhatCannotBeOpenedIsSaidAndTheSessionStays) {
    Press(Do::Practice);
    ASSERT_TRUE(Until([&] { return Frames() > 0; }));
    const struct {
        const char* name;
        std::string content;
    } files[] = {
        {"half.qor", "{\"qorview-session\": 1, \"resources\": ["},
        {"later.qor", "{\"qorview-session\": 99}"},
        {"empty.qor", ""},
        {"noise.qor", std::string("\x00\xff{", 3)},
        {"picture.png", "\x89PNG\r\n"},
    };
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        emit Window->FilesDropped({QString::fromStdString(Temp.Put(file.name, file.content))});
        EXPECT_TRUE(WasSaid(file.name)) << Said();
        EXPECT_EQ(Doc().Snapshot().resources.size(), 2U);
    }
}

TEST_F(AtTheDesk, LogNowAndExitIfDoneNeedNobody) {
    AWeatherStation station;
    if (!station.Opened)
        GTEST_SKIP() << "no pseudo-terminals here";
    const std::string session = Temp.Put(
        "run.qor",
        "{\"qorview-session\": 1, \"resources\": [{\"port\": \"" + station.Port +
            "\", \"instruments\": [{\"definition\": \"" + WeatherDefinition +
            "\"}]}], \"log\": {\"directory\": \"" + Temp.Path +
            "\", \"naming\": \"file\", \"name\": \"run.raw\", \"duration\": \"00:00:02\"}}");
    DesktopCommand command;
    command.file = session;
    command.logNow = command.exitIfDone = true;
    Desk->Begin(command);
    ASSERT_TRUE(Until([&] { return IsLogging(); })) << Said();
    station.Send(0, 5);
    EXPECT_TRUE(Until([&] { return !Window->isVisible(); })) << Said();
    EXPECT_EQ(Desk->ExitStatus(), 0);
    const std::string log = Temp.Content("run.raw");
    for (int i = 0; i < 5; ++i)
        EXPECT_THAT(log, HasSubstr(AWeatherStation::Text(i)));
}

TEST_F(AtTheDesk, ClosingWhileALogIsOpenAsksAndDoesAsTold) {
    Press(Do::Practice);
    ASSERT_TRUE(Until([&] { return Frames() > 0; }));
    StartLog();
    const std::string path = Doc().RawLog.Status().logFilePath;
    const auto answer = [&](const char* button) {
        Window->close();
        ASSERT_TRUE(Until([&] { return Window->Boxes().IsOpen(); }));
        EXPECT_TRUE(Window->isVisible());
        WithText<QPushButton>(Window->Boxes().Current(), button)->click();
    };
    answer("No");
    Settle();
    EXPECT_TRUE(Window->isVisible());
    EXPECT_TRUE(IsLogging());
    answer("Yes");
    EXPECT_TRUE(Until([&] { return !Window->isVisible(); }));
    EXPECT_FALSE(IsLogging());
    EXPECT_GT(std::filesystem::file_size(path), 128U);
}

TEST_F(AtTheDesk, WhenTheSystemEndsTheProgramTheLogIsEndedUnasked) {
    Press(Do::Practice);
    ASSERT_TRUE(Until([&] { return Frames() > 0; }));
    StartLog();
    QTimer::singleShot(0, qApp, [] {
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
    });
    QTimer::singleShot(15'000, Window.get(), [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0) << "a question keeps it from ending";
    EXPECT_FALSE(IsLogging());
}

TEST_F(AtTheDesk, AnOpenQuestionKeepsNothingElseWaiting) {
    const auto connected = [&] {
        return std::ranges::count_if(Doc().Snapshot().resources, [](const ResourceStatus& port) {
            return port.figures.connected;
        });
    };
    Press(Do::Practice);
    ASSERT_TRUE(Until([&] { return connected() == 2; }));
    std::atomic<bool> answered = false;
    Desk->Engine().WorkOnPorts([&] { answered = Doc().User.AskYesNo("Are you sure?"); });
    ASSERT_TRUE(Until([&] { return Window->Boxes().IsOpen(); }));
    Press(Do::StartLog);
    CForm* form = OpenForm();
    Press(Do::StartLog);
    Settle();
    EXPECT_EQ(Window->findChildren<CForm*>().size(), 1) << "asked once";
    Window->Boxes().Current()->accept();
    ASSERT_TRUE(Until([&] { return answered.load(); }));

    Window->Actions()[Do::ConnectAll]->setChecked(true);
    Press(Do::ConnectAll);
    EXPECT_TRUE(Until([&] { return connected() == 0; })) << "while a log waits for its answer";
    EXPECT_TRUE(form->isVisible());
    PressReturn(form);
    EXPECT_TRUE(Until([&] { return IsLogging(); })) << Said();
    Settle();
    Desk->Engine().WorkOnLog([&] { Doc().RawLog.EndLogFile(true); });
    ASSERT_TRUE(
        Until([&] { return !IsLogging() && Window->Actions()[Do::StartLog]->isEnabled(); }));
    Press(Do::StartLog); // another run asks again
    EXPECT_TRUE(OpenForm()->isVisible());
}

TEST_F(AtTheDesk, NothingOfASessionOutlivesIt) {
    Press(Do::Practice);
    ASSERT_TRUE(Until([&] {
        Press(Do::Tare);
        return Doc().PressureTare.has_value();
    })) << Said();
    WithText<QPushButton>(&Window->Strip(), "Undo")->click();
    const CMessageHistory& said = Window->Strip().History();
    ASSERT_NE(said.Current(), nullptr) << "what was done is said";
    EXPECT_EQ(said.Current()->text, "Depth is measured without a tare.");
    Press(Do::Tare);
    Press(Do::AddInstrument);
    Press(Do::WatchMode);
    ASSERT_TRUE(Window->findChild<QFileDialog*>()->isVisible());
    ASSERT_TRUE(Window->IsWatch());

    Press(Do::CloseSession);
    Settle();
    EXPECT_EQ(Window->findChild<QFileDialog*>(), nullptr);
    EXPECT_FALSE(Window->IsWatch()) << "no key leads out of it";
    EXPECT_TRUE(Window->Start().isVisible());
    EXPECT_TRUE(!said.Current() || said.Current()->topic != "tare") << "to be undone elsewhere";
}

TEST_F(AtTheDesk, AnInstrumentWithoutANameHasItsMenu) {
    const std::string plain = Temp.Put("plain.cal", "INSTRUMENT NONE '' 0 AS 0 NONE\n"
                                                    "SPECIAL NONE 'SEABIRD_19SCT' 0 AS 0 NONE\n");
    Desk->Session().Open(QString::fromStdString(Temp.Put("plain.qor", Deck(plain))));
    const TreePage tree = MakeTreePage(Doc(), Desk->Engine().Rates());
    const auto row = std::ranges::find(tree.rows.at(0).rows, TreeKind::Instrument, &TreeRow::kind);
    emit Window->Tree().MenuAsked(row->id, {});
    for (QAction* entry :
         Window->findChild<QMenu*>(QString(), Qt::FindDirectChildrenOnly)->actions())
        if (entry->text() == QStringLiteral("Immersed (Wet)"))
            entry->trigger();
    EXPECT_TRUE(Doc().Snapshot().resources.at(0).instruments.at(0).immersed) << Said();
}

TEST_F(AtTheDesk, WhatIsAskedForTwiceIsDoneOnce) {
    Desk->Session().Open(QString::fromStdString(Temp.Put("deck.qor", Deck())));
    SerialResourceSettings other;
    other.portName = "/dev/ttyOTHER";
    Doc().AddSerialResource(RunPort(other, 1));
    const TreePage tree = MakeTreePage(Doc(), Desk->Engine().Rates());
    emit Window->Tree().MenuAsked(tree.rows.at(0).rows.at(0).id, {});
    CEvent release;
    Desk->Engine().WorkOnPorts([&] { release.Wait(15'000); });
    const auto* menu = Window->findChild<QMenu*>(QString(), Qt::FindDirectChildrenOnly);
    for (const char* wanted : {"/dev/ttyOTHER", "/dev/ttyOTHER", "Remove", "Remove"})
        for (QAction* entry : menu->findChildren<QAction*>())
            if (entry->text() == QString::fromLatin1(wanted))
                entry->trigger();
    release.Set();
    Desk->Engine().FinishWork();
    Settle();
    for (const ResourceStatus& port : Doc().Snapshot().resources)
        EXPECT_TRUE(port.instruments.empty()) << port.name;
    EXPECT_EQ(Window->Strip().History().Entries().size(), 0U) << Said();
}

TEST_F(AtTheDesk, AnAlarmIsSetTrippedAndSaid) {
    Press(Do::Practice);
    CViewWindow* window = Shown("package");
    const auto row = [&](const char* label) {
        const auto& rows = window->View().Pages().grid->rows;
        return static_cast<int>(std::ranges::find(rows, std::string(label), &GridRow::label) -
                                rows.begin());
    };
    ASSERT_TRUE(Until([&] { return row("TILT") < 1 && Frames() > 20; }));
    emit window->RangesAsked(row("TILT"));
    CForm* form = OpenForm();
    Type(form, "Alarm Ranges Min", "-1");
    Type(form, "Alarm Ranges Max", "180");
    Named<QCheckBox>(form, "Alarm Ranges Enable")->setChecked(true);
    PressReturn(form);
    EXPECT_TRUE(Until([&] { return WasSaid("is in its alarm range, -1.00 to 180.00."); }));
    EXPECT_EQ(window->View().Pages().grid->rows[0].sign, Sign::Alarm);
    EXPECT_EQ(Window->Strip().History().Current()->sign, Sign::Alarm);
    EXPECT_THAT(Desk->Windows().Alarmed(), testing::Contains("Shelf Profiler"));
    // The time series of the same instruments can shade it.
    CViewWindow* series = Shown("time-series");
    EXPECT_TRUE(Until(
        [&] { return ChooseEntry(series->View().ContextMenu(Doc()), "Alarm limits").empty(); }));
}

TEST_F(AtTheDesk, WindowsComeBackAsTheyWereWithTheirSession) {
    const std::string session = Temp.Put("kept.qor", Deck());
    Desk->Session().Open(QString::fromStdString(session));
    ASSERT_TRUE(Until([&] { return Desk->Session().IsOpen(); }));
    Shown("gps");
    Shown("weather")->close();
    CViewWindow* series = Shown("time-series");
    ASSERT_EQ(series->View().Select(Doc(), "1 min"), "");
    series->setFloating(true);
    series->setGeometry(300, 200, 500, 400);
    const auto kinds = [&] {
        std::multiset<std::string> found;
        for (const CViewWindow* window : Desk->Windows().Windows())
            found.emplace(window->Kind().name);
        return found;
    };
    ASSERT_TRUE(Until([&] { return !kinds().contains("weather"); }));
    const std::multiset<std::string> before = kinds();
    Press(Do::SaveSession);
    ASSERT_TRUE(Until([&] { return Temp.Content("kept.qor").find("gps") != std::string::npos; }))
        << Said();
    GetUp();
    SitDown();
    Desk->Session().Open(QString::fromStdString(session));
    ASSERT_TRUE(Until([&] { return kinds() == before; })) << Said();
    series = Shown("time-series");
    EXPECT_EQ(series->Kept().settings.ReadInteger("View\\Series", "Span", -1), 0);
    EXPECT_TRUE(series->isFloating());
    EXPECT_EQ(series->pos(), QPoint(300, 200));
    EXPECT_EQ(series->size(), QSize(500, 400));
}

TEST_F(AtTheDesk, SavingAsAsksAboutTheFileThatItWouldReplace) {
    Temp.Put("other.qor", "another's");
    Desk->Session().Open(QString::fromStdString(Temp.Put("kept.qor", Deck())));
    QString asked;
    const auto saveAs = [&](const char* name) {
        Press(Do::SaveSessionAs);
        QPointer<QFileDialog> dialog = Window->findChild<QFileDialog*>();
        QTimer::singleShot(0, dialog, [&asked] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                asked = box->text();
                box->button(QMessageBox::No)->click();
            }
        });
        auto* field = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QApplication::setActiveWindow(dialog); // what is typed counts where the keys go
        field->setFocus();
        field->setText(QString::fromStdString(Temp.Path + name));
        QTest::keyClick(field, Qt::Key_Return);
        if (dialog)
            dialog->reject();
        Settle();
    };
    saveAs("other"); // without its ending, as it is typed
    EXPECT_TRUE(asked.contains(QStringLiteral("other.qor"))) << asked.toStdString();
    EXPECT_EQ(Temp.Content("other.qor"), "another's");
    saveAs("third");
    EXPECT_THAT(Temp.Content("third.qor"), HasSubstr("Deck"));
}

TEST_F(AtTheDesk, ASessionThatEndedUnexpectedlyIsOfferedAgain) {
    const std::string session = Temp.Put("kept.qor", Deck());
    Desk->Session().Open(QString::fromStdString(session));
    StationInformation station;
    station.stationId = "S9";
    ASSERT_EQ(Doc().RawLog.SetStation(station), "");
    ASSERT_TRUE(
        Until([&] { return Temp.Content("unfinished.qor").find("S9") != std::string::npos; }));
    // The program dies: what it remembers is what stands in its files now.
    const std::string settings = Temp.Content("qorview.ini");
    const std::string copy = Temp.Content("unfinished.qor");
    GetUp();
    Temp.Put("qorview.ini", settings);
    Temp.Put("unfinished.qor", copy);
    SitDown();
    Desk->Session().BeginPractice(); // another session takes nothing of it away
    Desk->Session().CloseSession();
    WithText<QPushButton>(Window.get(), "Restore")->click();
    ASSERT_TRUE(Until([&] { return Doc().Snapshot().resources.size() == 1; })) << Said();
    EXPECT_EQ(Doc().Session.Title(), "Deck");
    EXPECT_EQ(Doc().Session.Path(), session);
    EXPECT_EQ(Doc().Station.stationId, "S9");
    Press(Do::CloseSession);
    ASSERT_TRUE(Window->Boxes().IsOpen()) << "the change is in no file yet";
    EXPECT_THAT(Said(), HasSubstr("was changed and not saved"));
    WithText<QPushButton>(Window->Boxes().Current(), "Yes")->click();
    EXPECT_EQ(Temp.Content("kept.qor"), Deck());
}

TEST_F(AtTheDesk, NoFrameIsLostWhileTheInterfaceIsBlocked) {
    AWeatherStation station;
    if (!station.Opened)
        GTEST_SKIP() << "no pseudo-terminals here";
    const ResourceId port = [&] {
        Desk->Session().NewSession();
        OpenForm()->reject();
        SerialResourceSettings settings;
        settings.portName = station.Port;
        return Doc().AddSerialResource(RunPort(settings, 1));
    }();
    ASSERT_TRUE(Doc().AddInstrument(WeatherDefinition, port).Added());
    ASSERT_EQ(Doc().ConnectResource(port), CommResult::Success);
    StartLog();
    // No event is handled from here on until the last frame is in the file.
    for (int burst = 0; burst < 20; ++burst)
        station.Send(burst * 50, 50);
    const auto logged = [&] { return Doc().RawLog.Status().framesLogged; };
    const std::int64_t until = Doc().Clock.MonotonicMilliseconds() + 10'000;
    CEvent never;
    while (logged() < 1000 && Doc().Clock.MonotonicMilliseconds() < until)
        never.Wait(5);
    EXPECT_EQ(logged(), 1000U);
}

} // namespace qor
