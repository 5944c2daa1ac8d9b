// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileErrorText.h"

#include <gtest/gtest.h>

#include <string>

namespace qor {
namespace {

TEST(FileErrorText, TheThreeTablesDifferInTheirLineEndAndFourTexts) {
    for (std::uint32_t number = 0; number < 17; ++number) {
        const auto cause = static_cast<FileCause>(number);
        const std::string log(GetFileErrorText(cause));
        const std::string definition(DefinitionFileErrorText(cause));
        const std::string resource(ResourceFileErrorText(cause));
        EXPECT_FALSE(log.empty()) << number;
        EXPECT_EQ(log + "\r\n" == definition, number != 11) << number;
        EXPECT_EQ(definition == resource, number < 15) << number;
    }
    EXPECT_EQ(DefinitionFileErrorText(FileCause::SharingViolation),
              "SHARE.EXE was not loaded, or a shared region was locked.\r\n");
    EXPECT_EQ(GetFileErrorText(static_cast<FileCause>(15)), "An unknown file error orrured.");
    EXPECT_EQ(ResourceFileErrorText(static_cast<FileCause>(~0U)),
              "An unknown file error occured.\r\n");
}

} // namespace
} // namespace qor
