// SPDX-License-Identifier: GPL-3.0-or-later
//
// The local time zone as Windows tells it. Called by CSystemClock about once a quarter hour, on any
// thread.
#include "platform/Clock.h"

#include <time.h>

namespace qor {

LocalOffset SystemLocalOffset(std::int64_t seconds) {
    __time64_t moment = seconds;
    struct tm local {};
    if (_localtime64_s(&local, &moment) != 0)
        return {};
    std::int64_t localSeconds =
        SecondsFromCalendar(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                            local.tm_min, local.tm_sec);
    return {static_cast<std::int16_t>((localSeconds - seconds) / 60), local.tm_isdst > 0};
}

} // namespace qor
