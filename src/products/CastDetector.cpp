// SPDX-License-Identifier: GPL-3.0-or-later
//
// A threshold with a speed, and a surface somewhat above it, so that waves at the threshold do not
// end a cast that they did not begin.
#include "products/CastDetector.h"

#include <cmath>

namespace qor {

namespace {

constexpr double BeginDepth = 1.0;   ///< dbar
constexpr double LeastSpeed = 0.1;   ///< dbar/s
constexpr double SpeedSeconds = 1.0; ///< over which the speed is taken: a fast sensor is noisy
/// Decided: "at the surface" is half way up to it, because a sensor without a tare never reads 0.
constexpr double SurfaceDepth = 0.5; ///< dbar

} // namespace

CastEvent CCastDetector::Take(double time, double depth) {
    if (!std::isfinite(time) || !std::isfinite(depth))
        return CastEvent::None;
    const Sample now{time, depth};
    if (Last && time < Last->time) {
        Passing.reset();
        Last.reset();
    }
    const CastEvent event = UnderWay() ? Follow(now) : Await(now);
    Last = now;
    return event;
}

CastEvent CCastDetector::Follow(const Sample& now) {
    if (now.depth > Latest->deepest) {
        Latest->deepest = now.depth;
        Latest->deepestTime = now.time;
    }
    WasDown = WasDown || now.depth >= BeginDepth;
    if (!WasDown || now.depth > SurfaceDepth)
        return CastEvent::None;
    End(now.time);
    return CastEvent::Ended;
}

CastEvent CCastDetector::Await(const Sample& now) {
    if (now.depth < BeginDepth) {
        Passing.reset();
        return CastEvent::None;
    }
    if (!Passing && Last && Last->depth < BeginDepth)
        Passing = Last;
    if (!Passing || now.time - Passing->time < SpeedSeconds)
        return CastEvent::None;
    const Sample from = *Passing;
    Passing.reset();
    if (!((now.depth - from.depth) / (now.time - from.time) > LeastSpeed))
        return CastEvent::None;
    Start(from, false);
    Follow(now);
    return CastEvent::Begun;
}

void CCastDetector::Start(const Sample& from, bool byHand) {
    const std::uint32_t number = Latest ? Latest->number + 1 : 1;
    Before = Latest;
    Latest = Cast{number, from.time, from.depth, from.time, {}, byHand};
    WasDown = false;
}

void CCastDetector::Begin(double time) {
    End(time);
    Passing.reset();
    Start({time, Last ? Last->depth : 0.0}, true);
}

void CCastDetector::End(double time) {
    if (UnderWay())
        Latest->end = time;
}

} // namespace qor
