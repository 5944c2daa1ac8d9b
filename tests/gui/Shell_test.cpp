// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/dialogs/Boxes.h"
#include "app/dialogs/Form.h"
#include "app/frame/MainWindow.h"
#include "app/look/Icons.h"
#include "gui/Desk.h"
#include "gui/SamplePages.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace qor {

namespace {

StripMessage Message(const char* topic, Sign sign, const char* text) {
    return {topic, sign, "09:41:07", text, {}};
}

std::string Shown(const CMessageHistory& history) {
    const StripMessage* current = history.Current();
    return current ? current->text : "";
}

} // namespace

TEST(Actions, EachHasIconKeysAndTipAndNoKeysTwice) {
    std::set<std::string> keys, texts;
    std::set<Do> actions;
    for (const ActionRow& row : ActionTable()) {
        SCOPED_TRACE(row.text);
        EXPECT_TRUE(actions.insert(row.action).second) << "twice in the table";
        EXPECT_THAT(IconNames, testing::Contains(testing::StrEq(row.icon)));
        EXPECT_STRNE(row.tip, "");
        const QKeySequence sequence(QString::fromLatin1(row.keys));
        EXPECT_EQ(sequence.count(), 1);
        EXPECT_TRUE(keys.insert(sequence.toString().toStdString()).second) << row.keys;
    }
    EXPECT_EQ(actions.size(), static_cast<std::size_t>(Do::About) + 1);
    for (char digit = '1'; digit <= '9'; ++digit)
        EXPECT_FALSE(keys.contains(std::string("Ctrl+") + digit)) << "goes to a window";
}

TEST(Actions, MnemonicsOfAMenuDiffer) {
    std::map<InMenu, std::set<QChar>> used;
    for (const ActionRow& row : ActionTable()) {
        const QString text = QString::fromLatin1(row.text);
        const qsizetype mark = text.indexOf(QLatin1Char('&'));
        ASSERT_GE(mark, 0) << row.text;
        EXPECT_TRUE(used[row.menu].insert(text[mark + 1].toLower()).second) << row.text;
    }
}

TEST(Actions, TheImpossibleIsGreyAndSaysWhy) {
    CMainWindow window(TestTheme());
    QAction* tare = window.Actions()[Do::Tare];
    window.Actions().SetWhyNot(Do::Tare, QStringLiteral("No profiler is connected."));
    EXPECT_FALSE(tare->isEnabled());
    EXPECT_TRUE(tare->toolTip().startsWith(QStringLiteral("No profiler")));
    window.Actions().SetWhyNot(Do::Tare, {});
    EXPECT_TRUE(tare->isEnabled());
    EXPECT_TRUE(tare->toolTip().contains(QStringLiteral("Ctrl+T")));
}

TEST(MessageHistory, TheWorstUnseenIsShownAndTheNewestOfSeveral) {
    CMessageHistory history;
    EXPECT_EQ(Shown(history), "");
    history.Post(Message("port", Sign::Error, "lost"));
    history.Post(Message("", Sign::None, "tare"));
    EXPECT_EQ(Shown(history), "lost");
    history.Post(Message("tilt", Sign::Alarm, "tilt"));
    EXPECT_EQ(Shown(history), "tilt");
    history.Post(Message("other", Sign::Alarm, "later"));
    EXPECT_EQ(Shown(history), "later");
    history.SeeCurrent();
    EXPECT_EQ(Shown(history), "tilt");
    history.Close("tilt");
    EXPECT_EQ(Shown(history), "lost");
    history.Post(Message("port", Sign::None, "back"));
    EXPECT_EQ(Shown(history), "back") << "takes the place of its topic";
    EXPECT_EQ(history.UnseenCount(), 2U);
    history.SeeAll();
    EXPECT_EQ(Shown(history), "");
    EXPECT_EQ(history.Entries().size(), 5U);
}

