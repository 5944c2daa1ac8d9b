// SPDX-License-Identifier: GPL-3.0-or-later
//
// The local time zone as POSIX tells it. Called by CSystemClock about once a quarter hour, on any
// thread.
#include "platform/Clock.h"

#include <time.h>

namespace qor {

LocalOffset SystemLocalOffset(std::int64_t seconds) {
    // localtime_r need not look whether the zone was changed since the program began.
    tzset();
    auto moment = static_cast<time_t>(seconds);
    struct tm local {};
    if (localtime_r(&moment, &local) == nullptr)
        return {};
    return {static_cast<std::int16_t>(local.tm_gmtoff / 60), local.tm_isdst > 0};
}

} // namespace qor
