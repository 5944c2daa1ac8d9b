// SPDX-License-Identifier: GPL-3.0-or-later
//
// The stretch of time of which frames are wanted, in the times that results show. Pure; any thread.
#pragma once

#include "platform/Clock.h"

#include <optional>

namespace qor {

struct TimeWindow {
    std::optional<std::int64_t> from = {}; ///< seconds since 1970 of the shown calendar
    std::optional<std::int64_t> to = {};   ///< the first second that is not wanted any more

    bool IsAll() const { return !from && !to; }
    bool IsEmpty() const { return from && to && *from >= *to; }
    /// `utcOffset`: minutes that the log's times are ahead of UTC, where that is shown. A frame
    /// without a time lies in no window but all.
    bool Has(const FrameTime& time, std::optional<int> utcOffset) const {
        if (IsAll())
            return true;
        const int shift = time.utcOffsetMinutes - utcOffset.value_or(0);
        const std::int64_t shown = time.seconds + std::int64_t{shift} * 60;
        return time.known && (!from || shown >= *from) && (!to || shown < *to);
    }
};

} // namespace qor
