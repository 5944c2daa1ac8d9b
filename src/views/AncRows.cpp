// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/AncRows.h"

#include "base/Text.h"
#include "views/NumberText.h"

#include <algorithm>
#include <utility>

namespace qor {

GridRow RowOfProduct(const DerivedRow& product, std::uint64_t id, bool watched) {
    GridRow row{.label = Utf8Of(product.label), .units = Utf8Of(product.units), .value = {}};
    row.id = id;
    row.opens = watched;
    return row;
}

void MarkRow(GridRow& row, Sign sign, std::int64_t age, bool stale) {
    row.sign = stale ? WorseSign(sign, Sign::Stale) : sign;
    row.stale = stale;
    row.age = stale && age >= 0 ? AgeText(age) : "";
}

bool AgeRow(GridRow& row, std::int64_t age) {
    std::string text = row.stale && age >= 0 ? AgeText(age) : "";
    std::swap(text, row.age);
    return text != row.age;
}

bool ShowProduct(const DerivedRow& product, const WarningRanges* ranges, const AlarmSignal& signal,
                 std::int64_t age, bool stale, GridRow& row) {
    row.value.text = DerivedText(product);
    row.number = product.value;
    Sign sign = product.status == ConversionStatus::Good ? Sign::None : Sign::Error;
    bool beep = false;
    if (ranges && product.value) {
        constexpr Sign Signs[] = {Sign::None, Sign::Warning, Sign::Alarm}; // by WatchState
        sign = Signs[static_cast<std::size_t>(Classify(*ranges, *product.value))];
        beep = PaintWatched(*ranges, *product.value, signal, row.value);
    } else {
        PaintUnwatched(row.value);
    }
    MarkRow(row, sign, age, stale);
    return beep;
}

std::string AlarmText(const GridRow& row, const WarningRanges& ranges) {
    return row.label + " " + row.value.text + (row.units.empty() ? "" : " " + row.units) +
           " is in its alarm range, " + FixedNumber(ranges.AlarmMin, 2) + " to " +
           FixedNumber(ranges.AlarmMax, 2) + ".";
}

void LeadByRows(const GridPage& page, std::size_t firstSeen, PageHead& head) {
    const GridRow* leading =
        page.rows.empty() ? nullptr : &page.rows[std::min(firstSeen, page.rows.size() - 1)];
    for (const GridRow& row : page.rows) {
        if (leading != &row && row.sign != leading->sign &&
            WorseSign(row.sign, leading->sign) == row.sign)
            leading = &row;
        head.sign = WorseSign(head.sign, row.sign);
    }
    if (leading && !leading->value.text.empty())
        head.leading = leading->label + " " + leading->value.text +
                       (leading->units.empty() ? "" : " " + leading->units);
}

} // namespace qor
