// SPDX-License-Identifier: GPL-3.0-or-later
//
// Bytes that give no frame, by a manual clock and a scripted port: what is said, and what is kept.
#include "fakes/ScriptedPort.h"
#include "fakes/SessionFixture.h"
#include "session/EventAdvice.h"

namespace qor {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct ALineOfBytes {
    CPortScript Script;
};

class APortCapture : public ALineOfBytes, public ASession {
  protected:
    APortCapture() : ASession(Script.Factory()) { Add("PRO", Port); }
    ~APortCapture() override { Doc.DisconnectAll(); }

    void Connect(CaptureRule rule, std::uint64_t limit = CCaptureFile::DefaultLimit) {
        Doc.Captures.Begin(rule, limit);
        ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
        Reported();
    }
    /// What comes in a second's time, and what is said of it.
    std::string Receive(const std::string& bytes, int seconds = 1) {
        Clock.Advance(seconds * 1000);
        if (!bytes.empty()) {
            Script.Bytes(bytes);
            Script.Played();
        }
        Doc.Captures.Tend();
        return Reported();
    }
    std::string Kept() {
        Doc.DisconnectAll();
        Doc.Captures.Finish();
        const std::vector<CaptureStatus> files = Doc.Captures.Status();
        return files.size() == 1 ? Content(files[0].path) : Format("%zu files", files.size());
    }
    void LeadLogsNowhere() {
        LogNaming naming;
        naming.logDirectory = Folder + "none/";
        Set(&CQorViewDoc::Naming, naming);
    }
    const std::string Path = Folder + "2005-123-142310-PORT1.bin";
};

TEST_F(APortCapture, SaysOncePortAndCauseAndKeepsWhatCameUntilTheFirstFrame) {
    Connect(CaptureRule::Unframed);
    EXPECT_EQ(Receive("first;", 0), "");
    EXPECT_EQ(Receive("second;", 4), "");
    const std::string said = Receive("pro;");
    EXPECT_THAT(said, HasSubstr("PORT1: 17 bytes in 5 s and no frame of its instruments. The sync "
                                "header \"PRO\" stands there in other letters, as \"pro\""));
    EXPECT_THAT(said, HasSubstr("The bytes are kept in \"" + Path + "\"."));
    EXPECT_EQ(Receive("third;", 10), "");
    EXPECT_THAT(Receive(CounterFrame("PRO", 1)), HasSubstr("its first frame has come"));
    EXPECT_THAT(Receive("later;", 10), Not(HasSubstr("bytes in")));
    EXPECT_EQ(Kept(), "first;second;pro;third;" + CounterFrame("PRO", 1));
}

TEST_F(APortCapture, IsNotMadeWithoutNeed) {
    const struct {
        const char* what;
        std::vector<std::pair<std::string, int>> received; ///< and after how many seconds
    } cases[] = {
        {"a frame among other bytes", {{"junk", 0}, {CounterFrame("PRO", 1), 3}, {"junk", 9}}},
        {"noise once", {{"junk", 0}, {"", 60}}},
        {"nothing", {{"", 60}}},
    };
    for (const auto& one : cases) {
        Connect(CaptureRule::Unframed);
        for (const auto& [bytes, seconds] : one.received)
            EXPECT_EQ(Receive(bytes, seconds).find("no frame"), std::string::npos) << one.what;
        Doc.DisconnectAll();
    }
    EXPECT_THAT(Doc.Captures.Status(), IsEmpty());
}

TEST_F(APortCapture, IsMadeOfAllBytesWhereThatIsWanted) {
    Connect(CaptureRule::All);
    Receive(CounterFrame("PRO", 1));
    Receive("junk" + CounterFrame("PRO", 2));
    EXPECT_EQ(Kept(), CounterFrame("PRO", 1) + "junk" + CounterFrame("PRO", 2));
}

TEST_F(APortCapture, EndsAtItsLimitAndSaysSoOnce) {
    Connect(CaptureRule::All, 10);
    EXPECT_EQ(Receive("sevenby"), "");
    EXPECT_THAT(Receive("sevenby"), HasSubstr("takes no more"));
    EXPECT_EQ(Receive("sevenby"), "");
    EXPECT_EQ(Kept(), "sevenbysev");
    EXPECT_THAT(Reported(), HasSubstr("lacks 11 bytes"));
    EXPECT_EQ(Doc.Captures.Status()[0].unkept, 11u);
}

#if !defined(_WIN32) // where it cannot be taken away
TEST_F(APortCapture, ThatIsTakenAwayIsSaidAndItsBytesAreCounted) {
    Connect(CaptureRule::All);
    EXPECT_EQ(Receive("first;"), "");
    ASSERT_EQ(RemoveFile(Doc.Captures.Status()[0].path), FileCause::None);
    EXPECT_THAT(Receive("second;"), HasSubstr("was deleted, moved or cut by another program"));
    EXPECT_EQ(Receive("third;"), "");
    EXPECT_EQ(Doc.Captures.Status()[0].unkept, 19u);
}
#endif

TEST_F(APortCapture, LeavesWhatIsThereAloneAndFollowsNoLink) {
    Temp.Put("2005-123-142310-PORT1.bin", "precious");
    std::error_code refused; // without the right to make one there is one case less
    std::filesystem::create_symlink(Folder + "elsewhere", Folder + "2005-123-142310-PORT1-2.bin",
                                    refused);
    Connect(CaptureRule::All);
    Receive("bytes", 5);
    EXPECT_EQ(Kept(), "bytes");
    EXPECT_EQ(Content(Path), "precious");
    EXPECT_FALSE(std::filesystem::exists(Folder + "elsewhere"));
}

TEST_F(APortCapture, ThatCannotBeMadeIsSaidWithTheWarning) {
    LeadLogsNowhere();
    Connect(CaptureRule::Unframed);
    Receive("junk");
    EXPECT_THAT(Receive("junk", 5), HasSubstr("Its bytes cannot be kept in \"" + Folder + "none/"));
    EXPECT_EQ(Receive("junk", 5), "");
    EXPECT_FALSE(Doc.Captures.Status()[0].made);
}

TEST_F(APortCapture, ThatWasAskedForAndCannotBeMadeIsOneFaultAndItsBytesAreCounted) {
    LeadLogsNowhere();
    std::size_t faults = 0;
    Doc.Acquisition.OnEvent = [&faults](const Event& event) {
        const EventAdvice* row = AdviceOf(event.kind);
        faults += row && row->fault;
    };
    Connect(CaptureRule::All);
    EXPECT_THAT(Receive("junk"), HasSubstr("Its bytes cannot be kept in \"" + Folder + "none/"));
    Receive(CounterFrame("PRO", 1));
    EXPECT_EQ(faults, 1u);
    EXPECT_EQ(Doc.Captures.Status()[0].unkept, 10u);
    Doc.Acquisition.OnEvent = nullptr;
}

TEST_F(APortCapture, IsNotMadeWhereNobodyKeepsBytes) {
    Connect(CaptureRule::None);
    Receive("junk");
    EXPECT_THAT(Receive("junk", 5), HasSubstr("no frame of its instruments"));
    EXPECT_THAT(Doc.Captures.Status(), IsEmpty());
}

} // namespace
} // namespace qor
