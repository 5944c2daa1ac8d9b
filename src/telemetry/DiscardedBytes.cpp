// SPDX-License-Identifier: GPL-3.0-or-later
#include "telemetry/DiscardedBytes.h"

#include <algorithm>

namespace qor {

void CDiscardedBytes::Take(std::uint64_t offset, ByteSpan bytes) {
    if (bytes.empty())
        return;
    const bool goesOn = PieceCount > 0 && offset == EndAt;
    if (PieceCount == 0)
        FirstAt = offset;
    Bytes += bytes.size();
    EndAt = offset + bytes.size();
    PieceCount += goesOn ? 0 : 1;
    if (!goesOn && PieceCount <= MostPlaces)
        Found.push_back({offset, 0});
    if (PieceCount <= MostPlaces)
        Found.back().length += bytes.size();
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

void CDiscardedBytes::CountRecord(BytePiece record, bool ofHeader) {
    (ofHeader ? Known.header : Known.stamps) += record.length;
    if (!ofHeader)
        return;
    const bool goesOn = record.offset == HeaderEnd;
    HeaderEnd = record.offset + record.length;
    if (!goesOn && ++LaterCount <= MostPlaces)
        Later.push_back({record.offset, 0});
    if (LaterCount > 0 && LaterCount <= MostPlaces)
        Later.back().length += record.length;
}

} // namespace qor