TEST(MessageHistory, IsBoundedAndLetsGoWhatWasSeenThenWhatIsLeastGrave) {
    CMessageHistory history;
    history.Post(Message("", Sign::Error, "fault"));
    for (std::size_t i = 0; i < 3 * CMessageHistory::Most; ++i)
        history.Post(Message("cable", Sign::Warning, "flaps"));
    history.Post(Message("", Sign::Ok, "word"));
    for (std::size_t i = 0; i < 3 * CMessageHistory::Most; ++i)
        history.Post(Message("", Sign::Warning, "unseen"));
    EXPECT_EQ(history.Entries().size(), CMessageHistory::Most);
    EXPECT_EQ(history.Entries()[0].message.text, "fault");
    EXPECT_EQ(history.Entries()[1].message.text, "unseen");
    EXPECT_EQ(history.UnseenCount(), CMessageHistory::Most);
}

TEST(MessageStrip, IsGoneWhenNothingIsUnseenAndTakesNoFocus) {
    CMainWindow window(TestTheme());
    window.ShowStart(false);
    window.show();
    QApplication::setActiveWindow(&window);
    window.Tree().setFocus();
    EXPECT_FALSE(window.Strip().isVisible());
    bool pressed = false;
    StripMessage message = Message("port", Sign::Error, "lost");
    message.buttons.push_back({"Show", [&pressed] { pressed = true; }});
    window.Strip().Post(message);
    Settle();
    EXPECT_TRUE(window.Strip().isVisible());
    EXPECT_TRUE(window.Tree().hasFocus());
    auto* button = window.Strip().findChild<QPushButton*>();
    ASSERT_NE(button, nullptr);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_TRUE(pressed);
    EXPECT_FALSE(window.Strip().isVisible());
}

TEST(ToolRow, StoppingTheLogTakesAHeldButton) {
    QAction action;
    QSignalSpy triggered(&action, &QAction::triggered);
    CToolRowButton button(TestTheme(), &action, QStringLiteral("Log"));
    button.show();
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(triggered.count(), 1);
    button.SetHold(60);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(triggered.count(), 1) << "a slip of the hand";
    QTest::mousePress(&button, Qt::LeftButton);
    EXPECT_TRUE(triggered.wait(2000));
    QTest::mouseRelease(&button, Qt::LeftButton);
    EXPECT_EQ(triggered.count(), 2);
}

TEST(ToolRow, RefreshesOfTheBannerDoNotTakeTheHandOffTheButton) {
    CMainWindow window(TestTheme());
    window.ShowStart(false);
    window.show();
    QSignalSpy asked(&window, &CMainWindow::Asked);
    CToolRowButton* button = nullptr;
    for (auto* found : window.findChildren<CToolRowButton*>())
        button = found->text() == QStringLiteral("Log") ? found : button;
    ASSERT_NE(button, nullptr);
    QTest::mousePress(button, Qt::LeftButton);
    window.ShowLog(SampleLog(LogState::Idle, RunKind::Live));
    QTest::mouseRelease(button, Qt::LeftButton);
    EXPECT_EQ(asked.count(), 1) << "a click that spans a refresh";

    window.ShowLog(SampleLog(LogState::Open, RunKind::Live));
    QTest::mousePress(button, Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            window.ShowLog(SampleLog(LogState::Open, RunKind::Live));
            return asked.count() == 2;
        },
        5000))
        << "held through refreshes";
    EXPECT_EQ(asked.back().front().value<Do>(), Do::StopLog);
}

TEST(Banner, SaysItsStateToAScreenReader) {
    CBanner banner(TestTheme());
    banner.ShowPage(SampleLog(LogState::Open, RunKind::Practice));
    EXPECT_EQ(banner.accessibleName().toStdString(),
              "PRACTICE  LOGGING  00:12:34. 2026-325-093015.raw   48 210 frames");
    banner.ShowPage(SampleLog(LogState::Failed, RunKind::Replay));
    EXPECT_TRUE(banner.accessibleName().startsWith(QStringLiteral("REPLAY x4  LOG FAILED")));
}

