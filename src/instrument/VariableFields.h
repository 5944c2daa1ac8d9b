// SPDX-License-Identifier: GPL-3.0-or-later
//
// Cutting a delimited frame into its fields. The raw extraction cuts one field, the conversion plan
// all of them in one pass; reentrant.
#pragma once

#include "base/Bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
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

/// Cuts frames of one definition into all their fields at once; compiled with the definition.
class CFieldCutter {
  public:
    CFieldCutter(std::string_view delimiters, std::string_view terminator);

    /// The fields of a frame that holds every delimiter.
    std::size_t Fields() const { return Count; }
    /// Each field as CutField cuts it: the k-th is Field(cuts, k). `cuts` has room for Fields() + 1
    /// places. Returns how many fields begin in the frame.
    std::size_t Cut(ByteSpan frame, std::size_t* cuts) const;
    static FieldRange Field(const std::size_t* cuts, std::size_t k) {
        return {cuts[k] + 1, cuts[k + 1]};
    }

  private:
    std::uint64_t Marks(const std::uint8_t* block) const;
    std::uint64_t MarksAt(ByteSpan frame, std::size_t start) const;

    static constexpr std::size_t FewCharacters = 4, VectorBytes = 16;

    std::size_t Count;  ///< delimiters
    std::string Wanted; ///< the delimiters in order, then what closes the last field
    std::array<std::uint8_t, 256> Cuts{}; ///< 1 for each character of them
    std::size_t Characters = 0;           ///< how many different ones
    /// Each of the first few, as often as a vector has bytes; the first one in place of what is
    /// missing.
    std::array<std::array<char, VectorBytes>, FewCharacters> Patterns{};
};

} // namespace qor
