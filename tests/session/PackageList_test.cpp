// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionFixture.h"
#include "fakes/DefinedInstrument.h"
#include "session/PackageList.h"

namespace qor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PackageListTest : public ASession {
  protected:
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

    CPackageList List{Doc};
};

TEST_F(PackageListTest, APackageBringsItsInstrumentsAndTakesThemAway) {
    CPackage* package = List.AddPackage(Loaded({"PRO", "REF"}), Port);
    ASSERT_NE(package, nullptr);
    EXPECT_THAT(package->Instruments, ElementsAre("PRO", "REF"));
    EXPECT_EQ(List.PackageOf("REF"), package);
    EXPECT_EQ(List.PackageOf("OTHER"), nullptr);
    EXPECT_THAT(List.InstrumentsOf(*package),
                ElementsAre(&Doc.FindInstrument("PRO")->Live, &Doc.FindInstrument("REF")->Live));

    User.AnswersYes = false;
    EXPECT_FALSE(List.RemovePackage(package));
    EXPECT_EQ(List.Count(), 1u);
    User.AnswersYes = true;
    EXPECT_TRUE(List.RemovePackage(package));
    EXPECT_THAT(User.TakeQuestions(),
                ElementsAre("Are you sure you want to remove the package Cast?",
                            "Are you sure you want to remove the package Cast?"));
    EXPECT_EQ(Doc.FindInstrument("PRO"), nullptr);
    EXPECT_FALSE(
        List.RemovePackage(package)); // not there: the session log says so, nobody is asked
    EXPECT_THAT(User.TakeQuestions(), IsEmpty());
}

TEST_F(PackageListTest, APackageWithoutInstrumentsIsNotKept) {
    ASSERT_NE(List.AddPackage(Loaded({"PRO"}), Port), nullptr);
    std::vector<RefusedMember> refused;
    EXPECT_EQ(List.AddPackage(Loaded({"PRO"}), Port, &refused), nullptr); // the name is taken
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_EQ(refused[0].name, "PRO.cal");
    EXPECT_EQ(refused[0].added.comm, CommResult::InstrumentAlreadyDefined);
    EXPECT_THAT(
        User.TakeMessages(),
        ElementsAre("The Instrument Package file: cast.sip \r\ncontains no valid Instruments."));
    EXPECT_EQ(List.Count(), 1u);
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