TEST(Form, OkIsPossibleOnlyWhenEveryFieldIsRight) {
    CForm form(TestTheme(), QStringLiteral("Speed"), nullptr);
    form.setAttribute(Qt::WA_DeleteOnClose, false);
    QLineEdit* edit = nullptr;
    edit = form.AddText(QStringLiteral("Speed"), QStringLiteral("fast"), [&edit] {
        return edit && edit->text() == QStringLiteral("57600") ? std::string() : "Give a number.";
    });
    form.Open();
    EXPECT_FALSE(form.OkButton()->isEnabled());
    EXPECT_EQ(edit->accessibleDescription(), QStringLiteral("Give a number."));
    const int height = form.sizeHint().height();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(edit, QStringLiteral("57600"));
    EXPECT_TRUE(form.OkButton()->isEnabled());
    EXPECT_EQ(form.sizeHint().height(), height) << "nothing moves under the hand";
}

TEST(Boxes, ComeOneAtATimeAndClosingIsNo) {
    QWidget window;
    window.show();
    CBoxes boxes(TestTheme(), &window);
    std::vector<std::string> told;
    QObject::connect(&boxes, &CBoxes::Appears,
                     [&told](const QString& text) { told.push_back(text.toStdString()); });
    std::vector<bool> answers;
    boxes.Tell(QStringLiteral("first"));
    boxes.Ask(QStringLiteral("second"), [&answers](bool yes) { answers.push_back(yes); });
    boxes.Ask(QStringLiteral("third"), [&answers](bool yes) { answers.push_back(yes); });
    EXPECT_THAT(told, testing::ElementsAre("first"));
    EXPECT_FALSE(boxes.Current()->isModal());
    boxes.Current()->accept();
    EXPECT_THAT(told, testing::ElementsAre("first", "second"));
    auto* buttons = boxes.Current()->findChild<QDialogButtonBox*>();
    EXPECT_TRUE(buttons->button(QDialogButtonBox::No)->isDefault());
    boxes.Current()->close();
    EXPECT_THAT(answers, testing::ElementsAre(false));
    boxes.Current()->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Yes)->click();
    EXPECT_THAT(answers, testing::ElementsAre(false, true));
    EXPECT_FALSE(boxes.IsOpen());
}

TEST(MainWindow, DocksComeBackWhereTheyWere) {
    CMemoryProfileStore store;
    const auto open = [](CMainWindow& main) {
        const auto add = [&](Do toggle, const char* name) {
            return main.AddDock(toggle, QString::fromLatin1(name), QString::fromLatin1(name),
                                new QWidget, Qt::LeftDockWidgetArea);
        };
        std::vector<CDisplayWindow*> docks{add(Do::LogDock, "one"), add(Do::CommentDock, "two"),
                                           add(Do::MonitorDock, "three")};
        main.Actions()[Do::MonitorDock]->setChecked(true);
        main.ShowStart(false);
        return docks;
    };
    QRect place;
    {
        CMainWindow main(TestTheme());
        main.resize(1300, 700);
        const auto docks = open(main);
        main.show();
        main.tabifyDockWidget(docks[0], docks[1]);
        docks[2]->setFloating(true);
        docks[2]->setGeometry(120, 80, 300, 200);
        Settle();
        place = docks[2]->geometry();
        main.SaveLayout(store);
    }
    CMainWindow main(TestTheme());
    const auto docks = open(main);
    EXPECT_TRUE(main.RestoreLayout(store));
    main.show();
    Settle();
    EXPECT_EQ(main.size(), QSize(1300, 700));
    EXPECT_EQ(main.tabifiedDockWidgets(docks[0]), QList<QDockWidget*>{docks[1]});
    EXPECT_TRUE(docks[2]->isFloating());
    EXPECT_EQ(docks[2]->geometry(), place);
    CMemoryProfileStore damaged;
    EXPECT_FALSE(main.RestoreLayout(damaged));
}

