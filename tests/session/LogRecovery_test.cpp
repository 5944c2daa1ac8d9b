// SPDX-License-Identifier: GPL-3.0-or-later
//
// Logs that a crash or a power cut left behind, and the run that comes after.
#include "fakes/CollectingSink.h"
#include "fakes/SessionFixture.h"
#include "session/LogRecovery.h"
#include "telemetry/RawLogFormat.h"

#if defined(__linux__)
#include <cerrno>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
bool NoLocks = false;
} // namespace

/// A file system may have none.
extern "C" int flock(int file, int operation) noexcept {
    if (!NoLocks)
        return static_cast<int>(::syscall(SYS_flock, file, operation));
    errno = ENOLCK;
    return -1;
}
#endif

namespace qor {
namespace {

using testing::HasSubstr;

std::string HeaderRecords(int count) {
    std::string records;
    for (int i = 0; i < count; ++i)
        records += AsText(MakeHeaderRecord(FormatHeaderLine(i, "x")));
    return records;
}

class ACutLog : public ASession {
  protected:
    ACutLog() { Add("PRO", Port); }
    std::string Record(int counter) {
        return CounterFrame("PRO", counter) + std::string(AsText(MakeTimeTag(Clock.Now())));
    }
    std::string Header = HeaderRecords(5);
};

TEST_F(ACutLog, IsFinishedByTheNextRunBehindItsLastWholeRecord) {
    const std::string one = Record(1), two = Record(2);
    const std::string tag(AsText(MakeTimeTag(Clock.Now())));
    const std::string stamp = MakeTimeStamp(LocalCalendar(Clock.Now()));
    const std::string large = Header + one + std::string(6u << 20, 'x') + one + two;
    const struct {
        std::string whole, rest;
        const char* said;
    } cases[] = {
        {Header + one + two, "", "ends with a whole record"},
        {Header + one, two.substr(0, 3), "within a record. Its last 3 bytes"},
        {Header + one, two.substr(0, 6), "no time tag. Its last 6 bytes"},
        {Header + one, two.substr(0, two.size() - 1), "last 12 bytes"},
        {Header + one + two, std::string(512, '\0'), "last 512 bytes"},
        {Header, one.substr(0, 4), "within a record. Its last 4 bytes"},
        {Header, one.substr(0, 6), "no time tag. Its last 6 bytes"},
        {Header + stamp, one.substr(0, 9), "no time tag. Its last 9 bytes"},
        {Header, std::string(300, '\0'), "last 300 bytes"},
        {Header, one.substr(0, 4) + std::string(300, '\0'), "Its last 304 bytes"},
        {Header + "PRO" + std::string(300, 'x'), "", "stays as it is"},
        {Header + one + stamp, "", "ends with a whole record"},
        {Header + one + stamp, stamp.substr(0, 9), "last 9 bytes"},
        {Header + one + stamp + two, "PR", "last 2 bytes"},
        {large, one.substr(0, 8), "last 8 bytes"},
        {Header + "nothing of ours", "", "stays as it is"},
        {Header + one + "OTHER" + tag + "OTHER" + tag, "", "stays as it is"},
    };
    int number = 0; // each has names of its own: Windows keeps those of an ended log a while
    for (const auto& c : cases) {
        const bool plain = ++number % 2 == 0; // a log is known by its header, not by its name
        const std::string name = std::to_string(number) + (plain ? ".dat" : ".raw");
        const std::string path = Temp.Put("cut" + name, c.whole + c.rest);
        ASSERT_TRUE(Begin("next" + name));
        EXPECT_THAT(Reported(), HasSubstr(c.said));
        EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
        EXPECT_EQ(Content(path), c.whole) << c.said;
        bool readOnly = false;
        EXPECT_EQ(IsReadOnly(path, readOnly), FileCause::None);
        EXPECT_EQ(readOnly, c.whole != Header);
        EXPECT_EQ(IsAbandonedLog(path), c.whole == Header) << "it blocks no name";
        ASSERT_EQ(FileExists(path + ".rest"), !c.rest.empty()) << c.said;
        if (!c.rest.empty()) {
            EXPECT_EQ(Content(path + ".rest"), c.rest);
        }
    }
}

TEST_F(ACutLog, TagsAreThoseOfTheLogWhateverTheRolesAreNow) {
    const InstrumentId pro = Doc.FindInstrument("PRO");
    const std::string frame = CounterFrame("PRO", 3);
    const std::pair<InstrumentId, std::string> cases[] = {
        {pro, Header + Record(1) + Record(2)},
        {pro, Header + frame + frame},
        {pro, Header + frame},
        {InstrumentId::None, Header + frame + frame}};
    for (const auto& [gps, whole] : cases) {
        ASSERT_EQ(Doc.SetRole(InstrumentRole::Gps, gps), "");
        Temp.Put("cut.raw", whole);
        CCollectingSink sink;
        CRecursiveLock lock(Doc.DocLock);
        FinishCutLogs(Folder, Doc.LoggedInstruments(), sink);
        EXPECT_EQ(Content(Folder + "cut.raw"), whole);
        ASSERT_EQ(SetReadOnly(Folder + "cut.raw", false), FileCause::None);
    }
}

TEST_F(ACutLog, NothingElseIsTouched) {
    const std::string torn = Header + Record(1) + "PRO";
    Temp.Put("protected.raw", torn);
    ASSERT_EQ(SetReadOnly(Folder + "protected.raw", true), FileCause::None);
    Temp.Put("capture.raw", Record(1) + "PRO");
    Temp.Put("header.raw", Header);
    CFile held;
    ASSERT_EQ(held.CreateNew(Folder + "held.raw"), FileCause::None);
    ASSERT_EQ(held.Write(AsBytes(torn)), FileCause::None);
    CCollectingSink sink;
    CRecursiveLock lock(Doc.DocLock);
    FinishCutLogs(Folder, Doc.LoggedInstruments(), sink);
    EXPECT_THAT(sink.Messages(), testing::IsEmpty());
    held.Close();
    for (const char* name : {"protected.raw", "held.raw"})
        EXPECT_EQ(Content(Folder + name), torn) << name;
}

#if defined(__linux__)
TEST_F(ACutLog, MayBeAnotherProgramsForAMinuteWhereThereAreNoLocks) {
    namespace fs = std::filesystem;
    NoLocks = true;
    for (const int minutes : {0, 2}) {
        const std::string torn = Temp.Put("torn.raw", Header + Record(1) + "PRO");
        const std::string empty = Temp.Put("empty.raw", Header);
        const std::string begun = Temp.Put("begun.raw", Header + "PRO");
        for (const std::string& path : {torn, empty, begun})
            fs::last_write_time(path,
                                fs::file_time_type::clock::now() - std::chrono::minutes(minutes));
        CCollectingSink sink;
        CRecursiveLock lock(Doc.DocLock);
        FinishCutLogs(Folder, Doc.LoggedInstruments(), sink);
        EXPECT_EQ(FileExists(torn + ".rest"), minutes > 0);
        EXPECT_EQ(IsAbandonedLog(empty), minutes > 0);
        EXPECT_EQ(IsAbandonedLog(begun), minutes > 0) << "its own cutting is no other program";
    }
    NoLocks = false;
}
#endif

TEST_F(ACutLog, OneWithoutAFrameBlocksNoName) {
    const struct {
        std::string content;
        bool abandoned;
    } cases[] = {
        {"", true},
        {"QORH", true},
        {Header, true},
        {Header + Header.substr(0, 127), true},
        {Header + "Q", true},
        {Header + Record(1), false},
        {Header + "QX", false},
        {"notes", false},
    };
    int number = 0;
    for (const auto& c : cases) {
        const std::string name = std::to_string(++number) + ".raw";
        EXPECT_EQ(IsAbandonedLog(Temp.Put(name, c.content)), c.abandoned) << c.content.size();
        EXPECT_EQ(Begin(name), c.abandoned) << c.content.size();
        Doc.RawLog.EndLogFile(true);
    }
}

} // namespace
} // namespace qor
