// SPDX-License-Identifier: GPL-3.0-or-later
//
// The reasons why no frame can come, the most telling one first.
#include "instrument/DefinitionVerdict.h"

#include "instrument/SpecialType.h"

namespace qor {

namespace {

std::string WithoutHeader(const CInstrument& instrument) {
    const std::optional<SpecialType> special = SpecialTypeOf(instrument);
    if (!special)
        return instrument.NextSensor("SPECIAL")
                   ? "It has no sync header, and its SPECIAL line names no type that is known."
                   : "It has no sync header and no SPECIAL line that says how else a frame is "
                     "found.";
    switch (special->search) {
    case SpecialSearch::Lines:
        break;
    case SpecialSearch::Packets: {
        const std::size_t bytes = SyncPairsOf(*special->line).size();
        if (bytes == 0 || bytes % 2 != 0)
            return "It has no sync header, and its SPECIAL line gives no pairs of bytes to find "
                   "frames by.";
        break;
    }
    case SpecialSearch::Header:
        return "It has no sync header, and frames of its SPECIAL type are found by one.";
    }
    return {};
}

std::string WhyNoFrames(const CInstrument& instrument) {
    if (instrument.Encoding() == TextEncoding::Utf16)
        return "It is written in UTF-16; save it as plain text (ASCII or UTF-8).";
    if (instrument.LinesRead() == 0)
        return "It is empty.";
    if (instrument.SensorCount() == 0)
        return "It defines no sensors.";
    if (instrument.SyncHeader().empty())
        if (std::string reason = WithoutHeader(instrument); !reason.empty())
            return reason;
    // Lines need no size: a definition of text alone may have none.
    const bool bySize = instrument.Type() == FrameType::Fixed && !SpecialTypeOf(instrument);
    return bySize && instrument.FrameSize() == 0 ? "Its frames have no size." : std::string();
}

} // namespace

DefinitionVerdict VerdictOf(const CInstrument& instrument) {
    return {instrument.DiagnosticCount(), instrument.FirstDiagnostic(), WhyNoFrames(instrument)};
}

DefinitionHints MistakesIn(const CInstrument& instrument, std::string_view text) {
    DefinitionHints mistakes = HintsOf(instrument, text);
    if (const std::string reason = WhyNoFrames(instrument); !reason.empty())
        mistakes.insert(mistakes.begin(), {0, "It can never give a frame: " + reason});
    return mistakes;
}

bool IsClean(const CInstrument& instrument, const DefinitionHints& mistakes) {
    return instrument.DiagnosticCount() == 0 && mistakes.empty();
}

} // namespace qor
