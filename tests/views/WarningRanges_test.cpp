// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/CommaLocale.h"
#include "fakes/ScriptedUser.h"
#include "views/WarningRanges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qor {
namespace {

using testing::ElementsAre;

WarningRanges Parsed(std::string_view text) {
    WarningRanges ranges{1, 2, 3, 4, 1, 1};
    ParseWarningRanges(text, ranges);
    return ranges;
}

TEST(WarningRanges, AreStoredAtFixedPositionsAndReadByThemEvenWhereThatMisreads) {
    const CCommaLocale comma; // where there is one, it makes no difference
    const WarningRanges ranges{-5.25, 45, 45.125, 180, 0, 1};
    const std::string text = FormatWarningRanges(ranges);
    EXPECT_EQ(text, "-00005.25 000045.00 000045.12 000180.00 0 1");
    EXPECT_EQ(Parsed(text), (WarningRanges{-5.25, 45, 45.12, 180, 0, 1}));
    EXPECT_EQ(Parsed(""), (WarningRanges{1, 2, 3, 4, 1, 1}));
    // Two numbers of ten characters: what follows has moved by two.
    EXPECT_EQ(Parsed("1234567.89 1234567.89 000045.00 000180.00 1 1"),
              (WarningRanges{1234567.89, 1234567.89, 9, 0, 0, 1}));
    EXPECT_EQ(Parsed("000020.00"), (WarningRanges{20, 0, 0, 0, 0, 0}));
}

TEST(WarningRanges, ClassifyTheAlarmFirstAndBoundsAsOutside) {
    const WarningRanges both{20, 45, 40, 180, 1, 1};
    const WarningRanges disabled{20, 45, 40, 180, 0, 0};
    const struct {
        WarningRanges ranges;
        double value;
        WatchState state;
    } cases[] = {
        {both, 20, WatchState::Normal},
        {both, 20.01, WatchState::Warning},
        {both, 40, WatchState::Warning},
        {both, 40.01, WatchState::Alarm},
        {both, 180, WatchState::Normal},
        {disabled, 100, WatchState::Normal},
        {{20, 45, 45, 180, 1, 1}, 45, WatchState::Normal},
    };
    for (const auto& one : cases)
        EXPECT_EQ(Classify(one.ranges, one.value), one.state) << one.value;
}

TEST(AncWarningsDialog, RefusesRangesWhoseMinimumIsNotBelowTheMaximum) {
    using Shown = std::vector<std::string>;
    const Shown warning{
        "The Warning Range minimum value cannot\nbe greater than the maximum value."};
    const Shown alarm{"The Alarm Range minimum value cannot be\ngreater than the maximum value."};
    const struct {
        const char *warnMin, *warnMax, *alarmMin, *alarmMax;
        Shown shown;
    } cases[] = {
        {"2", "2", "5", "4", warning},
        {"1", "2", "4", "4", alarm},
        {"1", "", "4", "5", warning},
        {" 1.5", "2 deg", "4", "5e1", {}},
    };
    for (const auto& one : cases) {
        WarningRanges ranges{20, 45, 45, 180, 1, 0};
        CAncWarningsDlg dialog(ranges, "TILT");
        EXPECT_EQ(dialog.Caption(), "Ancillary Data Alarms -TILT");
        EXPECT_TRUE(dialog.WarnEnabled && !dialog.AlarmEnabled);
        dialog.WarnMin = one.warnMin;
        dialog.WarnMax = one.warnMax;
        dialog.AlarmMin = one.alarmMin;
        dialog.AlarmMax = one.alarmMax;
        CScriptedUser user;
        const bool accepted = dialog.Accept(user, ranges);
        EXPECT_EQ(user.TakeMessages(), one.shown);
        EXPECT_EQ(accepted, one.shown.empty());
        EXPECT_EQ(ranges, accepted ? (WarningRanges{1.5, 2, 4, 50, 1, 0})
                                   : (WarningRanges{20, 45, 45, 180, 1, 0}));
    }
}

} // namespace
} // namespace qor
