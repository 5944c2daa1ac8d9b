// SPDX-License-Identifier: GPL-3.0-or-later
//
// A clock that tests move by hand; sleeping moves it too. Any thread may ask.
#pragma once

#include "platform/Clock.h"

#include <atomic>

namespace qor {

class CManualClock : public CClock {
  public:
    /// Milliseconds since 1970.
    explicit CManualClock(std::int64_t start = 1'115'130'185'250) : Wall(start) {}

    FrameTime Now() override {
        std::int64_t now = Wall;
        FrameTime time;
        time.seconds = now / 1000;
        time.milliseconds = static_cast<std::uint16_t>(now % 1000);
        time.utcOffsetMinutes = UtcOffsetMinutes;
        time.known = true;
        return time;
    }
    std::int64_t MonotonicMilliseconds() override { return Monotonic; }
    void Sleep(int milliseconds) override { Advance(milliseconds); }

    void Advance(std::int64_t milliseconds) {
        Wall += milliseconds;
        Monotonic += milliseconds;
    }
    /// A step of the wall clock alone, as somebody sets it.
    void StepWall(std::int64_t milliseconds) { Wall += milliseconds; }

    /// Local time minus UTC.
    std::atomic<std::int16_t> UtcOffsetMinutes = 0;

  private:
    std::atomic<std::int64_t> Wall;
    std::atomic<std::int64_t> Monotonic = 0;
};

} // namespace qor
