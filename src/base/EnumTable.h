// SPDX-License-Identifier: GPL-3.0-or-later
//
// How many enumerators an enumeration has, so that a table with one row an enumerator can be
// checked by static_assert: an enumerator without a row does not compile. Used where the tables
// stand; nothing of it is left at run time.
#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

namespace qor {

/// The value is one of its enumeration's. The compilers spell any other as a cast of a number.
template <auto Value> constexpr bool IsEnumerator() {
#if defined(_MSC_VER) && !defined(__clang__)
    return std::string_view(__FUNCSIG__).find("IsEnumerator<(enum ") == std::string_view::npos;
#else
    return std::string_view(__PRETTY_FUNCTION__).find("Value = (") == std::string_view::npos;
#endif
}

/// The enumerators among the `Count` values from `First` on.
template <class Enum, auto First, std::size_t Count> constexpr std::size_t EnumeratorsIn() {
    return []<std::size_t... I>(std::index_sequence<I...>) {
        using Number = std::underlying_type_t<Enum>;
        return (std::size_t{0} + ... +
                std::size_t{IsEnumerator<static_cast<Enum>(static_cast<Number>(First + I))>()});
    }
    (std::make_index_sequence<Count>());
}

/// Row `place` is the one of the enumerator with that number, and none is missing; for
/// enumerations that begin at 0 and have no gap.
template <class Row, std::size_t Count, class Enum>
constexpr bool IsWholeTable(const Row (&rows)[Count], Enum Row::*key) {
    for (std::size_t place = 0; place < Count; ++place)
        if (static_cast<std::size_t>(rows[place].*key) != place)
            return false;
    constexpr std::size_t Beyond = 16; // enumerators that somebody added behind the last row
    return EnumeratorsIn<Enum, std::size_t{0}, Count + Beyond>() == Count;
}

/// Rows of ascending keys, so that no two say different things of one.
template <class Row, std::size_t Count, class Enum>
constexpr bool IsAscendingTable(const Row (&rows)[Count], Enum Row::*key) {
    for (std::size_t place = 1; place < Count; ++place)
        if (!(rows[place - 1].*key < rows[place].*key))
            return false;
    return true;
}

} // namespace qor
