// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/DefinedInstrument.h"
#include "fakes/SessionFixture.h"
#include "session/PackageList.h"

namespace qor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PackageListTest : public ALine, public ASession {
  protected:
    PackageListTest() : ASession(Script.Factory()) {}

    /// A package of instruments by these names, as if it had been read.
    static LoadedPackage Loaded(const std::vector<std::string>& names) {
        LoadedPackage loaded;
        loaded.ok = true;
        loaded.path = "cast.sip";
        loaded.name = "Cast";
        for (const std::string& name : names)
            loaded.members.push_back({name + ".cal", Define(CounterDefinition(name))});
        return loaded;
    }

    CPackageList& List = Doc.Packages;

    std::size_t Count() {
        CRecursiveLock lock(Doc.DocLock);
        return Doc.PackageTable.size();
    }
};

TEST_F(PackageListTest, APackageBringsItsInstrumentsAndTakesThemAway) {
    const PackageId package = List.AddPackage(Loaded({"PRO", "REF"}), Port);
    ASSERT_NE(package, PackageId::None);
    {
        CRecursiveLock lock(Doc.DocLock);
        EXPECT_THAT(Doc.Find(package)->Instruments, ElementsAre("PRO", "REF"));
        EXPECT_THAT(Doc.Find(package)->Live, ElementsAre(&Find("PRO")->Live, &Find("REF")->Live));
    }
    // The package knows when one of its instruments goes, and when its name comes back.
    EXPECT_EQ(Doc.RemoveInstrument(Find("PRO")->Id), CommResult::Success);
    {
        CRecursiveLock lock(Doc.DocLock);
        EXPECT_THAT(Doc.Find(package)->Live, ElementsAre(nullptr, &Find("REF")->Live));
    }
    Add("PRO", Port);

    User.AnswersYes = false;
    EXPECT_FALSE(List.RemovePackage(package));
    EXPECT_EQ(Count(), 1u);
    User.AnswersYes = true;
    EXPECT_TRUE(List.RemovePackage(package));
    EXPECT_THAT(User.TakeQuestions(),
                ElementsAre("Are you sure you want to remove the package Cast?",
                            "Are you sure you want to remove the package Cast?"));
    EXPECT_EQ(Doc.FindInstrument("PRO"), InstrumentId::None);
    // Not there: the session log says so, nobody is asked.
    EXPECT_FALSE(List.RemovePackage(package));
    EXPECT_THAT(User.TakeQuestions(), IsEmpty());
}

TEST_F(PackageListTest, APackageThatGoesWhileItsRemovalIsAskedAboutIsNotMissed) {
    const PackageId package = List.AddPackage(Loaded({"PRO"}), Port);
    bool asked = false;
    User.WhileAsked = [&] {
        if (std::exchange(asked, true))
            return;
        EXPECT_TRUE(List.RemovePackage(package));
    };
    EXPECT_FALSE(List.RemovePackage(package));
    EXPECT_EQ(Count(), 0u);
}

TEST_F(PackageListTest, APackageWhoseFramesAreQueuedIsRemovedBehindThem) {
    const PackageId package = List.AddPackage(Loaded({"PRO", "REF"}), Port);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    ASSERT_TRUE(Begin());
    Script.Bytes(CounterFrame("PRO", 1) + CounterFrame("REF", 1) + CounterFrame("PRO", 2));
    Script.Played();
    EXPECT_TRUE(List.RemovePackage(package));
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_EQ(Doc.RawLog.Status().runFrames, 3u);
}

TEST_F(PackageListTest, CalibrationModeLocksTheList) {
    const PackageId package = List.AddPackage(Loaded({"PRO"}), Port);
    Set(&CQorViewDoc::CalibrationMode, true);
    EXPECT_EQ(List.AddPackage(Loaded({"REF"}), Port), PackageId::None);
    EXPECT_FALSE(List.AddFile(Temp.Put("NEW.cal", CounterDefinition("NEW")), Port));
    EXPECT_FALSE(List.RemovePackage(package));
    const std::string locked =
        "The Instrument Package List cannot be modified while in Calibration Mode.";
    EXPECT_THAT(User.TakeMessages(), ElementsAre(locked, locked, locked));
    EXPECT_THAT(User.TakeQuestions(), IsEmpty());
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Doc.FindInstrument("NEW"), InstrumentId::None);
}

TEST_F(PackageListTest, APackageWithoutInstrumentsIsNotKept) {
    ASSERT_NE(List.AddPackage(Loaded({"PRO"}), Port), PackageId::None);
    std::vector<RefusedMember> refused;
    EXPECT_EQ(List.AddPackage(Loaded({"PRO"}), Port, {}, &refused),
              PackageId::None); // the name is taken
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_EQ(refused[0].name, "PRO.cal");
    EXPECT_EQ(refused[0].comm, CommResult::InstrumentAlreadyDefined);
    EXPECT_THAT(
        User.TakeMessages(),
        ElementsAre("The Instrument Package file: cast.sip \r\ncontains no valid Instruments."));
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Doc.RemoveResource(Port), CommResult::Success);
    EXPECT_EQ(Count(), 0u) << "it goes with the port of its last instrument";
}

TEST_F(PackageListTest, APortRunsAtThePackagesSpeed) {
    LoadedPackage loaded;
    loaded.baudRate = "57600";
    EXPECT_EQ(PackagePort(loaded, {}, User).baudRate, 57600u);
    EXPECT_THAT(User.TakeMessages(), IsEmpty());
    loaded.baudRate = "UDRATE=9600";
    EXPECT_EQ(PackagePort(loaded, {}, User).baudRate, 19200u);
    EXPECT_EQ(User.TakeMessages().size(), 1u);
}

} // namespace
} // namespace qor