TEST(MainWindow, ADockThatIsHiddenStaysSoAndTheStartPageHasNone) {
    for (const bool leftFromStart : {false, true}) {
        SCOPED_TRACE(leftFromStart);
        CMemoryProfileStore store;
        const auto addLog = [](CMainWindow& main) {
            return main.AddDock(Do::LogDock, QStringLiteral("log"), QStringLiteral("log"),
                                new QWidget, Qt::LeftDockWidgetArea);
        };
        {
            CMainWindow main(TestTheme());
            addLog(main);
            main.ShowStart(false);
            main.show();
            main.Actions()[Do::TreeDock]->trigger();
            main.ShowStart(leftFromStart);
            main.SaveLayout(store);
        }
        CMainWindow main(TestTheme());
        const CDisplayWindow* log = addLog(main);
        main.show();
        EXPECT_TRUE(main.RestoreLayout(store));
        EXPECT_FALSE(log->isVisible() || main.Tree().isVisible()) << "beside the start page";
        QSignalSpy asked(&main, &CMainWindow::Asked);
        emit main.Tree().AddAsked();
        EXPECT_EQ(asked.count(), 0) << "there is no session";
        main.ShowStart(false);
        EXPECT_TRUE(log->isVisible());
        EXPECT_FALSE(main.Tree().isVisible() || main.Actions()[Do::TreeDock]->isChecked());
        emit main.Tree().AddAsked();
        EXPECT_EQ(asked.count(), 1);
    }
}

TEST(MainWindow, F6GoesRoundAndEachAreaIsReached) {
    CMainWindow main(TestTheme());
    main.ShowStart(false);
    main.Tree().ShowPage(SampleTree());
    main.resize(1300, 700);
    main.show();
    QApplication::setActiveWindow(&main);
    Settle();
    std::set<const QWidget*> reached;
    for (int i = 0; i < 6; ++i) {
        main.Actions()[Do::NextArea]->trigger();
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        reached.insert(QApplication::focusWidget());
    }
    EXPECT_TRUE(reached.contains(&main.Banner()));
    EXPECT_TRUE(reached.contains(&main.Tree()));
    EXPECT_GE(reached.size(), 3U);
}

TEST(MainWindow, ClosingCanBeRefused) {
    CMainWindow main(TestTheme());
    main.show();
    main.MayClose = [] { return false; };
    EXPECT_FALSE(main.close());
    main.MayClose = [] { return true; };
    EXPECT_TRUE(main.close());
}

TEST(CommandLine, TakesEveryFormOfASwitch) {
    const auto parse = [](std::vector<std::string> words) {
        words.insert(words.begin(), "qorview");
        return ParseDesktopCommand(words);
    };
    for (const char* form : {"--lognow", "-lognow", "/lognow", "-LogNow"})
        EXPECT_TRUE(parse({form}).logNow) << form;
    const DesktopCommand all = parse({"-exitifdone", "cruise.qor", "/LOGNOW"});
    EXPECT_TRUE(all.exitIfDone && all.logNow);
    EXPECT_EQ(all.file, "cruise.qor");
    EXPECT_EQ(all.fault, "");
    EXPECT_EQ(parse({"/home/me/a.qor"}).file, "/home/me/a.qor");
    EXPECT_NE(parse({"--lognov"}).fault, "");
    EXPECT_NE(parse({"a.qor", "b.qor"}).fault, "");
    EXPECT_NE(parse({"a.qor", "--practice"}).fault, "");
}

TEST(Language, TheGermanCatalogueHasEveryActionAndFitsItsPlaces) {
    auto* application = static_cast<QApplication*>(QCoreApplication::instance());
    if (!UseLanguage(*application, QStringLiteral("de")))
        GTEST_SKIP() << "built without lrelease";
    int same = 0;
    for (const ActionRow& row : ActionTable()) {
        const QString german = QCoreApplication::translate("qor", row.text);
        EXPECT_TRUE(german.contains(QLatin1Char('&'))) << row.text;
        same += german == QString::fromLatin1(row.text) ? 1 : 0;
        EXPECT_NE(QCoreApplication::translate("qor", row.tip), QString::fromLatin1(row.tip));
    }
    EXPECT_LE(same, 4) << "words that are the same in both languages";
    for (QTranslator* translator : application->findChildren<QTranslator*>())
        delete translator;
}

} // namespace qor
