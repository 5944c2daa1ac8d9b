// SPDX-License-Identifier: GPL-3.0-or-later
#include "telemetry/RawHeader.h"

#include "base/Text.h"

#include <cmath>

namespace qor {

FileCause ReadHeaderBlock(CFile& file, HeaderBlock& block) {
    // Decided: a header block has some twenty records; what a hostile file has beyond these many is
    // read over, not kept.
    constexpr std::size_t MostKept = 10'000;
    std::array<std::uint8_t, HeaderRecordSize> record{};
    for (;; block.size += HeaderRecordSize) {
        std::size_t filled = 0;
        for (std::size_t got = 1; got > 0 && filled < record.size(); filled += got)
            if (FileCause cause = file.Read(std::span(record).subspan(filled), got);
                cause != FileCause::None)
                return cause;
        if (filled < record.size() || !BeginsHeaderRecord(record)) {
            const ByteSpan rest = ByteSpan(record).first(filled);
            block.rest.assign(rest.begin(), rest.end());
            return FileCause::None;
        }
        if (std::optional<HeaderRecord> parsed = ParseHeaderRecord(record);
            parsed && block.records.size() < MostKept)
            block.records.push_back(std::move(*parsed));
    }
}

double PressureTareOf(const std::string& path) {
    CFile file;
    HeaderBlock block;
    // What is read of a pipe here would be missing when it is played.
    if (IsDevice(path) || file.OpenForReading(path) != FileCause::None ||
        ReadHeaderBlock(file, block) != FileCause::None)
        return 0.0;
    for (const HeaderRecord& record : block.records)
        if (record.tag == "PRESSURE-TARE")
            if (std::optional<double> tare = WholeNumber(Trim(record.value));
                tare && std::isfinite(*tare))
                return *tare;
    return 0.0;
}

} // namespace qor
