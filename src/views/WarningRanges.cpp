// SPDX-License-Identifier: GPL-3.0-or-later
//
// Warning and alarm limits: stored text, classification, painting, and the check of their dialog.
#include "views/WarningRanges.h"

#include "base/Text.h"

#include <charconv>

namespace qor {

namespace {

std::string_view From(std::string_view text, std::size_t position) {
    return text.substr(std::min(position, text.size()));
}

double NumberAt(std::string_view text, std::size_t position) {
    return LeadingNumber(From(text, position)).value_or(0.0);
}

int IntegerAt(std::string_view text, std::size_t position) {
    std::string_view digits = TrimLeft(From(text, position));
    if (digits.starts_with('+'))
        digits.remove_prefix(1);
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

constexpr bool Inside(double minimum, double value, double maximum) {
    return minimum < value && value < maximum;
}

} // namespace

std::string FormatWarningRanges(const WarningRanges& ranges) {
    std::string text;
    for (double limit : {ranges.WarnMin, ranges.WarnMax, ranges.AlarmMin, ranges.AlarmMax})
        text += FixedNumber(limit, 2, 9, '0') + ' ';
    return text + Format("%1d %1d", ranges.WarnEnabled, ranges.AlarmEnabled);
}

void ParseWarningRanges(std::string_view text, WarningRanges& ranges) {
    if (text.empty())
        return;
    // Kept: read by position, not by blanks; a number that was longer than 9 characters when it was
    // written shifts what follows and is misread.
    ranges.WarnMin = NumberAt(text, 0);
    ranges.WarnMax = NumberAt(text, 10);
    ranges.AlarmMin = NumberAt(text, 20);
    ranges.AlarmMax = NumberAt(text, 30);
    ranges.WarnEnabled = IntegerAt(text, 40);
    ranges.AlarmEnabled = IntegerAt(text, 42);
}

void SaveRanges(CProfileStore& store, const std::string& section, const std::string& key,
                const WarningRanges& ranges) {
    store.WriteText(section, key, FormatWarningRanges(ranges));
}

void LoadRanges(const CProfileStore& store, const std::string& section, const std::string& key,
                WarningRanges& ranges) {
    ParseWarningRanges(store.ReadText(section, key), ranges);
}

WatchState Classify(const WarningRanges& ranges, double value) {
    if (ranges.AlarmEnabled && Inside(ranges.AlarmMin, value, ranges.AlarmMax))
        return WatchState::Alarm;
    if (ranges.WarnEnabled && Inside(ranges.WarnMin, value, ranges.WarnMax))
        return WatchState::Warning;
    return WatchState::Normal;
}

bool PaintWatched(const WarningRanges& ranges, double value, const AlarmSignal& signal,
                  GridCell& cell) {
    switch (Classify(ranges, value)) {
    case WatchState::Alarm:
        cell.background = signal.blinkPhase ? Red : Black;
        cell.textColour = Cyan;
        return signal.blinkPhase && signal.sound;
    case WatchState::Warning:
        cell.background = Yellow;
        cell.textColour = Black;
        break;
    case WatchState::Normal:
        PaintUnwatched(cell);
        break;
    }
    return false;
}

void PaintUnwatched(GridCell& cell) {
    cell.background = Black;
    cell.textColour = Yellow;
}

CAncWarningsDlg::CAncWarningsDlg(const WarningRanges& ranges, std::string_view quantity)
    : WarnMin(ShortestNumber(ranges.WarnMin)), WarnMax(ShortestNumber(ranges.WarnMax)),
      AlarmMin(ShortestNumber(ranges.AlarmMin)), AlarmMax(ShortestNumber(ranges.AlarmMax)),
      WarnEnabled(ranges.WarnEnabled != 0), AlarmEnabled(ranges.AlarmEnabled != 0),
      Title("Ancillary Data Alarms -") {
    Title += quantity;
}

bool CAncWarningsDlg::Accept(CUserService& user, WarningRanges& ranges) const {
    const WarningRanges edited{
        NumberAt(WarnMin, 0),  NumberAt(WarnMax, 0), NumberAt(AlarmMin, 0),
        NumberAt(AlarmMax, 0), WarnEnabled ? 1 : 0,  AlarmEnabled ? 1 : 0,
    };
    // Kept: equal bounds are refused as well, though the texts speak of "greater" only.
    if (!(edited.WarnMin < edited.WarnMax)) {
        user.ShowMessage(
            "The Warning Range minimum value cannot\nbe greater than the maximum value.");
        return false;
    }
    if (!(edited.AlarmMin < edited.AlarmMax)) {
        user.ShowMessage(
            "The Alarm Range minimum value cannot be\ngreater than the maximum value.");
        return false;
    }
    ranges = edited;
    return true;
}

} // namespace qor
