// SPDX-License-Identifier: GPL-3.0-or-later
//
// Output files: complete or not there, and never onto what has to stay.
#include "export/Output.h"

#include "fakes/TempFolder.h"

#include <functional>
#include <gmock/gmock.h>

namespace qor {
namespace {

class AnOutput : public testing::Test {
  protected:
    FaultReport Report = [this](const std::string& text) { Reports.push_back(text); };
    OutputState Open(const std::string& name, const OutputRules& rules) {
        return COutput(Report).Open(Temp.Path + name, rules).state;
    }
    bool Exists(const std::string& name) const { return FileExists(Temp.Path + name); }

    CTempFolder Temp;
    std::vector<std::string> Reports;
};

TEST_F(AnOutput, IsInItsPlaceOnlyWhenItIsComplete) {
    {
        COutput output(Report);
        ASSERT_TRUE(output.Open(Temp.Path + "new", {}).Good());
        output.Text("half ");
        EXPECT_TRUE(output.Flush());
        EXPECT_FALSE(Exists("new"));
        EXPECT_EQ(std::filesystem::file_size(Temp.Path + "new.part"), 5u) << "held: not to be read";
        output.Text("whole");
        EXPECT_TRUE(output.Finish().Good());
        EXPECT_EQ(Temp.Content("new"), "half whole");
    }
    {
        COutput unfinished(Report);
        ASSERT_TRUE(unfinished.Open(Temp.Path + "new", {.overwrite = true}).Good());
        unfinished.Text("lost");
    }
    EXPECT_EQ(Temp.Content("new"), "half whole");
    EXPECT_FALSE(Exists("new.part"));
    EXPECT_THAT(Reports, testing::IsEmpty());
}

TEST_F(AnOutput, ReplacesOnlyWhatItMay) {
    Temp.Put("table.csv", "precious");
    Temp.Put("empty", "");
    Temp.Put("cast.raw", "QORHDR NONE (MODE)\r\n");
    Temp.Put("readonly", "precious");
    Temp.Put("left", "");
    Temp.Put("left.part", "of a killed run");
    Temp.Put("rawleft", "");
    Temp.Put("rawleft.part", "QORHDR NONE (MODE)\r\n");
    Temp.Put("busy", "");
    Temp.Put("busy.part", "");
    ASSERT_EQ(SetReadOnly(Temp.Path + "readonly", true), FileCause::None);
    CFile held, beside;
    ASSERT_EQ(held.CreateExclusive(Temp.Path + "held"), FileCause::None);
    ASSERT_EQ(beside.CreateExclusive(Temp.Path + "busy.part"), FileCause::None);
    const OutputRules overwrite{.overwrite = true};
    const OutputRules input{.overwrite = true, .inputs = {Temp.Path + "none", Temp.Path + "empty"}};
    const struct {
        std::string name;
        OutputRules rules;
        OutputState state;
    } cases[] = {
        {"table.csv", {}, OutputState::Exists},
        {"table.csv", overwrite, OutputState::Good},
        {"empty", {}, OutputState::Good},
        {"./empty", input, OutputState::IsInput},
        {"cast.raw", {}, OutputState::IsRawLog},
        {"cast.raw", overwrite, OutputState::IsRawLog},
        {"cast.raw", {.overRawLogs = true}, OutputState::Exists},
        {"cast.raw", {.overwrite = true, .overRawLogs = true}, OutputState::Good},
        {"held", overwrite, OutputState::InUse},
        {"left", {}, OutputState::Good},
        {"left", {.inputs = {Temp.Path + "left.part"}}, OutputState::IsInput},
        {"rawleft", {}, OutputState::IsRawLog},
        {"rawleft", {.overRawLogs = true}, OutputState::Good},
        {"busy", {}, OutputState::InUse},
        {"readonly", overwrite, OutputState::Failed},
        {"", overwrite, OutputState::IsFolder},
        {"none/table.csv", {}, OutputState::Failed},
    };
    std::size_t failures = 0;
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        Temp.Put("left.part", "of a killed run");
        EXPECT_EQ(Open(row.name, row.rules), row.state);
        failures += row.state == OutputState::Failed;
        EXPECT_EQ(Reports.size(), failures); // a refusal is the caller's to say
        EXPECT_TRUE(Reports.empty() ||
                    Reports.back().find(": cannot be written. ") != std::string::npos);
    }
    EXPECT_EQ(Temp.Content("table.csv"), "precious");
}

TEST_F(AnOutput, KeepsItsResultWhenItsNameIsTakenMeanwhile) {
    Temp.Put("empty", "");
    Temp.Put("old", "mine");
    const struct {
        std::string name;
        OutputRules rules;
        std::string taken;
    } cases[] = {{"new", {}, "somebody else's"},
                 {"empty", {}, "somebody else's"},
                 {"old", {.overwrite = true}, "QORHDR NONE (MODE)\r\n"}};
    for (const auto& row : cases) {
        COutput output(Report);
        ASSERT_TRUE(output.Open(Temp.Path + row.name, row.rules).Good());
        output.Text("whole");
        Temp.Put(row.name, row.taken);
        EXPECT_EQ(output.Finish().state, OutputState::Failed);
        EXPECT_EQ(Temp.Content(row.name), row.taken);
        EXPECT_EQ(Temp.Content(row.name + ".part"), "whole");
        EXPECT_THAT(Reports.back(), testing::HasSubstr(row.name + ".part"));
    }
    EXPECT_EQ(Reports.size(), std::size(cases));
}

#if !defined(_WIN32)
TEST_F(AnOutput, GoesThroughNoLinkButIntoDevices) {
    std::filesystem::create_symlink(Temp.Path + "nowhere", Temp.Path + "link");
    std::filesystem::create_symlink("/dev/full", Temp.Path + "device");
    Temp.Put("precious", "kept");
    std::filesystem::create_symlink(Temp.Path + "precious", Temp.Path + "new.part");
    EXPECT_EQ(Open("link", {.overwrite = true}), OutputState::IsLink);
    EXPECT_EQ(Open("device", {.overwrite = true}), OutputState::IsLink);
    EXPECT_EQ(Open("new", {}), OutputState::Good);
    EXPECT_EQ(Temp.Content("precious"), "kept");

    COutput full(Report);
    ASSERT_TRUE(full.Open("/dev/full", {}).Good());
    full.Text("lost");
    EXPECT_EQ(full.Finish().state, OutputState::Failed);
    EXPECT_FALSE(full.Good());
    EXPECT_EQ(Reports.size(), 1U);
}
#endif

} // namespace
} // namespace qor
