// SPDX-License-Identifier: GPL-3.0-or-later
//
// The one file that changes with the day of the build (SOURCE_DATE_EPOCH, where that is set).
#include "platform/Clock.h"

namespace qor {

std::int64_t BuildTime() {
    constexpr int year = QORVIEW_BUILD_YEAR, dayOfYear = QORVIEW_BUILD_DAY;
    return SecondsFromCalendar(year, 1, 1, 0, 0, 0) + std::int64_t{dayOfYear - 1} * 86400;
}

} // namespace qor
