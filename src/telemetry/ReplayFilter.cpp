// SPDX-License-Identifier: GPL-3.0-or-later
//
// Telling frames of a raw log from what stands between them; every length is checked against the
// bytes that are there.
#include "telemetry/ReplayFilter.h"

#include <algorithm>
#include <cstring>

namespace qor {

namespace {

/// True when the bytes agree with the text as far as they go.
bool CouldBegin(ByteSpan bytes, std::string_view text) {
    std::size_t known = std::min(bytes.size(), text.size());
    return std::memcmp(bytes.data(), text.data(), known) == 0;
}

} // namespace

CReplayFilter::StreamKind CReplayFilter::KindOf(ByteSpan bytes, bool ended) const {
    if (Kind != StreamKind::Unknown)
        return Kind;
    if (BeginsHeaderRecord(bytes))
        return StreamKind::RawLog;
    return ended || !CouldBegin(bytes, HeaderRecordStart) ? StreamKind::Capture
                                                          : StreamKind::Unknown;
}

std::optional<std::size_t> CReplayFilter::Skippable(ByteSpan bytes, bool ended) {
    Kind = KindOf(bytes, ended);
    if (Kind != StreamKind::RawLog)
        return Kind == StreamKind::Capture ? std::optional<std::size_t>(0) : std::nullopt;
    if (CouldBegin(bytes, HeaderRecordStart)) {
        if (bytes.size() >= HeaderRecordSize)
            return HeaderRecordSize;
        return ended ? std::optional<std::size_t>(0) : std::nullopt;
    }
    std::optional<std::size_t> sentence = TimeStampLength(bytes);
    return ended ? sentence.value_or(0) : sentence;
}

bool CReplayFilter::BeginsCut(ByteSpan bytes) const {
    return IsRawLog() &&
           ((bytes.size() < HeaderRecordSize && CouldBegin(bytes, HeaderRecordStart)) ||
            !TimeStampLength(bytes));
}

} // namespace qor
