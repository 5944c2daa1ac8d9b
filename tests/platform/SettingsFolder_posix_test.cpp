// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which variable of the environment decides where settings stand.
#if !defined(_WIN32)
#include "platform/SettingsFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace qor {
namespace {

void Set(const char* name, const char* value) {
    if (value)
        ::setenv(name, value, 1);
    else
        ::unsetenv(name);
}

TEST(SettingsFolder, TheProgramsOwnVariableComesFirstThenTheConvention) {
    struct {
        const char *own, *config, *home, *folder;
    } cases[] = {
        {"/q", "/x", "/h", "/q/"},
        {"/q/", nullptr, nullptr, "/q/"},
        {"", "/x", "/h", "/x/qorview/"},
        {nullptr, "x", "/h", "/h/.config/qorview/"},
        {nullptr, nullptr, "/h/", "/h/.config/qorview/"},
        {nullptr, nullptr, nullptr, ""},
    };
    const char* names[] = {"QORVIEW_HOME", "XDG_CONFIG_HOME", "HOME"};
    std::string before[3];
    for (int i = 0; i < 3; ++i)
        if (const char* value = std::getenv(names[i]))
            before[i] = value;
    for (const auto& row : cases) {
        Set(names[0], row.own);
        Set(names[1], row.config);
        Set(names[2], row.home);
        EXPECT_EQ(SettingsFolder(), row.folder);
    }
    for (int i = 0; i < 3; ++i)
        Set(names[i], before[i].empty() ? nullptr : before[i].c_str());
}

} // namespace
} // namespace qor
#endif
