// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/PracticeLine.h"

#include "platform/SystemText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qor {

namespace {

double StartOf(CClock& clock) {
    return SecondsOf(clock.Now());
}

} // namespace

CPracticeLine::CPracticeLine(CClock& clock, std::uint64_t seed)
    : Clock(clock), Begun(clock.MonotonicMilliseconds()), Simulator(seed, StartOf(clock), {}) {}

void CPracticeLine::Add(std::unique_ptr<CInstrument> instrument, const PlayedAs& as) {
    CLock lock(Guard);
    Simulator.Add(*instrument, as);
    Instruments.push_back(std::move(instrument));
}

void CPracticeLine::SetFaults(const SimulatedFaults& faults) {
    CLock lock(Guard);
    Simulator.SetFaults(faults);
}

void CPracticeLine::Unplug() {
    CLock lock(Guard);
    There = Listening = false;
    Input.clear();
    ++Connection;
}

void CPracticeLine::PlugIn() {
    CLock lock(Guard);
    There = true;
}

bool CPracticeLine::IsThere() const {
    CLock lock(Guard);
    return There;
}

SystemError CPracticeLine::Listen(std::uint32_t& connection) {
    CLock lock(Guard);
    if (!There)
        return SystemErrorNoDevice;
    if (Listening)
        return SystemErrorInUse;
    Listening = true;
    connection = Connection;
    Input.clear();
    Errors = 0;
    Simulator.SkipTo(Elapsed());
    return 0;
}

void CPracticeLine::Leave() {
    CLock lock(Guard);
    Listening = false;
}

bool CPracticeLine::Holds(std::uint32_t connection) const {
    CLock lock(Guard);
    return There && connection == Connection;
}

void CPracticeLine::SetInputQueue(std::size_t bytes) {
    CLock lock(Guard);
    InputQueue = bytes;
}

void CPracticeLine::Purge() {
    CLock lock(Guard);
    Simulator.SkipTo(Elapsed());
    Input.clear();
}

double CPracticeLine::Elapsed() const {
    return static_cast<double>(Clock.MonotonicMilliseconds() - Begun) / 1000.0;
}

/// Takes what has been sent by now. A reader that is too late loses bytes, as with a driver.
void CPracticeLine::Receive() {
    const double now = Elapsed();
    while (!Simulator.Empty() && Simulator.NextDue() <= now) {
        const SimulatedFrame frame = Simulator.Next();
        const std::size_t size = frame.noise.size() + frame.bytes.size();
        if (!Input.empty() && Input.size() + size > InputQueue) {
            Simulator.SkipTo(now);
            Errors |= LineInputOverflow;
            return;
        }
        Input.insert(Input.end(), frame.noise.begin(), frame.noise.end());
        Input.insert(Input.end(), frame.bytes.begin(), frame.bytes.end());
    }
}

bool CPracticeLine::HasInput() {
    CLock lock(Guard);
    Receive();
    return !Input.empty();
}

std::size_t CPracticeLine::Take(std::span<std::uint8_t> buffer) {
    CLock lock(Guard);
    Receive();
    const std::size_t count = std::min(buffer.size(), Input.size());
    const auto end = Input.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(Input.begin(), end, buffer.begin());
    Input.erase(Input.begin(), end);
    return count;
}

bool CPracticeLine::HasErrors() const {
    CLock lock(Guard);
    return Errors != 0;
}

std::uint32_t CPracticeLine::TakeErrors() {
    CLock lock(Guard);
    return std::exchange(Errors, 0);
}

int CPracticeLine::MillisecondsToNext(int most) const {
    CLock lock(Guard);
    if (Simulator.Empty())
        return most;
    const double rounding = 1e-6; // a due time is rarely a whole binary fraction
    const double wait = std::ceil((Simulator.NextDue() - Elapsed()) * 1000.0 - rounding);
    return static_cast<int>(std::clamp(wait, 1.0, static_cast<double>(most)));
}

} // namespace qor
