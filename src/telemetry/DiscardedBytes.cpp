// SPDX-License-Identifier: GPL-3.0-or-later
#include "telemetry/DiscardedBytes.h"

#include <algorithm>

namespace qor {

void CDiscardedBytes::Take(std::uint64_t offset, ByteSpan bytes) {
    if (bytes.empty())
        return;
    const bool goesOn = Count > 0 && offset == EndAt;
    if (Count == 0)
        FirstAt = offset;
    Bytes += bytes.size();
    EndAt = offset + bytes.size();
    Count += goesOn ? 0 : 1;
    const ByteSpan kept = bytes.first(std::min(bytes.size(), LargestSample - Kept.size()));
    if (!kept.empty() && !goesOn)
        Starts.push_back(Kept.size());
    Kept.insert(Kept.end(), kept.begin(), kept.end());
}

/// Of what was begun last the first begin counts: the rest is looked through for others.
void CDiscardedBytes::CutShort(std::uint64_t offset, std::string what) {
    if (TornAt)
        return;
    TornAt = offset;
    What = std::move(what);
}

} // namespace qor
