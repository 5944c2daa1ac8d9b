// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/SessionFixture.h"
#include "views/LinesView.h"
#include "views/LogBanner.h"
#include "views/LogView.h"
#include "views/MonitorView.h"
#include "views/NumberText.h"
#include "views/StatusView.h"

namespace qor {
namespace {

class ASessionView : public ASession {
  protected:
    /// A row and its further cells.
    static std::string Line(const GridRow& row) {
        std::string text =
            std::string(SignWord(row.sign)) + " " + row.label + ": " + row.value.text;
        for (const GridCell& cell : row.more)
            text += " " + cell.text;
        return text + "|";
    }
    std::string Rows(CView& view) {
        view.Refresh(Doc);
        std::string text;
        for (const GridRow& row : view.Pages().grid->rows)
            text += Line(row);
        return text;
    }
    /// Frames of a counter, four a second.
    void Send(const CQorViewIns& instrument, const std::vector<int>& counters) {
        for (const int counter : counters) {
            Clock.Advance(250);
            Offer(instrument, {CounterFrame(instrument.Name(), counter)});
        }
    }
};

TEST_F(ASessionView, TheStatusPutsTheWorstFirstAndCountsSinceABeginning) {
    CStatusView view(Doc);
    EXPECT_EQ(Rows(view), "off PORT1: not connected -- 0 -- -- -- 0 0 0 0 -- |");
    const CQorViewIns *well = Add("AAA", Port), *bad = Add("BBB", Port);
    Add("CCC", Port);
    Doc.SetImmersed("BBB", true);
    Send(*well, {1, 2, 3, 4, 5});
    Send(*bad, {1, 2, 4});
    EXPECT_EQ(Rows(view), "warning BBB: ok 4.0/6 3 4 1 -- 0 -- -- -- 0.0 s wet|"
                          "off PORT1: not connected -- 8 -- 1 -- 0 0 0 0 0.0 s |"
                          "off CCC: off --/6 0 -- 0 -- 0 -- -- -- -- dry|"
                          "ok AAA: ok 4.0/6 5 5 0 -- 0 -- -- -- 0.7 s dry|");
    EXPECT_FALSE(view.Refresh(Doc));
    EXPECT_EQ(view.Select(Doc, "Reset"), "");
    Clock.Advance(20'000);
    Send(*bad, {5});
    EXPECT_EQ(Rows(view), "stale AAA: stale 4.0/6 0 5 0 -- 0 -- -- -- 21 s dry|"
                          "off PORT1: not connected -- 1 -- 0 -- 0 0 0 0 0.0 s |"
                          "off CCC: off --/6 0 -- 0 -- 0 -- -- -- -- dry|"
                          "ok BBB: ok 0.1/6 1 5 0 -- 0 -- -- -- 0.0 s wet|");
    EXPECT_EQ(view.Select(Doc, "Since Log"), "");
    ASSERT_TRUE(Begin());
    view.Refresh(Doc);
    Send(*bad, {7, 8});
    EXPECT_NE(Rows(view).find("/6 2 8 1 -- 0"), std::string::npos) << Rows(view);
    EXPECT_NE(Rows(view).find("/6 0 5 0 -- 0"), std::string::npos) << Rows(view);
    EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
}

TEST_F(ASessionView, TheMonitorKeepsTheLatestFramesAndTheBadOnesLonger) {
    CMonitorView view(Doc);
    const CQorViewIns& ins = *Add("AAA", Port);
    view.Show("AAA");
    view.Refresh(Doc);
    Offer(ins, {CounterFrame("AAA", 1), CounterFrame("AAA", 3)});
    EXPECT_EQ(Rows(view), " 1: 17:23:05.250  6 41 41 41 01 02 01|"
                          "warning 2: 17:23:05.250 dropped 6 41 41 41 01 02 03|");
    const std::pair<const char*, const char*> forms[] = {
        {"Text", "AAA\\x01\\x02\\x03"},
        {"Fields", "VALUE=258.0000  FRAME(COUNTER)=3.0000"},
        {"Hexadecimal", "41 41 41 01 02 03"}};
    for (const auto& [form, content] : forms) {
        EXPECT_EQ(view.Select(Doc, form), "");
        view.Refresh(Doc);
        EXPECT_EQ(view.Pages().grid->rows.back().more[2].text, content);
    }
    EXPECT_EQ(view.Select(Doc, "Freeze"), "");
    for (int i = 4; i < 4 + static_cast<int>(CMonitorView::FramesKept) + 20; ++i)
        Offer(ins, {CounterFrame("AAA", i % 256)});
    view.Refresh(Doc);
    EXPECT_EQ(view.Pages().grid->rows.size(), 2u) << "it is frozen";
    view.Freeze(false);
    view.Refresh(Doc);
    const std::vector<GridRow>& rows = view.Pages().grid->rows;
    EXPECT_EQ(rows.size(), CMonitorView::FramesKept);
    EXPECT_EQ(rows.back().label, std::to_string(CMonitorView::FramesKept + 22));
    EXPECT_EQ(view.Select(Doc, "Only Bad Frames"), "");
    EXPECT_EQ(Rows(view), "warning 2: 17:23:05.250 dropped 6 41 41 41 01 02 03|");
    Offer(ins, {CounterFrame("AAA", 0) + std::string(10'000, 'x')});
    view.Refresh(Doc);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows.back().more[1].text, "10006");
    EXPECT_LT(rows.back().more[2].text.size(), 3 * CMonitorView::BytesKept + 10);
}

TEST_F(ASessionView, TheLogSaysWhatTheDiskStillTakes) {
    std::uint64_t space = 3'600'000'000;
    std::string asked;
    CLogView view(Doc, [&](const std::string& folder) {
        asked = folder;
        return std::optional(space);
    });
    const CQorViewIns& ins = *Add("AAA", Port);
    const auto cell = [&](const char* label) {
        view.Refresh(Doc);
        for (const GridRow& row : view.Pages().grid->rows)
            if (row.label == label)
                return std::string(SignWord(row.sign)) + " " + row.value.text;
        return std::string();
    };
    EXPECT_EQ(cell("State") + cell("Time left"), "off not logging --");
    Send(ins, {1}); // 6 bytes and a tag of 7 six times a second
    EXPECT_EQ(cell("Time left"), " over 9999 h left");
    ASSERT_TRUE(Begin());
    for (int i = 0; i < 80; ++i) // four a second
        Send(ins, {i});
    Doc.RawLog.OnLogTick();
    space = 1'000'000;
    Clock.Advance(10'000);
    EXPECT_EQ(cell("State"), "ok logging");
    EXPECT_EQ(cell("Frames"), " 80");
    EXPECT_EQ(cell("Elapsed"), " 00:00:20");
    EXPECT_EQ(view.Page().elapsed, "00:00:20");
    const auto size = static_cast<double>(std::filesystem::file_size(Folder + "cast.raw"));
    const double left = 1e6 / (size / 20.0);
    EXPECT_EQ(cell("Time left"), "warning " + TimeLeftText(left));
    EXPECT_EQ(asked, Folder);
    EXPECT_EQ(Doc.RawLog.SetDirectory(Folder + "next"), "");
    EXPECT_EQ(LogFolder(Doc), Folder) << "that of the open log";
    EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_THAT(LogStatusText(Doc), testing::HasSubstr(Folder + "next"));
}

TEST_F(ASessionView, TheBannerNagsWhenFramesComeAndNobodyLogs) {
    CLogView view(Doc, [](const std::string&) { return std::nullopt; });
    const CQorViewIns& ins = *Add("AAA", Port);
    for (int i = 0; i < 70 * 4; ++i) {
        Send(ins, {i % 256});
        view.Refresh(Doc);
        EXPECT_EQ(view.Page().nagging, i >= 240) << i;
    }
    Clock.Advance(11'000);
    view.Refresh(Doc);
    EXPECT_FALSE(view.Page().nagging) << "nothing comes any more";
}

TEST(FrameFlow, EndsInSilenceAndWithTheSession) {
    CFrameFlow flow;
    SessionSnapshot snapshot;
    ResourceStatus& port = snapshot.resources.emplace_back();
    const struct {
        std::uint64_t frames;
        std::int64_t now, since;
    } looks[] = {{0, 90'000, 0},  {5, 100'000, 0},    {6, 104'000, 4'000}, {6, 114'000, 14'000},
                 {6, 114'001, 0}, {7, 120'000, 0},    {9, 125'000, 5'000}, {2, 126'000, 0},
                 {3, 127'000, 0}, {4, 128'000, 1'000}};
    for (const auto& look : looks) {
        port.frames = look.frames;
        EXPECT_EQ(flow.Since(snapshot, look.now), look.since) << look.now;
    }
    port.isFile = true;
    EXPECT_EQ(flow.Since(snapshot, 129'000), 0) << "played";
}

TEST_F(ASessionView, LinesAreThoseOfTheSessionLogAndCommentsTheirs) {
    CLinesView all(false), comments(true);
    EXPECT_EQ(Rows(comments), "");
    EXPECT_EQ(comments.Pages().grid->head.sentence, "No comment yet.");
    const FrameTime key = Clock.Now();
    Clock.Advance(5000); // the operator writes
    AddComment(Doc, " first light\nwhales \n", key);
    AddComment(Doc, " \n ", key);
    Doc.Report("Something \xE9.\r\n\tcode\r\n");
    Reported();
    EXPECT_THAT(Rows(all),
                testing::EndsWith(" 14:23:10: Comment at 2005-05-03  14:23:05: first light|"
                                  " : \twhales| 14:23:10: Something \xC3\xA9.| : \tcode|"));
    EXPECT_EQ(Rows(comments), " : 2005-05-03| 14:23:05: first light| : \twhales|");
    for (std::size_t i = 0; i < CLinesView::MostLines + 10; ++i)
        Doc.Report("x\r\n");
    Reported();
    EXPECT_TRUE(all.Refresh(Doc));
    EXPECT_EQ(all.Pages().grid->rows.size(), CLinesView::MostLines);
    EXPECT_FALSE(all.Refresh(Doc));
}

TEST_F(ASessionView, TheTreeHasPortsPackagesAndRoles) {
    CFrameRates rates(Doc);
    const CQorViewIns& gps = *Add("GPS", Port);
    Add("LAZY", Port);
    Doc.SetRole(InstrumentRole::Gps, gps.Id);
    Doc.SetRole(InstrumentRole::Tracker, gps.Id);
    Send(gps, {1, 3, 4});
    const auto text = [&](const TreeRow& row) {
        return std::string(SignWord(row.sign)) + " " + row.name + " " + row.role + " " + row.rate +
               " " + row.age + " " + row.detail + "|";
    };
    const TreePage page = MakeTreePage(Doc, rates);
    ASSERT_EQ(page.rows.size(), 1u);
    std::string all = text(page.rows[0]);
    for (const TreeRow& row : page.rows[0].rows)
        all += text(row);
    EXPECT_EQ(all,
              "off PORT1 19200:8N1    not connected|"
              " discarded 0  lost 0  line errors 0    |"
              "warning GPS TG 4.0/6 0.0 s 3 frames, 1 dropped, checksum errors not checked, 0 "
              "value errors, dry|"
              "off LAZY  --/6 -- 0 frames, 0 dropped, checksum errors not checked, 0 value errors, "
              "dry|");
    EXPECT_EQ(MakeTreePage(Doc, rates), page);
    const std::vector<TreeRow> rows = MakeTreePage(Doc, rates, {"GPS", "PORT1"}).rows[0].rows;
    EXPECT_EQ(rows[1].sign, Sign::Alarm);
    EXPECT_EQ(rows[2].sign, Sign::Off);
}

TEST(LogPage, TellsTheStateOfLoggingFromItsFigures) {
    LogFacts facts;
    facts.nextName = "next.raw";
    facts.flowing = 59'999;
    EXPECT_EQ(MakeLogPage(facts).state, LogState::Idle);
    EXPECT_FALSE(MakeLogPage(facts).nagging);
    facts.flowing = 60'000;
    EXPECT_TRUE(MakeLogPage(facts).nagging);
    facts.run = RunKind::Practice;
    EXPECT_FALSE(MakeLogPage(facts).nagging);
    facts.log.runFailed = true;
    facts.cause = "no space";
    EXPECT_EQ(MakeLogPage(facts).cause, "no space");
    facts.log.waitingForNextLog = true;
    facts.log.logStartTime = {36'000, 0, 60, false, true};
    EXPECT_EQ(MakeLogPage(facts).next, "11:00:00");
    EXPECT_EQ(MakeLogPage(facts).file, "next.raw");
    facts.log.logOpen = true;
    facts.log.logElapsed = 45'296;
    facts.log.logFileDisplayName = "(TIME STAMP)";
    facts.log.logFilePath = "logs/now.raw";
    facts.log.framesLogged = 48'210;
    EXPECT_EQ(MakeLogPage(facts).elapsed, "12:34:56");
    EXPECT_EQ(MakeLogPage(facts).frames, CountText(48'210));
    EXPECT_EQ(MakeLogPage(facts).file, "now.raw");
    EXPECT_EQ(MakeLogPage(facts).left, "");
    const struct {
        std::uint64_t bytes;
        const char* left;
        Sign sign;
    } cases[] = {
        {763'200'000, "212 h left", Sign::None}, {21'600'000, "6 h left", Sign::None},
        {21'599'000, "5 h left", Sign::Warning}, {7'199'000, "119 min left", Sign::Warning},
        {1'799'000, "29 min left", Sign::Alarm}, {0, "0 min left", Sign::Alarm}};
    facts.bytesPerSecond = 1000.0;
    for (const auto& one : cases) {
        facts.freeBytes = one.bytes;
        EXPECT_EQ(MakeLogPage(facts).left, one.left);
        EXPECT_EQ(MakeLogPage(facts).leftSign, one.sign) << one.left;
    }
}

TEST(ReplayPage, StandsBetweenBeginningAndEnd) {
    ReplayPage page = MakeReplayPage({});
    EXPECT_EQ(page.speed + page.elapsed + page.length, "x1----");
    EXPECT_EQ(page.place, 0.0);
    page = MakeReplayPage({true, 0.0, 250, 1000, 754.0, 3730.0, {-1.0, 0.0, 373.0, 9999.0}});
    EXPECT_EQ(page.speed + " " + page.elapsed + " " + page.length, "full 00:12:34 01:02:10");
    EXPECT_EQ(page.place, 0.25);
    EXPECT_EQ(page.marks, (std::vector{0.0, 0.1}));
    EXPECT_EQ(MakeReplayPage({true, 0.5, 2000, 1000, {}, {}}).place, 1.0);
}

} // namespace
} // namespace qor
