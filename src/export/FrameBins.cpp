// SPDX-License-Identifier: GPL-3.0-or-later
//
// The gathering of frames. See FrameBins.h.
#include "export/FrameBins.h"

#include "export/FrameCells.h"
#include "instrument/Calibration.h"
#include "products/GpsSentence.h"

#include <cmath>

namespace qor {

std::optional<double> CBinNumbers::Mean() const {
    return Numbers > 0 ? std::optional(Average) : std::nullopt;
}

std::optional<double> CBinNumbers::Deviation() const {
    return Numbers > 1 ? std::optional(std::sqrt(Squares / static_cast<double>(Numbers - 1)))
                       : std::nullopt;
}

CFrameBins::CFrameBins(const BinSpan& span, const ExportedInstrument& instrument, bool degrees,
                       std::size_t most)
    : Span(span), Most(most), Live(*instrument.live), Rows(instrument.derived) {
    for (const CSensor& sensor : Live.Definition().Sensors()) {
        const auto place = static_cast<std::size_t>(sensor.Index);
        if (KindOfValue(sensor) == ValueKind::Number)
            What.push_back({FrameOrigin::Sensors, &sensor, place});
        if (degrees && IsCoordinateText(sensor))
            What.push_back({FrameOrigin::Degrees, &sensor, place});
    }
    for (std::size_t i = 0; i < Rows.size(); ++i)
        What.push_back({FrameOrigin::Product, nullptr, i});
}

bool CFrameBins::Take(const ExportedFrame& frame, std::optional<int> utcOffset) {
    const std::optional<double> place =
        Span.IsTime() ? ShownSeconds(frame.instrument.CurrentFrame()->Info.time, utcOffset)
                      : frame.depth;
    if (!place || !std::isfinite(Span.BinOf(*place))) {
        ++Placeless;
        return true;
    }
    auto found = Gathered.find(Span.BinOf(*place));
    if (found == Gathered.end()) {
        if (Gathered.size() >= Most / (What.size() + 1))
            return false;
        found = Gathered.try_emplace(Span.BinOf(*place)).first;
        found->second.columns.resize(What.size());
    }
    FrameBin& bin = found->second;
    ++bin.frames;
    for (std::size_t i = 0; i < What.size(); ++i)
        if (const FrameCell cell =
                CellOf(What[i].of, static_cast<int>(What[i].place), frame, FrameStyle(), Scratch);
            !std::isnan(cell.value))
            bin.columns[i].Add(cell.value);
    return true;
}

} // namespace qor
