// SPDX-License-Identifier: GPL-3.0-or-later
//
// Cutting a delimited frame into its fields. The raw extraction cuts one field, the conversion plan
// all of them in one pass; reentrant, no state.
#pragma once

#include "base/Bytes.h"

#include <cstddef>
#include <string_view>

namespace qor {

/// A field of a delimited frame: frame[begin] up to, without, frame[end].
struct FieldRange {
    std::size_t begin = 0, end = 0;
};

/// The k-th field: the frame is cut at the first character of the delimiter text, behind it at the
/// second, and so on; behind the k-th cut (from 0) the field begins. It runs to the next delimiter
/// character, the last one to the first character of the terminator. Where the closing character is
/// missing the field runs to the terminator or the frame's end. False when the k-th delimiter does
/// not occur, or there is none.
bool CutField(ByteSpan frame, std::string_view delimiters, std::string_view terminator,
              std::size_t k, FieldRange& field);

/// All fields at once into `fields`, which has room for delimiters.size() of them; returns how many
/// begin in the frame.
std::size_t CutFields(ByteSpan frame, std::string_view delimiters, std::string_view terminator,
                      FieldRange* fields);

} // namespace qor
