// SPDX-License-Identifier: GPL-3.0-or-later
//
// Telling frames of a raw log from what stands between them; every length is checked against the
// bytes that are there.
#include "telemetry/ReplayFilter.h"

#include <algorithm>
#include <cstring>

namespace qor {

namespace {

// A log lists the sentences of one GPS; thousands of names would be no log of ours.
constexpr std::size_t MostNmeaHeaders = 256;

/// True when the bytes agree with the text as far as they go.
bool CouldBegin(ByteSpan bytes, std::string_view text) {
    std::size_t known = std::min(bytes.size(), text.size());
    return std::memcmp(bytes.data(), text.data(), known) == 0;
}

std::string_view WithoutComma(std::string_view header) {
    if (header.ends_with(','))
        header.remove_suffix(1);
    return header;
}

} // namespace

bool CReplayFilter::Determine(ByteSpan bytes, bool ended) {
    if (Kind != StreamKind::Unknown)
        return true;
    if (bytes.empty())
        return false;
    if (BeginsHeaderRecord(bytes))
        Kind = StreamKind::RawLog;
    else if (ended || !CouldBegin(bytes, HeaderRecordStart))
        Kind = StreamKind::Capture;
    return Kind != StreamKind::Unknown;
}

std::optional<std::size_t> CReplayFilter::Skippable(ByteSpan bytes, bool ended) {
    if (CouldBegin(bytes, HeaderRecordStart)) {
        if (bytes.size() >= HeaderRecordSize) {
            TakeRecord(bytes.first(HeaderRecordSize));
            return HeaderRecordSize;
        }
        return ended ? std::optional<std::size_t>(0) : std::nullopt;
    }
    std::optional<std::size_t> sentence = TimeStampLength(bytes);
    return ended ? sentence.value_or(0) : sentence;
}

void CReplayFilter::TakeRecord(ByteSpan record) {
    std::optional<HeaderRecord> parsed = ParseHeaderRecord(record);
    if (!parsed || parsed->tag != "NMEA" || parsed->value.empty() || NamesUntagged(parsed->value) ||
        NmeaHeaders.size() == MostNmeaHeaders)
        return;
    NmeaHeaders.push_back(parsed->value);
}

// Decided: a sentence identifier and a sync header that differ only in a closing comma are the
// same.
bool CReplayFilter::NamesUntagged(std::string_view syncHeader) const {
    return std::any_of(NmeaHeaders.begin(), NmeaHeaders.end(), [&](const std::string& header) {
        return WithoutComma(header) == WithoutComma(syncHeader);
    });
}

} // namespace qor
