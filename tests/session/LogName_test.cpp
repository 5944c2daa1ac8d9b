// SPDX-License-Identifier: GPL-3.0-or-later
//
// Names of raw logs and how they move on.
#include "session/LogName.h"
#include "session/SessionState.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(LogName, TheNameFollowsTheModeAndMovesOnWithTheCastOrTheSequence) {
    using enum LogNamingMode;
    struct {
        LogNamingMode mode;
        std::string userName, cast;
        int sequence;
        std::string name, next;
    } cases[] = {
        {UserFileName, "cast", "", 0, "cast.raw", "cast.raw"},
        {UserFileName, "cast.bin", "", 0, "cast.bin", "cast.bin"},
        {UserFileName, "dir.d/cast", "", 0, "dir.d/cast.raw", "dir.d/cast.raw"},
        {UserFileName, "", "AA", 0, "", ""},
        {AutoCast, "cast", "AB", 5, "ST1-AB.raw", "ST1-AC.raw"},
        {AutoCast, "", "AZ", 5, "ST1-AZ.raw", "ST1-BA.raw"},
        {AutoCast, "", "ZZ", 5, "ST1-ZZ.raw", "ST1-[A.raw"},
        {AutoCast, "", "az", 5, "ST1-az.raw", "ST1-ba.raw"},
        {AutoCast, "", "zz", 5, "ST1-zz.raw", "ST1-aa.raw"},
        {AutoCast, "", "A", 5, "ST1-A.raw", "ST1-A.raw"},
        {AutoCast, "cast", "", 0, "", ""},
        {TimeStamp, "", "", 0, "(TIME STAMP)", "(TIME STAMP)"},
        {Sqm, "", "AA", 7, "sqm007.raw", "sqm008.raw"},
        {Sqm, "", "", 999, "sqm999.raw", "sqm999.raw"},
    };
    for (const auto& row : cases) {
        LogNaming naming;
        naming.logNamingMode = row.mode;
        naming.logUserFileName = row.userName;
        naming.sqmBaseName = "sqm";
        naming.sqmSequence = row.sequence;
        naming.logNameReady = naming.logNamePrompted = true;
        StationInformation station;
        station.stationId = "ST1-";
        station.cast = row.cast;
        EXPECT_EQ(LogDisplayName(naming, station), row.name);
        AdvanceLogFileName(naming, station);
        EXPECT_EQ(LogDisplayName(naming, station), row.next);
        EXPECT_FALSE(naming.logNameReady || naming.logNamePrompted);
    }
}

} // namespace
} // namespace qor
