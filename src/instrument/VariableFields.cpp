// SPDX-License-Identifier: GPL-3.0-or-later
//
// The cuts of delimited frames. Frames may hold any byte, NUL included; the header may hold
// delimiter characters, and then the cut falls there, as the definition asks.
#include "instrument/VariableFields.h"

#include <cstring>

namespace qor {

namespace {

constexpr std::size_t NotFound = static_cast<std::size_t>(-1);

std::size_t Find(ByteSpan frame, char character, std::size_t from) {
    if (from >= frame.size())
        return NotFound;
    const void* found = std::memchr(frame.data() + from, static_cast<unsigned char>(character),
                                    frame.size() - from);
    if (!found)
        return NotFound;
    return static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - frame.data());
}

std::size_t EndOfLast(ByteSpan frame, std::string_view terminator, std::size_t begin) {
    const std::size_t end = terminator.empty() ? NotFound : Find(frame, terminator[0], begin);
    return end == NotFound ? frame.size() : end;
}

} // namespace

bool CutField(ByteSpan frame, std::string_view delimiters, std::string_view terminator,
              std::size_t k, FieldRange& field) {
    if (k >= delimiters.size())
        return false;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= k; ++i) {
        const std::size_t cut = Find(frame, delimiters[i], begin);
        if (cut == NotFound)
            return false;
        begin = cut + 1;
    }
    std::size_t end = NotFound;
    if (k + 1 < delimiters.size())
        end = Find(frame, delimiters[k + 1], begin);
    field = {begin, end == NotFound ? EndOfLast(frame, terminator, begin) : end};
    return true;
}

std::size_t CutFields(ByteSpan frame, std::string_view delimiters, std::string_view terminator,
                      FieldRange* fields) {
    std::size_t count = 0, begin = 0;
    for (; count < delimiters.size(); ++count) {
        const std::size_t cut = Find(frame, delimiters[count], begin);
        if (cut == NotFound)
            break;
        if (count > 0)
            fields[count - 1].end = cut;
        begin = cut + 1;
        fields[count].begin = begin;
    }
    if (count > 0)
        fields[count - 1].end = EndOfLast(frame, terminator, begin);
    return count;
}

} // namespace qor
