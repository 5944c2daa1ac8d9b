// SPDX-License-Identifier: GPL-3.0-or-later
//
// The keywords of data types and fit types, looked up by the definition reader and printed by the
// faces. The place of a keyword in its table is the value of its enumerator.
#include "instrument/Sensor.h"

#include "base/Text.h"

#include <cstddef>

namespace qor {

namespace {

constexpr std::string_view DataTypeKeywords[] = {"BU", "BS", "BF", "BD", "HU",
                                                 "HS", "AI", "AF", "AS"};

constexpr std::string_view FitTypeKeywords[] = {"NONE",   "COUNT",  "DELIMITER", "OPTIC1",
                                                "OPTIC2", "OPTIC3", "POLYF",     "POLYU",
                                                "DDMM",   "HHMMSS", "DDMMYY",    "TIME2"};

template <class Enum, std::size_t Count>
std::optional<Enum> Find(const std::string_view (&keywords)[Count], std::string_view keyword) {
    for (std::size_t place = 0; place < Count; ++place)
        if (EqualsNoCase(keywords[place], keyword))
            return static_cast<Enum>(place);
    return std::nullopt;
}

} // namespace

const char* KeywordOf(DataType type) {
    return DataTypeKeywords[static_cast<std::size_t>(type)].data();
}

const char* KeywordOf(FitType fit) {
    return FitTypeKeywords[static_cast<std::size_t>(fit)].data();
}

std::optional<DataType> DataTypeOf(std::string_view keyword) {
    return Find<DataType>(DataTypeKeywords, keyword);
}

std::optional<FitType> FitTypeOf(std::string_view keyword) {
    return Find<FitType>(FitTypeKeywords, keyword);
}

} // namespace qor
