// SPDX-License-Identifier: GPL-3.0-or-later
//
// The rows of the ancillary displays: a derived product as a row, with its value, its colours and
// its sign. Under the document's lock.
#pragma once

#include "products/DerivedRows.h"
#include "views/WarningRanges.h"

namespace qor {

/// The row of a product, without a value.
GridRow RowOfProduct(const DerivedRow& product, std::uint64_t id, bool watched);

/// Puts a product's value into its row and colours it by its ranges (null: not watched). True when
/// it asks for the alarm sound. `age`: of its frame in milliseconds, negative when not known.
bool ShowProduct(const DerivedRow& product, const WarningRanges* ranges, const AlarmSignal& signal,
                 std::int64_t age, bool stale, GridRow& row);

/// The sign of a row's value, or that it is old.
void MarkRow(GridRow& row, Sign sign, std::int64_t age, bool stale);

/// How old a stale row is now, also while no frame comes. True when that is another text.
bool AgeRow(GridRow& row, std::int64_t age);

/// The page's sign is the worst of its rows; the row that has it, else the first that can be seen,
/// leads.
void LeadByRows(const GridPage& page, std::size_t firstSeen, PageHead& head);

/// That a row's value lies in its alarm range, as one sentence.
std::string AlarmText(const GridRow& row, const WarningRanges& ranges);

} // namespace qor
