// SPDX-License-Identifier: GPL-3.0-or-later
//
// Stamping of session-log entries and the choice of the session log's file.
#include "fakes/SessionFixture.h"

namespace qor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string Stamp = "2026-11-13  07:05:44> ";

TEST(SessionLogEntry, EveryLineIsStampedButContinuationsAndEmptyOnes) {
    CalendarTime local = CalendarFromSeconds(SecondsFromCalendar(2026, 11, 13, 7, 5, 44));
    struct {
        std::string message, expected;
    } cases[] = {
        {"A\r\n\tB\r\nC\r\n", Stamp + "A\r\n\tB\r\n" + Stamp + "C\r\n"},
        {"A\r\n\r\nC\r\n", Stamp + "A\r\n\r\n" + Stamp + "C\r\n"},
        {"\tA\r\n", Stamp + "\tA\r\n"},
        {"A\r\nlost", Stamp + "A\r\n"},
        {"A\nB\r\n", Stamp + "A\nB\r\n"},
        {"lost\n", ""},
    };
    for (const auto& row : cases)
        EXPECT_EQ(FormatSessionLogEntry(row.message, local), row.expected);
}

class ASessionLog : public ASession {
  protected:
    void Open(bool enabled = true) {
        Doc.SessionLog.SetFile(enabled, Folder);
        Doc.SessionLog.OpenSessionLog();
    }
    /// The log is closed when it is off and its directory has changed.
    void Close() {
        Doc.SessionLog.SetFile(false, Folder + "elsewhere" + PathSeparator());
        Doc.SessionLog.OpenSessionLog();
    }
};

TEST_F(ASessionLog, KeepsTheTextAndWritesTheSameBytes) {
    Open();
    EXPECT_EQ(Doc.SessionLog.FilePath(), Folder + "QorView.log");
    Doc.SessionLog.AddSessionLogEntry("A\r\n\tB\r\n");
    Doc.SessionLog.AddSessionLogEntry("no line end");
    Doc.SessionLog.AddSessionLogEntry("C\r\n");
    const std::string stamp = "2005-05-03  14:23:05> ";
    const std::string text = stamp + "A\r\n\tB\r\n" + stamp + "C\r\n";
    EXPECT_EQ(Doc.SessionLog.SessionLogText(), text);
    Close();
    EXPECT_EQ(Content(Folder + "QorView.log"), text);
    EXPECT_EQ(Doc.SessionLog.SessionLogText(text.size()), "");
}

TEST_F(ASessionLog, MemoryKeepsTheLatestMegabytesAndTheFileEverything) {
    Open();
    const std::string filler(1 << 20, 'x');
    std::size_t read = 0, all = 0;
    for (int i = 0; i < 9; ++i) {
        Doc.SessionLog.AddSessionLogEntry(filler + "\r\n");
        if (i == 2)
            all = Doc.SessionLog.ReadOn(read).size() * 3;
    }
    const std::string text = Doc.SessionLog.SessionLogText();
    EXPECT_THAT(text, testing::StartsWith("2005-05-03"));
    EXPECT_EQ(text.size(), all / 9 * 4) << "whole entries";
    EXPECT_EQ(Doc.SessionLog.ReadOn(read), text) << "what was not fetched in time is passed over";
    EXPECT_EQ(read, all);
    Doc.SessionLog.AddSessionLogEntry("A\r\n");
    EXPECT_THAT(Doc.SessionLog.ReadOn(read), testing::EndsWith("> A\r\n"));
    Close();
    EXPECT_EQ(Content(Folder + "QorView.log").size(), read);
}

TEST_F(ASessionLog, OfASessionThatIsOnlyLookedAtMakesNoFileUntilAPortIsConnected) {
    Doc.SessionLog.WaitsForOperator = true;
    Doc.SessionLog.SetFile(true, Folder);
    Doc.BeginSession("stranger.qor");
    Doc.SessionLog.AddSessionLogEntry("first\r\n");
    Doc.SessionLog.WaitForDisk();
    EXPECT_FALSE(FileExists(Folder + "QorView.log"));
    static_cast<void>(Doc.ConnectResource(ResourceId::None)); // there is none: it was tried
    Doc.SessionLog.AddSessionLogEntry("second\r\n");
    const std::string text = Doc.SessionLog.SessionLogText();
    Close();
    EXPECT_EQ(Content(Folder + "QorView.log"), text);
    EXPECT_NE(text.find("first"), std::string::npos);
}

