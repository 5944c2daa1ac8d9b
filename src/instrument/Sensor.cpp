// SPDX-License-Identifier: GPL-3.0-or-later
//
// The keywords of data types and fit types, looked up by the definition reader and printed by the
// faces.
#include "instrument/Sensor.h"

#include "base/Text.h"
#include "instrument/FitTypes.h"

namespace qor {

const char* KeywordOf(DataType type) {
    return RowOf(type).keyword.data();
}

const char* KeywordOf(FitType fit) {
    return RowOf(fit).keyword.data();
}

std::optional<DataType> DataTypeOf(std::string_view keyword) {
    for (const DataTypeRow& row : DataTypeTable)
        if (EqualsNoCase(row.keyword, keyword))
            return row.data;
    return std::nullopt;
}

std::optional<FitType> FitTypeOf(std::string_view keyword) {
    for (const FitRow& row : FitTable)
        if (EqualsNoCase(row.keyword, keyword))
            return row.fit;
    return std::nullopt;
}

} // namespace qor
