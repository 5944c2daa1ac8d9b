// SPDX-License-Identifier: GPL-3.0-or-later
//
// What Windows keeps for a user: texts in the registry, file types, and where the settings stand.
#if defined(_WIN32)
#include "platform/FileTypes.h"
#include "platform/Registry_win32.h"
#include "platform/SettingsFolder.h"
#include "platform/Win32Support.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace qor {
namespace {

const std::string Root = "Software\\QorViewTest";

class Registry : public testing::Test {
  protected:
    void SetUp() override { TearDown(); }
    void TearDown() override { EXPECT_EQ(RemoveRegistryKey(Root), FileCause::None); }
};

TEST_F(Registry, TextsAreFoundWhereTheyWereWritten) {
    const std::string sea = "\xE6\xB5\xB7 \xC3\xA4";
    ASSERT_EQ(WriteRegistry(Root, "", "its own"), FileCause::None);
    ASSERT_EQ(WriteRegistry(Root + "\\View1\\" + sea, sea, std::string(70000, 'x')),
              FileCause::None);
    std::vector<RegistryText> texts;
    ASSERT_EQ(ReadRegistry(Root, texts), FileCause::None);
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts[0].key + "|" + texts[0].name + "|" + texts[0].text, "||its own");
    EXPECT_EQ(texts[1].key, "View1\\" + sea);
    EXPECT_EQ(texts[1].name, sea);
    EXPECT_EQ(texts[1].text, std::string(70000, 'x'));
    EXPECT_EQ(ReadRegistryText(Root, ""), "its own");
    EXPECT_EQ(RemoveRegistryText(Root, ""), FileCause::None);
    EXPECT_EQ(RemoveRegistryText(Root, ""), FileCause::None);
    EXPECT_EQ(ReadRegistryText(Root, ""), std::nullopt);
    ASSERT_EQ(ReadRegistry(Root + "\\nothing here", texts), FileCause::None);
    EXPECT_TRUE(texts.empty());
}

TEST_F(Registry, FileTypesLeaveToOthersWhatIsTheirs) {
    constexpr FileType Types[] = {{".qortest1", "QorViewTest.One", "One", true},
                                  {".qortest2", "QorViewTest.Two", "Two", true},
                                  {".qortest3", "QorViewTest.Two", "Two", false}};
    const std::string classes = "Software\\Classes\\";
    ASSERT_EQ(WriteRegistry(classes + ".qortest2", "", "Others.File"), FileCause::None);
    const auto programs = [&] {
        std::string all;
        for (const FileType& type : Types)
            all += ReadRegistryText(classes + type.extension, "").value_or("-") + ' ';
        return all;
    };
    ASSERT_EQ(RegisterFileTypes(Types), FileCause::None);
    EXPECT_EQ(programs(), "QorViewTest.One Others.File - ");
    EXPECT_EQ(ReadRegistryText(classes + "QorViewTest.One\\shell\\open\\command", ""),
              '"' + ProgramPath() + "\" \"%1\"");
    for (const FileType& type : Types)
        EXPECT_EQ(ReadRegistryText(classes + type.extension + "\\OpenWithProgids", type.id), "");
    ASSERT_EQ(UnregisterFileTypes(Types), FileCause::None);
    ASSERT_EQ(UnregisterFileTypes(Types), FileCause::None);
    EXPECT_EQ(programs(), "- Others.File - ");
    EXPECT_EQ(ReadRegistryText(classes + "QorViewTest.One", ""), std::nullopt);
    for (const FileType& type : Types) {
        EXPECT_EQ(ReadRegistryText(classes + type.extension + "\\OpenWithProgids", type.id),
                  std::nullopt);
        EXPECT_EQ(RemoveRegistryKey(classes + type.extension), FileCause::None);
    }
}

TEST(SettingsFolder, AFileBesideTheProgramIsPreferredToTheRegistry) {
    const std::string program = ProgramPath();
    const std::string folder = program.substr(0, program.rfind('\\') + 1);
    EXPECT_FALSE(SettingsInFile());
    EXPECT_TRUE(SettingsFolder().ends_with("\\QorView\\")) << SettingsFolder();
    const std::filesystem::path settings = WidePath(folder + "qorview.ini");
    std::ofstream(settings).close();
    EXPECT_TRUE(SettingsInFile());
    EXPECT_EQ(SettingsFolder(), folder);
    std::filesystem::remove(settings);
}

} // namespace
} // namespace qor
#endif
