// SPDX-License-Identifier: GPL-3.0-or-later
//
// A field takes characters behind its number without another value, and an ASCII integer takes
// bytes of the upper half before it. Three printable characters make up for any sum; where there is
// no room for them, a number loses digits.
#include "simulation/DelimitedSum.h"

#include "instrument/FrameChecks.h"
#include "instrument/RawValue.h"
#include "instrument/VariableFields.h"

#include <algorithm>
#include <string>

namespace qor {

namespace {

constexpr std::size_t MostFillers = 3;

std::uint8_t SumOf(ByteSpan bytes) {
    std::uint8_t sum = 0;
    for (std::uint8_t byte : bytes)
        sum = static_cast<std::uint8_t>(sum + byte);
    return sum;
}

/// The bytes from `first` to `last`, without those that end a field or stand in `unfit`.
std::string Bytes(const CInstrument& instrument, int first, int last, std::string unfit) {
    unfit += instrument.FieldDelimiter() + instrument.Terminator();
    std::string bytes;
    for (int byte = first; byte <= last; ++byte)
        if (unfit.find(static_cast<char>(byte)) == std::string::npos)
            bytes += static_cast<char>(byte);
    return bytes;
}

/// Where a field may be opened for fillers, where its old text goes on behind them, and which
/// bytes it takes there.
struct Place {
    std::size_t gap, resume;
    const std::string* fillers;
};

/// The bytes that fill a field without ending it, printable characters first.
struct Fillers {
    explicit Fillers(const CInstrument& instrument)
        : behind(Bytes(instrument, '!', 0xFF, "0123456789.eE+-")),
          instead(Bytes(instrument, '!', 0xFF, "eE")),
          before(Bytes(instrument, ' ', ' ', "") + Bytes(instrument, 0x80, 0xFF, "")) {}

    std::string behind;  ///< do not belong to the number that they follow
    std::string instead; ///< of all but a number's first digit
    std::string before;  ///< an ASCII integer passes over them in front of its digits
};

/// So many of the fillers that sum to the wanted byte; empty when none do.
std::string Combination(const std::string& fillers, std::size_t count, std::uint8_t wanted) {
    for (char c : fillers) {
        const auto rest = static_cast<std::uint8_t>(wanted - static_cast<std::uint8_t>(c));
        if (count == 1 && rest == 0)
            return {c};
        if (count == 1)
            continue;
        if (std::string others = Combination(fillers, count - 1, rest); !others.empty())
            return c + others;
    }
    return {};
}

/// A frame with a gap in one of its fields.
struct Opened {
    std::vector<std::uint8_t> frame;
    std::size_t gap = 0, length = 0;
};

Opened Open(const std::vector<std::uint8_t>& frame, const Place& place, std::size_t length) {
    Opened opened{{}, place.gap, length};
    const auto at = [&frame](std::size_t i) {
        return frame.begin() + static_cast<std::ptrdiff_t>(i);
    };
    opened.frame.assign(frame.begin(), at(place.gap));
    opened.frame.resize(place.gap + length, 0);
    opened.frame.insert(opened.frame.end(), at(place.resume), frame.end());
    return opened;
}

/// Fills the gap so that the bytes before `end` balance; false when it cannot be.
bool Close(Opened& opened, std::size_t end, const std::string& fillers) {
    if (opened.gap + opened.length > end)
        return false;
    const ByteSpan summed = ByteSpan(opened.frame).first(std::min(end, opened.frame.size()));
    const auto wanted = static_cast<std::uint8_t>(-SumOf(summed));
    const std::string text = Combination(fillers, opened.length, wanted);
    std::copy(text.begin(), text.end(),
              opened.frame.begin() + static_cast<std::ptrdiff_t>(opened.gap));
    return !text.empty();
}

/// The places before the end of the sum, those first that leave every number as it is.
std::vector<Place> PlacesIn(const CInstrument& instrument, ByteSpan frame, std::size_t end,
                            const Fillers& fillers) {
    const std::int32_t counter = FrameCounterIndex(instrument);
    std::vector<Place> places, lastResort;
    for (const CSensor& sensor : instrument.Sensors()) {
        FieldRange field;
        if (!sensor.VariableLength || sensor.VariableIndex < 0 ||
            !CutField(frame, instrument.FieldDelimiter(), instrument.Terminator(),
                      static_cast<std::size_t>(sensor.VariableIndex), field) ||
            field.begin >= end)
            continue;
        places.push_back({field.end, field.end, &fillers.behind});
        if (sensor.Data == DataType::AI)
            lastResort.push_back({field.begin, field.begin, &fillers.before});
        else if (sensor.Index != counter && field.end - field.begin > 2)
            lastResort.push_back(
                {field.begin + (frame[field.begin] == '-' ? 2 : 1), field.end, &fillers.instead});
    }
    places.insert(places.end(), lastResort.begin(), lastResort.end());
    return places;
}

} // namespace

bool BalanceDelimited(const CInstrument& instrument, const CSensor& checksum,
                      std::vector<std::uint8_t>& frame) {
    const std::size_t end = std::size_t{checksum.ByteOffset} + 1;
    if (SumOf(ByteSpan(frame).first(std::min(end, frame.size()))) == 0)
        return true;
    const Fillers fillers(instrument);
    for (const Place& place : PlacesIn(instrument, frame, end, fillers))
        for (std::size_t length = 1; length <= MostFillers; ++length) {
            Opened opened = Open(frame, place, length);
            RawValue raw;
            if (!Close(opened, end, *place.fillers) ||
                RawOf(checksum, opened.frame, raw) != ConversionStatus::Good)
                continue;
            frame = std::move(opened.frame);
            return true;
        }
    return false;
}

} // namespace qor