TEST_F(ASessionLog, NinthNameIsTheLastAndATenthUserIsTold) {
    std::vector<CFile> others(8);
    for (int i = 0; i < 8; ++i)
        ASSERT_EQ(others[static_cast<std::size_t>(i)].CreateExclusive(
                      Folder + (i == 0 ? "QorView.log" : Format("QorView%d.log", i + 1))),
                  FileCause::None);
    Open();
    EXPECT_EQ(Doc.SessionLog.FilePath(), Folder + "QorView9.log");
    CScriptedUser late;
    SessionState session(Clock, late, Profile);
    CSessionLog log(session);
    log.SetFile(true, Folder);
    log.OpenSessionLog();
    EXPECT_EQ(log.FilePath(), "");
    EXPECT_THAT(late.TakeMessages(),
                ElementsAre("The maximum number of available session log files has been exceeded."
                            "\r\nNo session log file will be recorded."));
    log.AddSessionLogEntry("A\r\n");
    EXPECT_NE(log.SessionLogText(), "");
}

TEST_F(ASessionLog, ReadOnlyNameIsPassedOverAndAFreeOneTruncated) {
    Temp.Put("QorView.log", "old");
    Temp.Put("QorView2.log", "old");
    ASSERT_EQ(SetReadOnly(Folder + "QorView.log", true), FileCause::None);
    Open();
    EXPECT_EQ(Doc.SessionLog.FilePath(), Folder + "QorView2.log");
    Close();
    EXPECT_EQ(Content(Folder + "QorView2.log"), "");
    EXPECT_EQ(Content(Folder + "QorView.log"), "old");
}

TEST_F(ASessionLog, EarlierLogIsKeptUnderTheTimeOfItsBegin) {
    const struct {
        const char* content;
        const char* kept;
    } cases[] = {
        {"2026-11-13  07:05:44> A\r\n", "QorView-2026-317-070544.log"},
        {"2026-11-13  07:05:44> B\r\n", "QorView-2026-317-070544-2.log"},
        {"no stamp at all", "QorView-2005-123-142305.log"},
        {"short", "QorView-2005-123-142305-2.log"},
        {"2026-13-13  07:05:44> C\r\n", "QorView-2005-123-142305-3.log"},
    };
    for (const auto& c : cases) {
        Temp.Put("QorView.log", c.content);
        Open();
        Close();
        EXPECT_EQ(Content(Folder + c.kept), c.content);
        EXPECT_EQ(Content(Folder + "QorView.log"), "");
    }
}

TEST_F(ASessionLog, EarlierLogThatCannotBeRenamedIsPassedOver) {
    constexpr int suffixes = 99;
    const char* const evidence = "2026-11-13  07:05:44> A\r\n";
    for (int i = 1; i <= suffixes; ++i)
        Temp.Put("QorView-2026-317-070544" + (i == 1 ? "" : Format("-%d", i)) + ".log", "older");
    Temp.Put("QorView.log", evidence);
    Open();
    EXPECT_EQ(Doc.SessionLog.FilePath(), Folder + "QorView2.log");
    EXPECT_EQ(Content(Folder + "QorView.log"), evidence);
    Close();
}

TEST_F(ASessionLog, OtherFailureNamesThePathAndTheCause) {
    Doc.SessionLog.SetFile(true, Folder + "none" + PathSeparator());
    Doc.SessionLog.OpenSessionLog();
    EXPECT_THAT(User.TakeMessages(),
                ElementsAre("An error occured while opening the session log file\r\n\"" + Folder +
                            "none" + PathSeparator() +
                            "QorView.log\".\r\nAll or part of the path is invalid.\r\nNo session "
                            "log file will be recorded."));
}

TEST_F(ASessionLog, SwitchingOffKeepsTheFileUntilTheDirectoryChanges) {
    Open();
    Doc.SessionLog.AddSessionLogEntry("A\r\n");
    Open(false);
    Doc.SessionLog.AddSessionLogEntry("B\r\n");
    std::filesystem::create_directory(Folder + "other");
    Doc.SessionLog.SetFile(true, Folder + "other" + PathSeparator());
    Doc.SessionLog.OpenSessionLog();
    Doc.SessionLog.AddSessionLogEntry("C\r\n");
    Close();
    EXPECT_THAT(Content(Folder + "QorView.log"), testing::EndsWith("B\r\n"));
    EXPECT_THAT(Content(Folder + "other" + PathSeparator() + "QorView.log"),
                testing::EndsWith("C\r\n"));
    EXPECT_THAT(User.TakeMessages(), IsEmpty());
}

} // namespace
} // namespace qor
