// SPDX-License-Identifier: GPL-3.0-or-later
#include "telemetry/ByteTap.h"

#include <algorithm>
#include <utility>

namespace qor {

void CByteTap::KeepAll() {
    CLock lock(TapLock);
    All = Wanted = true;
    Open = !Stopped;
}

TapState CByteTap::State() const {
    CLock lock(TapLock);
    TapState state = Now;
    state.waiting = Waiting.size();
    return state;
}

std::vector<std::uint8_t> CByteTap::Peek(std::size_t most) const {
    CLock lock(TapLock);
    const std::size_t count = std::min(most, Waiting.size());
    return {Waiting.begin(), Waiting.begin() + static_cast<std::ptrdiff_t>(count)};
}

void CByteTap::TakeAll(std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    CLock lock(TapLock);
    Wanted = true;
    std::swap(bytes, Waiting);
}

void CByteTap::Stop() {
    CLock lock(TapLock);
    Stopped = true;
    Open = false;
    Forget();
}

void CByteTap::Forget() {
    std::vector<std::uint8_t>().swap(Waiting);
}

void CByteTap::BeginConnection() {
    CLock lock(TapLock);
    Now = {.unkept = Now.unkept, .connection = Now.connection + 1};
    if (!Wanted)
        Forget();
    Open = !Stopped;
}

void CByteTap::Take(ByteSpan bytes, std::int64_t now) {
    CLock lock(TapLock);
    if (Stopped)
        return;
    if (Now.bytes == 0)
        Now.firstByte = now;
    Now.latestByte = now;
    Now.bytes += bytes.size();
    const std::size_t kept = std::min(bytes.size(), Room - Waiting.size());
    Now.unkept += bytes.size() - kept;
    Waiting.insert(Waiting.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(kept));
}

void CByteTap::NoteFrame() {
    CLock lock(TapLock);
    Now.framed = true;
    if (All)
        return;
    Open = false;
    if (!Wanted)
        Forget();
}

} // namespace qor
