// SPDX-License-Identifier: GPL-3.0-or-later
//
// Names of raw logs and how they move on.
#include "session/LogName.h"
#include "session/SessionState.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(LogName, DisplayNameFollowsTheMode) {
    struct {
        LogNamingMode mode;
        std::string userName, station, cast;
        int sequence;
        std::string expected;
    } cases[] = {
        {LogNamingMode::UserFileName, "cast", "", "", 0, "cast.raw"},
        {LogNamingMode::UserFileName, "cast.bin", "", "", 0, "cast.bin"},
        {LogNamingMode::UserFileName, "dir.d/cast", "", "", 0, "dir.d/cast.raw"},
        {LogNamingMode::UserFileName, "", "ST1", "AA", 0, ""},
        {LogNamingMode::AutoCast, "cast", "ST1-", "AB", 0, "ST1-AB.raw"},
        {LogNamingMode::AutoCast, "", "", "AB", 0, "AB.raw"},
        {LogNamingMode::AutoCast, "cast", "ST1", "", 0, ""},
        {LogNamingMode::TimeStamp, "", "", "", 0, "(TIME STAMP)"},
        {LogNamingMode::Sqm, "", "", "", 7, "sqm007.raw"},
        {LogNamingMode::Sqm, "", "", "", 999, "sqm999.raw"},
    };
    for (const auto& row : cases) {
        LogNaming naming;
        naming.logNamingMode = row.mode;
        naming.logUserFileName = row.userName;
        naming.sqmBaseName = "sqm";
        naming.sqmSequence = row.sequence;
        StationInformation station;
        station.stationId = row.station;
        station.cast = row.cast;
        EXPECT_EQ(LogDisplayName(naming, station), row.expected);
    }
}

TEST(LogName, AdvancingCountsCastsAndSequencesAndForgetsTheAcceptedName) {
    struct {
        LogNamingMode mode;
        std::string cast, nextCast;
        int sequence, nextSequence;
    } cases[] = {
        {LogNamingMode::AutoCast, "AA", "AB", 5, 5},
        {LogNamingMode::AutoCast, "AZ", "BA", 5, 5},
        {LogNamingMode::AutoCast, "ZZ", "[A", 5, 5},
        {LogNamingMode::AutoCast, "A", "A", 5, 5},
        {LogNamingMode::Sqm, "AA", "AA", 0, 1},
        {LogNamingMode::Sqm, "AA", "AA", 998, 999},
        {LogNamingMode::Sqm, "AA", "AA", 999, 999},
        {LogNamingMode::UserFileName, "AA", "AA", 5, 5},
    };
    for (const auto& row : cases) {
        LogNaming naming;
        naming.logNamingMode = row.mode;
        naming.sqmSequence = row.sequence;
        naming.logNameReady = naming.logNamePrompted = true;
        StationInformation station;
        station.cast = row.cast;
        AdvanceLogFileName(naming, station);
        EXPECT_EQ(station.cast, row.nextCast);
        EXPECT_EQ(naming.sqmSequence, row.nextSequence);
        EXPECT_FALSE(naming.logNameReady || naming.logNamePrompted);
    }
}

} // namespace
} // namespace qor
